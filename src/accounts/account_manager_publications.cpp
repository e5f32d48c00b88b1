// CAccountManager: what everybody may hear.
#include <iterator>
#include <ranges>

#include "accounts/account_event_table.h"
#include "accounts/account_json.h"
#include "accounts/account_manager.h"
#include "accounts/secret.h"
#include "base/counters.h"
#include "base/json_text.h"
#include "messaging/guid.h"

namespace luadui {
namespace {

constexpr int kReqNotification = 0x10001;
constexpr std::string_view kNotificationDataType = "2001";  // as news of no kind of data
constexpr int kDataOnline = 2011;
constexpr std::string_view kCache = "CLIENT_CACHE";

// "ClientAccountChanged" says this of an account, "portfolios" and "order" behind it.
constexpr AccountField kPublished[] = {
    AccountField::kAccountKey,      AccountField::kAccountId,     AccountField::kAccountName,
    AccountField::kAccountMark,     AccountField::kNickname,      AccountField::kBrokerId,
    AccountField::kBrokerName,      AccountField::kBranchId,      AccountField::kBranchName,
    AccountField::kProductId,       AccountField::kInstitutionId, AccountField::kUserId,
    AccountField::kIsSimulated,     AccountField::kTradeType,     AccountField::kUserKey,
    AccountField::kBindStatus,      AccountField::kPassword,      AccountField::kTxPassword,
    AccountField::kDynamicPassword, AccountField::kAllowLogin,    AccountField::kMessage,
    AccountField::kCanUse};
constexpr std::string_view kStatus[] = {"accountkey", "accountname", "nickname", "canuse", "AccountMsg"};

constexpr size_t kBytesOfAccount = 1024;  // of text, about

void WritePortfolios(const CAccount& account, JsonText& json) {
    json.BeginArray();
    for (const Portfolio& portfolio : account.GetPortfolios().All()) {
        json.BeginObject();
        for (const PortfolioField& field : kPortfolioFields) {
            if (field.text != &Portfolio::isDefault) json.Member(field.key, portfolio.*field.text);
        }
        json.EndObject();
    }
    json.EndArray();
}

void WriteAccount(const CAccount& account, std::string_view order, JsonText& json) {
    json.BeginObject();
    for (const AccountField field : kPublished) json.Member(InfoOf(field).key, account.Get(field));
    json.Name("portfolios");
    WritePortfolios(account, json);
    json.Member("order", order);
    json.EndObject();
}

constexpr auto IsTold = [](const AccountFieldInfo& info) { return info.IsSerialised() && !info.isSecret; };

CQueueRespData CachePush(std::string_view topic) {
    CQueueRespData push;
    push.SetData("DATATYPE", kDataOnline);
    push.SetData("Topic", topic);
    push.SetData("To", kCache);
    return push;
}

}  // namespace

bool CAccountManager::_publish(std::string_view key, const std::string& data, const std::string& uuid) {
    CQueueReqItem notification;
    notification.SetData("REQTYPE", kReqNotification);
    notification.SetData("UUID", NewGuid());
    CUIData params;
    params.SetData("_SUBKEY", key);
    params.SetData("_SEND_DATA", data);
    params.SetData("_DATATYPE", kNotificationDataType);
    params.SetData("_UUID", uuid.empty() ? NewGuid() : uuid);
    notification.SetData("Params", params);
    const bool isSent = m_events.Publish(notification);
    if (!isSent) CCounters::Add("account_notification_not_sent");
    return isSent;
}

void CAccountManager::_publishAccounts(const Event&, const ResultEvent&) {
    m_tokens.reset();
    JsonText json(m_accounts->All().size() * kBytesOfAccount);
    json.BeginObject();
    json.Name("clientaccounts");
    json.BeginArray();
    for (const CAccount* const account : m_accounts->InOrder()) {
        if (account) WriteAccount(*account, OrderOf(*m_accounts, *account), json);
    }
    json.EndArray();
    json.Name("clientgroups");
    json.BeginArray();
    for (const auto& [id, group] : m_groups->All()) {
        json.BeginObject();
        json.Member("groupid", id);
        json.Member("accountlist", _membersText(*group));
        json.EndObject();
    }
    json.EndArray();
    json.EndObject();
    std::string text = json.Take();
    _publish("ClientAccountChanged", text);
    WipeMemory(text.data(), text.size());  // it has the passwords
}

CDataList CAccountManager::_groupsJson() const {
    CDataList groups;
    for (const auto& [id, group] : m_groups->All()) {
        CJsonObject json = group->Info().ToJson();
        json.Set("accountlist", _membersText(*group));
        groups.Append(json);
    }
    return groups;
}

void CAccountManager::_publishGroups(const Event&, const ResultEvent&) { _tellGroups(); }

void CAccountManager::_tellGroups() {
    std::erase_if(m_groupOrders, [this](const auto& order) { return !m_groups->Find(order.first); });
    CJsonObject data;
    data.Set("clientgroups", _groupsJson());
    const int32_t self = GetHandle();
    _publish("CLIENT_ACCOUNTGROUP_CHANGED", data.ToText());
    if (!_isAlive(self)) return;
    CQueueRespData push = CachePush("AccountGroup");
    push.SetData("JsonData", data);
    m_events.HandlePush(push);
}

void CAccountManager::_publishStatus(const Event&, const ResultEvent& event) {
    CJsonObject data;
    for (const std::string_view name : kStatus) data.Set(name, event.payload.GetText(name));
    data.Set("AccountStatus", LoginState(event.payload.GetText("canuse")));
    _publish("CLIENT_MODIFY_ACCOUNT_STATUS", data.ToText());
}

// Tells of who is logged in as soon as the next changes, which often come together, are in.
void CAccountManager::_checkOnline(const Event&, const ResultEvent& event) {
    const auto isNews = [this](std::string_view key) {
        const CAccount* const account = m_accounts->Find(key);
        return (account && account->CanUse()) != m_online.contains(key);
    };
    const bool hasChanged = event.accountKey.empty()
                                ? std::ranges::any_of(m_accounts->All() | std::views::keys, isNews) ||
                                      std::ranges::any_of(m_online, isNews)
                                : isNews(event.accountKey);
    if (hasChanged && !m_events.StartTimer(kOnlineTimer, kOnlinePeriod))
        CCounters::Add("account_timer_not_started");
}

void CAccountManager::_publishOnline() {
    std::set<std::string, std::less<>> online;
    CDataTable table;
    for (const AccountFieldInfo& info : kAccountFieldTable | std::views::filter(IsTold))
        table.AddColumn(info.key);
    table.AddColumn("portfolios");
    for (const auto& [key, account] : m_accounts->All()) {
        if (!account->CanUse()) continue;
        online.insert(key);
        const int row = table.AppendRow();
        int column = 0;
        for (const AccountFieldInfo& info : kAccountFieldTable | std::views::filter(IsTold))
            table.SetItemText(row, column++, account->Get(info.field));
        table.SetItemText(row, column, ArrayText(account->GetPortfolios().ToJson()));
    }
    if (online == m_online) return;
    m_online = std::move(online);
    CQueueRespData push = CachePush("AccountOnline");
    push.SetData("Table", table);
    m_events.HandlePush(push);
}

}  // namespace luadui
