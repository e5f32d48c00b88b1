#include "broker/account.h"

#include <algorithm>

namespace terminal {
namespace {

template <class Items, class Test>
auto* FindIf(Items& items, Test test) {
    const auto found = std::find_if(items.begin(), items.end(), test);
    return found == items.end() ? nullptr : &*found;
}

}  // namespace

Fund* Account::FindFund(std::string_view currency) {
    return FindIf(funds, [&](const Fund& fund) { return fund.currency == currency; });
}

Position* Account::FindPosition(std::string_view code) {
    return FindIf(positions, [&](const Position& position) { return position.code == code; });
}

Shares Account::Sellable(std::string_view code) const {
    const auto* const position = FindIf(positions, [&](const Position& p) { return p.code == code; });
    return position ? position->available : 0;
}

bool Account::Reserve(Order& order, std::string& error) {
    if (order.isSale) {
        if (order.volume > Sellable(order.code)) {
            error = "not enough shares";
            return false;
        }
        FindPosition(order.code)->available -= order.volume;
        return true;
    }
    Fund* const fund = FindFund(CurrencyOf(order.market));
    const Cents amount = ValueOf(order.volume, order.price);
    if (!fund || amount > fund->available) {
        error = "not enough money";
        return false;
    }
    fund->available -= amount;
    fund->frozen += amount;
    order.frozen = amount;
    return true;
}

void Account::Settle(Order& order, const Security& security, Shares volume, Mills price,
                     const std::string& dealId) {
    Fund& fund = *FindFund(CurrencyOf(order.market));
    const Cents amount = ValueOf(volume, price);
    order.dealt += volume;
    order.turnover += amount;
    if (order.isSale) {
        fund.available += amount;
        _sell(order, volume, price);
    } else {
        // What is not needed of the money held for these shares is available again.
        const Cents held = order.frozen - ValueOf(order.Rest(), order.price);
        order.frozen -= held;
        fund.frozen -= held;
        fund.available += held - amount;
        _buy(order, security, volume, price);
    }
    if (order.Rest() == 0) End(order, OrderState::kDone);
    deals.push_back({.id = dealId,
                     .orderId = order.id,
                     .instance = order.instance,
                     .task = order.task,
                     .code = order.code,
                     .name = order.name,
                     .market = order.market,
                     .isSale = order.isSale,
                     .volume = volume,
                     .price = price,
                     .balance = fund.available});
}

// What was bought today is sold tomorrow.
void Account::_buy(const Order& order, const Security& security, Shares volume, Mills price) {
    Position* position = FindPosition(order.code);
    if (!position) {
        positions.push_back({.code = order.code,
                             .name = order.name,
                             .market = order.market,
                             .price = security.last,
                             .previousClose = security.previousClose});
        position = &positions.back();
    }
    const Mills paid = position->cost * position->volume + price * volume;
    position->volume += volume;
    position->cost = paid / position->volume;
    position->paid += ValueOf(volume, price);
}

void Account::_sell(const Order& order, Shares volume, Mills price) {
    Position& position = *FindPosition(order.code);
    position.volume -= volume;
    position.paid -= ValueOf(volume, price);
    if (position.volume > 0) return;
    FindFund(CurrencyOf(order.market))->closedProfit += terminal::DayProfit(position);
    std::erase_if(positions, [](const Position& p) { return p.volume == 0; });
}

void Account::End(Order& order, OrderState state) {
    order.state = state;
    if (order.isSale) {
        if (Position* const position = FindPosition(order.code)) position->available += order.Rest();
        return;
    }
    Fund& fund = *FindFund(CurrencyOf(order.market));
    fund.frozen -= order.frozen;
    fund.available += order.frozen;
    order.frozen = 0;
}

void Account::SetPrice(const Security& security) {
    if (Position* const position = FindPosition(security.code)) position->price = security.last;
}

Cents Account::MarketValue(std::string_view currency) const {
    Cents sum = 0;
    for (const Position& position : positions)
        if (CurrencyOf(position.market) == currency) sum += terminal::MarketValue(position);
    return sum;
}

Cents Account::DayProfit(const Fund& fund) const {
    Cents sum = fund.closedProfit;
    for (const Position& position : positions)
        if (CurrencyOf(position.market) == fund.currency) sum += terminal::DayProfit(position);
    return sum;
}

Cents MarketValue(const Position& position) { return ValueOf(position.volume, position.price); }

Cents DayProfit(const Position& position) {
    return MarketValue(position) - ValueOf(position.opening, position.previousClose) - position.paid;
}

}  // namespace terminal
