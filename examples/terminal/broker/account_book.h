// What the simulated broker knows of its customers: accounts, their money and their positions.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "broker/money.h"

namespace terminal {

struct Fund {
    std::string currency;
    Cents available = 0;
    Cents frozen = 0;
};

struct Position {
    std::string code;
    std::string name;  // code page 936
    std::string market;
    Shares volume = 0;
    Shares available = 0;  // what may be sold today
    Mills cost = 0;
    Mills price = 0;
};

// Filled at once and whole, at the last price, so that it has one deal.
struct Order {
    std::string id;
    std::string dealId;
    std::string code;
    std::string name;  // code page 936
    std::string market;
    Shares volume = 0;  // below 0: sold
    Mills price = 0;
    Cents balance = 0;  // money available afterwards
};

struct Account {
    std::string id;
    std::string fundToken;
    std::string customer;  // code page 936
    std::vector<Fund> funds;
    std::vector<Position> positions;
    std::vector<Order> orders = {};  // of the day, in their order
};

// Accounts that the customer put together under a name.
struct AccountGroup {
    std::string id;
    std::string name;  // code page 936
    std::vector<std::string> accounts;
};

// Threads: one at a time.
class AccountBook {
  public:
    // Opens with three sample accounts: one with positions in several markets and currencies, one small, one without
    // positions.
    AccountBook();

    const std::vector<Account>& Accounts() const { return m_accounts; }
    const std::vector<AccountGroup>& Groups() const { return m_groups; }
    // Null when there is no such account.
    const Account* Find(std::string_view fundToken) const;

    // Buys (volume above 0) or sells (below 0) a security that the account holds, at its last price; the order is the last of
    // the account's then. False, and nothing changed, when the account, the position, the money or the shares are not
    // there; `error` (UTF-8) then says so.
    bool Trade(std::string_view fundToken, std::string_view code, Shares volume, std::string& error);

  private:
    std::vector<Account> m_accounts;
    std::vector<AccountGroup> m_groups;
    uint64_t m_orders = 0;
};

// The currency in which a market trades.
std::string_view CurrencyOf(std::string_view market);

}  // namespace terminal
