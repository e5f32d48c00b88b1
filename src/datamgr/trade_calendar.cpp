#include "datamgr/trade_calendar.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <chrono>
#include <cstdint>
#include <optional>
#include <string>

#include "base/counters.h"
#include "base/data_list.h"

namespace luadui {
namespace {

using std::chrono::days;
using std::chrono::sys_days;
using std::chrono::year_month_day;

constexpr int64_t kLongestRange = 20'000;
constexpr int64_t kLongestList = 200'000;  // numbers, also those that are in the set already
constexpr days kReach{36'525};
constexpr size_t kDateLength = 8;

// The number that `text` wholly is, digits only.
std::optional<int64_t> ReadDigits(std::string_view text) {
    int64_t number = 0;
    const char* const end = text.data() + text.size();
    if (text.empty() || text.front() == '-') return std::nullopt;
    const auto [rest, error] = std::from_chars(text.data(), end, number);
    if (error != std::errc() || rest != end) return std::nullopt;
    return number;
}

std::optional<sys_days> ReadDate(std::string_view text) {
    if (text.size() != kDateLength) return std::nullopt;
    const std::optional<int64_t> number = ReadDigits(text);
    if (!number) return std::nullopt;
    const auto digits = static_cast<int>(*number);
    const year_month_day date{std::chrono::year(digits / 10000),
                              std::chrono::month(static_cast<unsigned>(digits / 100 % 100)),
                              std::chrono::day(static_cast<unsigned>(digits % 100))};
    if (!date.ok()) return std::nullopt;
    return sys_days(date);
}

using DateText = std::array<char, kDateLength>;

// Nothing for years of other than four digits: their dates have no text of eight.
std::optional<DateText> WriteDate(sys_days day) {
    const year_month_day date(day);
    const int year = static_cast<int>(date.year());
    if (year < 1000 || year > 9999) return std::nullopt;
    unsigned number = static_cast<unsigned>(year) * 10000 + static_cast<unsigned>(date.month()) * 100 +
                      static_cast<unsigned>(date.day());
    DateText text;
    for (size_t i = text.size(); i-- > 0; number /= 10) text[i] = static_cast<char>('0' + number % 10);
    return text;
}

bool IsWeekend(sys_days day) {
    const std::chrono::weekday weekday(day);
    return weekday == std::chrono::Saturday || weekday == std::chrono::Sunday;
}

// What a list has yielded so far; it refuses to grow without end.
class HolidayList {
  public:
    bool IsFull() const { return m_left == 0; }
    void Insert(std::string_view date) {
        --m_left;
        m_dates.Insert(date);
    }
    void InsertRange(std::string_view from, std::string_view to) {
        const std::optional<int64_t> first = ReadDigits(from), last = ReadDigits(to);
        if (!first || !last) return CCounters::Add("holiday_range_refused");
        Insert(from);
        int64_t more = *last - *first;
        if (more >= kLongestRange) {
            CCounters::Add("holiday_range_cut");
            more = kLongestRange - 1;
        }
        for (int64_t i = 1; i <= more && !IsFull(); ++i) Insert(std::to_string(*first + i));
    }
    CDataSet& Dates() { return m_dates; }

  private:
    CDataSet m_dates;
    int64_t m_left = kLongestList;
};

}  // namespace

CDataSet ParseHolidays(std::string_view list) {
    HolidayList holidays;
    while (!list.empty() && !holidays.IsFull()) {
        const std::string_view item = list.substr(0, list.find(';'));
        list.remove_prefix(std::min(item.size() + 1, list.size()));
        const size_t dash = item.find('-');
        if (dash != std::string_view::npos) {
            holidays.InsertRange(item.substr(0, dash), item.substr(dash + 1));
        } else if (!item.empty()) {
            holidays.Insert(item);
        }
    }
    if (holidays.IsFull()) CCounters::Add("holiday_list_cut");
    return holidays.Dates();
}

bool IsTradeDate(std::string_view date, const CDataSet& holidays) {
    const std::optional<sys_days> day = ReadDate(date);
    return day && !IsWeekend(*day) && !holidays.Contains(date);
}

bool ShiftTradeDate(CUIData& data, const CDataSet& holidays) {
    const std::optional<sys_days> start = ReadDate(data.GetDataText("date"));
    if (!start || holidays.IsEmpty()) return false;
    const int64_t shift = data.GetDataLong("shiftday");
    if (shift == 0) return true;
    const uint64_t wanted = shift > 0 ? static_cast<uint64_t>(shift) : 0 - static_cast<uint64_t>(shift);
    const days step{shift > 0 ? 1 : -1};
    CDataList found;
    for (days away = step; found.Size() < wanted && std::chrono::abs(away) <= kReach; away += step) {
        if (IsWeekend(*start + away)) continue;
        const std::optional<DateText> text = WriteDate(*start + away);
        if (!text) continue;
        const std::string_view date(text->data(), text->size());
        if (!holidays.Contains(date)) found.Append(date);
    }
    if (found.Size() < wanted) CCounters::Add("trade_date_out_of_reach");
    data.SetData("tradeday", found);
    return true;
}

}  // namespace luadui
