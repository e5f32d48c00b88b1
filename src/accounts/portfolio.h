// Portfolio: a part of an account with a fund token of its own.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "base/data_list.h"
#include "base/data_table.h"
#include "base/json_object.h"

namespace luadui {

// Texts are code page 936.
struct Portfolio {
    std::string id;
    std::string name;
    std::string code;
    std::string remarks;
    std::string isDefault;  // "1": the account's default portfolio
    std::string fundToken;

    bool IsDefault() const { return isDefault == "1"; }
    // {"portfolioid", "portfolioname", "portfoliocode", "portfolioremarks", "is_default", "fund_token"}
    CJsonObject ToJson() const;

    bool operator==(const Portfolio&) const = default;
};

struct PortfolioField {
    std::string_view key;     // in our JSON
    std::string_view column;  // in the server's tables
    std::string Portfolio::*text;
};

// In the order of the JSON.
inline constexpr PortfolioField kPortfolioFields[] = {
    {"portfolioid", "portfolio_id", &Portfolio::id},
    {"portfolioname", "portfolio_name", &Portfolio::name},
    {"portfoliocode", "portfolio_code", &Portfolio::code},
    {"portfolioremarks", "remarks", &Portfolio::remarks},
    {"is_default", "is_default", &Portfolio::isDefault},
    {"fund_token", "fund_token", &Portfolio::fundToken},
};

// The portfolios of an account, in ascending order of their ids (as texts). Threads: one at a time.
class Portfolios {
  public:
    // Adds the portfolio, or replaces the one with its id. One without an id is not taken ("account_portfolio_refused").
    // A default portfolio takes the place of the one before.
    void Put(Portfolio portfolio);
    void Clear() { m_items.clear(); }

    // Valid until the next change, as all pointers here.
    const Portfolio* Find(std::string_view id) const;
    // The default one, else the first; null when there is none.
    const Portfolio* Default() const;
    const std::vector<Portfolio>& All() const { return m_items; }
    bool IsEmpty() const { return m_items.empty(); }
    CDataList ToJson() const;

    bool operator==(const Portfolios&) const = default;

  private:
    std::vector<Portfolio> m_items;
};

// Reads JSON array text with the server's names ("portfolio_id", "portfolio_name", "portfolio_code", "remarks",
// "is_default", "fund_token") into `out`, replacing what it holds; numbers are taken as texts. Empty text is an empty array.
// False when the text, or a part of it, could not be read ("account_portfolios_unreadable"): `out` then has what could.
bool ReadPortfolios(std::string_view text, Portfolios& out);
// A row of a table with columns of the same names; missing ones read as empty.
Portfolio PortfolioOfRow(const CDataTable& table, int row);

}  // namespace luadui
