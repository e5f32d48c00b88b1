// Code page conversions, beside the C library's converter.
#include <benchmark/benchmark.h>
#include <iconv.h>

#include <string>

#include "bench/report.h"
#include "platform/code_page.h"

namespace luadui::bench {
namespace {

// What a table of orders holds: codes, numbers, some names.
const std::string& RowUtf8() {
    static const std::string row =
        "600000|浦发银行|买入|12.34|1000|已报|20240105 09:30:01|A123456789|限价委托|";
    return row;
}

std::string Iconv(iconv_t converter, std::string text) {
    std::string out(text.size() * 2, '\0');
    char *from = text.data(), *to = out.data();
    size_t fromLeft = text.size(), toLeft = out.size();
    iconv(converter, &from, &fromLeft, &to, &toLeft);
    out.resize(out.size() - toLeft);
    return out;
}

LUADUI_REPORT(CodePage) {
    const std::string utf8 = RowUtf8(), gbk = code_page::FromUtf8(utf8);
    const iconv_t toUtf8 = iconv_open("UTF-8", "GBK"), fromUtf8 = iconv_open("GBK", "UTF-8");
    const auto there = Compare([&] { Keep(code_page::ToUtf8(gbk)); }, [&] { Keep(Iconv(toUtf8, gbk)); });
    AtLeast("gbk_to_utf8_vs_iconv", there.Speedup(), 1);
    const auto back = Compare([&] { Keep(code_page::FromUtf8(utf8)); }, [&] { Keep(Iconv(fromUtf8, utf8)); });
    AtLeast("utf8_to_gbk_vs_iconv", back.Speedup(), 1);
    iconv_close(toUtf8);
    iconv_close(fromUtf8);
}

void ConvertRow(benchmark::State& state) {
    const std::string gbk = code_page::FromUtf8(RowUtf8());
    for (auto _ : state) benchmark::DoNotOptimize(code_page::ToUtf8(gbk));
    state.SetBytesProcessed(state.iterations() * static_cast<int64_t>(gbk.size()));
}
BENCHMARK(ConvertRow);

}  // namespace
}  // namespace luadui::bench
