// CAccountList: what the answer to a query makes of the list.
#include <algorithm>
#include <iterator>

#include "accounts/account_list.h"
#include "accounts/account_log.h"
#include "base/counters.h"
#include "base/text.h"

namespace luadui {
namespace {

struct QueryColumn {
    std::string_view name;
    AccountField field;
    bool isKept;  // an empty cell says nothing about an account that is known
};
constexpr QueryColumn kQueryColumns[] = {
    {"account_id", AccountField::kId, false},
    {"account_code", AccountField::kAccountId, false},
    {"account_name", AccountField::kAccountName, false},
    {"alias", AccountField::kNickname, false},
    {"account_mark", AccountField::kAccountMark, false},
    {"product_id", AccountField::kProductId, false},
    {"product_name", AccountField::kProductName, false},
    {"institution_id", AccountField::kInstitutionId, false},
    {"user_id", AccountField::kUserId, false},
    {"broker_id", AccountField::kBrokerId, false},
    {"broker_name", AccountField::kBrokerName, false},
    {"yyb_id", AccountField::kBranchId, false},
    {"yyb_name", AccountField::kBranchName, false},
    {"trade_type", AccountField::kTradeType, false},
    {"user_key", AccountField::kUserKey, false},
    {"issimulate", AccountField::kIsSimulated, false},
    {"bind_status", AccountField::kBindStatus, false},
    {"src_server", kTradeServer, true},
    {"permission_code", AccountField::kPermissionCode, true},
};

// The columns of one answer, found once.
class RowReader {
  public:
    explicit RowReader(const CDataTable& rows)
        : m_rows(rows),
          m_code(rows.FindColumn("account_code")),
          m_broker(rows.FindColumn("broker_id")),
          m_tradeType(rows.FindColumn("trade_type")),
          m_portfolios(rows.FindColumn("portfolios")),
          m_order(rows.FindColumn("order")) {
        for (size_t i = 0; i < std::size(kQueryColumns); ++i)
            m_columns[i] = rows.FindColumn(kQueryColumns[i].name);
    }

    // Without these nobody can tell which account a row is about.
    bool HasKeys() const { return m_code >= 0 && m_broker >= 0 && m_tradeType >= 0; }
    bool HasAccounts() const {
        for (int row = 0; row < m_rows.GetRowNumber(); ++row) {
            if (!m_rows.GetRow(row)[m_code].empty()) return true;
        }
        return false;
    }
    // Empty for a row without an account code.
    std::string Key(int row) const {
        const TableRow cells = m_rows.GetRow(row);
        if (cells[m_code].empty()) return {};
        return MakeAccountKey(cells[m_code], cells[m_broker], cells[m_tradeType]);
    }
    std::optional<int> Order(int row) const { return ParseOrderNumber(m_rows.GetItemText(row, m_order)); }

    // What the answer does not have stays as it is.
    void Read(int row, CAccount& account) const {
        const TableRow cells = m_rows.GetRow(row);
        for (size_t i = 0; i < std::size(kQueryColumns); ++i) {
            if (m_columns[i] < 0) continue;
            const TextView text = cells[m_columns[i]];
            if (!text.empty() || !kQueryColumns[i].isKept) account.Set(kQueryColumns[i].field, text);
        }
        if (account.Get(AccountField::kNickname).empty()) account.RebuildNickname();
        if (Portfolios portfolios; m_portfolios >= 0 && ReadPortfolios(cells[m_portfolios], portfolios))
            account.SetPortfolios(std::move(portfolios));
    }

  private:
    const CDataTable& m_rows;
    const int m_code, m_broker, m_tradeType, m_portfolios, m_order;
    int m_columns[std::size(kQueryColumns)];
};

CDataList ListOf(const std::vector<std::string>& texts) {
    CDataList list;
    for (const std::string& text : texts) list.Append(text);
    return list;
}

}  // namespace

void CAccountList::_onQueryAnswer(const Answer& answer, uint64_t turn) {
    const bool isFirst = !std::exchange(m_isInitialised, true);
    const int32_t handle = GetHandle();
    Changes changes;
    std::vector<std::string> fresh;
    UploadPlan plan;
    const bool isBuilt = !HasFailed(answer.response) && _build(answer, turn, changes);
    if (!IsAlive(handle)) return;
    if (isBuilt) {
        if (m_productInfo.empty()) {
            const std::string info = SendLuaSync("get_ProductInfo", "", std::string(kModuleAccountManager));
            if (!IsAlive(handle)) return;
            m_productInfo = info;
        }
        fresh = _keysAwaitingLogin();
        if (!_takePasswords(fresh)) return;
        plan = _planUpload(fresh, {});
    }
    if (!_reportQuery(answer, isFirst, changes) || !_tell(changes.ended)) return;
    if (changes.isOrderChanged && !isFirst) {
        NotifyOrder(kTellPages);
        if (!IsAlive(handle)) return;
    }
    if (!fresh.empty()) _sendUpload(std::move(plan), {});
    if (changes.isOutdated && IsAlive(handle))
        Query();  // for what the rows that were passed over said besides
}

// False when the list has gone meanwhile.
bool CAccountList::_reportQuery(const Answer& answer, bool isFirst, const Changes& changes) {
    const int32_t handle = GetHandle();
    const bool hasFailed = HasFailed(answer.response);
    CJsonObject payload;
    payload.Set("req_from", TextOf(answer.params.GetDataView("req_from")));
    if (isFirst || !hasFailed) {
        _report(isFirst ? "initialize_finished" : kQueryAccounts.success, answer.uuid, payload);
        if (!IsAlive(handle)) return false;
    }
    if (hasFailed) {
        _failAsAnswered(answer);
    } else if (!isFirst && !(changes.added.empty() && changes.removed.empty())) {
        payload.Clear();
        payload.Set("added", ListOf(changes.added));
        payload.Set("removed", ListOf(changes.removed));
        _report("account_changed_push", answer.uuid, payload);
    }
    return IsAlive(handle);
}

// False, and nothing changed, when the answer is none.
bool CAccountList::_build(const Answer& answer, uint64_t turn, Changes& changes) {
    CDataTable rows;
    TableOf(answer.response, rows);
    const RowReader reader(rows);
    if (!reader.HasKeys()) {
        CCounters::Add("account_answer_unreadable");
        LogAccount("query accout result!",
                   "InitAccountList:: result[" + answer.response.GetDataString("RawData") + "]");
        return false;
    }
    const int32_t handle = GetHandle();
    const AccountNumbers saved = reader.HasAccounts() ? AccountOrder::ReadSavedOnce() : AccountNumbers();
    if (!IsAlive(handle)) return false;
    if (turn < m_lastMerged) {
        CCounters::Add("account_answer_superseded");
        return true;
    }
    m_lastMerged = turn;
    _merge(rows, turn, saved, changes);
    _forgetOldTurns();
    return true;
}

void CAccountList::_merge(const CDataTable& rows, uint64_t turn, const AccountNumbers& saved,
                          Changes& changes) {
    const RowReader reader(rows);
    std::unordered_set<const CAccount*> seen;
    seen.reserve(static_cast<size_t>(rows.GetRowNumber()));
    for (int row = 0; row < rows.GetRowNumber(); ++row) {
        const std::string key = reader.Key(row);
        if (key.empty()) {
            CCounters::Add("account_row_without_code");
            continue;
        }
        if (_isTouchedSince(key, turn)) {
            CCounters::Add("account_row_superseded");
            changes.isOutdated = true;
            continue;
        }
        CAccount& account = _accountOf(key, changes);
        if (!seen.insert(&account).second) CCounters::Add("account_row_repeated");
        reader.Read(row, account);
        if (const auto number = reader.Order(row)) changes.isOrderChanged |= m_order.Learn(key, *number);
    }
    _dropUnseen(seen, turn, changes);
    _numberAccounts(saved, changes);
}

// Whether the answer to the request with that number may not know of a change that was confirmed since.
bool CAccountList::_isTouchedSince(std::string_view key, uint64_t turn) const {
    const auto touched = m_touched.find(key);
    return touched != m_touched.end() && touched->second >= turn;
}

CAccount& CAccountList::_accountOf(const std::string& key, Changes& changes) {
    std::unique_ptr<CAccount>& account = m_accounts[key];
    if (account) return *account;
    account = std::make_unique<CAccount>(static_cast<ResultEventSink&>(*this));
    account->Set(AccountField::kAccountKey, key);
    account->SetUnusable(Gbk(kAwaitingLogin));
    if (const auto before = m_dropped.extract(key)) {
        account->Set(AccountField::kMessage, before.mapped().message);
        account->Set(AccountField::kCanUse, before.mapped().canUse);
    }
    changes.added.push_back(key);
    return *account;
}

void CAccountList::_dropUnseen(const std::unordered_set<const CAccount*>& seen, uint64_t turn,
                               Changes& changes) {
    std::erase_if(m_accounts, [&](const auto& entry) {
        const auto& [key, account] = entry;
        if (seen.contains(account.get()) || _isTouchedSince(key, turn)) return false;
        std::ranges::move(account->Abandon(kAccountGone), std::back_inserter(changes.ended));
        if (m_dropped.size() < kMaxDropped) {
            m_dropped[key] = {0, std::string(account->Get(AccountField::kMessage)),
                              std::string(account->Get(AccountField::kCanUse))};
        } else {
            CCounters::Add("account_state_forgotten");
        }
        changes.removed.push_back(key);
        return true;
    });
    for (const std::string& key : changes.removed) m_order.Remove(key);
    if (!changes.removed.empty()) _forgetRequestsOfGone();
}

void CAccountList::_numberAccounts(const AccountNumbers& saved, Changes& changes) {
    for (const auto& [key, number] : saved) {
        if (!m_accounts.contains(key)) {
            CCounters::Add("account_order_unknown");
        } else {
            changes.isOrderChanged |= m_order.Learn(key, number);
        }
    }
    std::vector<std::string_view> keys;
    keys.reserve(m_accounts.size());
    for (const auto& [key, account] : m_accounts) keys.push_back(key);
    changes.isOrderChanged |= m_order.Append(keys) > 0;
}

}  // namespace luadui
