#include "datamgr/trade_calendar.h"

#include <gmock/gmock.h>

#include <chrono>
#include <cstdint>
#include <random>
#include <string>
#include <vector>

#include "base/counters.h"
#include "base/data_list.h"

namespace luadui {
namespace {

using testing::ElementsAreArray;

std::vector<std::string> Texts(const CDataSet& set) { return {set.begin(), set.end()}; }

CUIData Shifted(std::string_view date, int64_t shift, const CDataSet& holidays, bool answer = true) {
    CUIData data;
    data.SetData("date", date);
    data.SetData("shiftday", shift);
    EXPECT_EQ(ShiftTradeDate(data, holidays), answer) << date << ' ' << shift;
    return data;
}

std::vector<std::string> TradeDays(const CUIData& data) {
    CDataList list;
    EXPECT_TRUE(data.GetData("tradeday", list));
    std::vector<std::string> days;
    for (const auto& [key, day] : list) days.emplace_back(day.AsText());
    return days;
}

CDataSet SetOf(std::initializer_list<const char*> texts) {
    CDataSet set;
    for (const char* text : texts) set.Insert(text);
    return set;
}

TEST(Holidays, ListsAndRanges) {
    const struct {
        const char* list;
        std::vector<std::string> dates;
        const char* counter = nullptr;
    } kCases[] = {
        {"", {}},
        {"20240105", {"20240105"}},
        {"20240105;", {"20240105"}},
        {";;20240105;;20240101;20240105", {"20240101", "20240105"}},
        {"20240101-20240103", {"20240101", "20240102", "20240103"}},
        {"20231230-20231233;20240101", {"20231230", "20231231", "20231232", "20231233", "20240101"}},
        {"20240103-20240101", {"20240103"}},
        {"20240103-20240103", {"20240103"}},
        {"0099-101", {"0099", "100", "101"}},
        {" 2024;x", {" 2024", "x"}},
        {"x-20240103;1", {"1"}, "holiday_range_refused"},
        {"20240101-", {}, "holiday_range_refused"},
        {"-20240101", {}, "holiday_range_refused"},
        {"--1", {}, "holiday_range_refused"},
        {"1--2", {}, "holiday_range_refused"},
        {"1- 2", {}, "holiday_range_refused"},
        {"1-2-3", {}, "holiday_range_refused"},
        {"1-99999999999999999999", {}, "holiday_range_refused"},
        {"9223372036854775806-9223372036854775807", {"9223372036854775806", "9223372036854775807"}},
    };
    for (const auto& [list, dates, counter] : kCases) {
        const uint64_t before = counter ? CCounters::Get(counter) : 0;
        EXPECT_THAT(Texts(ParseHolidays(list)), ElementsAreArray(dates)) << list;
        EXPECT_EQ(counter ? CCounters::Get(counter) : 1, before + 1) << list;
    }
}

TEST(Holidays, OverTheEndOfAYearNothingIsLost) {
    const CDataSet dates = ParseHolidays("20231230-20240102");
    EXPECT_EQ(dates.Size(), 20240102 - 20231230 + 1);
    EXPECT_TRUE(dates.Contains("20240102"));
}

TEST(Holidays, EnormousRangesAreCut) {
    const uint64_t ranges = CCounters::Get("holiday_range_cut"), lists = CCounters::Get("holiday_list_cut");
    const CDataSet dates = ParseHolidays("20240101-9223372036854775807;20990101");
    EXPECT_EQ(dates.Size(), 20'001);
    EXPECT_TRUE(dates.Contains("20990101"));
    EXPECT_EQ(CCounters::Get("holiday_range_cut"), ranges + 1);
    std::string repeated = "5;";
    for (int i = 0; i < 100'000; ++i) repeated += "1-99999;";
    EXPECT_EQ(ParseHolidays(repeated).Size(), 20'000);
    EXPECT_EQ(CCounters::Get("holiday_list_cut"), lists + 1);
}

// A calendar counted by hand from a known Sunday: its days in order, and which of them are weekdays.
struct Day {
    std::string text;
    bool weekday;
};

std::vector<Day> CountedDays() {
    const int kLengths[] = {31, 28, 31, 30, 31, 30, 31, 31, 30, 31, 30, 31};
    std::vector<Day> days;
    int weekday = 0;  // 1899-01-01 was a Sunday
    for (int year = 1899; year <= 2105; ++year) {
        const bool leap = year % 4 == 0 && (year % 100 != 0 || year % 400 == 0);
        for (int month = 1; month <= 12; ++month) {
            for (int day = 1; day <= kLengths[month - 1] + (leap && month == 2); ++day) {
                days.push_back(
                    {std::to_string(year * 10000 + month * 100 + day), weekday != 0 && weekday != 6});
                weekday = (weekday + 1) % 7;
            }
        }
    }
    return days;
}

TEST(TradeCalendar, AgreesWithACountedCalendar) {
    std::mt19937 random(20260119);
    const std::vector<Day> days = CountedDays();
    std::string list;
    std::vector<bool> open;
    for (const Day& day : days) {
        const bool holiday = random() % 20 == 0;
        if (holiday) list += (list.empty() ? "" : ";") + day.text;
        open.push_back(day.weekday && !holiday);
    }
    const CDataSet holidays = ParseHolidays(list);
    for (size_t i = 0; i < days.size(); ++i)
        ASSERT_EQ(IsTradeDate(days[i].text, holidays), open[i]) << days[i].text;

    for (int round = 0; round < 2'000; ++round) {
        const size_t start = 15'000 + random() % (days.size() - 30'000);
        const int shift = static_cast<int>(random() % (round % 10 ? 41 : 8001)) - (round % 10 ? 20 : 4000);
        if (shift == 0) continue;
        std::vector<std::string> expected;
        for (size_t i = start; expected.size() < static_cast<size_t>(std::abs(shift));) {
            i = shift > 0 ? i + 1 : i - 1;
            if (open[i]) expected.push_back(days[i].text);
        }
        ASSERT_EQ(TradeDays(Shifted(days[start].text, shift, holidays)), expected)
            << days[start].text << ' ' << shift;
    }
}

TEST(TradeCalendar, WhatIsNoDateIsClosed) {
    const CDataSet holidays = SetOf({"20240101"});
    EXPECT_TRUE(IsTradeDate("20240102", holidays));
    EXPECT_TRUE(IsTradeDate("20240229", CDataSet()));
    for (const std::string& date :
         {std::string(), std::string("2024010"), std::string("202401020"), std::string("20230229"),
          std::string("20240431"), std::string("20240002"), std::string("20241302"), std::string("20240100"),
          std::string("2024-1-2"), std::string("-2024102"), std::string("+2024102"), std::string(" 2024102"),
          std::string("2024010\0", 8), std::string("\xff\xfe\xd6\xf7\xb4\xb0\xbf\xda"),
          std::string("99999999"), std::string("00000000")}) {
        EXPECT_FALSE(IsTradeDate(date, holidays)) << date;
        EXPECT_EQ(Shifted(date, 1, holidays, false).Size(), 2) << date;
    }
}

TEST(TradeCalendar, ShiftsOverWeekendsAndHolidays) {
    const CDataSet holidays = SetOf({"20240101", "20240108"});
    const struct {
        const char* date;
        int64_t shift;
        std::vector<std::string> days;
    } kCases[] = {
        {"20240115", -1, {"20240112"}},              // Monday to Friday
        {"20240112", 1, {"20240115"}},               // Friday to Monday
        {"20240105", 1, {"20240109"}},               // to the Tuesday after a closed Monday
        {"20240106", -2, {"20240105", "20240104"}},  // from a Saturday
        {"20240101", -1, {"20231229"}},              // from a holiday
        {"20240228", 2, {"20240229", "20240301"}},
    };
    for (const auto& [date, shift, days] : kCases)
        EXPECT_EQ(TradeDays(Shifted(date, shift, holidays)), days) << date;
    EXPECT_FALSE(Shifted("20240115", 0, holidays).Has("tradeday"));
    EXPECT_FALSE(Shifted("20240115", 1, CDataSet(), false).Has("tradeday"));
}

TEST(TradeCalendar, SearchesEndWithWhatWasFound) {
    const auto began = std::chrono::steady_clock::now();
    const CDataSet one = SetOf({"20240101"});
    std::string years = "1";
    for (int year = 2001; year <= 2009; ++year)
        years += ';' + std::to_string(year * 10000 + 101) + '-' + std::to_string(year * 10000 + 1231);
    const CDataSet closed = ParseHolidays(years);
    const uint64_t before = CCounters::Get("trade_date_out_of_reach");
    // A hundred years hold some 26,000 weekdays.
    for (const int64_t shift : {int64_t{30'000}, INT64_MAX, int64_t{-30'000}, INT64_MIN})
        EXPECT_NEAR(TradeDays(Shifted("20240115", shift, one)).size(), 26'089, 3) << shift;
    EXPECT_EQ(TradeDays(Shifted("20001229", 1, closed)).front(), "20100101");
    EXPECT_EQ(TradeDays(Shifted("99991229", 9, one)).size(), 2);  // to the last day that has eight digits
    EXPECT_EQ(TradeDays(Shifted("10000103", -9, one)).size(), 2);
    EXPECT_EQ(TradeDays(Shifted("00010101", 5, one)).size(), 0);
    EXPECT_EQ(CCounters::Get("trade_date_out_of_reach"), before + 7);
    EXPECT_LT(std::chrono::steady_clock::now() - began, std::chrono::seconds(10));
}

}  // namespace
}  // namespace luadui
