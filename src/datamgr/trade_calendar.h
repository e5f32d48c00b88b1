// Which days the exchanges are open. Dates are texts of eight digits, YYYYMMDD; Saturdays and Sundays are
// closed, and so is every date in the set of holidays.
//
// Threads: any. Nothing here runs long, whatever text or numbers come in.
#pragma once

#include <string_view>

#include "base/data_set.h"
#include "base/ui_data.h"

namespace luadui {

// The dates of a holiday list as the server sends it: items separated by ';', each a date, taken as it
// stands, or a range "A-B" of decimal numbers: A, then every number from A+1 to B. That is counting, not the
// calendar, so a range over the end of a month also yields numbers that are no dates, which nobody looks up.
// A reversed range is its A.
//
// Dropped are empty items and ranges that are not numeric (counted as "holiday_range_refused"). Ranges end
// after 20,000 numbers ("holiday_range_cut": enough for one over the end of a year), the list after 200,000
// ("holiday_list_cut").
CDataSet ParseHolidays(std::string_view list);

// True when `date` is a day of the calendar on which the exchanges are open; false for any other text.
bool IsTradeDate(std::string_view date, const CDataSet& holidays);

// Collects the trade dates before or after a day. Reads "date" (not counted itself) and the integer
// "shiftday": its size is the number of trade dates wanted, its sign the direction. Puts them, in the order
// found, into the list "tradeday"; a shift of 0 stores nothing. The search ends a hundred years away with
// what was found ("trade_date_out_of_reach").
//
// False, and nothing changed, when there are no holidays (the calendar has not arrived) or "date" is no date.
bool ShiftTradeDate(CUIData& data, const CDataSet& holidays);

}  // namespace luadui
