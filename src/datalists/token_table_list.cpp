#include "datalists/token_table_list.h"

#include <algorithm>
#include <iterator>
#include <utility>

#include "base/counters.h"
#include "datalists/table_columns.h"
#include "platform/win32.h"

namespace luadui {
namespace {

constexpr std::string_view kTokens = "fund_token";
constexpr std::string_view kUpdateUser = "update_user";

// Sets the cells that differ, but for that of column `keeps`; false when none does.
bool CopyCells(const TableRow& cells, const std::vector<int>& columns, CDataTable& held, int row, int keeps) {
    bool changed = false;
    for (size_t col = 0; col < columns.size(); ++col) {
        if (columns[col] < 0 || columns[col] == keeps) continue;
        const TextView text = cells[static_cast<int>(col)];
        if (held.GetItemText(row, columns[col]) != text)
            changed = held.SetItemText(row, columns[col], text) || changed;
    }
    return changed;
}

// Puts the held cells, or only that of a column, in the place of the answer's.
void KeepCells(const CDataTable& held, int heldRow, int heldColumn, CDataTable& answer, int row) {
    for (int col = 0; col < answer.GetColumnNumber(); ++col) {
        const int source = held.FindColumn(answer.GetColumnProperty(col, "name"));
        if (source < 0 || (heldColumn >= 0 && source != heldColumn)) continue;
        const TextView text = held.GetItemText(heldRow, source);
        if (answer.GetItemText(row, col) != text) answer.SetItemText(row, col, text);
    }
}

}  // namespace

CTokenTableList::CTokenTableList(std::string_view kind, std::string_view mergedKind, std::string_view rowKey,
                                 std::string_view keySet)
    : CUIData(kind),
      m_kind(kind),
      m_mergedKind(mergedKind),
      m_rowKey(rowKey),
      m_keySet(keySet),
      m_form(rowKey.empty() ? PushForm::kTable : PushForm::kRows) {}

CTokenTableList::CTokenTableList(std::string_view kind, MergesPushes)
    : CUIData(kind), m_kind(kind), m_keySet(kTokens), m_form(PushForm::kChanges) {}

CTokenTableList::~CTokenTableList() = default;

const char* CTokenTableList::ClassName() const { return "CTokenTableList"; }

bool CTokenTableList::Holds(const CDataSet& tokens) const {
    // Accounts are asked, and mostly answered, in the order of the set: the last one tells soonest.
    return !tokens.IsEmpty() && Holds(*std::prev(tokens.end())) &&
           std::all_of(tokens.begin(), tokens.end(),
                       [this](const std::string& token) { return Holds(token); });
}

bool CTokenTableList::TakeAnswer(std::string_view token, const CDataTable& table, uint64_t age) {
    if (!_isToken(token)) return false;
    const bool held = Holds(token);
    Account& account = _account(token);
    age = _ageOf(account, age);
    if (held && (age < account.answerAge || (account.pushAge != 0 && age <= account.pushAge))) {
        CCounters::Add("older_answer_ignored");
        return false;
    }
    account.answerAge = age;
    account.pushAge = 0;
    while (!account.kept.empty() && account.kept.front().age < age) _dropOldest(account);
    if (m_form == PushForm::kTable) {
        _storeNewest(token, account, table);
    } else {
        CDataTable old, rows = table;
        const bool isHeld = GetTable(token, old);
        if (isHeld && _guardsAnswers()) _guardRows(account, old, rows);
        if (isHeld && _rowsLast()) _keepFresh(account, old, rows);
        _store(token, account, rows, Origin::kAnswer);
        for (const Kept& push : account.kept) _apply(token, account, push.table);
    }
    _updated(token);
    return true;
}

PushResult CTokenTableList::TakePush(std::string_view token, const CDataTable& table, uint64_t age,
                                     bool queryUnderWay) {
    if (!_isToken(token)) return PushResult::kRefused;
    const bool held = Holds(token);
    if (!held && !queryUnderWay && !_isKnown(token)) {
        CCounters::Add("push_for_unqueried_account");
        return PushResult::kUnknown;
    }
    Account& account = _account(token);
    age = _ageOf(account, age);
    if (_isOlder(account, held, age)) {
        CCounters::Add("older_push_ignored");
        return PushResult::kOlder;
    }
    if (m_form == PushForm::kRows && table.FindColumn(m_rowKey) < 0) {
        CCounters::Add("push_row_without_key", static_cast<uint64_t>(table.GetRowNumber()));
        return PushResult::kRefused;
    }
    if (!held && queryUnderWay) {
        const bool isKept = _keep(account, table, age);
        if (m_form == PushForm::kRows) _wait(account, table);
        if (!isKept) return PushResult::kRefused;
        return PushResult::kKept;
    }
    const bool changed = _apply(token, account, table);
    const bool isKept = m_form != PushForm::kTable && queryUnderWay && _keep(account, table, age);
    if (!isKept) account.pushAge = std::max(account.pushAge, age);
    _updated(token);
    return changed ? PushResult::kTaken : PushResult::kUnchanged;
}

void CTokenTableList::GetRowsOf(std::string_view token, CDataTable& rows) {
    CDataTable held;
    const int pushKey = m_form == PushForm::kRows ? rows.FindColumn(m_rowKey) : -1;
    const auto account = m_accounts.find(token);
    if (pushKey < 0 || account == m_accounts.end()) return;
    if (!GetTable(token, held)) held = account->second.waiting;
    const RowIndex& index = _indexOf(account->second, held, held.FindColumn(m_rowKey));
    CDataTable now;
    now.CopyHeader(held);
    for (int pushed = 0; pushed < rows.GetRowNumber(); ++pushed) {
        const int row = index.Find(held, rows.GetItemText(pushed, pushKey));
        if (row >= 0) now.InsertRow(held, row);
    }
    rows = now;
}

void CTokenTableList::QueryEnded(std::string_view token) {
    const auto found = m_accounts.find(token);
    if (found == m_accounts.end()) return;
    Account& account = found->second;
    if (!Holds(token) && !account.kept.empty() && _isKnown(token)) {
        // Its answer had no table; what came meanwhile is all that there is.
        for (const Kept& push : account.kept) _apply(token, account, push.table);
        _updated(token);
    }
    const bool held = Holds(token);
    if (!held) CCounters::Add("push_for_unqueried_account", account.kept.size());
    while (!account.kept.empty()) _dropOldest(account);
    if (!held) m_accounts.erase(found);
}

std::vector<std::string> CTokenTableList::Waiting() const {
    std::vector<std::string> tokens;
    for (const auto& [token, account] : m_accounts) {
        if (!account.kept.empty()) tokens.push_back(token);
    }
    return tokens;
}

bool CTokenTableList::MergeMultiAccount(CUIData& request, std::string* missing) const {
    CDataSet tokens;
    if (m_mergedKind.empty() || !request.GetData(kTokens, tokens)) return false;
    CDataTable joined;
    for (const std::string& token : tokens) {
        CDataTable table;
        if (!GetTable(token, table)) {
            if (missing) *missing = token;
            return false;
        }
        if (table.GetRowNumber() == 0) continue;
        if (joined.GetColumnNumber() == 0) joined.CopyHeader(table);
        if (!joined.InsertTable(table)) return false;
    }
    request.SetData(m_mergedKind, joined);
    request.SetType(m_mergedKind);
    return true;
}

bool CTokenTableList::MakeRecord(std::string_view token, CUIData& out) const {
    CDataTable table;
    if (!GetTable(token, table)) return false;
    CUIData record(m_kind);
    record.SetData(m_keySet, token);
    record.SetData(m_kind, table);
    out = std::move(record);
    return true;
}

void CTokenTableList::Remove(std::string_view token) {
    if (const auto found = m_accounts.find(token); found != m_accounts.end()) {
        while (!found->second.kept.empty()) _dropOldest(found->second);
        m_accounts.erase(found);
    }
    if (!_isKnown(token)) return;
    CUIData::Remove(token);
    CDataSet tokens;
    if (GetDataShared(m_keySet, tokens)) tokens.Remove(token);
}

bool CTokenTableList::_isToken(std::string_view token) const {
    if (!token.empty() && token != kTokens && token != kUpdateUser && token != m_keySet) return true;
    CCounters::Add("list_token_refused");
    return false;
}

// What was registered without a table counts, too.
bool CTokenTableList::_isKnown(std::string_view token) const {
    CDataSet tokens;
    return Holds(token) || (GetData(m_keySet, tokens) && tokens.Contains(token));
}

uint64_t CTokenTableList::_ageOf(const Account& account, uint64_t age) {
    if (age != kNewest) return age;
    const uint64_t newestKept = account.kept.empty() ? 0 : account.kept.back().age;
    return std::max({account.answerAge, account.pushAge, newestKept}) + 1;
}

CTokenTableList::Account& CTokenTableList::_account(std::string_view token) {
    const auto found = m_accounts.find(token);
    return found != m_accounts.end() ? found->second : m_accounts[std::string(token)];
}

bool CTokenTableList::_isOlder(const Account& account, bool held, uint64_t age) const {
    if (held && age < account.answerAge) return true;
    if (m_form != PushForm::kTable) return false;  // pushes of changes count in the order in which they come
    return age < (held || account.kept.empty() ? account.pushAge : account.kept.back().age);
}

void CTokenTableList::_store(std::string_view token, Account& account, CDataTable table, Origin origin) {
    _prepare(token, table, origin);
    account.index.Clear();
    account.waiting.Clear();
    const bool isNew = !Holds(token);
    SetData(token, table);
    if (isNew) _register(token);
}

void CTokenTableList::_register(std::string_view token) {
    if (!_isToken(token)) return;
    // In place: a set that the record and we both held would be copied for each new account.
    CDataSet tokens;
    if (!GetDataShared(m_keySet, tokens)) {
        SetData(m_keySet, tokens);
        GetDataShared(m_keySet, tokens);
    }
    tokens.Insert(token);
}

// A push that came while the query was under way is newer than its answer.
void CTokenTableList::_storeNewest(std::string_view token, Account& account, const CDataTable& answer) {
    const bool isOutrun = !account.kept.empty();
    if (isOutrun) {
        CCounters::Add("older_answer_ignored");
        account.pushAge = account.kept.back().age;
    }
    _store(token, account, isOutrun ? account.kept.back().table : answer, Origin::kAnswer);
    while (!account.kept.empty()) _dropOldest(account);
}

// Most pushes of a kind have the same columns, and so have most of its tables: the last mapping is kept.
const std::vector<int>& CTokenTableList::_mapColumns(const CDataTable& push, CDataTable& held) {
    if (held.GetColumnNumber() == 0) held.CopyHeader(push);
    if (!push.HasSameColumns(m_mapping.push) || !held.HasSameColumns(m_mapping.held)) {
        m_mapping = Mapping();
        for (int col = 0; col < push.GetColumnNumber(); ++col)
            m_mapping.columns.push_back(_targetOf(push, col, held));
        m_mapping.push.CopyHeader(push);
        m_mapping.held.CopyHeader(held);
        m_mapping.dropped =
            static_cast<size_t>(std::count(m_mapping.columns.begin(), m_mapping.columns.end(), -1));
    }
    if (m_mapping.dropped != 0) CCounters::Add("list_column_dropped", m_mapping.dropped);
    return m_mapping.columns;
}

int CTokenTableList::_targetOf(const CDataTable& push, int col, CDataTable& held) {
    const TextView name = push.GetColumnProperty(col, "name");
    if (name.empty() || push.FindColumn(name) != col) return -1;
    const int target = held.FindColumn(name);
    return target < 0 && held.GetColumnNumber() < kMaxColumns ? held.AddColumn(name) : target;
}

// False when nothing changed.
bool CTokenTableList::_apply(std::string_view token, Account& account, const CDataTable& push) {
    if (m_form == PushForm::kTable) {
        CDataTable held;
        if (GetTable(token, held) && held.SharesWith(push)) return false;
    } else {
        CDataTable held;
        const bool isHeld = GetDataShared(token, held);
        if (isHeld && held.SharesWith(push)) return false;
        if (isHeld && m_form == PushForm::kRows) return _applyRows(account, held, push);
        if (isHeld && held.GetRowNumber() != 0) return _merge(token, held, push);
    }
    _store(token, account, push, Origin::kPush);
    return true;
}

RowIndex& CTokenTableList::_indexOf(Account& account, const CDataTable& held, int keyColumn) {
    if (!account.index.Fits(held, keyColumn)) account.index.Build(held, keyColumn);
    return account.index;
}

bool CTokenTableList::_applyRows(Account& account, CDataTable& held, const CDataTable& push) {
    const int pushKey = push.FindColumn(m_rowKey);
    const std::vector<int>& columns = _mapColumns(push, held);
    const int keyColumn = columns[static_cast<size_t>(pushKey)];
    if (keyColumn < 0) return false;
    RowIndex& index = _indexOf(account, held, keyColumn);

    bool changed = false;
    for (int pushed = 0; pushed < push.GetRowNumber(); ++pushed) {
        const TableRow cells = push.GetRow(pushed);
        const TextView key = cells[pushKey];
        if (key.empty()) {
            CCounters::Add("push_row_without_key");
            continue;
        }
        int row = index.Find(held, key);
        const bool isNew = row < 0;
        RowChange change{held, row, push, pushed};
        if (isNew) {
            row = held.AppendRow();
            if (row < 0) break;
        } else if (!_acceptsRow(change)) {
            CCounters::Add("push_row_refused");
            continue;
        }
        if (!CopyCells(cells, columns, held, row, change.keeps)) continue;
        if (isNew) {
            index.Add(held, row);
            if (_rowsLast()) _noteFresh(account, key);
        }
        changed = true;
    }
    return changed;
}

// Most rows of an answer stand where they stood, so few must be looked for.
void CTokenTableList::_guardRows(Account& account, const CDataTable& held, CDataTable& answer) const {
    const int heldKey = held.FindColumn(m_rowKey), key = answer.FindColumn(m_rowKey);
    if (heldKey < 0 || key < 0 || held.SharesWith(answer)) return;
    for (int row = 0; row < answer.GetRowNumber(); ++row) {
        const TextView id = answer.GetItemText(row, key);
        if (id.empty()) continue;
        const bool isInPlace = held.GetItemText(row, heldKey) == id;
        const int heldRow = isInPlace ? row : _indexOf(account, held, heldKey).Find(held, id);
        if (heldRow < 0) continue;
        RowChange change{held, heldRow, answer, row};
        const bool isTaken = _acceptsRow(change);
        if ((isTaken && change.keeps < 0) || _isOther(change)) continue;
        if (!isTaken) CCounters::Add("answer_row_refused");
        KeepCells(held, heldRow, isTaken ? change.keeps : -1, answer, row);
    }
}

uint32_t CTokenTableList::_now() const { return ::GetTickCount(); }

void CTokenTableList::_noteFresh(Account& account, std::string_view key) const {
    const uint32_t now = _now();
    while (!account.fresh.empty() &&
           (now - account.fresh.front().since >= kSettling || account.fresh.size() >= kMaxFreshRows))
        account.fresh.pop_front();
    account.fresh.push_back({now, std::string(key)});
}

void CTokenTableList::_keepFresh(Account& account, const CDataTable& held, CDataTable& answer) const {
    const uint32_t now = _now();
    std::erase_if(account.fresh, [now](const FreshRow& row) { return now - row.since >= kSettling; });
    const int heldKey = held.FindColumn(m_rowKey);
    if (account.fresh.empty() || heldKey < 0 || held.SharesWith(answer)) return;
    AddColumnsOf(held, answer, kMaxColumns);
    const int key = answer.FindColumn(m_rowKey);
    RowIndex answered;
    answered.Build(answer, key);
    for (const FreshRow& fresh : account.fresh) {
        if (answered.Find(answer, fresh.key) >= 0) continue;
        const int row = _indexOf(account, held, heldKey).Find(held, fresh.key);
        if (row < 0 || !answer.InsertRow(held, row)) continue;
        answered.Add(answer, answer.GetRowNumber() - 1);
        CCounters::Add("answer_lacks_pushed_row");
    }
}

bool CTokenTableList::_keep(Account& account, const CDataTable& table, uint64_t age) {
    // Of whole tables only the newest counts.
    while (m_form == PushForm::kTable && !account.kept.empty()) _dropOldest(account);
    Kept push{age, table};
    while (m_keptRows + _cost(push) > kMaxKeptRows && !account.kept.empty()) {
        CCounters::Add("kept_push_dropped");
        _dropOldest(account);
    }
    if (m_keptRows + _cost(push) > kMaxKeptRows) {
        CCounters::Add("kept_push_dropped");
        return false;
    }
    m_keptRows += _cost(push);
    account.keptCost += _cost(push);
    account.kept.push_back(std::move(push));
    return true;
}

void CTokenTableList::_dropOldest(Account& account) {
    Kept& oldest = account.kept.front();
    m_keptRows -= _cost(oldest);
    account.keptCost -= _cost(oldest);
    account.pushAge = std::max(account.pushAge, oldest.age);
    account.kept.pop_front();
}

// After the push was kept, or not. Rows of pushes that are kept no longer go when there are as many of them as of
// others, so that this costs no more than the pushes themselves.
void CTokenTableList::_wait(Account& account, const CDataTable& push) {
    const auto rows = static_cast<size_t>(account.waiting.GetRowNumber());
    if (rows < 2 * account.keptCost) {
        _applyRows(account, account.waiting, push);
        return;
    }
    account.waiting.Clear();
    account.index.Clear();
    for (const Kept& kept : account.kept) _applyRows(account, account.waiting, kept.table);
}

size_t CTokenTableList::_cost(const Kept& push) { return static_cast<size_t>(push.table.GetRowNumber()) + 1; }

}  // namespace luadui
