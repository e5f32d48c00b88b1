// An account of the simulated broker: its money, its positions, and the orders and deals of the day.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "broker/money.h"
#include "broker/securities.h"

namespace terminal {

struct Fund {
    std::string currency;
    Cents available = 0;
    Cents frozen = 0;        // for buy orders that are open
    Cents closedProfit = 0;  // of the day, from positions that are gone
};

struct Position {
    std::string code;
    std::string name;  // code page 936
    std::string market;
    Shares volume = 0;
    Shares available = 0;  // what may be sold today
    Mills cost = 0;
    Mills price = 0;
    Mills previousClose = 0;
    Shares opening = 0;  // volume when the day began
    Cents paid = 0;      // today, for buys less sales
};

enum class OrderState {
    kOpen,       // with deals or without
    kDone,       // filled whole
    kCancelled,  // before it was
    kRejected,   // by the exchange
};

struct Order {
    std::string id;
    std::string localId;   // the client's own number
    std::string instance;  // of a basket; empty for others
    std::string task;
    std::string code;
    std::string name;  // code page 936
    std::string market;
    bool isSale = false;
    Shares volume = 0;
    Mills price = 0;
    OrderState state = OrderState::kOpen;
    std::string remark = {};  // why it was rejected, code page 936
    Shares dealt = 0;
    Cents turnover = 0;  // of its deals
    Cents frozen = 0;    // money held for the rest of it

    Shares Rest() const { return volume - dealt; }
    bool IsOpen() const { return state == OrderState::kOpen; }
};

struct Deal {
    std::string id;
    std::string orderId;
    std::string instance;
    std::string task;
    std::string code;
    std::string name;  // code page 936
    std::string market;
    bool isSale = false;
    Shares volume = 0;
    Mills price = 0;
    Cents balance = 0;  // money available afterwards

    Cents Amount() const { return ValueOf(volume, price); }
};

// Money of the account is moved by these operations only: what is available, frozen and spent adds up to the cent at
// any time.
struct Account {
    std::string id;
    std::string fundToken;
    std::string customer;   // code page 936
    bool isCredit = false;  // trades on credit: its tables are those of credit accounts
    std::vector<Fund> funds;
    std::vector<Position> positions;
    std::vector<Order> orders = {};  // of the day, in their order
    std::vector<Deal> deals = {};

    Fund* FindFund(std::string_view currency);
    Position* FindPosition(std::string_view code);
    Shares Sellable(std::string_view code) const;

    // Holds money or shares for the whole order. False, and nothing changed, when there is too little; `error` (UTF-8)
    // then says of what.
    bool Reserve(Order& order, std::string& error);
    // A deal of an open order that was reserved for: shares against money, at no worse than the order's price.
    void Settle(Order& order, const Security& security, Shares volume, Mills price,
                const std::string& dealId);
    // Ends the order and gives back what is held for the rest of it.
    void End(Order& order, OrderState state);
    void SetPrice(const Security& security);

    Cents MarketValue(std::string_view currency) const;
    Cents DayProfit(const Fund& fund) const;

  private:
    void _buy(const Order& order, const Security& security, Shares volume, Mills price);
    void _sell(const Order& order, Shares volume, Mills price);
};

Cents MarketValue(const Position& position);
// Against the previous close, or the price paid or got today.
Cents DayProfit(const Position& position);

}  // namespace terminal
