// CAccountManager: the commands about accounts and groups.
#include <iterator>
#include <optional>

#include "accounts/account_command_table.h"
#include "accounts/account_event_table.h"
#include "accounts/account_json.h"
#include "accounts/account_manager.h"
#include "accounts/account_request.h"
#include "base/counters.h"
#include "base/text.h"
#include "messaging/guid.h"

namespace luadui {
namespace {

constexpr std::string_view kKey[] = {"accountkey"};
constexpr std::string_view kEdited[] = {"account_mark", "alias"};
constexpr std::string_view kKeyAndPassword[] = {"accountkey", "password"};
// What a login needs beside what the account knows itself.
constexpr std::string_view kLogin[] = {"txpassword",   "hardware_info",    "version",       "trade_server",
                                       "verification", "qsflag",           "token",         "key_password",
                                       "user_id",      "key_account_code", "key_fund_token"};
constexpr std::string_view kNewAccount[] = {"account_code", "broker_id", "trade_type"};
constexpr std::string_view kPortfolio[] = {"AccountKey"};
constexpr std::string_view kGroup[] = {"groupid"};
constexpr std::string_view kGroupFields[] = {"groupname", "grouptype", "issimulate"};

constexpr std::string_view kNoAccount = "，账户不存在！", kNoGroup = "，账户组不存在！";

// The texts of an array, of JSON array text, or between ';'. Nothing for anything else, also among the elements.
std::optional<std::vector<std::string>> ReadTexts(const ValueView& value) {
    std::vector<std::string> texts;
    const std::optional<CDataList> list = ListOf(value);
    if (list) {
        for (const auto [name, element] : *list) texts.push_back(TextOf(element));
    } else if (value.Kind() == kDataString && !value.AsText().empty() && !value.AsText().starts_with("[")) {
        for (const std::string_view text : SplitText(value.AsText(), ';')) texts.emplace_back(text);
        if (texts.back().empty()) texts.pop_back();
    } else {
        return std::nullopt;
    }
    if (std::ranges::count(texts, std::string()) > 0) return std::nullopt;
    return texts;
}

}  // namespace

// clang-format off
constexpr CAccountManager::Command CAccountManager::kCommands[] = {
    {"getAccountList",         &CAccountManager::_getAccountList},
    {"refreshSelAccountList",  &CAccountManager::_refreshSelected,     &kUploadAccounts},
    {"addAccount",             &CAccountManager::_addAccount,          &kAddAccount,    kNewAccount, account_columns::kAddAccount},
    {"deleteAccount",          &CAccountManager::_deleteAccount,       &kDeleteAccount, kKey, kKey},
    {"modifyAccountOrder",     &CAccountManager::_modifyOrder},
    {"queryOrderFromPage",     &CAccountManager::_queryOrder},
    {"notifyOrderToPage",      &CAccountManager::_notifyOrderToPage},
    {"notifyOrderToServer",    &CAccountManager::_notifyOrderToServer},
    {"logoutAccount",          &CAccountManager::_logoutAccount,       &kLogoutAccount, kKey, kKey},
    {"bindAccount",            &CAccountManager::_bindAccount,         &kBindAccount,   kKey, kKey},
    {"unbindAccount",          &CAccountManager::_unbindAccount,       &kUnbindAccount, kKey, kKey},
    {"editAccount",            &CAccountManager::_editAccount,         &kEditAccount,   kKey, kEdited},
    {"editPassword",           &CAccountManager::_editPassword,        &kEditPassword,  kKeyAndPassword, kLogin},
    {"getGroupList",           &CAccountManager::_getGroupList},
    {"addAccountGroup",        &CAccountManager::_addGroup,            &kAddGroup,      kGroup, kGroupFields},
    {"deleteAccountGroup",     &CAccountManager::_deleteGroup,         &kDeleteGroup,   kGroup, kGroup},
    {"addAccountToGroup",      &CAccountManager::_addToGroup,          &kAddToGroup},
    {"deleteAccountFromGroup", &CAccountManager::_deleteFromGroup,     &kRemoveFromGroup},
    {"modifyOrderInGroup",     &CAccountManager::_modifyOrderInGroup},
    {"add_portfolio",          &CAccountManager::_addPortfolio,        &kAddPortfolio,  kPortfolio},
};
// clang-format on

const CAccountManager::Command* CAccountManager::Command::Find(std::string_view name) {
    const auto* const row = std::ranges::find(kCommands, name, &Command::name);
    return row == std::end(kCommands) ? nullptr : row;
}

template <class Operation>
void CAccountManager::_start(const Call& call, Operation operation) {
    CUIData values = call.values;
    const WipedAtEnd wiped(values);
    const std::string uuid = NewGuid();  // what askers give may come twice
    values.SetData("UUID", uuid);
    m_askers.try_emplace(uuid, call.asker);
    const int32_t self = GetHandle();
    const std::string_view refused = operation(values);
    if (!refused.empty() && _isAlive(self) && m_askers.erase(uuid) > 0)
        _refuse(call.asker, LocalFailure(std::string(Event::TitleOf(*call.command.operation)) += refused));
}

// Accounts. An operation answers why it is refused.

void CAccountManager::_getAccountList(const Call& call) {
    CDataList accounts;
    for (const CAccount* const account : m_accounts->InOrder()) {
        if (!account) continue;
        CJsonObject json = account->ToJson();
        json.Set("order", OrderOf(*m_accounts, *account));
        accounts.Append(json);
    }
    CJsonObject data;
    data.Set("clientaccounts", accounts);
    data.Set("clientgroups", _groupsJson());
    _answer(call.asker, data);
}

void CAccountManager::_refreshSelected(const Call& call) {
    std::optional<std::vector<std::string>> keys;
    for (const std::string_view name : {"accountkeys", "accountkeylist", "accountkey"}) {
        if (!keys) keys = ReadTexts(call.values.GetDataView(name));
    }
    if (!keys) return _refuse(call.asker, LocalFailure("参数错误：accountkeys"));
    std::string joined;
    for (const std::string& key : *keys) joined += (joined.empty() ? "" : ";") + key;
    _start(call, [&](CUIData& values) {
        values.SetData("selrefresh", "true");
        values.SetData("accountkeylist", joined);
        m_accounts->Upload(values);
        return std::string_view();
    });
}

void CAccountManager::_addAccount(const Call& call) {
    _start(call, [this](const CUIData& values) {
        return m_accounts->AddAccount(values) ? std::string_view() : kNoAccount;
    });
}

void CAccountManager::_deleteAccount(const Call& call) {
    _start(call, [this](const CUIData& values) {
        return m_accounts->DeleteAccount(values) ? std::string_view() : kNoAccount;
    });
}

void CAccountManager::_logoutAccount(const Call& call) {
    _start(call, [this](const CUIData& values) {
        return m_accounts->Logout(values) ? std::string_view() : kNoAccount;
    });
}

void CAccountManager::_editPassword(const Call& call) {
    _start(call, [this](const CUIData& values) {
        return m_accounts->EditPassword(values) ? std::string_view() : kNoAccount;
    });
}

void CAccountManager::_addPortfolio(const Call& call) {
    _start(call, [this](const CUIData& values) {
        return m_accounts->AddPortfolio(values) ? std::string_view() : kNoAccount;
    });
}

void CAccountManager::_bindAccount(const Call& call) {
    _start(call, [this](const CUIData& values) {
        if (!m_accounts->Find(values.GetDataText("accountkey"))) return kNoAccount;
        return m_accounts->Bind(values) ? std::string_view() : kBindAccount.refused;
    });
}

void CAccountManager::_unbindAccount(const Call& call) {
    _start(call, [this](const CUIData& values) {
        if (!m_accounts->Find(values.GetDataText("accountkey"))) return kNoAccount;
        return m_accounts->Unbind(values) ? std::string_view() : kUnbindAccount.refused;
    });
}

void CAccountManager::_editAccount(const Call& call) {
    _start(call, [this](const CUIData& values) {
        return m_accounts->Edit(values) ? std::string_view() : kNoAccount;
    });
}

// Groups.

void CAccountManager::_getGroupList(const Call& call) {
    CJsonObject data;
    data.Set("grouplist", _groupsJson());
    _answer(call.asker, data);
}

void CAccountManager::_addGroup(const Call& call) {
    _start(call, [this](const CUIData& values) {
        return m_groups->AddGroup(values) ? std::string_view() : kAddGroup.refused;
    });
}

void CAccountManager::_deleteGroup(const Call& call) {
    _start(call, [this](const CUIData& values) {
        return m_groups->DeleteGroup(values) ? std::string_view() : kDeleteGroup.refused;
    });
}

void CAccountManager::_addToGroup(const Call& call) { _changeMembers(call, &CAccountGroupList::AddAccount); }

void CAccountManager::_deleteFromGroup(const Call& call) {
    _changeMembers(call, &CAccountGroupList::RemoveAccount);
}

// The page hears at once that its wish was understood, and later what became of each account. An account that is in the
// group already, or no longer, needs no request.
void CAccountManager::_changeMembers(const Call& call, Membership operation) {
    const std::string groupId = TextOf(call.values.GetDataView("groupid"));
    const auto ids = ReadTexts(call.values.GetDataView("accountlist"));
    if (groupId.empty() || !ids) return _refuse(call.asker, LocalFailure("解析账户组内账户失败!"));
    if (!m_groups->Find(groupId)) {
        return _refuse(call.asker,
                       LocalFailure(std::string(Event::TitleOf(*call.command.operation)) += kNoGroup));
    }
    const int32_t self = GetHandle();
    _done(call.asker);
    for (const std::string& id : *ids) {
        if (!_isAlive(self)) return;
        CUIData values;
        const std::string uuid = NewGuid();
        values.SetData("UUID", uuid);
        values.SetData("groupid", groupId);
        values.SetData("accountid", id);
        m_askers.try_emplace(uuid, call.asker);
        if (!(*m_groups.*operation)(values) && _isAlive(self)) m_askers.erase(uuid);
    }
}

}  // namespace luadui
