// CAccountManager: what became of requests, and who is told.
#include <algorithm>
#include <iterator>
#include <utility>

#include "accounts/account_event_table.h"
#include "accounts/account_manager.h"
#include "accounts/account_request.h"
#include "base/counters.h"
#include "base/text.h"
#include "codedata/data_manager.h"
#include "codedata/elk_item.h"
#include "messaging/host_link.h"
#include "trade/server_result.h"

namespace luadui {
namespace {

constexpr std::string_view kKeylessEvent = "UnKnowKey_Event";
constexpr char kAccountSettings[] = "\\qsclient\\system\\account.cfg";
constexpr std::string_view kDisconnected = "account_disconnected";

// Whoever asked knows the passwords already, and nobody else is to.
CJsonObject WithoutSecrets(CJsonObject account) {
    for (const AccountFieldInfo& info : kAccountFieldTable) {
        if (info.isSecret && info.IsSerialised()) account.Remove(info.key);
    }
    return account;
}

}  // namespace

// clang-format off
constexpr CAccountManager::Event CAccountManager::kEvents[] = {
    {"initialize_finished",             Event::kPage | Event::kAccounts | Event::kOnline},
    {"account_refresh_finished",        Event::kPage | Event::kAccounts | Event::kOnline},
    {"account_refresh_failed",          Event::kPage, "查询账户"},
    {"account_changed_push",            Event::kOnline},  // the accounts were told of as refreshed
    {"upload_actinfo_finished",         Event::kPage | Event::kAccounts | Event::kHostAccounts | Event::kOnline, {}, "login"},
    {"account_select_refresh_finished", Event::kPage | Event::kAccounts | Event::kHostAccounts | Event::kOnline, {}, "refresh"},
    {"upload_actinfo_failed",           Event::kPage, "登陆账户"},
    {"modify_account_status",           Event::kStatus | Event::kHostAccounts | Event::kOnline, {}, "modifystatus"},
    {"account_disconnected",            Event::kPage | Event::kStatus | Event::kOnline, "账户断线"},
    {"add_account_success",             Event::kPage | Event::kAccounts | Event::kHostAccounts | Event::kOnline, {}, "addaccount"},
    {"add_account_failed",              Event::kPage, "添加账户"},
    {"add_creditaccount_second",        Event::kPage | Event::kAccounts, {}, {}, "401"},
    {"delete_account_success",          Event::kPage | Event::kAccounts | Event::kHostAccounts | Event::kOnline, {}, "delaccount"},
    {"delete_account_failed",           Event::kPage, "删除账户"},
    {"bind_account_success",            Event::kPage | Event::kAccounts},
    {"bind_account_failed",             Event::kPage, "绑定账户"},
    {"unbind_account_success",          Event::kPage | Event::kAccounts},
    {"unbind_account_failed",           Event::kPage, "解绑账户"},
    {"edit_account_success",            Event::kPage | Event::kAccounts},
    {"edit_account_failed",             Event::kPage, "编辑账户"},
    {"edit_password_success",           Event::kPage | Event::kAccounts | Event::kStatus | Event::kHostAccounts | Event::kOnline, {}, "login"},
    {"edit_password_failed",            Event::kPage, "登陆账户"},
    {"logout_account_success",          Event::kPage | Event::kAccounts | Event::kStatus | Event::kHostAccounts | Event::kOnline, {}, "logout"},
    {"logout_account_failed",           Event::kPage, "注销账户"},
    {"add_portfolio_success",           Event::kPage | Event::kAccounts},
    {"add_portfolio_failed",            Event::kPage, "添加单元"},
    {"qry_accountgroup_success",        Event::kPage | Event::kGroups},
    {"qry_accountgroup_failed",         Event::kPage, "查询账户组"},
    {"add_accountgroup_success",        Event::kPage | Event::kGroups | Event::kHostGroups, {}, "addgroup"},
    {"add_accountgroup_failed",         Event::kPage, "添加账户组"},
    {"delete_accountgroup_success",     Event::kPage | Event::kGroups | Event::kHostGroups, {}, "delgroup"},
    {"delete_accountgroup_failed",      Event::kPage, "删除账户组"},
    {"add_account_ingroup_success",     Event::kPage | Event::kGroups | Event::kHostGroups, {}, "addaccount"},
    {"add_account_ingroup_failed",      Event::kPage, "添加组内账户"},
    {"delete_account_ingroup_success",  Event::kPage | Event::kGroups | Event::kHostGroups, {}, "delaccount"},
    {"delete_account_ingroup_failed",   Event::kPage, "删除组内账户"},
    {"notifyOrderToPage",               Event::kOrder},
    {"modifyAccountOrder",              Event::kSaveOrder},
    {"account_user_changed",            Event::kAccounts | Event::kGroups | Event::kOnline},
};
// clang-format on

struct CAccountManager::Step {
    uint32_t telling;
    void (CAccountManager::*run)(const Event& row, const ResultEvent& event);
};
constexpr CAccountManager::Step CAccountManager::kSteps[] = {
    {Event::kPage, &CAccountManager::_answerEvent},
    {Event::kAccounts, &CAccountManager::_publishAccounts},
    {Event::kGroups, &CAccountManager::_publishGroups},
    {Event::kStatus, &CAccountManager::_publishStatus},
    {Event::kOrder, &CAccountManager::_publishOrder},
    {Event::kHostAccounts, &CAccountManager::_tellHostOfAccounts},
    {Event::kHostGroups, &CAccountManager::_tellHostOfGroup},
    {Event::kOnline, &CAccountManager::_checkOnline},
    {Event::kSaveOrder, &CAccountManager::_saveOrderSoon},
};

const CAccountManager::Event* CAccountManager::Event::Find(std::string_view name) {
    const auto* const row = std::ranges::find(kEvents, name, &Event::name);
    return row == std::end(kEvents) ? nullptr : row;
}

std::string_view CAccountManager::Event::TitleOf(const AccountOperation& operation) {
    const Event* const row = Find(operation.failure);
    return row ? row->title : std::string_view();
}

void CAccountManager::OnResultEvent(const ResultEvent& event) {
    const Event* const row = Event::Find(event.name);
    if (!row) return CCounters::Add("account_event_unknown");
    const int32_t self = GetHandle();
    for (const Step& step : kSteps) {
        if ((row->tells & step.telling) == 0) continue;
        (this->*step.run)(*row, event);
        if (!_isAlive(self)) return;
    }
}

void CAccountManager::_answerEvent(const Event& row, const ResultEvent& event) {
    AccountAsker asker{.wants = true};
    const auto found = m_askers.extract(event.uuid);
    if (found) asker = found.mapped();
    const bool hasFailed = !row.title.empty();
    if (!found && !hasFailed) return;
    const std::string message = hasFailed ? Gbk(row.title) + event.message : std::string();
    const int32_t self = GetHandle();
    if (hasFailed) _logFailure(event, message);
    if (!_isAlive(self)) return;

    std::string code(row.code);
    if (hasFailed) code = event.code.empty() ? kLocalErrorCode : event.code;
    CJsonObject result;
    result.Set("success", !hasFailed);
    result.Set("code", code);
    result.Set("message", message);
    result.Set("data", hasFailed ? CJsonObject() : WithoutSecrets(event.payload));
    _send(asker, kKeylessEvent, result, CDataTable());
}

void CAccountManager::_logFailure(const ResultEvent& event, const std::string& message) {
    if (!m_logsFailures) {
        const int32_t self = GetHandle();
        const bool isOn = ReadConfig(kAccountSettings, "FullElkLog") == "true";
        if (!_isAlive(self)) return;
        m_logsFailures = isOn;
    }
    if (!*m_logsFailures) return;
    CQueueLogElkItem item("", "client@_account", kModuleAccountManager, "", "",
                          {{"accountkey", event.accountKey}, {"code", event.code}, {"msg", message}});
    CDataManager::Instance().PushELK(item);
}

// News of a session are about an account when they name one; what the server says besides is not for here.
void CAccountManager::_onSessionEvent(const CQueueRespData& push) {
    CJsonObject news;
    if (!ReadJsonData(push, news) && !news.Parse(push.GetDataText("RawData")))
        return CCounters::Add("account_session_event_unreadable");
    std::string key = _keyOf(news);
    CAccount* const account = m_accounts->Find(key);
    const AccountFailure failure = FailureOf(news);
    const bool isLost = account && ParseLong(failure.code).value_or(-1) != 0;
    if (!isLost) return CCounters::Add("account_session_event_ignored");
    account->SetUnusable(failure.message.empty() ? Gbk("账户断线") : failure.message);
    CAccountManager::OnResultEvent({kDisconnected,
                                    {},
                                    std::move(key),
                                    account->ToJson(),
                                    failure.code,
                                    failure.message,
                                    kModuleAccountManager});
}

std::string CAccountManager::_keyOf(const CJsonObject& news) {
    for (const std::string_view name : {"accountkey", "AccountKey"}) {
        if (std::string key = TextOf(news.Find(name)); !key.empty()) return key;
    }
    for (const std::string_view name : {"fund_token", "FundToken"}) {
        if (std::string key = _keyOfToken(TextOf(news.Find(name))); !key.empty()) return key;
    }
    return {};
}

std::string CAccountManager::_keyOfToken(const std::string& token) {
    if (token.empty()) return {};
    if (!m_tokens) {
        m_tokens.emplace();
        for (const auto& [key, account] : m_accounts->All()) {
            m_tokens->try_emplace(account->FundToken(), key);
            for (const Portfolio& portfolio : account->GetPortfolios().All())
                m_tokens->try_emplace(portfolio.fundToken, key);
        }
    }
    const auto found = m_tokens->find(token);
    return found == m_tokens->end() ? std::string() : found->second;
}

}  // namespace luadui
