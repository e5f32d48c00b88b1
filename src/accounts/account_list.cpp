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
    AccountField own = AccountField::kCount;  // that of an account counts more
};
constexpr UserValue kUserValues[] = {
    {"useraccount", &AccountUser::name},
    {"user_id", &AccountUser::id, AccountField::kUserId},
    {"client_user_id", &AccountUser::id},
    {"institutionid", &AccountUser::institutionId},
    {"institution_id", &AccountUser::institutionId, AccountField::kInstitutionId},
    {"token", &AccountUser::token},
    {"version", &AccountUser::version},
};

// Events of accounts after which an older answer to a query tells less than the account itself.
constexpr std::string_view kConfirmations[] = {kBindAccount.success, kUnbindAccount.success,
                                               kEditAccount.success};

void SetDefault(CUIData& values, std::string_view name, std::string_view text) {
    if (!values.Has(name) && !text.empty()) values.SetData(name, text);
}

}  // namespace

CAccountList::CAccountList(ResultEventSink& sink, PasswordEncryption encryption)
    : CAccountRequester(sink, kModuleAccountList),
      m_encryption(encryption),
      m_externalFunctions(FindExternalFunctions()) {}

CAccountList::~CAccountList() = default;

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

CUIData CAccountList::_withUser(const CUIData& values, const CAccount* account) const {
    CUIData completed = values;
    for (const UserValue& value : kUserValues) {
        const bool hasOwn = account && value.own != AccountField::kCount && !account->Get(value.own).empty();
        if (!hasOwn) SetDefault(completed, value.name, m_user.*value.text);
    }
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
                              const std::string& key) {
    context.turn = ++m_turn;
    m_contexts.try_emplace(request.GetDataString("UUID"), std::move(context));
    return _send(operation, request, {}, key);
}

// False when the list has gone meanwhile.
bool CAccountList::_tell(const std::vector<ResultEvent>& events) {
    const int32_t handle = GetHandle();
    for (const ResultEvent& event : events) {
        _sink().OnResultEvent(event);
        if (!IsAlive(handle)) return false;
    }
    return true;
}

void CAccountList::_onAnswer(const Answer& answer) {
    auto node = m_contexts.extract(answer.uuid);
    if (node.empty()) return;
    Context& context = node.mapped();
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
    ResultEvent told = event;
    if (account && std::ranges::count(kConfirmations, event.name) > 0) m_touched[event.accountKey] = m_turn;
    if (account && (event.name == kLogoutAccount.success || event.name == kEditPassword.success)) {
        _settleLogin(*account, request.empty() ? m_turn : request.mapped().turn);
        told.payload = account->ToJson();
        const int32_t handle = GetHandle();
        if (event.name == kEditPassword.success && account->CanUse()) _remember(*account);
        if (!IsAlive(handle)) return;
    }
    _forgetOldTurns();
    _sink().OnResultEvent(told);
}

// What was not entered again stays as the host has it: a logged-out account holds no passwords.
void CAccountList::_remember(const CAccount& account) {
    SavePassInfo(*this, m_user, std::string(account.Get(AccountField::kAccountKey)),
                 {account.Password(AccountField::kPassword), account.Password(AccountField::kTxPassword),
                  account.Password(AccountField::kDynamicPassword)},
                 Remembered::kKeptWhereEmpty);
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

CUIData CAccountList::_noteRequest(const CUIData& values, const CAccount& account) {
    CUIData completed = _withUser(values, &account);
    m_accountRequests.try_emplace(completed.GetDataString("UUID"),
                                  AccountRequest{++m_turn, values.GetDataString("accountkey")});
    return completed;
}

bool CAccountList::Bind(const CUIData& values) {
    CAccount* const account = Find(values.GetDataText("accountkey"));
    return account && account->Bind(_withUser(values, account));
}

bool CAccountList::Unbind(const CUIData& values) {
    CAccount* const account = Find(values.GetDataText("accountkey"));
    return account && account->Unbind(_withUser(values, account));
}

bool CAccountList::Edit(const CUIData& values) {
    CAccount* const account = Find(values.GetDataText("accountkey"));
    return account && account->Edit(_withUser(values, account));
}

bool CAccountList::Logout(const CUIData& values) {
    CAccount* const account = Find(values.GetDataText("accountkey"));
    return account && account->Logout(_noteRequest(values, *account));
}

bool CAccountList::EditPassword(const CUIData& values) {
    CAccount* const account = Find(values.GetDataText("accountkey"));
    if (!account) return false;
    CUIData completed = _noteRequest(values, *account);
    const WipedAtEnd wiped(completed);
    return account->EditPassword(completed, m_encryption.Cipher());
}

}  // namespace luadui
