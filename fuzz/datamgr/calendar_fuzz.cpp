// A record's "date" and "shiftday" in two lines, then a holiday list, all any bytes: what a shift finds are trade
// dates, in order, and a list only grows so far.
#include <cstdint>
#include <cstdlib>
#include <string>
#include <string_view>

#include "base/data_list.h"
#include "datamgr/trade_calendar.h"

namespace {

using namespace luadui;

std::string_view CutLine(std::string_view& text) {
    const std::string_view line = text.substr(0, text.find('\n'));
    text.remove_prefix(line.size() < text.size() ? line.size() + 1 : text.size());
    return line;
}

void CheckShift(const CUIData& data, const CDataSet& holidays) {
    CDataList found;
    if (!data.GetData("tradeday", found)) return;
    std::string last = data.GetDataString("date");
    const bool forwards = data.GetDataLong("shiftday") > 0;
    for (const auto& [key, day] : found) {
        const std::string next(day.AsText());
        if (!IsTradeDate(next, holidays) || next == last || (last < next) != forwards) std::abort();
        last = next;
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* bytes, size_t size) {
    std::string_view text(reinterpret_cast<const char*>(bytes), size);
    CUIData data;
    data.SetData("date", CutLine(text));
    data.SetData("shiftday", CutLine(text));
    const CDataSet holidays = ParseHolidays(text);
    if (holidays.Size() > 200'000) std::abort();
    const bool isTradeDate = IsTradeDate(data.GetDataText("date"), holidays);
    const bool shifted = ShiftTradeDate(data, holidays);
    if (isTradeDate && !shifted && !holidays.IsEmpty()) std::abort();
    if (!shifted && data.Has("tradeday")) std::abort();
    CheckShift(data, holidays);
    return 0;
}
