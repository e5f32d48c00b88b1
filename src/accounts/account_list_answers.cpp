// CAccountList: adding and deleting single accounts and their portfolios.
#include <iterator>

#include "accounts/account_list.h"
#include "accounts/account_log.h"
#include "base/counters.h"
#include "base/secret_fields.h"
#include "base/text.h"

namespace luadui {
namespace {

struct AddedField {
    std::string_view name;
    AccountField field;
};
// What a new account takes from the request, and from the answer.
constexpr AddedField kAskedFields[] = {
    {"account_code", AccountField::kAccountId},
    {"broker_id", AccountField::kBrokerId},
    {"broker_name", AccountField::kBrokerName},
    {"trade_type", AccountField::kTradeType},
    {"issimulate", AccountField::kIsSimulated},
    {"user_key", AccountField::kUserKey},
    {"account_mark", AccountField::kAccountMark},
    {"yyb_name", AccountField::kBranchName},
    {"yyb_id", AccountField::kBranchId},
    {"user_id", AccountField::kUserId},
    {"institution_id", AccountField::kInstitutionId},
    {"product_id", AccountField::kProductId},
    {"account_name", AccountField::kAccountName},
    {"alias", AccountField::kNickname},
    {"trade_server", kTradeServer},
};
constexpr AddedField kAnsweredFields[] = {
    {"product_id", AccountField::kProductId},     {"product_name", AccountField::kProductName},
    {"account_name", AccountField::kAccountName}, {"permission_code", AccountField::kPermissionCode},
    {"alias", AccountField::kNickname},           {"account_id", AccountField::kId},
};

constexpr std::string_view kSecondStep = "add_creditaccount_second";
constexpr std::string_view kSecondStepCode = "401";

// An object, the text of one, or the first of an array.
bool ReadObject(const ValueView& value, CJsonObject& json) {
    if (CDataList list; value.Get(list)) return list.Get(0, json);
    return value.Get(json) || (value.Kind() == kDataString && json.Parse(value.AsText()));
}

// JSON array text, or an array.
std::string ArrayText(const ValueView& value) {
    CDataList list;
    if (!value.Get(list)) return std::string(value.AsText());
    CJsonObject whole;
    whole.Set("a", list);
    const std::string text = whole.ToText();
    return text.substr(5, text.size() - 6);  // without {"a": and }
}

template <class TextNamed>
std::string KeyOf(TextNamed text) {
    return MakeAccountKey(text("account_code"), text("broker_id"), text("trade_type"));
}

}  // namespace

bool CAccountList::AddAccount(const CUIData& values) {
    CUIData completed = _withUser(values);
    const WipedAtEnd wiped(completed);
    if (TextOf(completed.GetDataView("alias")).empty()) {
        completed.SetData("alias", TextOf(completed.GetDataView("account_name")) + '_' +
                                       TextOf(completed.GetDataView("broker_name")));
    }
    const auto encrypted = EncryptPasswords(completed, m_encryption.Cipher());
    const std::string key = KeyOf([&](auto name) { return TextOf(completed.GetDataView(name)); });
    if (!encrypted) {
        _fail(kAddAccount, completed.GetDataString("UUID"), LocalFailure(kAddAccount.unsent), key);
        return true;
    }
    CQueueReqItem request = MakeAccountRequest(kAddAccount, *encrypted);
    Context context;
    context.passwords = {SecretOf(completed.GetDataView("password")),
                         SecretOf(completed.GetDataView("txpassword")), Secret()};
    _sendAbout(kAddAccount, request, std::move(context), key);
    return true;
}

void CAccountList::_onAddAnswer(const Answer& answer, Context context) {
    CJsonObject data, info;
    CDataTable asked;
    if (HasFailed(answer.response)) return _failAsAnswered(answer);
    answer.params.GetData("Table", asked);
    if (!ReadReason(answer.response, data) || !ReadObject(data.Find("return_info"), info))
        return _fail(answer, LocalFailure(answer.operation.failed));

    const std::string& key = answer.key;
    CAccount& account = _accountFrom(asked, info, key);
    const std::string code = TextOf(info.Find("error_code"));
    if (ParseLong(code) == 0) {
        account.SetUsable();
    } else {
        account.SetUnusable(TextOf(info.Find("msg")));
    }
    const bool isSecondStep =
        account.Get(AccountField::kTradeType) == kCreditTradeType && code == kSecondStepCode;
    account.Password(AccountField::kPassword) = context.passwords.password;
    account.Password(AccountField::kTxPassword) = context.passwords.txPassword;
    _settleLogin(account, context.turn);
    m_touched[key] = m_turn;
    m_dropped.erase(key);
    const bool isOrderChanged = m_order.Append({key}) > 0;
    LogAbout(AccountSubject(account.Get(AccountField::kAccountId)), answer.operation.done);

    const int32_t handle = GetHandle();
    SavePassInfo(*this, m_user, key, std::move(context.passwords));
    if (!IsAlive(handle)) return;
    _forgetOldTurns();
    const CAccount* const added = Find(key);
    _report(isSecondStep ? kSecondStep : answer.operation.success, answer.uuid,
            added ? added->ToJson() : CJsonObject(), key);
    if (IsAlive(handle) && isOrderChanged && m_isInitialised) NotifyOrder(kTellPages);
}

CAccount& CAccountList::_accountFrom(const CDataTable& asked, const CJsonObject& answer,
                                     const std::string& key) {
    Changes unused;
    CAccount& account = _accountOf(key, unused);
    for (const auto& [name, field] : kAskedFields) {
        if (const TextView text = asked.GetItemText(0, name); !text.empty()) account.Set(field, text);
    }
    for (const auto& [name, field] : kAnsweredFields) {
        if (const std::string text = TextOf(answer.Find(name)); !text.empty()) account.Set(field, text);
    }
    if (TextOf(answer.Find("alias")).empty()) account.RebuildNickname();
    if (Portfolios portfolios; ReadPortfolios(ArrayText(answer.Find("portfolios")), portfolios))
        account.SetPortfolios(std::move(portfolios));
    account.SetUnusable(Gbk(kAwaitingLogin));
    return account;
}

bool CAccountList::DeleteAccount(const CUIData& values) {
    const std::string key = values.GetDataString("accountkey");
    const CAccount* const account = Find(key);
    if (!account) return false;
    CUIData completed = _withUser(values);
    for (const auto& [name, field] : kAskedFields) {
        if (!values.Has(name)) completed.SetData(name, account->Get(field));
    }
    CQueueReqItem request = MakeAccountRequest(kDeleteAccount, completed);
    _sendAbout(kDeleteAccount, request, {}, key);
    return true;
}

void CAccountList::_onDeleteAnswer(const Answer& answer) {
    if (HasFailed(answer.response)) return _failAsAnswered(answer);
    const std::string& key = answer.key;
    std::vector<ResultEvent> ended;
    CJsonObject payload;
    payload.Set("accountkey", key);
    std::string code = key;
    if (CAccount* const account = Find(key)) {
        account->WipePasswords();
        account->Set(AccountField::kCanUse, "0");
        payload = account->ToJson();
        code = account->Get(AccountField::kAccountId);
        ended = account->Abandon(kAccountGone);
    } else {
        payload.Set("canuse", "0");
        CCounters::Add("account_answer_without_account");
    }
    m_accounts.erase(key);
    _forgetRequestsOfGone();
    m_order.Remove(key);
    m_dropped.erase(key);
    m_touched[key] = m_turn;
    LogAbout(AccountSubject(code), answer.operation.done);

    const int32_t handle = GetHandle();
    SavePassInfo(*this, m_user, key, {});
    if (!IsAlive(handle)) return;
    _forgetOldTurns();
    _succeed(answer, payload);
    if (IsAlive(handle)) _tell(ended);
}

bool CAccountList::AddPortfolio(const CUIData& values) {
    const std::string key = values.GetDataString("AccountKey");
    if (!Find(key)) return false;
    CQueueReqItem request = MakeAccountRequest(kAddPortfolio, _withUser(values));
    CUIData params;
    request.GetData("Params", params);
    for (const auto [name, value] : values) {
        if (name != "UUID" && !params.Has(name) && !IsSecretField(name)) params.SetData(name, TextOf(value));
    }
    request.SetData("Params", params);
    _sendAbout(kAddPortfolio, request, {}, key);
    return true;
}

void CAccountList::_onPortfolioAnswer(const Answer& answer) {
    CDataTable rows;
    if (HasFailed(answer.response) || !TableOf(answer.response, rows)) return _failAsAnswered(answer);
    CAccount* const account = Find(answer.key);
    if (!account) CCounters::Add("account_answer_without_account");
    CJsonObject payload;
    for (int row = 0; row < rows.GetRowNumber(); ++row) {
        const Portfolio portfolio = PortfolioOfRow(rows, row);
        payload.Set("portfolioid", portfolio.id);
        payload.Set("fund_token", portfolio.fundToken);
        if (portfolio.IsDefault()) payload.Set("default_fund_token", portfolio.fundToken);
        if (account) account->PutPortfolio(portfolio);
        LogAbout(Gbk("单元名称:") + portfolio.name, answer.operation.done);
    }
    m_touched[answer.key] = m_turn;
    _forgetOldTurns();
    _succeed(answer, payload);
}

}  // namespace luadui
