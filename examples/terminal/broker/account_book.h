// What the simulated broker knows: its customers' accounts and the securities that they trade.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "broker/account.h"
#include "broker/securities.h"

namespace terminal {

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
    // positions; and the credit account of the first customer.
    AccountBook();

    const std::vector<Account>& Accounts() const { return m_accounts; }
    const std::vector<AccountGroup>& Groups() const { return m_groups; }
    const std::vector<Security>& Securities() const { return m_securities; }
    // Null when there is no such account or security; both stay where they are.
    const Account* Find(std::string_view fundToken) const;
    Account* Find(std::string_view fundToken);
    const Security* FindSecurity(std::string_view code) const;
    // The new last price, to all who hold it. False when there is no such security.
    bool SetPrice(std::string_view code, Mills price);

  private:
    void _hold(Account& account, std::string_view code, Shares volume, Mills cost) const;

    std::vector<Security> m_securities;
    std::vector<Account> m_accounts;
    std::vector<AccountGroup> m_groups;
};

}  // namespace terminal
