// CAccountManager: calls into the host's Lua side, whose own state of the accounts follows.
#include "accounts/account_event_table.h"
#include "accounts/account_json.h"
#include "accounts/account_manager.h"
#include "accounts/account_request.h"
#include "base/counters.h"

namespace luadui {
namespace {

// A text of an account, and how the host calls it.
struct HostField {
    std::string_view name;
    AccountField field;
};
constexpr HostField kHostFields[] = {
    {"accountid", AccountField::kAccountId},     {"accountname", AccountField::kAccountName},
    {"accountmark", AccountField::kAccountMark}, {"qsid", AccountField::kBrokerId},
    {"qsname", AccountField::kBrokerName},       {"yybid", AccountField::kBranchId},
    {"yybname", AccountField::kBranchName},      {"tradetype", AccountField::kTradeType},
    {"issimulate", AccountField::kIsSimulated},  {"userKey", AccountField::kUserKey},
    {"productid", AccountField::kProductId},     {"productname", AccountField::kProductName},
    {"canuse", AccountField::kCanUse},           {"accountkey", AccountField::kAccountKey},
};
constexpr HostField kUnitFields[] = {
    {"AccountID", AccountField::kAccountId},       {"AccountName", AccountField::kAccountName},
    {"AccountIDMark", AccountField::kAccountMark}, {"QsID", AccountField::kBrokerId},
    {"SalesName", AccountField::kBrokerName},      {"TradeType", AccountField::kTradeType},
    {"IsSimulate", AccountField::kIsSimulated},    {"userKey", AccountField::kUserKey},
};
struct HostUnit {
    std::string token, id, name;
};

// What is told comes from an account or, when that has gone, from its last JSON.
std::string_view TextIn(const CAccount& account, AccountField field) { return account.Get(field); }
std::string_view TextIn(const CJsonObject& account, AccountField field) {
    return account.GetText(InfoOf(field).key);
}

std::vector<HostUnit> UnitsOf(const CAccount& account) {
    std::vector<HostUnit> units;
    for (const Portfolio& portfolio : account.GetPortfolios().All())
        units.push_back({portfolio.fundToken, portfolio.id, portfolio.name});
    return units;
}
std::vector<HostUnit> UnitsOf(const CJsonObject& account) {
    std::vector<HostUnit> units;
    for (const auto [index, value] : account.GetArray("portfolios")) {
        CJsonObject portfolio;
        if (value.Get(portfolio))
            units.push_back({portfolio.GetString("fund_token"), portfolio.GetString("portfolioid"),
                             portfolio.GetString("portfolioname")});
    }
    return units;
}

template <class Account>
void AppendAccount(const Account& account, CDataList& list) {
    CJsonObject json;
    CDataList portfolios;
    for (const auto& [name, field] : kHostFields) json.Set(name, TextIn(account, field));
    for (const HostUnit& unit : UnitsOf(account)) {
        CJsonObject portfolio;
        portfolio.Set("fund_token", unit.token);
        portfolio.Set("portfolioid", unit.id);
        portfolio.Set("portfolioname", unit.name);
        portfolios.Append(portfolio);
    }
    json.Set("portfolios", portfolios);
    json.Set("state", LoginState(TextIn(account, AccountField::kCanUse)));
    json.Set("loginMsg", TextIn(account, AccountField::kMessage));
    list.Append(json);
}

// In "PB_MODE": an entry per portfolio.
template <class Account>
void AppendUnits(const Account& account, CDataList& list) {
    const std::string_view product = TextIn(account, AccountField::kProductName);
    for (const HostUnit& unit : UnitsOf(account)) {
        CJsonObject json;
        json.Set("state", LoginState(TextIn(account, AccountField::kCanUse)));
        for (const auto& [name, field] : kUnitFields) json.Set(name, TextIn(account, field));
        json.Set("fund_token", unit.token);
        json.Set("portfolio_id", unit.id);
        json.Set("portfolio_name", unit.name);
        json.Set("product_id", TextIn(account, AccountField::kProductId));
        json.Set("product_name", product);
        json.Set("portfolioname_ex", (unit.name + ' ').append(product));
        list.Append(json);
    }
}

}  // namespace

// A change of one account tells of that one, also when it is not usable any more or has gone; otherwise of all, in "PB_MODE"
// of the usable ones.
void CAccountManager::_tellHostOfAccounts(const Event& row, const ResultEvent& event) {
    const bool isPbMode = m_accounts.User().isPbMode;
    CDataList list;
    if (!event.accountKey.empty()) {
        isPbMode ? AppendUnits(event.payload, list) : AppendAccount(event.payload, list);
    } else {
        for (const CAccount* const account : m_accounts.InOrder()) {
            if (!account || (isPbMode && !account->CanUse())) continue;
            isPbMode ? AppendUnits(*account, list) : AppendAccount(*account, list);
        }
    }
    CJsonObject params;
    params.Set("action", row.action);
    params.Set("accountList", list);
    SendLuaSync("OnAccountChanged", params.ToText(), std::string(kModuleAccountManager));
}

void CAccountManager::_tellHostOfGroup(const Event& row, const ResultEvent& event) {
    CJsonObject info = event.payload.GetSub("groupinfo");
    const CAccountGroup* const group = m_groups.Find(info.GetText("groupid"));
    const std::string members = group ? _membersText(*group) : info.GetString("accountlist");
    info.Remove("accountlist");
    info.Set("accountList", members.empty() ? "[]" : members);
    CJsonObject params;
    params.Set("action", row.action);
    params.Set("groupInfo", info);
    SendLuaSync("OnAccountGroupChanged", params.ToText(), std::string(kModuleAccountManager));
}

}  // namespace luadui
