// What the simulated broker knows of its customers: accounts, their money and their positions.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "base/data_table.h"
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

struct Account {
    std::string fundToken;
    std::string customer;  // code page 936
    std::vector<Fund> funds;
    std::vector<Position> positions;
};

// Threads: one at a time.
class AccountBook {
  public:
    // Opens with three sample accounts: one with positions in several markets and currencies, one small, one without
    // positions.
    AccountBook();

    const std::vector<Account>& Accounts() const { return m_accounts; }
    // Null when there is no such account.
    const Account* Find(std::string_view fundToken) const;

    // Buys (volume above 0) or sells (below 0) a security that the account holds, at its last price. False, and nothing
    // changed, when the account, the position, the money or the shares are not there; `error` (UTF-8) then says so.
    bool Trade(std::string_view fundToken, std::string_view code, Shares volume, std::string& error);

  private:
    std::vector<Account> m_accounts;
};

// The tables that queries are answered with, made anew for each answer. One row per currency, or per position.
luadui::CDataTable FundTable(const Account& account);
luadui::CDataTable PositionTable(const Account& account);

}  // namespace terminal
