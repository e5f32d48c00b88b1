// The rows of account data lists, without money: the accounts as the server names them, or their portfolios.
#pragma once

#include <array>
#include <string>
#include <string_view>
#include <vector>

#include "base/data_table.h"

namespace luadui {

// The columns that every row has; the server's others follow.
enum AccountColumn {
    kAccountKey,
    kAccountId,
    kAccountName,
    kAccountMark,
    kNickname,
    kQsId,
    kQsName,
    kTradeType,
    kCanUse,
    kAccountMsg,
    kFundToken,
    kPortfolioId,
    kPortfolioName,
    kFirstMoneyColumn,  // those of MoneyCells, in its order
    kAccountColumns = kFirstMoneyColumn + 6
};
inline constexpr std::array<std::string_view, kAccountColumns> kAccountColumnNames = {
    "accountkey",  "accountid",      "accountname", "accountmark", "nickname",    "qsid",          "qsname",
    "tradetype",   "canuse",         "AccountMsg",  "fund_token",  "portfolioid", "portfolioname", "Currency",
    "TotalAssets", "AvailableValue", "MarketValue", "FrozenValue", "DayProfit"};

// The column of a server's account table; -1 when it has none under any of the names that servers use.
int FindAccountColumn(const CDataTable& accounts, AccountColumn column);

struct ListedPortfolio {
    std::string token, id, name;
    bool isDefault = false;
};

// The accounts of one family as the server sent them, with their portfolios read.
struct FamilyAccounts {
    CDataTable rows;
    std::vector<std::vector<ListedPortfolio>> portfolios;  // of each row
};

// The portfolios in a cell (JSON: an array of objects with "fund_token", "portfolioid" or "portfolio_id",
// "portfolioname" or "portfolio_name", "is_default"). Those with neither token nor id are left out; a cell that is
// no such array is counted as "account_portfolios_unreadable".
std::vector<ListedPortfolio> ReadPortfolios(std::string_view json);

// What a row stands for.
struct AccountUnit {
    std::string key;    // its "accountkey", in portfolio mode with the portfolio; unlike that of all others
    std::string id;     // of the account
    std::string token;  // whose money it shows; empty when not logged in
};
struct AccountUnits {
    CDataTable rows;
    std::vector<AccountUnit> units;  // of each row
};

// A row for each account, or with `byPortfolio` for each portfolio and each account without any. An account that
// has no token of its own shows that of its default portfolio, if it has one. "accountkey" is made of id, qsid and
// trade type where the server sends none.
AccountUnits ReadAccountUnits(const FamilyAccounts& accounts, bool byPortfolio);

}  // namespace luadui
