// Any tables as pushes and answers of the quote server: a line of columns, then lines of cells, with commas between
// them; an empty line ends a table. Every number in a record reads as one.
#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <string>
#include <string_view>

#include "base/data_set.h"
#include "datalists/hq_data.h"
#include "fuzz/input.h"

namespace luadui {
namespace {

template <class Take>
void ForEachCell(std::string_view line, Take take) {
    int column = 0;
    for (size_t start = 0; start <= line.size(); ++column) {
        const size_t end = std::min(line.find(',', start), line.size());
        take(column, line.substr(start, end - start));
        start = end + 1;
    }
}

CDataTable ReadTable(Input& input) {
    CDataTable table;
    ForEachCell(input.Text('\n'), [&](int, std::string_view name) { table.AddColumn(name); });
    for (std::string_view line = input.Text('\n'); !line.empty(); line = input.Text('\n')) {
        const int row = table.AppendRow();
        ForEachCell(line, [&](int column, std::string_view cell) { table.SetItemText(row, column, cell); });
    }
    return table;
}

void Check(const CUIData& out) {
    CDataSet keys;
    if (!out.GetData("updatecode", keys) || out.Size() != keys.Size() + 2) std::abort();
    for (const std::string& key : keys) {
        CUIData quote;
        if (!out.GetDataShared(key, quote) || quote.GetDataString("Zqdm").empty()) std::abort();
        for (const char* name : {"PriceZxjg", "AmountBuy1", "TotalAmount", "ZuiGao", "Cjje", "Yjlx"}) {
            double number = 0;
            if (quote.Has(name) && !quote.GetData(name, number)) std::abort();
        }
        for (const char* name : {"ZhenFu", "Junjia", "YiJia", "Yjl"}) {
            if (!std::isfinite(quote.GetDataDouble(name))) std::abort();
        }
    }
}

}  // namespace
}  // namespace luadui

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    using namespace luadui;
    Input input(data, size);
    CHqData quotes;
    while (!input.IsEmpty()) {
        const uint8_t kind = input.Byte();
        const CDataTable table = ReadTable(input);
        CUIData out;
        if (kind % 2) {
            quotes.BuildQueryQuotes(table, out);
            Check(out);
        } else {
            quotes.MergePushRows(table);
            if (quotes.FlushPush(out)) Check(out);
        }
        if (kind % 4 == 0) quotes.ClearPush();
    }
    return 0;
}
