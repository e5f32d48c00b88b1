// The tables that the broker answers with and pushes, made anew each time; the columns are those of the library's lists.
#pragma once

#include "base/data_table.h"
#include "broker/account_book.h"

namespace terminal {

luadui::CDataTable FundTable(const Account& account);      // a row per currency
luadui::CDataTable PositionTable(const Account& account);  // a row per security
luadui::CDataTable OrderTable(const Account& account);     // a row per order of the day
luadui::CDataTable DealTable(const Account& account);      // a row per deal of the day
luadui::CDataTable CashFlowTable(const Account& account);  // what deals did to the money

// The last row of each, which is what is new after a trade.
luadui::CDataTable LastOrderTable(const Account& account);
luadui::CDataTable LastDealTable(const Account& account);

// A row per account.
luadui::CDataTable AccountTable(const Account& account);
luadui::CDataTable AccountListTable(const AccountBook& book);
luadui::CDataTable GroupListTable(const AccountBook& book);

}  // namespace terminal
