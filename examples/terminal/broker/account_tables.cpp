#include "broker/account_tables.h"

#include <numeric>
#include <string>
#include <vector>

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

std::vector<size_t> AllRows(size_t count) {
    std::vector<size_t> rows(count);
    std::iota(rows.begin(), rows.end(), size_t{0});
    return rows;
}

const char* SideOf(bool isSale) { return isSale ? "2" : "1"; }
std::string SideName(bool isSale) { return Gbk(isSale ? "卖出" : "买入"); }

std::string AveragePrice(const Order& order) {
    return MillsText(order.dealt > 0 ? (order.turnover * 10 + order.dealt / 2) / order.dealt : 0);
}

CDataTable AccountRows(std::span<const Account> accounts) {
    CDataTable table;
    AppendRow(table, {"account_id", "accountname", "trade_type", "fund_token"});
    for (const Account& account : accounts)
        AppendRow(table, {account.id, account.customer, account.isCredit ? "2" : "1", account.fundToken});
    return table;
}

std::string JsonArrayOf(const std::vector<std::string>& ids) {
    std::string text;
    for (const std::string& id : ids) text += (text.empty() ? "\"" : ",\"") + id + "\"";
    return "[" + text + "]";
}

}  // namespace

std::string StatusOf(const Order& order) {
    switch (order.state) {
        case OrderState::kDone:
            return Gbk("全部成交");
        case OrderState::kRejected:
            return Gbk("废单");
        case OrderState::kCancelled:
            return Gbk(order.dealt > 0 ? "部分撤单" : "全部撤单");
        default:
            return Gbk(order.dealt > 0 ? "部分成交" : "未成交");
    }
}

std::string StatusTextOf(const Order& order) {
    return order.remark.empty() ? StatusOf(order) : StatusOf(order) + Gbk("：") + order.remark;
}

CDataTable FundTable(const Account& account) {
    CDataTable table;
    AppendRow(table, {"Currency", "TotalAssets", "AvailableValue", "Inst_AvailableValue", "FrozenValue",
                      "MarketValue", "DayProfit", "FinEnableQuota"});
    for (const Fund& fund : account.funds) {
        const Cents value = account.MarketValue(fund.currency);
        const std::string available = CentsText(fund.available);
        AppendRow(table, {fund.currency, CentsText(fund.available + fund.frozen + value), available,
                          available, CentsText(fund.frozen), CentsText(value),
                          CentsText(account.DayProfit(fund)), account.isCredit ? available : ""});
    }
    return table;
}

CDataTable PositionTable(const Account& account) {
    CDataTable table;
    AppendRow(table, {"SecurityID", "SecurityName", "Market", "Currency", "StockBalance",
                      "AvailableStockBalance", "Inst_AvailableStockBalance", "CostPrice", "LastPrice",
                      "MarketValue", "FloatProfit", "DayProfit", "fund_token"});
    for (const Position& position : account.positions) {
        const Cents value = MarketValue(position);
        const std::string available = std::to_string(position.available);
        AppendRow(table, {position.code, position.name, position.market, CurrencyOf(position.market),
                          std::to_string(position.volume), available, available, MillsText(position.cost),
                          MillsText(position.price), CentsText(value),
                          CentsText(value - ValueOf(position.volume, position.cost)),
                          CentsText(DayProfit(position)), account.fundToken});
    }
    return table;
}

CDataTable OrderTable(const Account& account, std::span<const size_t> rows) {
    CDataTable table;
    AppendRow(table,
              {"OrderID", "LocalID", "SecurityID", "SecurityName", "Market", "Side", "SideName", "OrderQty",
               "OrderPrice", "DealVolume", "AvgPx", "OrderStatus", "OrderStatusMsg", "InstanceID", "TaskID"});
    for (const size_t row : rows) {
        const Order& order = account.orders[row];
        AppendRow(table, {order.id, order.localId, order.code, order.name, order.market, SideOf(order.isSale),
                          SideName(order.isSale), std::to_string(order.volume), MillsText(order.price),
                          std::to_string(order.dealt), AveragePrice(order), StatusOf(order),
                          StatusTextOf(order), order.instance, order.task, account.fundToken});
    }
    return table;
}

CDataTable DealTable(const Account& account, std::span<const size_t> rows) {
    CDataTable table;
    AppendRow(table, {"ExecID", "OrderID", "SecurityID", "SecurityName", "Market", "Side", "SideName",
                      "TradeVolume", "TradePrice", "BusinessAmount", "InstanceID", "TaskID", "fund_token"});
    for (const size_t row : rows) {
        const Deal& deal = account.deals[row];
        AppendRow(table, {deal.id, deal.orderId, deal.code, deal.name, deal.market, SideOf(deal.isSale),
                          SideName(deal.isSale), std::to_string(deal.volume), MillsText(deal.price),
                          CentsText(deal.Amount()), deal.instance, deal.task, account.fundToken});
    }
    return table;
}

CDataTable OrderTable(const Account& account) { return OrderTable(account, AllRows(account.orders.size())); }
CDataTable DealTable(const Account& account) { return DealTable(account, AllRows(account.deals.size())); }

CDataTable CashFlowTable(const Account& account) {
    CDataTable table;
    AppendRow(table, {"Currency", "BusinessName", "SecurityID", "Amount", "Balance"});
    for (const Deal& deal : account.deals)
        AppendRow(table, {CurrencyOf(deal.market), SideName(deal.isSale), deal.code,
                          CentsText(deal.isSale ? deal.Amount() : -deal.Amount()), CentsText(deal.balance)});
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

CDataTable RiskTable(const Account& account, const Security& security, Shares volume) {
    CDataTable table;
    AppendRow(table, {"LocalID", "account", "SecurityID", "MarketID", "Side", "OrderQty", "OrderPrice"});
    AppendRow(table, {"R" + security.code, account.id, security.code, security.market, volume < 0 ? "1" : "0",
                      std::to_string(volume < 0 ? -volume : volume), MillsText(security.last)});
    return table;
}

CDataTable PriceSpreadTable(const AccountBook&) {
    CDataTable table;
    AppendRow(table, {"Market", "StockType", "GGT_QDJG", "GGT_ZDJG", "GGT_JCZ"});
    struct Band {
        const char* begin;
        const char* end;
        const char* step;
    };
    for (const Band& band : {Band{"0.01", "0.25", "0.001"},
                             {"0.25", "0.50", "0.005"},
                             {"0.50", "10.00", "0.010"},
                             {"10.00", "20.00", "0.020"},
                             {"20.00", "100.00", "0.050"},
                             {"100.00", "200.00", "0.100"},
                             {"200.00", "500.00", "0.200"},
                             {"500.00", "1000.00", "0.500"},
                             {"1000.00", "2000.00", "1.000"},
                             {"2000.00", "5000.00", "2.000"},
                             {"5000.00", "9995.00", "5.000"}})
        AppendRow(table, {"E", "0", band.begin, band.end, band.step});
    return table;
}

CDataTable RateTable(const AccountBook&) {
    CDataTable table;
    AppendRow(table, {"Market", "Currency", "BuyRate", "SellRate", "MiddleRate"});
    for (const char* market : {"76", "156"}) AppendRow(table, {market, "HKD", "0.9012", "0.9378", "0.9195"});
    return table;
}

}  // namespace terminal
