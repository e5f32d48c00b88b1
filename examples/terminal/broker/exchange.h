// The exchange behind the simulated broker: takes orders, matches them and cancels them.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "broker/account_book.h"

namespace terminal {

// An order as the customer wants it.
struct Ticket {
    std::string code;
    Shares volume = 0;
    bool isSale = false;
    std::optional<Mills> price = {};  // none: the last price
    std::string localId = {};
    std::string instance = {};
    std::string task = {};
};

// What became different of an account; rows are indexes into its orders and deals.
struct AccountChange {
    const Account* account;
    std::vector<size_t> orders = {};
    std::vector<size_t> deals = {};
    bool positions = false;
};

// Matching goes in steps. In each one every open order, in the order of their arrival, trades with what suits its price:
//   - with earlier orders of other accounts, at their price: the best price first, then the earlier one;
//   - with the market, which buys and sells at the last price, but with an order no more than the market's volume in a
//     step.
// The last price is moved by SetPrice alone. Orders outside the day's limits are rejected in their first step.
//
// Threads: one at a time.
class Exchange {
  public:
    static constexpr size_t kMaxOrders = 10'000;  // of an account

    const AccountBook& Book() const { return m_book; }
    // In the order of their arrival. Valid until the next order.
    std::vector<const Order*> OpenOrders(std::string_view code) const;

    // Takes an order and holds money or shares for it; null, and nothing changed, when it is refused: `error` (UTF-8)
    // then says why. Valid until the next order.
    const Order* Accept(std::string_view fundToken, const Ticket& ticket, std::string& error);
    // Ends an open order.
    bool Cancel(std::string_view fundToken, std::string_view orderId, std::string& error);
    // Fills an order at once and whole, at the last price, as a deal made outside the market.
    bool Trade(std::string_view fundToken, std::string_view code, Shares volume, std::string& error);
    bool SetPrice(std::string_view code, Mills price);
    // 0: accounts only trade with each other.
    void SetMarketVolume(Shares volume) { m_marketVolume = volume; }
    // When it changed something, a further one may, too.
    void Step();

    // What changed since the last call.
    std::vector<AccountChange> TakeChanges();

  private:
    struct OpenOrder {
        Account* account;
        size_t index;
        Order& Get() const { return account->orders[index]; }
    };
    struct Offer {
        const OpenOrder* from = nullptr;  // null: the market
        Mills price = 0;
        Shares volume = 0;
    };

    Order* _accept(Account& account, const Security& security, const Ticket& ticket, std::string& error);
    void _match(const OpenOrder& taker);
    std::optional<Offer> _bestOffer(const OpenOrder& taker, const Security& security,
                                    Shares marketLeft) const;
    void _deal(const OpenOrder& side, const Security& security, Shares volume, Mills price);
    void _end(const OpenOrder& order, OrderState state);
    void _forgetEnded();
    AccountChange& _changeOf(const Account& account);
    void _noteOrder(const OpenOrder& order);

    AccountBook m_book;
    std::vector<OpenOrder> m_open;  // in the order of their arrival
    std::vector<AccountChange> m_changes;
    Shares m_marketVolume = 5'000;
    uint64_t m_orders = 0;
    uint64_t m_deals = 0;
};

}  // namespace terminal
