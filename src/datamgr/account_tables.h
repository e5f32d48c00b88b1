// Tables of several accounts in one, and the news that an account's table changed.
#pragma once

#include <map>
#include <string>

#include "base/data_table.h"
#include "base/ui_data.h"
#include "datalists/token_table_list.h"

namespace luadui {

using AccountTables = std::map<std::string, CDataTable, std::less<>>;

// The rows of each account, which the column "fund_token" names; rows without one are of the account `token`, or, when
// that is empty, counted as "row_without_account".
AccountTables SplitByAccount(const CDataTable& table, const std::string& token);

// Whether an answer is still to come that brings the account's table into the list of queries of that kind: to one of
// these, or to one for all accounts.
bool IsTableUnderWay(std::string_view query, std::string_view token);

// Whether lists of positions follow records of that kind, to the account that these name as "update_user".
inline bool IsFund(std::string_view kind) { return kind == "fund" || kind == "credit_fund"; }

// The record of the list's kind that tells all who want it what the account's table is now; empty when the list
// does not hold it.
CUIData MakeTableNews(const CTokenTableList& list, const std::string& token);

}  // namespace luadui
