#include "accounts/account_manager.h"

#include "accounts/account_command_table.h"
#include "accounts/account_request.h"
#include "base/counters.h"
#include "base/text.h"
#include "trade/server_result.h"

namespace luadui {
namespace {

// News of accounts that lost their session, and of portfolios that were opened to the user or closed.
constexpr std::string_view kSessionEvent = "subkey_session_event";
constexpr std::string_view kErrorInfo = "subkey_account_errorinfo";
constexpr std::string_view kPermission = "pb_notify_portfolio_permission";

// What tells of a command itself, beside its arguments.
constexpr std::string_view kEnvelope[] = {"module", "REQTYPE", "UUID", "From", "handle"};

// Pages name arguments as accounts do in JSON, requests name them as the account service does.
struct ColumnName {
    std::string_view argument, column;
};
constexpr ColumnName kColumnNames[] = {
    {"accountkey", "AccountKey"},
    {"accountid", "account_code"},
    {"security_account_code", "account_code"},
    {"accountname", "account_name"},
    {"accountmark", "account_mark"},
    {"nickname", "alias"},
    {"qsid", "broker_id"},
    {"qsname", "broker_name"},
    {"yybid", "yyb_id"},
    {"yybname", "yyb_name"},
    {"productid", "product_id"},
    {"institutionid", "institution_id"},
    {"userid", "user_id"},
    {"tradetype", "trade_type"},
    {"userkey", "user_key"},
    {"portfolioid", "portfolio_id"},
    {"portfolioname", "portfolio_name"},
    {"portfoliocode", "portfolio_code"},
    {"portfolioremarks", "remarks"},
};

CUIData WithColumns(const CUIData& values) {
    CUIData completed = values;
    for (const auto& [argument, column] : kColumnNames) {
        if (values.Has(argument) && !completed.Has(column))
            completed.SetData(column, values.GetDataView(argument));
    }
    if (!completed.Has("AccountKey") && completed.Has("account_code")) {
        const auto text = [&](std::string_view name) { return TextOf(completed.GetDataView(name)); };
        completed.SetData("AccountKey",
                          MakeAccountKey(text("account_code"), text("broker_id"), text("trade_type")));
    }
    return completed;
}

bool IsPlain(const ValueView& value) {
    const DataKind kind = value.Kind();
    return kind == kDataString || kind == kDataInteger || kind == kDataDouble || kind == kDataBoolean ||
           kind == kDataNull || kind == kDataAbsent;
}

}  // namespace

CAccountManager::CAccountManager(AccountEvents& events, PasswordEncryption encryption)
    : m_events(events), m_encryption(encryption) {
    SetRequestSource(std::string(kModuleAccountManager));
    _makeLists();
}

CAccountManager::~CAccountManager() = default;

void CAccountManager::OnUser() {
    const AccountUser user = m_events.User();
    if (user.name.empty()) return;
    const int32_t self = GetHandle();
    if (!_subscribe(user)) return;
    const std::string before = std::exchange(m_user, user.name);
    const bool isAnother = !before.empty() && before != user.name;
    const auto askers = isAnother ? std::exchange(m_askers, {}) : decltype(m_askers)();
    if (isAnother) _makeLists();
    m_accounts->SetUser(user);
    m_groups->SetUserAccount(user.name);
    if (before == user.name) return;
    if (isAnother) _tellOfAnotherUser(askers);
    // Whoever was told may have signed somebody else in.
    if (_isAlive(self) && m_user == user.name) m_groups->Query();
    if (_isAlive(self) && m_user == user.name) m_accounts->Query();
}

// Once. False when the manager has gone meanwhile.
bool CAccountManager::_subscribe(const AccountUser& user) {
    const int32_t self = GetHandle();
    if (std::exchange(m_isSubscribed, true)) return true;
    for (const std::string_view topic : {kTopic, kSessionEvent, kErrorInfo, kPermission}) {
        const bool isForAll = topic == kTopic || topic == kSessionEvent;
        if (isForAll || user.isPbMode) m_events.Subscribe(std::string(topic), self);
        if (!_isAlive(self)) return false;
    }
    return true;
}

void CAccountManager::_makeLists() {
    ResultEventSink& sink = *this;
    m_accounts = std::make_unique<CAccountList>(sink, m_encryption);
    m_groups = std::make_unique<CAccountGroupList>(sink);
    m_groupOrders.clear();
    m_tokens.reset();
}

void CAccountManager::_tellOfAnotherUser(const std::map<std::string, AccountAsker, std::less<>>& askers) {
    const int32_t self = GetHandle();
    for (const auto& [uuid, asker] : askers) {
        _refuse(asker, LocalFailure("用户已切换！"));
        if (!_isAlive(self)) return;
    }
    OnResultEvent({"account_user_changed", {}, {}, CJsonObject(), {}, {}, kModuleAccountManager});
}

// Commands.

bool CAccountManager::Execute(const std::string& command, const CUIData& arguments) {
    if (command == kOnlineCommand) {
        _publishOnline();
        return true;
    }
    AccountAsker asker;
    arguments.GetData("REQTYPE", asker.type);
    asker.uuid = TextOf(arguments.GetDataView("UUID"));
    asker.from = TextOf(arguments.GetDataView("From"));
    asker.handle = TextOf(arguments.GetDataView("handle"));
    asker.wants = asker.type != 0;
    CUIData values = arguments;
    const WipedAtEnd wiped(values);
    for (const std::string_view name : kEnvelope) values.Remove(name);
    return _run(command, asker, values);
}

void CAccountManager::_onMessage(const CQueueRespData& push) {
    CJsonObject message;
    if (!ReadJsonData(push, message) && !message.Parse(push.GetDataText("RawData")))
        return CCounters::Add("account_message_unreadable");
    AccountAsker asker{
        .uuid = TextOf(message.Find("uuid")), .key = TextOf(message.Find("key")), .wants = true};
    CJsonObject params = message.GetSub("params");
    if (message.Kind("params") == kDataString) params.Parse(message.GetText("params"));
    message.Remove("params");
    const WipedAtEnd wipedParams(params);
    CUIData values;
    const WipedAtEnd wiped(values);
    for (const auto [name, value] : params) values.SetData(std::string_view(name), value);
    for (const std::string_view name : kEnvelope) values.Remove(name);
    if (!_run(TextOf(message.Find("cmd")), asker, values)) _refuse(asker, LocalFailure("没有该命令！"));
}

bool CAccountManager::_run(std::string_view command, const AccountAsker& asker, const CUIData& values) {
    const Command* const row = Command::Find(command);
    if (!row) {
        CCounters::Add("account_command_unknown");
        return false;
    }
    CUIData completed = WithColumns(values);
    CUIData passed = row->passed.empty() ? completed : CUIData();
    const WipedAtEnd wipedCompleted(completed), wipedPassed(passed);
    const auto misses = [&](std::string_view name, bool isNeeded) {
        const ValueView value = completed.GetDataView(name);
        const Secret text = IsPlain(value) ? SecretOf(value) : Secret();
        if (IsPlain(value) && !(isNeeded && text.IsEmpty())) {
            if (value && value.Kind() != kDataNull) passed.SetData(name, text.View());
            return false;
        }
        CCounters::Add("account_command_refused");
        _refuse(asker, {std::string(kLocalErrorCode), Gbk("参数错误：") + std::string(name)});
        return true;
    };
    for (const std::string_view name : row->needed) {
        if (misses(name, true)) return true;
    }
    for (const std::string_view name : row->passed) {
        if (misses(name, false)) return true;
    }
    (this->*row->run)({*row, asker, passed});
    return true;
}

// Pushes.

void CAccountManager::OnResponse(const CQueueRespData* response) {
    if (!response) return;
    const TextView topic = response->GetDataText("Topic");
    if (topic == kTopic) {
        _onMessage(*response);
    } else if (topic == kSessionEvent || topic == kErrorInfo) {
        _onSessionEvent(*response);
    } else if (topic == kPermission) {
        m_accounts->Query();
    } else {
        CCounters::Add("account_push_ignored");
    }
}

}  // namespace luadui
