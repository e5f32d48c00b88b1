// The tables that the broker answers with and pushes, made anew each time; the columns are those of the library's lists.
#pragma once

#include <span>
#include <string_view>

#include "base/data_table.h"
#include "base/json_object.h"
#include "broker/account_book.h"

namespace terminal {

// A row per currency. A credit account may buy on credit for as much as it has available.
luadui::CDataTable FundTable(const Account& account);
luadui::CDataTable PositionTable(const Account& account);  // a row per security
luadui::CDataTable OrderTable(const Account& account);     // a row per order of the day
luadui::CDataTable DealTable(const Account& account);      // a row per deal of the day
luadui::CDataTable CashFlowTable(const Account& account);  // what deals did to the money

// Those rows only; `rows` are indexes.
luadui::CDataTable OrderTable(const Account& account, std::span<const size_t> rows);
luadui::CDataTable DealTable(const Account& account, std::span<const size_t> rows);

// A row per account.
luadui::CDataTable AccountTable(const Account& account);
luadui::CDataTable AccountListTable(const AccountBook& book);
luadui::CDataTable GroupListTable(const AccountBook& book);

// What became of an order, as every table says it (code page 936): "未成交", "部分成交", "全部成交", "部分撤单",
// "全部撤单" or "废单".
std::string StatusOf(const Order& order);
// The same with the reason.
std::string StatusTextOf(const Order& order);

// The orders and the deals of a basket task, over all accounts, as a table of the orders and as JSON.
struct BasketDetail {
    luadui::CDataTable orders;
    luadui::CJsonObject json;  // "PendingOrderArray" (orders) and "DealOrderArray" (deals)
};
BasketDetail BasketDetailOf(const AccountBook& book, std::string_view instance, std::string_view task);

// An order that risk control objects to.
luadui::CDataTable RiskTable(const Account& account, const Security& security, Shares volume);

// Stock Connect: steps of prices by band, and what a Hong Kong dollar costs.
luadui::CDataTable PriceSpreadTable(const AccountBook& book);
luadui::CDataTable RateTable(const AccountBook& book);

}  // namespace terminal
