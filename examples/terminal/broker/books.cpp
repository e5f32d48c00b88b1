#include "broker/books.h"

#include "base/text.h"

namespace terminal {
namespace {

using luadui::CUIData;

void AddOrders(const Account& account, CUIData& totals) {
    Shares volume = 0, dealt = 0;
    int64_t open = 0;
    for (const Order& order : account.orders) {
        volume += order.volume;
        dealt += order.dealt;
        open += order.IsOpen() ? 1 : 0;
    }
    totals.SetData("orders", account.orders.size());
    totals.SetData("open_orders", open);
    totals.SetData("order_volume", volume);
    totals.SetData("dealt_volume", dealt);
}

void AddDeals(const Account& account, CUIData& totals) {
    Shares volume = 0;
    Cents turnover = 0;
    for (const Deal& deal : account.deals) {
        volume += deal.volume;
        turnover += deal.Amount();
    }
    totals.SetData("deals", account.deals.size());
    totals.SetData("deal_volume", volume);
    totals.SetData("turnover", turnover);
}

void AddMoney(const Account& account, CUIData& totals) {
    for (const Fund& fund : account.funds) {
        const Cents value = account.MarketValue(fund.currency);
        const auto add = [&](const char* name, Cents amount) {
            totals.SetData(fund.currency + "_" + name, amount);
        };
        add("available", fund.available);
        add("frozen", fund.frozen);
        add("market_value", value);
        add("assets", fund.available + fund.frozen + value);
        add("day_profit", account.DayProfit(fund));
    }
}

}  // namespace

CUIData TotalsOf(const Account& account) {
    CUIData totals;
    totals.SetData("fund_token", account.fundToken);
    totals.SetData("customer", luadui::GbkToUtf8(account.customer));
    totals.SetData("credit", account.isCredit);
    totals.SetData("positions", account.positions.size());
    AddOrders(account, totals);
    AddDeals(account, totals);
    AddMoney(account, totals);
    return totals;
}

std::vector<CUIData> HoldingsOf(const Account& account) {
    std::vector<CUIData> holdings;
    for (const Position& position : account.positions) {
        CUIData holding;
        holding.SetData("code", position.code);
        holding.SetData("volume", position.volume);
        holding.SetData("available", position.available);
        holding.SetData("market_value", MarketValue(position));
        holdings.push_back(holding);
    }
    return holdings;
}

}  // namespace terminal
