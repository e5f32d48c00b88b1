// What becomes of the quotes that the server answers and pushes.
//
// Records of kinds "hq" and "hq_zq": each quote under its key "code:market", "updatecode" (the set of these keys),
// "is_push" 1 in news and 0 in answers. In records made of answers and of pushes the quotes are attached to the list,
// which changes them at each tick, on the UI thread and one security as a whole at a time: a page that keeps a record
// sees later quotes in it. GetData takes a copy of a quote, which stays what it is; only such copies may go to another
// thread.
#pragma once

#include <span>
#include <string_view>

#include "datamgr/answer.h"

namespace luadui {

class CUIDataManager;

// "hq" and "hq_zq": the list of the kind takes the rows, and the asker gets the quotes that came. A failed answer, or
// one without a table, changes nothing; the asker gets it without quotes.
void HandleQuotes(CUIDataManager& manager, Answer& answer);
// "hq_quote": the same record for the asker alone; no list changes.
void HandleQuoteOnce(CUIDataManager& manager, Answer& answer);

// A push: the list of the kind takes the rows, which are told at the next tick. What failed is dropped, counted as
// "push_failed_not_merged"; without rows, as "push_without_table".
void MergeQuotes(CUIDataManager& manager, Push& push, std::span<const std::string_view> kinds);
// Tells what was pushed since the last time, in one record to all that want it. Nothing when nothing was.
void PublishQuotes(CUIDataManager& manager, std::string_view kind);

}  // namespace luadui
