#include "broker/account_tables.h"

#include <cstdlib>
#include <span>

#include "base/text.h"

namespace terminal {
namespace {

using luadui::CDataTable;
using luadui::Gbk;

// The first row names the columns.
void AppendRow(CDataTable& table, std::initializer_list<std::string_view> cells) {
    if (table.GetColumnNumber() == 0) {
        for (const std::string_view name : cells) table.AddColumn(name);
        return;
    }
    const int row = table.AppendRow();
    int col = 0;
    for (const std::string_view cell : cells) table.SetItemText(row, col++, cell);
}

Cents MarketValue(const Position& position) { return ValueOf(position.volume, position.price); }

Cents MarketValue(const Account& account, std::string_view currency) {
    Cents sum = 0;
    for (const Position& position : account.positions)
        if (CurrencyOf(position.market) == currency) sum += MarketValue(position);
    return sum;
}

std::span<const Order> LastOf(const std::vector<Order>& orders) {
    return std::span(orders).last(orders.empty() ? 0 : 1);
}

bool IsSale(const Order& order) { return order.volume < 0; }
std::string VolumeText(const Order& order) { return std::to_string(std::abs(order.volume)); }
std::string SideName(const Order& order) { return Gbk(IsSale(order) ? "卖出" : "买入"); }

CDataTable OrderRows(std::span<const Order> orders) {
    CDataTable table;
    AppendRow(table, {"OrderID", "SecurityID", "SecurityName", "Market", "Side", "SideName", "OrderQty",
                      "OrderPrice", "TradeVolume", "OrderStatus", "OrderStatusMsg"});
    for (const Order& order : orders)
        AppendRow(table,
                  {order.id, order.code, order.name, order.market, IsSale(order) ? "2" : "1", SideName(order),
                   VolumeText(order), MillsText(order.price), VolumeText(order), "8", Gbk("已成")});
    return table;
}

CDataTable DealRows(std::span<const Order> orders) {
    CDataTable table;
    AppendRow(table, {"ExecID", "OrderID", "SecurityID", "SecurityName", "Market", "SideName", "TradeVolume",
                      "TradePrice", "BusinessAmount"});
    for (const Order& order : orders)
        AppendRow(table, {order.dealId, order.id, order.code, order.name, order.market, SideName(order),
                          VolumeText(order), MillsText(order.price),
                          CentsText(ValueOf(std::abs(order.volume), order.price))});
    return table;
}

CDataTable AccountRows(std::span<const Account> accounts) {
    CDataTable table;
    AppendRow(table, {"account_id", "accountname", "trade_type", "fund_token"});
    for (const Account& account : accounts)
        AppendRow(table, {account.id, account.customer, "1", account.fundToken});
    return table;
}

std::string JsonArrayOf(const std::vector<std::string>& ids) {
    std::string text;
    for (const std::string& id : ids) text += (text.empty() ? "\"" : ",\"") + id + "\"";
    return "[" + text + "]";
}

}  // namespace

CDataTable FundTable(const Account& account) {
    CDataTable table;
    AppendRow(table, {"Currency", "TotalAssets", "AvailableValue", "FrozenValue", "MarketValue"});
    for (const Fund& fund : account.funds) {
        const Cents value = MarketValue(account, fund.currency);
        AppendRow(table, {fund.currency, CentsText(fund.available + fund.frozen + value),
                          CentsText(fund.available), CentsText(fund.frozen), CentsText(value)});
    }
    return table;
}

CDataTable PositionTable(const Account& account) {
    CDataTable table;
    AppendRow(table, {"SecurityID", "SecurityName", "Market", "StockBalance", "AvailableStockBalance",
                      "CostPrice", "LastPrice", "MarketValue", "FloatProfit"});
    for (const Position& position : account.positions) {
        const Cents value = MarketValue(position);
        AppendRow(table,
                  {position.code, position.name, position.market, std::to_string(position.volume),
                   std::to_string(position.available), MillsText(position.cost), MillsText(position.price),
                   CentsText(value), CentsText(value - ValueOf(position.volume, position.cost))});
    }
    return table;
}

CDataTable OrderTable(const Account& account) { return OrderRows(account.orders); }
CDataTable DealTable(const Account& account) { return DealRows(account.orders); }
CDataTable LastOrderTable(const Account& account) { return OrderRows(LastOf(account.orders)); }
CDataTable LastDealTable(const Account& account) { return DealRows(LastOf(account.orders)); }

CDataTable CashFlowTable(const Account& account) {
    CDataTable table;
    AppendRow(table, {"Currency", "BusinessName", "SecurityID", "Amount", "Balance"});
    for (const Order& order : account.orders)
        AppendRow(table, {CurrencyOf(order.market), SideName(order), order.code,
                          CentsText(-ValueOf(order.volume, order.price)), CentsText(order.balance)});
    return table;
}

CDataTable AccountTable(const Account& account) { return AccountRows({&account, 1}); }
CDataTable AccountListTable(const AccountBook& book) { return AccountRows(book.Accounts()); }

CDataTable GroupListTable(const AccountBook& book) {
    CDataTable table;
    AppendRow(table, {"groupid", "groupname", "account"});
    for (const AccountGroup& group : book.Groups())
        AppendRow(table, {group.id, group.name, JsonArrayOf(group.accounts)});
    return table;
}

}  // namespace terminal
