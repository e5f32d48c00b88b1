#include "accounts/account.h"

#include <algorithm>
#include <utility>

#include "accounts/account_log.h"
#include "base/counters.h"
#include "base/text.h"
#include "messaging/guid.h"

namespace luadui {
namespace {

constexpr size_t At(AccountField field) { return static_cast<size_t>(field); }

// What an account can fill in when the asker does not bring it. Never a password.
struct OwnValue {
    std::string_view column;
    AccountField field;
};
constexpr OwnValue kOwnValues[] = {
    {"account_code", AccountField::kAccountId},
    {"trade_type", AccountField::kTradeType},
    {"institution_id", AccountField::kInstitutionId},
    {"product_id", AccountField::kProductId},
    {"broker_id", AccountField::kBrokerId},
    {"issimulate", AccountField::kIsSimulated},
    {"account_mark", AccountField::kAccountMark},
    {"alias", AccountField::kNickname},
    {"user_id", AccountField::kUserId},
    {"client_user_id", AccountField::kUserId},
    {"fund_token", AccountField::kFundToken},
};

constexpr std::string_view kEditedColumns[] = {"account_mark", "alias"};

}  // namespace

CAccount::CAccount(ResultEventSink& sink) : CAccountRequester(sink, kModuleAccount) {}

std::string_view CAccount::Get(AccountField field) const {
    return InfoOf(field).isSecret ? m_secrets[At(field)].View() : std::string_view(m_texts[At(field)]);
}

void CAccount::Set(AccountField field, std::string_view text) {
    if (InfoOf(field).isSecret) {
        m_secrets[At(field)].Set(text);
    } else {
        m_texts[At(field)] = text;
    }
}

Secret& CAccount::Password(AccountField field) { return m_secrets[At(field)]; }

const Secret& CAccount::Password(AccountField field) const { return m_secrets[At(field)]; }

void CAccount::WipePasswords() {
    for (Secret& secret : m_secrets) secret.Wipe();
}

void CAccount::SetPortfolios(Portfolios portfolios) {
    m_portfolios = std::move(portfolios);
    if (const Portfolio* const portfolio = m_portfolios.Default())
        Set(AccountField::kFundToken, portfolio->fundToken);
}

void CAccount::PutPortfolio(Portfolio portfolio) {
    Portfolios portfolios = std::move(m_portfolios);
    portfolios.Put(std::move(portfolio));
    SetPortfolios(std::move(portfolios));
}

void CAccount::SetUsable() {
    Set(AccountField::kCanUse, "1");
    Set(AccountField::kMessage, Gbk("正常"));
}

void CAccount::SetUnusable(std::string_view message) {
    Set(AccountField::kCanUse, "0");
    Set(AccountField::kMessage, message);
}

void CAccount::RebuildNickname() {
    m_texts[At(AccountField::kNickname)] =
        m_texts[At(AccountField::kAccountName)] + '_' + m_texts[At(AccountField::kBrokerName)];
}

std::string CAccount::RebuildKey() {
    std::string key = MakeAccountKey(Get(AccountField::kAccountId), Get(AccountField::kBrokerId),
                                     Get(AccountField::kTradeType));
    Set(AccountField::kAccountKey, key);
    return key;
}

CJsonObject CAccount::ToJson() const {
    CJsonObject json;
    json.Set(InfoOf(AccountField::kAccountKey).key, Get(AccountField::kAccountKey));
    for (const AccountFieldInfo& info : kAccountFieldTable) {
        if (info.IsSerialised() && info.field != AccountField::kAccountKey)
            json.Set(info.key, Get(info.field));
    }
    json.Set("portfolios", m_portfolios.ToJson());
    return json;
}

bool CAccount::Bind(const CUIData& values) {
    return IsBound() ? _refuse(kBindAccount) : _request(kBindAccount, values);
}

bool CAccount::Unbind(const CUIData& values) {
    return IsBound() ? _request(kUnbindAccount, values) : _refuse(kUnbindAccount);
}

bool CAccount::Edit(const CUIData& values) { return _request(kEditAccount, values); }

bool CAccount::EditPassword(const CUIData& values, const PasswordCipher& cipher) {
    std::string uuid = values.GetDataString("UUID");
    if (uuid.empty()) uuid = NewGuid();
    auto encrypted = EncryptPasswords(values, cipher);
    if (!encrypted) {
        _fail(kEditPassword, uuid, LocalFailure(kEditPassword.unsent), _key());
        return true;
    }
    encrypted->SetData("UUID", uuid);
    m_newPasswords.try_emplace(uuid, NewPasswords{SecretOf(values.GetDataView("password")),
                                                  SecretOf(values.GetDataView("txpassword"))});
    return _request(kEditPassword, *encrypted);
}

bool CAccount::Logout(const CUIData& values) { return _request(kLogoutAccount, values); }

bool CAccount::_refuse(const AccountOperation& operation) {
    _log(operation.refused);
    return false;
}

bool CAccount::_request(const AccountOperation& operation, const CUIData& values) {
    CQueueReqItem request = MakeAccountRequest(operation, _complete(operation, values));
    _send(operation, request, _subject(), _key());
    return true;
}

CUIData CAccount::_complete(const AccountOperation& operation, const CUIData& values) const {
    CUIData complete = values;
    for (const OwnValue& own : kOwnValues) {
        if (std::ranges::count(operation.columns, own.column) > 0 && !values.Has(own.column))
            complete.SetData(own.column, Get(own.field));
    }
    return complete;
}

void CAccount::_onAnswer(const Answer& answer) {
    auto newPasswords = m_newPasswords.extract(answer.uuid);
    if (HasFailed(answer.response)) return _failAsAnswered(answer);
    switch (answer.operation.type) {
        case kBindAccount.type:
            Set(AccountField::kBindStatus, "1");
            break;
        case kUnbindAccount.type:
            Set(AccountField::kBindStatus, "0");
            break;
        case kEditAccount.type:
            _applyEdit(answer);
            break;
        case kEditPassword.type:
            if (!_applyLogin(answer)) return _fail(answer, MissingTable(answer.response));
            if (CanUse() && newPasswords) _accept(std::move(newPasswords.mapped()));
            break;
        case kLogoutAccount.type:
            SetUnusable(Gbk("手动注销"));
            WipePasswords();
            break;
    }
    _log(answer.operation.done);
    _succeed(answer, ToJson());
}

void CAccount::_applyEdit(const Answer& answer) {
    CDataTable table;
    answer.params.GetData("Table", table);
    for (const std::string_view column : kEditedColumns) {
        const int col = table.FindColumn(column);
        if (col < 0 || table.GetRowNumber() == 0) continue;
        const auto* const own = std::ranges::find(kOwnValues, column, &OwnValue::column);
        Set(own->field, table.GetItemText(0, col));
    }
}

bool CAccount::_applyLogin(const Answer& answer) {
    CDataTable table;
    if (!TableOf(answer.response, table) || table.GetRowNumber() == 0) return false;
    ApplyLoginRow(table, 0);
    return true;
}

void CAccount::ApplyLoginRow(const CDataTable& table, int row) {
    const auto take = [&](AccountField field, std::string_view column) {
        const int col = table.FindColumn(column);
        if (col >= 0) Set(field, table.GetItemText(row, col));
    };
    take(AccountField::kAccountName, "account_name");
    take(AccountField::kPermissionCode, "permission_code");
    RebuildNickname();
    if (table.GetItemText(row, "error_code") == "0") {
        SetUsable();
    } else {
        SetUnusable(table.GetItemText(row, "msg"));
    }
}

void CAccount::_accept(NewPasswords passwords) {
    if (!passwords.password.IsEmpty()) Password(AccountField::kPassword) = std::move(passwords.password);
    if (!passwords.txPassword.IsEmpty())
        Password(AccountField::kTxPassword) = std::move(passwords.txPassword);
}

std::string CAccount::_subject() const { return AccountSubject(Get(AccountField::kAccountId)); }

void CAccount::_log(std::string_view end) const { LogAbout(_subject(), end); }

std::string MakeAccountKey(std::string_view accountCode, std::string_view brokerId,
                           std::string_view tradeType) {
    std::string key(accountCode);
    (key += '|') += brokerId;
    (key += '|') += tradeType;
    return key;
}

}  // namespace luadui
