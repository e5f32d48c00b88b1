// CAccountList: logging accounts in.
#include <algorithm>

#include "accounts/account_list.h"
#include "accounts/account_log.h"
#include "base/counters.h"
#include "base/text.h"

namespace luadui {
namespace {

constexpr std::string_view kSelectedFinished = "account_select_refresh_finished";

constexpr std::string_view kEmptyPassword = "密码为空";
constexpr std::string_view kNoOrdinaryAccount = "未获取到信用账户对应的普通账户";
constexpr std::string_view kEmptyOrdinaryPassword = "信用账户对应的普通账户密码为空";
constexpr std::string_view kNotEncrypted = "密码加密失败";

// What goes out with every account alike. No passwords: clear text never leaves.
constexpr std::string_view kCommonColumns[] = {"hardware_info", "version", "trade_server", "verification",
                                               "qsflag",        "token",   "user_id"};

bool IsTrue(const ValueView& value) {
    const std::string text = TextOf(value);
    return text == "true" || text == "1";
}

std::string Joined(const std::vector<std::string>& texts, char separator) {
    std::string joined;
    for (const std::string& text : texts) {
        if (!joined.empty()) joined += separator;
        joined += text;
    }
    return joined;
}

void AppendRow(CDataTable& table, const CUIData& cells) {
    const int row = table.AppendRow();
    for (const auto [name, cell] : cells) table.SetItemText(row, name, cell.AsText());
}

}  // namespace

std::vector<std::string> CAccountList::_keysToUpload(const CUIData& values) const {
    std::vector<std::string> keys;
    if (!IsTrue(values.GetDataView("selrefresh"))) {
        for (const auto& [key, account] : m_accounts) keys.push_back(key);
        return keys;
    }
    for (const std::string_view key : SplitText(values.GetDataText("accountkeylist"), ';')) {
        if (m_accounts.contains(key)) {
            keys.emplace_back(key);
        } else if (!key.empty()) {
            CCounters::Add("account_key_unknown");
        }
    }
    std::ranges::sort(keys);
    keys.erase(std::unique(keys.begin(), keys.end()), keys.end());
    return keys;
}

// A refresh undoes neither a login nor a logout: it logs in what nobody tried to log in yet.
std::vector<std::string> CAccountList::_keysAwaitingLogin() const {
    std::unordered_set<std::string_view> underWay;
    for (const auto& [uuid, context] : m_contexts) {
        for (const auto& [token, key] : context.uploaded) underWay.insert(key);
    }
    const std::string awaiting = Gbk(kAwaitingLogin);
    std::vector<std::string> keys;
    for (const auto& [key, account] : m_accounts) {
        if (account->Get(AccountField::kMessage) == awaiting && !underWay.contains(key)) keys.push_back(key);
    }
    return keys;
}

bool CAccountList::_needsOrdinaryAccount(const CAccount& account) const {
    return m_user.isPbMode && account.Get(AccountField::kTradeType) == kCreditTradeType;
}

const CAccount* CAccountList::_ordinaryAccount(const CAccount& account) const {
    return Find(MakeAccountKey(account.Get(AccountField::kAccountId), account.Get(AccountField::kBrokerId),
                               kOrdinaryTradeType));
}

// Gives those of the accounts that lack a password what the host remembers, and so the ordinary accounts that they need.
// False when the list has gone meanwhile.
bool CAccountList::_takePasswords(const std::vector<std::string>& keys) {
    std::set<std::string> lacking;
    const auto check = [&](const CAccount* account) {
        if (account && account->Password(AccountField::kPassword).IsEmpty())
            lacking.emplace(account->Get(AccountField::kAccountKey));
    };
    for (const std::string& key : keys) {
        const CAccount* const account = Find(key);
        check(account);
        if (account && _needsOrdinaryAccount(*account)) check(_ordinaryAccount(*account));
    }
    if (lacking.empty()) return true;

    const int32_t handle = GetHandle();
    auto infos = GetPassInfo(*this, m_user);
    if (!IsAlive(handle)) return false;
    if (!infos) return true;
    std::vector<std::string> with, without;
    for (const std::string& key : lacking) {
        CAccount* const account = Find(key);
        const auto info = infos->find(key);
        if (account && info != infos->end()) {
            account->Password(AccountField::kPassword) = std::move(info->second.password);
            account->Password(AccountField::kTxPassword) = std::move(info->second.txPassword);
            account->Password(AccountField::kDynamicPassword) = std::move(info->second.dynamicPassword);
        }
        const bool hasPassword = account && !account->Password(AccountField::kPassword).IsEmpty();
        (hasPassword ? with : without).push_back(key);
    }
    LogAccount("record local password!", "InitPassword:: record local password!\n has password:[" +
                                             Joined(with, ',') + "]\n no password:[" + Joined(without, ',') +
                                             "]");
    return true;
}

bool CAccountList::Upload(const CUIData& values) {
    const int32_t handle = GetHandle();
    const CUIData completed = _withUser(values);
    const auto keys = _keysToUpload(completed);
    if (!_takePasswords(keys)) return true;
    UploadPlan plan = _planUpload(keys, completed);
    for (const std::string& key : plan.refused) {
        const CAccount* const account = Find(key);
        if (!account) continue;
        _report("modify_account_status", completed.GetDataString("UUID"), account->ToJson(), key);
        if (!IsAlive(handle)) return true;
    }
    _sendUpload(std::move(plan), completed);
    return true;
}

CAccountList::UploadPlan CAccountList::_planUpload(const std::vector<std::string>& keys,
                                                   const CUIData& values) {
    UploadPlan plan{AccountTable(kUploadAccounts), {}, {}, {}};
    const CUIData completed = _withUser(values);
    CUIData common;
    for (const std::string_view name : kCommonColumns)
        common.SetData(name, TextOf(completed.GetDataView(name)));
    for (const std::string& key : keys) {
        CAccount* const account = Find(key);
        if (!account) continue;
        CUIData row = common;
        if (const std::string refusal = _planAccount(*account, row); refusal.empty()) {
            AppendRow(plan.rows, row);
            plan.keys.push_back(key);
            plan.tokens.emplace(account->FundToken(), key);
        } else if (account->CanUse() || account->Get(AccountField::kMessage) != refusal) {
            account->SetUnusable(refusal);
            plan.refused.push_back(key);
        }
    }
    return plan;
}

// Fills the account's part of the row. Answers why it cannot be uploaded; empty when it can.
std::string CAccountList::_planAccount(const CAccount& account, CUIData& row) const {
    const Secret& password = account.Password(AccountField::kPassword);
    if (password.IsEmpty()) {
        LogAccountError("UploadAccountInfo:: empty password!", account.Get(AccountField::kAccountKey));
        return Gbk(kEmptyPassword);
    }
    row.SetData("fund_token", account.Get(AccountField::kFundToken));
    row.SetData("broker_id", account.Get(AccountField::kBrokerId));
    if (row.GetDataText("trade_server").empty()) row.SetData("trade_server", account.Get(kTradeServer));
    if (_needsOrdinaryAccount(account)) {
        const CAccount* const ordinary = _ordinaryAccount(account);
        if (!ordinary) return Gbk(kNoOrdinaryAccount);
        const Secret& key = ordinary->Password(AccountField::kPassword);
        if (key.IsEmpty()) return Gbk(kEmptyOrdinaryPassword);
        row.SetData("key_account_code", ordinary->Get(AccountField::kAccountId));
        row.SetData("key_fund_token", ordinary->Get(AccountField::kFundToken));
        if (!_putPassword(row, "key_password", key)) return Gbk(kNotEncrypted);
    }
    const bool isSafe = _putPassword(row, "password", password) &&
                        _putPassword(row, "txpassword", account.Password(AccountField::kTxPassword));
    return isSafe ? std::string() : Gbk(kNotEncrypted);
}

// False when the password cannot leave: it is clear text and nothing encrypts it.
bool CAccountList::_putPassword(CUIData& row, std::string_view column, const Secret& password) const {
    if (password.IsEmpty()) return true;
    if (IsCipherText(password.View())) {
        row.SetData(column, password.View());
        return true;
    }
    const auto cipher = m_encryption.Encrypt(password.View());
    if (cipher) row.SetData(column, *cipher);
    return cipher.has_value();
}

// When nothing is left to upload, whoever waits hears at once that it is finished.
void CAccountList::_sendUpload(UploadPlan plan, const CUIData& values) {
    CUIData completed = _withUser(values);
    const bool isSelected = IsTrue(completed.GetDataView("selrefresh"));
    if (plan.rows.GetRowNumber() == 0) {
        return _report(isSelected ? kSelectedFinished : kUploadAccounts.success,
                       completed.GetDataString("UUID"), CJsonObject());
    }
    completed.SetData("selrefresh", isSelected ? "true" : "false");
    completed.SetData("accountkeylist", Joined(plan.keys, ';'));
    CQueueReqItem request = MakeAccountRequest(kUploadAccounts, completed, plan.rows);
    Context context;
    context.uploaded = std::move(plan.tokens);
    _sendAbout(kUploadAccounts, request, std::move(context));
}

void CAccountList::_onUploadAnswer(const Answer& answer, const Context& context) {
    CDataTable rows;
    if (HasFailed(answer.response)) return _failAsAnswered(answer);
    if (!TableOf(answer.response, rows)) {
        CJsonObject reason;
        return ReadReason(answer.response, reason) ? _failAsAnswered(answer)
                                                   : _fail(answer, MissingTable(answer.response));
    }
    const int token = rows.FindColumn("fund_token");
    for (int row = 0; row < rows.GetRowNumber(); ++row) {
        const auto [first, last] = context.uploaded.equal_range(rows.GetItemText(row, token));
        if (first == last) CCounters::Add("account_answer_without_account");
        for (auto each = first; each != last; ++each) _settleRow(rows, row, each->second, context.turn);
    }
    _forgetOldTurns();
    const bool isSelected = IsTrue(answer.params.GetDataView("selrefresh"));
    _report(isSelected ? kSelectedFinished : answer.operation.success, answer.uuid, CJsonObject());
}

void CAccountList::_settleRow(const CDataTable& rows, int row, const std::string& key, uint64_t turn) {
    CAccount* const account = Find(key);
    if (!account) return CCounters::Add("account_answer_without_account");
    if (const auto settled = m_logins.find(key); settled != m_logins.end() && settled->second.turn > turn)
        return CCounters::Add("account_login_superseded");

    if (const TextView name = rows.GetItemText(row, "account_name"); !name.empty())
        account->Set(AccountField::kAccountName, name);
    if (const TextView permission = rows.GetItemText(row, "permission_code"); !permission.empty())
        account->Set(AccountField::kPermissionCode, permission);
    account->RebuildNickname();
    if (ParseLong(rows.GetItemText(row, "error_code")) == 0) {
        account->SetUsable();
    } else {
        account->SetUnusable(rows.GetItemText(row, "msg"));
    }
    m_logins[key] = {turn, std::string(account->Get(AccountField::kMessage)),
                     std::string(account->Get(AccountField::kCanUse))};
}

}  // namespace luadui
