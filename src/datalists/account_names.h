// AccountNames: how the user knows the accounts that rows name by their fund token.
#pragma once

#include <string>
#include <string_view>

#include "base/data_table.h"
#include "base/text_map.h"
#include "base/ui_data.h"

namespace luadui {

struct AccountName {
    std::string name, id, mark;
    std::string portfolio, product;  // of a portfolio's token: the names of both

    // The name of the account or, if it has none, its id.
    const std::string& Shown() const { return name.empty() ? id : name; }
};

// Made of a query's answer ("account", "account_xy"). A portfolio has a token of its own, and is listed in its account's
// row ("portfolios", a JSON array). Of rows with the same token the first counts.
//
// Threads: those of a value.
class AccountNames {
  public:
    AccountNames() = default;
    // The table is under `kind`, as it is published, or under "Table".
    AccountNames(const CUIData& accounts, const char* kind);

    // Null when the account is not known. Valid as long as this object.
    const AccountName* Find(std::string_view token) const;

  private:
    void _addPortfolios(const AccountName& account, std::string_view json);

    TextMap<AccountName> m_names;
};

}  // namespace luadui
