#include "accounts/account_list.h"

#include <algorithm>
#include <utility>

#include "accounts/account_log.h"
#include "accounts/terminal_modules.h"
#include "base/counters.h"
#include "base/text.h"
#include "messaging/guid.h"
#include "messaging/request_types.h"

namespace luadui {
namespace {

struct UserValue {
    std::string_view name;
    std::string AccountUser::*text;
};
constexpr UserValue kUserValues[] = {
    {"useraccount", &AccountUser::name},
    {"user_id", &AccountUser::id},
    {"client_user_id", &AccountUser::id},
    {"institutionid", &AccountUser::institutionId},
    {"institution_id", &AccountUser::institutionId},
    {"token", &AccountUser::token},
    {"version", &AccountUser::version},
};

// Events of accounts after which an older answer to a query tells less than the account itself.
constexpr std::string_view kConfirmations[] = {kBindAccount.success, kUnbindAccount.success,
                                               kEditAccount.success, kEditPassword.success,
                                               kLogoutAccount.success};

void SetDefault(CUIData& values, std::string_view name, std::string_view text) {
    if (!values.Has(name)) values.SetData(name, text);
}

}  // namespace

CAccountList::CAccountList(ResultEventSink& sink, PasswordEncryption encryption)
    : CAccountRequester(sink, kModuleAccountList),
      m_encryption(encryption),
      m_externalFunctions(FindExternalFunctions()) {}

CAccountList::~CAccountList() = default;

void CAccountList::SetUser(AccountUser user) {
    const bool isAnother = !m_user.name.empty() && m_user.name != user.name;
    m_user = std::move(user);
    if (!isAnother) return;
    for (const auto& [key, account] : m_accounts) {
        account->WipePasswords();
        account->SetUnusable(Gbk(kAwaitingLogin));
    }
    m_dropped.clear();
}

CAccount* CAccountList::Find(std::string_view key) const {
    const auto found = m_accounts.find(key);
    return found == m_accounts.end() ? nullptr : found->second.get();
}

std::vector<CAccount*> CAccountList::InOrder() const {
    std::vector<CAccount*> accounts;
    accounts.reserve(m_accounts.size());
    for (const std::string_view key : m_order.Keys()) accounts.push_back(Find(key));
    return accounts;
}

CUIData CAccountList::_withUser(const CUIData& values) const {
    CUIData completed = values;
    for (const UserValue& value : kUserValues) SetDefault(completed, value.name, m_user.*value.text);
    if (completed.GetDataText("UUID").empty()) completed.SetData("UUID", NewGuid());
    return completed;
}

bool CAccountList::Query(const CUIData& values) {
    CUIData completed = _withUser(values);
    SetDefault(completed, "req_from", "dui");
    SetDefault(completed, "with_permission", "true");
    completed.SetData("PB_MODE", m_user.isPbMode ? "true" : "false");
    CQueueReqItem request = MakeAccountRequest(kQueryAccounts, completed);
    _sendAbout(kQueryAccounts, request, {});
    return true;
}

// The server's word that accounts changed makes the base class ask again, of which it knows only the type.
bool CAccountList::Request(CQueueReqItem& request) {
    CUIData params;
    request.GetData("Params", params);
    const bool isBare = RequestTypeOf(request) == kQueryAccounts.type && params.Has("isSub");
    return isBare ? Query() : CAccountRequester::Request(request);
}

bool CAccountList::_sendAbout(const AccountOperation& operation, CQueueReqItem& request, Context context,
                              const std::string& subject) {
    context.turn = ++m_turn;
    m_eventKey = context.key;
    m_contexts.try_emplace(request.GetDataString("UUID"), std::move(context));
    return _send(operation, request, subject);
}

void CAccountList::_onAnswer(const Answer& answer) {
    auto node = m_contexts.extract(answer.uuid);
    if (node.empty()) return;
    Context& context = node.mapped();
    m_eventKey = context.key;
    switch (answer.operation.type) {
        case kQueryAccounts.type:
            return _onQueryAnswer(answer, context.turn);
        case kUploadAccounts.type:
            return _onUploadAnswer(answer, context);
        case kAddAccount.type:
            return _onAddAnswer(answer, std::move(context));
        case kDeleteAccount.type:
            return _onDeleteAnswer(answer);
        case kAddPortfolio.type:
            return _onPortfolioAnswer(answer);
        case kSaveAccountOrder.type:
            if (HasFailed(answer.response)) m_order.SetSaved(false);
            return _forgetOldTurns();
    }
}

// Without requests under way no answer can be older than a change.
void CAccountList::_forgetOldTurns() {
    if (!m_contexts.empty() || !m_accountRequests.empty()) return;
    m_touched.clear();
    m_logins.clear();
}

void CAccountList::_forgetRequestsOfGone() {
    std::erase_if(m_accountRequests,
                  [this](const auto& request) { return !m_accounts.contains(request.second.key); });
}

// Events of the accounts.
void CAccountList::OnResultEvent(const ResultEvent& event) {
    const auto request = m_accountRequests.extract(event.uuid);
    CAccount* const account = Find(event.accountKey);
    if (!account || std::ranges::count(kConfirmations, event.name) == 0) return _sink().OnResultEvent(event);

    ResultEvent told = event;
    m_touched[event.accountKey] = m_turn;
    if (event.name == kLogoutAccount.success || event.name == kEditPassword.success) {
        _settleLogin(*account, request.empty() ? m_turn : request.mapped().turn);
        told.payload = account->ToJson();
    }
    if (event.name == kEditPassword.success && account->CanUse()) {
        const int32_t handle = GetHandle();
        SavePassInfo(
            *this, m_user, told.accountKey,
            {account->Password(AccountField::kPassword), account->Password(AccountField::kTxPassword),
             account->Password(AccountField::kDynamicPassword)});
        if (!IsAlive(handle)) return;
    }
    _forgetOldTurns();
    _sink().OnResultEvent(told);
}

// The account has taken over what its own request led to. When a later request was answered before, that one counts.
void CAccountList::_settleLogin(CAccount& account, uint64_t turn) {
    LoginState& settled = m_logins[std::string(account.Get(AccountField::kAccountKey))];
    if (settled.turn > turn) {
        CCounters::Add("account_login_superseded");
        account.Set(AccountField::kMessage, settled.message);
        account.Set(AccountField::kCanUse, settled.canUse);
        return;
    }
    settled = {turn, std::string(account.Get(AccountField::kMessage)),
               std::string(account.Get(AccountField::kCanUse))};
}

CUIData CAccountList::_noteRequest(const CUIData& values) {
    CUIData completed = _withUser(values);
    Context context;
    context.turn = ++m_turn;
    context.key = values.GetDataString("accountkey");
    m_accountRequests[completed.GetDataString("UUID")] = std::move(context);
    return completed;
}

bool CAccountList::Logout(const CUIData& values) {
    CAccount* const account = Find(values.GetDataText("accountkey"));
    return account && account->Logout(_noteRequest(values));
}

bool CAccountList::EditPassword(const CUIData& values) {
    CAccount* const account = Find(values.GetDataText("accountkey"));
    return account && account->EditPassword(_noteRequest(values), m_encryption.Cipher());
}

}  // namespace luadui
