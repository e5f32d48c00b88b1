// AccountDesk: its services, one row each.
#include <algorithm>
#include <iterator>

#include "base/json_object.h"
#include "base/text.h"
#include "broker/account_desk.h"
#include "broker/answers.h"

namespace terminal {
namespace {

using luadui::CDataTable;
using luadui::CJsonObject;
using luadui::CUIData;
using luadui::Gbk;

constexpr char kAccountManager[] = "MODULE_ACCOUNTMANAGER";
constexpr char kProduct[] = "CP01", kProductName[] = "样例产品", kBrokerName[] = "样例证券";
constexpr char kPermissions[] = "TRADE,QUERY";
constexpr char kCreditTrade[] = "2", kOrdinaryTrade[] = "1";

CDataTable TableWith(std::initializer_list<const char*> columns) {
    CDataTable table;
    for (const char* column : columns) table.AddColumn(column);
    return table;
}

void AppendRow(CDataTable& table, std::initializer_list<std::string_view> cells) {
    const int row = table.AppendRow();
    int col = 0;
    for (const std::string_view cell : cells) table.SetItemText(row, col++, cell);
}

// JSON array text, code page 936.
std::string ArrayText(const CJsonObject& holder) {
    const std::string text = holder.ToText();
    return text.substr(text.find('['), text.rfind(']') + 1 - text.find('['));
}

std::string PortfoliosText(const DeskAccount& account) {
    CJsonObject holder;
    holder.Set("a", luadui::CDataList());
    for (const DeskPortfolio& portfolio : account.portfolios) {
        CJsonObject json;
        json.Set("portfolio_id", portfolio.id);
        json.Set("portfolio_name", portfolio.name);
        json.Set("portfolio_code", portfolio.code);
        json.Set("remarks", portfolio.remarks);
        json.Set("is_default", portfolio.isDefault);
        json.Set("fund_token", portfolio.fundToken);
        holder.Append("a", json);
    }
    return ArrayText(holder);
}

std::string MembersText(const DeskGroup& group) {
    CJsonObject holder;
    holder.Set("a", luadui::CDataList());
    for (const std::string& member : group.members) holder.Append("a", member);
    return ArrayText(holder);
}

bool HasToken(const DeskAccount& account, std::string_view token) {
    return std::ranges::any_of(account.portfolios, [&](const auto& p) { return p.fundToken == token; });
}

template <class Items, class Test>
auto* FindIf(Items& items, Test test) {
    const auto found = std::ranges::find_if(items, test);
    return found == items.end() ? nullptr : &*found;
}

auto IsAccount(std::string_view code, std::string_view broker, std::string_view tradeType) {
    return [=](const DeskAccount& account) {
        return account.code == code && account.broker == broker && account.tradeType == tradeType;
    };
}

// The account that a row names.
auto IsAccountOf(const CDataTable& rows) {
    return IsAccount(rows.GetItemText(0, "account_code"), rows.GetItemText(0, "broker_id"),
                     rows.GetItemText(0, "trade_type"));
}

CUIData Refusal(const CUIData& request, const char* code, const std::string& message) {
    CJsonObject error;
    error.Set("error_code", code);
    error.Set("msg", Gbk(message));
    CUIData answer = MakeAnswer(request, kDataFailed);
    answer.SetData("JsonData", error);
    return answer;
}

}  // namespace

struct AccountDesk::Service {
    int type;
    bool (AccountDesk::*serve)(Call& call);  // false: refused, with `error`
};

constexpr AccountDesk::Service AccountDesk::kServices[] = {
    {1032, &AccountDesk::_logout},        {1033, &AccountDesk::_query},
    {1035, &AccountDesk::_queryGroups},   {1036, &AccountDesk::_bind},
    {1037, &AccountDesk::_unbind},        {1038, &AccountDesk::_addGroup},
    {1039, &AccountDesk::_deleteGroup},   {1040, &AccountDesk::_addMember},
    {1041, &AccountDesk::_removeMember},  {1047, &AccountDesk::_addAccount},
    {1048, &AccountDesk::_deleteAccount}, {1049, &AccountDesk::_edit},
    {1127, &AccountDesk::_addPortfolio},  {1804, &AccountDesk::_saveOrder},
    {1807, &AccountDesk::_upload},        {1808, &AccountDesk::_editPassword},
};

// 1127 opens a warehouse as well, without an account's key.
bool AccountDesk::IsAsked(const CUIData& request) {
    CUIData params;
    request.GetData("Params", params);
    const int64_t type = request.GetDataLong("REQTYPE");
    const bool isServed = std::ranges::count(kServices, type, &Service::type) > 0;
    return isServed && params.GetDataText("log_source") == kAccountManager &&
           (type != 1127 || params.Has("AccountKey"));
}

CUIData AccountDesk::Answer(const CUIData& request) {
    CUIData params;
    CDataTable rows;
    request.GetData("Params", params);
    params.GetData("Table", rows);
    const auto* const service = std::ranges::find(kServices, request.GetDataLong("REQTYPE"), &Service::type);
    DeskUser* const user = _userOf(params, rows);
    if (!user || service == std::end(kServices)) return Refusal(request, "-101", "用户不存在");
    CUIData answer = MakeAnswer(request, kDataOfPage);
    std::string error;
    Call call{*user, params, rows, answer, error};
    if (!(this->*service->serve)(call)) return Refusal(request, "301", error);
    return answer;
}

// Requests name the user, or his id, in one of several places.
DeskUser* AccountDesk::_userOf(const CUIData& params, const CDataTable& rows) {
    if (const auto named = m_users.find(params.GetDataText("useraccount")); named != m_users.end())
        return &named->second;
    for (auto& [name, user] : m_users) {
        for (const std::string_view id : {std::string_view(params.GetDataText("client_user_id")),
                                          std::string_view(params.GetDataText("user_id")),
                                          std::string_view(rows.GetItemText(0, "user_id"))})
            if (id == user.id) return &user;
    }
    // A new portfolio is asked for with the account's key only.
    for (auto& [name, user] : m_users)
        for (const DeskAccount& account : user.accounts)
            if (account.code + "|" + account.broker + "|" + account.tradeType ==
                std::string_view(params.GetDataText("AccountKey")))
                return &user;
    return nullptr;
}

// Accounts.

bool AccountDesk::_query(Call& call) {
    CDataTable table =
        TableWith({"account_id", "account_code", "account_name", "alias", "account_mark", "product_id",
                   "product_name", "user_id", "broker_id", "broker_name", "trade_type", "issimulate",
                   "bind_status", "src_server", "order", "portfolios"});
    for (const DeskAccount& account : call.user.accounts)
        AppendRow(table,
                  {account.recordId, account.code, account.name, account.alias, account.mark, kProduct,
                   Gbk(kProductName), call.user.id, account.broker, Gbk(kBrokerName), account.tradeType, "0",
                   account.isBound ? "1" : "0", "counter1", account.order, PortfoliosText(account)});
    call.answer.SetData("Table", table);
    return true;
}

bool AccountDesk::_bind(Call& call) {
    auto* const account = FindIf(
        call.user.accounts, [&](const auto& a) { return a.code == call.params.GetDataText("account_code"); });
    if (account) account->isBound = true;
    call.error = "资金账号不存在";
    return account != nullptr;
}

bool AccountDesk::_unbind(Call& call) {
    auto* const account = FindIf(
        call.user.accounts, [&](const auto& a) { return a.code == call.params.GetDataText("account_code"); });
    if (account) account->isBound = false;
    call.error = "资金账号不存在";
    return account != nullptr;
}

bool AccountDesk::_edit(Call& call) {
    auto* const account = FindIf(call.user.accounts, IsAccountOf(call.rows));
    call.error = "资金账号不存在";
    if (!account) return false;
    account->mark = call.rows.GetItemText(0, "account_mark");
    account->alias = call.rows.GetItemText(0, "alias");
    return true;
}

bool AccountDesk::_deleteAccount(Call& call) {
    call.error = "资金账号不存在";
    auto* const account = FindIf(call.user.accounts, IsAccountOf(call.rows));
    if (!account) return false;
    account->isOnline = false;
    call.user.others.push_back(std::move(*account));
    call.user.accounts.erase(call.user.accounts.begin() + (account - call.user.accounts.data()));
    return true;
}

bool AccountDesk::_addPortfolio(Call& call) {
    const std::string_view key = call.params.GetDataText("AccountKey");
    auto* const account = FindIf(call.user.accounts, [&](const auto& a) {
        return a.code + "|" + a.broker + "|" + a.tradeType == key;
    });
    call.error = "资金账号不存在";
    if (!account) return false;
    const std::string number = std::to_string(account->portfolios.size());
    const DeskPortfolio made{account->portfolios.front().id + "-" + number,
                             call.params.GetDataString("portfolio_name"),
                             "U" + account->code + "-" + number,
                             call.params.GetDataString("remarks"),
                             "0",
                             account->portfolios.front().fundToken + "-" + number};
    account->portfolios.push_back(made);
    CDataTable table = TableWith(
        {"portfolio_id", "portfolio_name", "portfolio_code", "remarks", "fund_token", "is_default"});
    AppendRow(table, {made.id, made.name, made.code, made.remarks, made.fundToken, made.isDefault});
    call.answer.SetData("Table", table);
    return true;
}

bool AccountDesk::_saveOrder(Call& call) {
    for (DeskAccount& account : call.user.accounts) account.order.clear();
    for (int row = 0; row < call.rows.GetRowNumber(); ++row) {
        auto* const account = FindIf(call.user.accounts, [&](const auto& a) {
            return a.code == call.rows.GetItemText(row, "account_code") && a.order.empty();
        });
        if (account) account->order = call.rows.GetItemText(row, "order");
    }
    return true;
}

// Logins.

std::string AccountDesk::_refusalOf(const DeskUser& user, const DeskAccount& account, const CDataTable& rows,
                                    int row) const {
    if (!_matches(account.password, rows.GetItemText(row, "password"))) return "密码错误";
    if (!account.txPassword.empty() && !_matches(account.txPassword, rows.GetItemText(row, "txpassword")))
        return "通讯密码错误";
    const std::string_view ordinaryCode = rows.GetItemText(row, "key_account_code");
    if (account.tradeType != kCreditTrade || ordinaryCode.empty()) return {};
    const auto* const ordinary =
        FindIf(user.accounts, IsAccount(ordinaryCode, account.broker, kOrdinaryTrade));
    const bool isSame = ordinary && _matches(ordinary->password, rows.GetItemText(row, "key_password"));
    return isSame ? "" : "普通账户密码错误";
}

bool AccountDesk::_upload(Call& call) {
    CDataTable table = TableWith({"fund_token", "account_name", "permission_code", "error_code", "msg"});
    for (int row = 0; row < call.rows.GetRowNumber(); ++row) {
        const std::string token(call.rows.GetItemText(row, "fund_token"));
        auto* const account = FindIf(call.user.accounts, [&](const auto& a) { return HasToken(a, token); });
        const std::string refusal =
            account ? _refusalOf(call.user, *account, call.rows, row) : "资金账号不存在";
        if (account) account->isOnline = refusal.empty();
        AppendRow(table, {token, account ? account->name : "", kPermissions, refusal.empty() ? "0" : "301",
                          Gbk(refusal)});
    }
    call.answer.SetData("Table", table);
    return true;
}

bool AccountDesk::_editPassword(Call& call) {
    auto* const account = FindIf(call.user.accounts, IsAccountOf(call.rows));
    call.error = account ? _refusalOf(call.user, *account, call.rows, 0) : "资金账号不存在";
    if (!call.error.empty()) return false;
    account->isOnline = true;
    CDataTable table = TableWith({"account_name", "permission_code", "error_code", "msg"});
    AppendRow(table, {account->name, kPermissions, "0", ""});
    call.answer.SetData("Table", table);
    return true;
}

bool AccountDesk::_logout(Call& call) {
    auto* const account = FindIf(call.user.accounts, [&](const auto& a) {
        return HasToken(a, call.params.GetDataText("fund_token"));
    });
    call.error = "资金账号不存在";
    if (account) account->isOnline = false;
    return account != nullptr;
}

bool AccountDesk::_addAccount(Call& call) {
    auto* const opened = FindIf(call.user.others, IsAccountOf(call.rows));
    call.error = opened ? _refusalOf(call.user, *opened, call.rows, 0) : "资金账号不存在";
    if (!call.error.empty()) return false;
    opened->isOnline = true;
    CJsonObject info;
    info.Set("error_code", "0");
    info.Set("msg", "");
    info.Set("account_id", opened->recordId);
    info.Set("account_name", opened->name);
    info.Set("product_id", kProduct);
    info.Set("product_name", Gbk(kProductName));
    info.Set("permission_code", kPermissions);
    info.Set("portfolios", PortfoliosText(*opened));
    CJsonObject data;
    data.Set("return_info", info);
    call.answer.SetData("JsonData", data);
    call.user.accounts.push_back(std::move(*opened));
    call.user.others.erase(call.user.others.begin() + (opened - call.user.others.data()));
    return true;
}

// Groups.

namespace {

DeskGroup* GroupOf(DeskUser& user, const CUIData& params) {
    return FindIf(user.groups, [&](const auto& group) { return group.id == params.GetDataText("groupid"); });
}

}  // namespace

bool AccountDesk::_queryGroups(Call& call) {
    CDataTable table = TableWith({"groupid", "groupname", "grouptype", "issimulate", "account"});
    for (const DeskGroup& group : call.user.groups)
        AppendRow(table, {group.id, group.name, group.type, group.isSimulated, MembersText(group)});
    call.answer.SetData("Table", table);
    return true;
}

bool AccountDesk::_addGroup(Call& call) {
    const auto text = [&](const char* name) { return call.params.GetDataString(name); };
    call.error = text("groupid").empty() ? "账户组编号为空" : "账户组已存在";
    if (text("groupid").empty() || GroupOf(call.user, call.params)) return false;
    call.user.groups.push_back(
        {text("groupid"), text("groupname"), text("grouptype"), text("issimulate"), {}});
    return true;
}

bool AccountDesk::_deleteGroup(Call& call) {
    call.error = "账户组不存在";
    return std::erase_if(call.user.groups, [&](const auto& group) {
               return group.id == call.params.GetDataText("groupid");
           }) > 0;
}

bool AccountDesk::_addMember(Call& call) {
    DeskGroup* const group = GroupOf(call.user, call.params);
    const std::string code = call.params.GetDataString("accountid");
    const bool isKnown = std::ranges::count(call.user.accounts, code, &DeskAccount::code) > 0;
    call.error = group ? "资金账号不存在" : "账户组不存在";
    if (!group || !isKnown) return false;
    if (std::ranges::count(group->members, code) == 0) group->members.push_back(code);
    return true;
}

bool AccountDesk::_removeMember(Call& call) {
    DeskGroup* const group = GroupOf(call.user, call.params);
    call.error = "账户组不存在";
    return group && std::erase(group->members, call.params.GetDataString("accountid")) > 0;
}

}  // namespace terminal
