// CAccountManager: the front of everything about accounts, for pages and for the host.
#pragma once

#include <cstdint>
#include <map>
#include <memory>
#include <optional>
#include <set>
#include <span>
#include <string>
#include <string_view>
#include <unordered_map>
#include <utility>
#include <vector>

#include "accounts/account_commands.h"
#include "accounts/account_events.h"
#include "accounts/account_group.h"
#include "accounts/account_list.h"
#include "accounts/result_event.h"
#include "messaging/request_object.h"

namespace luadui {

// Owns the account list and the group list, runs the commands of pages on them, and tells of what comes of it: the page
// that asked, all that subscribed (notifications of type 65537), and the host's Lua side.
//
// Commands come in two ways:
//   Execute()  with a request record of a page. Its answer is a response record of the request's type.
//   A push     under kTopic, whose JSON ("JsonData" or "RawData") is {"cmd": name, "params": {...}, "key": subscription key
//              of the answer, "uuid"}. Its answer is a notification under that key, with "_UUID" as given.
// Answers are {"result": {...}}: "code", "message", "data" for what is known at once, and "success" in front of these for
// what the service said. "code" is "0" where it worked. Without a key they go out under "UnKnowKey_Ret" and
// "UnKnowKey_Event"; failures that nobody asked for go out under the latter.
//
// Notifications, "_SEND_DATA":
//   ClientAccountChanged          {"clientaccounts": [...], "clientgroups": [{"groupid", "accountlist"}]}; has the passwords
//   CLIENT_ACCOUNTGROUP_CHANGED   {"clientgroups": [{"groupid", "groupname", "grouptype", "issimulate", "accountlist"}]}
//   ClientAccountOrderChanged     {"account_order_source", "accountorder": [{"accountkey", "order"}]}
//   CLIENT_MODIFY_ACCOUNT_STATUS  {"accountkey", "accountname", "nickname", "canuse", "AccountMsg", "AccountStatus"}, where
//                                 the last is "login" or "logout"
// "accountlist" is JSON array text of account ids, in the order that "modifyOrderInGroup" gave them.
//
// Threads:   the UI thread.
// Lifetime:  answers, notifications and host calls may end pages, and the manager itself.
class CAccountManager final : public CRequestObject, public AccountCommands, private ResultEventSink {
  public:
    static constexpr std::string_view kTopic = "cmd_accountmanager";
    // Timers that run the commands "notifyOrderToServer" (until it is stopped) and kOnlineCommand (once).
    static constexpr uint32_t kOrderTimer = 0x467, kOnlineTimer = 0x468;
    static constexpr uint32_t kOrderPeriod = 2000, kOnlinePeriod = 300;  // ms
    static constexpr std::string_view kOnlineCommand = "timer_accountonline_changed";

    // `events` outlives the manager.
    explicit CAccountManager(AccountEvents& events, PasswordEncryption encryption = PasswordEncryption());
    ~CAccountManager() override;

    // Subscribes to commands and to news of lost sessions, and asks for the accounts and groups of who is signed in. Once
    // a user; until somebody is signed in it does nothing. Another user starts with empty lists, which is told; commands of
    // before that wait for an answer get a failure ("用户已切换！").
    void OnUser() override;
    bool Execute(const std::string& command, const CUIData& arguments) override;
    // Takes the pushes that it subscribed to.
    void OnResponse(const CQueueRespData* response) override;

    // Until another user signs in.
    CAccountList& Accounts() { return *m_accounts; }
    CAccountGroupList& Groups() { return *m_groups; }

  private:
    struct Command;  // a row of the table of commands
    struct Call {    // a command that is being run
        const Command& command;
        const AccountAsker& asker;
        const CUIData& values;  // its arguments by name
    };
    struct Event;  // a row of the table of events
    struct Step;
    static const Command kCommands[];
    static const Event kEvents[];
    static const Step kSteps[];
    using Failure = AccountFailure;
    using Numbers = std::vector<std::pair<std::string, int>>;  // of accounts, as they were named

    bool _subscribe(const AccountUser& user);
    void _makeLists();
    void _tellOfAnotherUser(const std::map<std::string, AccountAsker, std::less<>>& askers);

    // Commands (account_manager.cpp, account_manager_commands.cpp)
    bool _run(std::string_view command, const AccountAsker& asker, const CUIData& values);
    void _onMessage(const CQueueRespData& push);
    void _getAccountList(const Call& call);
    void _refreshSelected(const Call& call);
    void _addAccount(const Call& call);
    void _deleteAccount(const Call& call);
    void _logoutAccount(const Call& call);
    void _bindAccount(const Call& call);
    void _unbindAccount(const Call& call);
    void _editAccount(const Call& call);
    void _editPassword(const Call& call);
    void _addPortfolio(const Call& call);
    void _getGroupList(const Call& call);
    void _addGroup(const Call& call);
    void _deleteGroup(const Call& call);
    void _addToGroup(const Call& call);
    void _deleteFromGroup(const Call& call);
    // Starts an operation whose event will answer. One that the state refuses is answered at once.
    template <class Operation>
    void _start(const Call& call, Operation operation);
    using Membership = bool (CAccountGroupList::*)(const CUIData&);
    void _changeMembers(const Call& call, Membership operation);

    // Answers (account_manager_answers.cpp)
    void _answer(const AccountAsker& asker, CJsonObject data, CDataTable table = CDataTable());
    void _done(const AccountAsker& asker);  // "操作成功！"
    void _refuse(const AccountAsker& asker, const Failure& failure);
    void _send(const AccountAsker& asker, std::string_view fallbackKey, const CJsonObject& result,
               const CDataTable& table);

    // Events (account_manager_events.cpp)
    void OnResultEvent(const ResultEvent& event) override;
    void _answerEvent(const Event& row, const ResultEvent& event);
    void _logFailure(const ResultEvent& event, const std::string& message);
    void _onSessionEvent(const CQueueRespData& push);
    std::string _keyOf(const CJsonObject& news);
    std::string _keyOfToken(const std::string& token);

    // Notifications (account_manager_publications.cpp)
    bool _publish(std::string_view key, const std::string& data, const std::string& uuid = {});
    void _publishAccounts(const Event& row, const ResultEvent& event);
    void _publishGroups(const Event& row, const ResultEvent& event);
    void _publishStatus(const Event& row, const ResultEvent& event);
    void _checkOnline(const Event& row, const ResultEvent& event);
    void _publishOnline();
    void _tellGroups();
    CDataList _groupsJson() const;

    // The host (account_manager_host.cpp)
    void _tellHostOfAccounts(const Event& row, const ResultEvent& event);
    void _tellHostOfGroup(const Event& row, const ResultEvent& event);

    // Order (account_manager_order.cpp)
    void _modifyOrder(const Call& call);
    void _queryOrder(const Call& call);
    void _notifyOrderToPage(const Call& call);
    void _notifyOrderToServer(const Call& call);
    void _modifyOrderInGroup(const Call& call);
    bool _setOrder(const Call& call, const Numbers& numbers);
    void _publishOrder(const Event& row, const ResultEvent& event);
    void _tellOrder();
    void _saveOrderSoon(const Event& row, const ResultEvent& event);
    CJsonObject _orderJson() const;
    std::string _membersText(const CAccountGroup& group) const;

    static bool _isAlive(int32_t handle) { return CBaseObject::Find(handle) != nullptr; }

    AccountEvents& m_events;
    const PasswordEncryption m_encryption;
    // A user's own: what is answered to those of a user before finds nobody.
    std::unique_ptr<CAccountList> m_accounts;
    std::unique_ptr<CAccountGroupList> m_groups;
    bool m_isSubscribed = false;
    std::string m_user;  // whose accounts were asked for

    std::map<std::string, AccountAsker, std::less<>> m_askers;  // of requests under way, by their UUID
    std::string m_orderSource = "AccountManager";
    std::map<std::string, std::vector<std::string>, std::less<>> m_groupOrders;  // account ids by group id
    std::set<std::string, std::less<>> m_online;  // keys of the accounts that were told of as logged in
    // Account keys by fund token, once somebody asked, until the next whole list.
    std::optional<std::unordered_map<std::string, std::string>> m_tokens;
    std::optional<bool> m_logsFailures;  // "FullElkLog", once read
};

}  // namespace luadui
