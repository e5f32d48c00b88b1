// CAccountManager: calls into the host's Lua side, whose own state of the accounts follows.
#include "accounts/account_event_table.h"
#include "accounts/account_json.h"
#include "accounts/account_manager.h"
#include "accounts/account_request.h"
#include "base/json_text.h"

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
    std::string_view token, id, name;
};

constexpr size_t kBytesOfAccount = 512;  // of text, about

// What is told comes from an account or, when that has gone, from its last JSON.
std::string_view TextIn(const CAccount& account, AccountField field) { return account.Get(field); }
std::string_view TextIn(const CJsonObject& account, AccountField field) {
    return account.GetText(InfoOf(field).key);
}

template <class Write>
void ForEachUnit(const CAccount& account, Write write) {
    for (const Portfolio& portfolio : account.GetPortfolios().All())
        write(HostUnit{portfolio.fundToken, portfolio.id, portfolio.name});
}
template <class Write>
void ForEachUnit(const CJsonObject& account, Write write) {
    for (const auto [index, value] : account.GetArray("portfolios")) {
        CJsonObject portfolio;
        if (value.Get(portfolio))
            write(HostUnit{portfolio.GetText("fund_token"), portfolio.GetText("portfolioid"),
                           portfolio.GetText("portfolioname")});
    }
}

template <class Account>
void WriteAccount(const Account& account, JsonText& json) {
    json.BeginObject();
    for (const auto& [name, field] : kHostFields) json.Member(name, TextIn(account, field));
    json.Name("portfolios");
    json.BeginArray();
    ForEachUnit(account, [&](const HostUnit& unit) {
        json.BeginObject();
        json.Member("fund_token", unit.token);
        json.Member("portfolioid", unit.id);
        json.Member("portfolioname", unit.name);
        json.EndObject();
    });
    json.EndArray();
    json.Member("state", LoginState(TextIn(account, AccountField::kCanUse)));
    json.Member("loginMsg", TextIn(account, AccountField::kMessage));
    json.EndObject();
}

// In "PB_MODE": an entry per portfolio.
template <class Account>
void WriteUnits(const Account& account, JsonText& json) {
    const std::string_view product = TextIn(account, AccountField::kProductName);
    ForEachUnit(account, [&](const HostUnit& unit) {
        json.BeginObject();
        json.Member("state", LoginState(TextIn(account, AccountField::kCanUse)));
        for (const auto& [name, field] : kUnitFields) json.Member(name, TextIn(account, field));
        json.Member("fund_token", unit.token);
        json.Member("portfolio_id", unit.id);
        json.Member("portfolio_name", unit.name);
        json.Member("product_id", TextIn(account, AccountField::kProductId));
        json.Member("product_name", product);
        json.Member("portfolioname_ex", (std::string(unit.name) + ' ').append(product));
        json.EndObject();
    });
}

}  // namespace

// A change of one account tells of that one, also when it is not usable any more or has gone; otherwise of all, in "PB_MODE"
// of the usable ones.
void CAccountManager::_tellHostOfAccounts(const Event& row, const ResultEvent& event) {
    const bool isPbMode = m_accounts->User().isPbMode;
    JsonText json(event.accountKey.empty() ? m_accounts->All().size() * kBytesOfAccount : kBytesOfAccount);
    const auto write = [&](const auto& account) {
        isPbMode ? WriteUnits(account, json) : WriteAccount(account, json);
    };
    json.BeginObject();
    json.Member("action", row.action);
    json.Name("accountList");
    json.BeginArray();
    if (!event.accountKey.empty()) {
        write(event.payload);
    } else {
        for (const CAccount* const account : m_accounts->InOrder()) {
            if (account && (!isPbMode || account->CanUse())) write(*account);
        }
    }
    json.EndArray();
    json.EndObject();
    SendLuaSync("OnAccountChanged", json.Take(), std::string(kModuleAccountManager));
}

void CAccountManager::_tellHostOfGroup(const Event& row, const ResultEvent& event) {
    CJsonObject info = event.payload.GetSub("groupinfo");
    const CAccountGroup* const group = m_groups->Find(info.GetText("groupid"));
    const std::string members = group ? _membersText(*group) : info.GetString("accountlist");
    info.Remove("accountlist");
    info.Set("accountList", members.empty() ? "[]" : members);
    CJsonObject params;
    params.Set("action", row.action);
    params.Set("groupInfo", info);
    SendLuaSync("OnAccountGroupChanged", params.ToText(), std::string(kModuleAccountManager));
}

}  // namespace luadui
