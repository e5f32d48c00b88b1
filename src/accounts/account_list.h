// CAccountList: all accounts of the signed-in user.
#pragma once

#include <cstdint>
#include <map>
#include <memory>
#include <set>
#include <string>
#include <string_view>
#include <unordered_map>
#include <unordered_set>
#include <utility>
#include <vector>

#include "accounts/account.h"
#include "accounts/account_order.h"
#include "accounts/account_requester.h"
#include "accounts/account_user.h"
#include "accounts/pass_info.h"
#include "accounts/password_cipher.h"

namespace luadui {

// The field that holds the server on which the account trades; the service names it without meaning to show it.
inline constexpr AccountField kTradeServer = AccountField::kSpare1;
inline constexpr std::string_view kOrdinaryTradeType = "1";
inline constexpr std::string_view kCreditTradeType = "2";
// The message of accounts that nobody tried to log in yet, and that of requests whose account went (UTF-8).
inline constexpr std::string_view kAwaitingLogin = "待验证";
inline constexpr std::string_view kAccountGone = "账户不存在！";

// Asks the account service for the accounts, keeps them and their order, logs them in, adds and deletes them.
//
// Operations take a record `values` by parameter name, as CAccount's do, "UUID" too. What it does not bring comes from the
// account and from the user. They answer true when an event tells the outcome, later or already inside the call; false when
// the account that they are about does not exist, without an event.
//
// Events:    its own and those of its accounts go to the sink that the list was made with, each once. Besides the outcomes
//            of requests there are
//              initialize_finished, account_refresh_finished   {"req_from"}
//              account_changed_push     {"added": [keys], "removed": [keys]}, after account_refresh_finished
//              modify_account_status    an account's can-use flag or message changed without another event about it;
//                                       carries the account's JSON
//              notifyOrderToPage, modifyAccountOrder   from NotifyOrder()
// State:     follows the service in the order in which requests were sent, whatever the order of the answers: an answer
//            does not undo what a later request has settled already.
// Passwords: in the accounts only. They come from the host (see pass_info.h) when an upload needs them.
// Threads:   the UI thread.
// Lifetime:  host callbacks and the sink may destroy the list, and accounts, inside any operation and answer.
class CAccountList final : public CAccountRequester, private ResultEventSink {
  public:
    using Accounts = std::map<std::string, std::unique_ptr<CAccount>, std::less<>>;  // by account key

    // `sink` outlives the list.
    explicit CAccountList(ResultEventSink& sink, PasswordEncryption encryption = PasswordEncryption());
    ~CAccountList() override;

    // Who is signed in; before the first request, and when something about him changes. Another user gets another list.
    void SetUser(AccountUser user) { m_user = std::move(user); }
    const AccountUser& User() const { return m_user; }

    // The account; null when there is none. Look up again after every call out: answers and sinks remove accounts.
    CAccount* Find(std::string_view key) const;
    const Accounts& All() const { return m_accounts; }
    // The same accounts in the order of display. Valid until the next call out.
    std::vector<CAccount*> InOrder() const;
    // Whether the first query was answered, one way or the other.
    bool IsInitialised() const { return m_isInitialised; }

    // Asks for all accounts. `values` may bring "req_from" ("cef" for a web page, otherwise "dui") and "with_permission"
    // (otherwise "true"). The answer is the whole list; new accounts are uploaded.
    bool Query(const CUIData& values = {});
    // Logs accounts in: all of them, or with "selrefresh" "true" those of "accountkeylist" (keys joined by ';'; unknown ones
    // are passed over). `values` may bring further columns, the same for every account. What cannot be uploaded becomes
    // unusable and says why. When that leaves nothing to send, the finished event comes at once.
    bool Upload(const CUIData& values = {});
    // `values` brings the columns of the new account, passwords in clear text; only cipher text leaves.
    bool AddAccount(const CUIData& values);
    // "accountkey" names the account.
    bool DeleteAccount(const CUIData& values);
    // "AccountKey" names the account; all other texts of `values` go out as they are.
    bool AddPortfolio(const CUIData& values);
    // CAccount's operations on the account "accountkey". False also when the account's state refuses it.
    bool Bind(const CUIData& values);
    bool Unbind(const CUIData& values);
    bool Edit(const CUIData& values);
    bool Logout(const CUIData& values);
    bool EditPassword(const CUIData& values);

    // The order of display has a number for every account, and for none that is not here.
    const AccountOrder& Order() const { return m_order; }
    // The user's wish: true when it changed something. Keys without an account are passed over ("account_order_unknown").
    bool SetOrder(const AccountNumbers& numbers);
    // Sends the order of all accounts to the service. False when it could not be sent; no event tells of it.
    bool SaveOrder(const CUIData& values = {});
    // Asks the sink, by an event, to tell pages of the order, or to save it; its payload is {"accounts": [{"accountkey",
    // "order"}]}. The list does so itself, with kTellPages, when an answer changed the order after the first load.
    enum OrderNotice { kTellPages = 1, kSave = 2 };
    void NotifyOrder(OrderNotice mode);

    const PasswordEncryption& Encryption() const { return m_encryption; }
    // The JSON text of the user's products, as the host answered when the list was first filled.
    const std::string& ProductInfo() const { return m_productInfo; }

  private:
    // What a request is about, until its answer.
    struct Context {
        uint64_t turn = 0;   // see m_turn
        PassInfo passwords;  // of an account that is being added
        std::unordered_multimap<std::string, std::string>
            uploaded;  // account keys by the token they went out with
    };
    struct AccountRequest {
        uint64_t turn = 0;
        std::string key;  // of the account
    };
    struct LoginState {
        uint64_t turn = 0;  // of the request that settled it
        std::string message, canUse;
    };
    struct Changes {
        std::vector<std::string> added, removed;
        std::vector<ResultEvent> ended;  // requests of accounts that went
        bool isOrderChanged = false;
        bool isOutdated = false;  // rows were passed over
    };
    struct UploadPlan {
        CDataTable rows;
        std::vector<std::string> keys;     // of the rows
        std::vector<std::string> refused;  // accounts whose state changed because they are not among the rows
        decltype(Context::uploaded) tokens;
    };
    template <class Value>
    using ByText = std::map<std::string, Value, std::less<>>;
    static constexpr size_t kMaxDropped = 10'000;

    // Requests and answers.
    bool Request(CQueueReqItem& request) override;
    bool _sendAbout(const AccountOperation& operation, CQueueReqItem& request, Context context,
                    const std::string& key = {});
    void _onAnswer(const Answer& answer) override;
    CUIData _withUser(const CUIData& values, const CAccount* account = nullptr) const;
    bool _tell(const std::vector<ResultEvent>& events);
    void _forgetOldTurns();
    void _forgetRequestsOfGone();

    // Answers to queries.
    void _onQueryAnswer(const Answer& answer, uint64_t turn);
    bool _build(const Answer& answer, uint64_t turn, Changes& changes);
    void _merge(const CDataTable& rows, uint64_t turn, const AccountNumbers& saved, Changes& changes);
    CAccount& _accountOf(const std::string& key, Changes& changes);
    void _dropUnseen(const std::unordered_set<const CAccount*>& seen, uint64_t turn, Changes& changes);
    void _numberAccounts(const AccountNumbers& saved, Changes& changes);
    bool _isTouchedSince(std::string_view key, uint64_t turn) const;
    bool _reportQuery(const Answer& answer, bool isFirst, const Changes& changes);

    // Logins.
    std::vector<std::string> _keysToUpload(const CUIData& values) const;
    std::vector<std::string> _keysAwaitingLogin() const;
    const CAccount* _ordinaryAccount(const CAccount& account) const;
    bool _needsOrdinaryAccount(const CAccount& account) const;
    bool _takePasswords(const std::vector<std::string>& keys);
    UploadPlan _planUpload(const std::vector<std::string>& keys, const CUIData& values);
    std::string _planAccount(const CAccount& account, CUIData& row) const;
    bool _putPassword(CUIData& row, std::string_view column, const Secret& password) const;
    void _sendUpload(UploadPlan plan, const CUIData& values);
    void _onUploadAnswer(const Answer& answer, const Context& context);
    void _settleRow(const CDataTable& rows, int row, const std::string& key, uint64_t turn);

    // Single accounts, and what they report.
    void _onAddAnswer(const Answer& answer, Context context);
    CAccount& _accountFrom(const CDataTable& asked, const CJsonObject& answer, const std::string& key);
    void _onDeleteAnswer(const Answer& answer);
    void _onPortfolioAnswer(const Answer& answer);
    void OnResultEvent(const ResultEvent& event) override;
    CUIData _noteRequest(const CUIData& values, const CAccount& account);
    void _settleLogin(CAccount& account, uint64_t turn);
    void _remember(const CAccount& account);

    AccountUser m_user;
    Accounts m_accounts;
    AccountOrder m_order;
    bool m_isInitialised = false;
    std::string m_productInfo;
    const PasswordEncryption m_encryption;
    void* const m_externalFunctions;  // of the terminal, for later use; null where there are none

    // Requests are numbered as they are sent. Changes of accounts that are confirmed get the number of the last request:
    // it and the ones before may have been answered without knowing of the change.
    uint64_t m_turn = 0;
    uint64_t m_lastMerged = 0;                 // of the query whose answer the list shows
    ByText<Context> m_contexts;                // by UUID
    ByText<AccountRequest> m_accountRequests;  // those of accounts that bear on logins, by UUID
    ByText<uint64_t> m_touched;    // last confirmed change of what a query answers, by account key
    ByText<LoginState> m_logins;   // last settled login, by account key
    ByText<LoginState> m_dropped;  // how those stood that the service no longer names; at most kMaxDropped
};

}  // namespace luadui
