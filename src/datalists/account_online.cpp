#include "datalists/account_online.h"

#include <array>
#include <string>
#include <unordered_map>
#include <vector>

#include "base/counters.h"
#include "datalists/account_units.h"

namespace luadui {
namespace {

constexpr AccountColumn kIdentity[] = {kAccountKey, kAccountId, kQsId, kTradeType};

// Where a table has what.
struct Columns {
    explicit Columns(const CDataTable& table)
        : portfolios(table.FindColumn("portfolios")), code(table.FindColumn("account_code")) {
        for (int column = 0; column < kFirstMoneyColumn; ++column)
            known[static_cast<size_t>(column)] = FindAccountColumn(table, static_cast<AccountColumn>(column));
    }
    int At(AccountColumn column) const { return known[column]; }
    bool NameAccounts() const { return At(kAccountKey) >= 0 || At(kAccountId) >= 0 || At(kFundToken) >= 0; }

    std::array<int, kFirstMoneyColumn> known;
    int portfolios;
    int code;  // beside an id that is a number of the server
};

// What a row may be known by; the surest first. Brokers count where both tables name them.
std::vector<std::string> NamesOf(const CDataTable& table, const Columns& columns, int row, bool withBroker) {
    std::vector<std::string> names;
    const TableRow cells = table.GetRow(row);
    const auto add = [&](std::string_view what, std::string_view text) {
        if (!text.empty()) names.push_back(std::string(what).append(text));
    };
    add("key ", cells[columns.At(kAccountKey)]);
    add("token ", cells[columns.At(kFundToken)]);
    for (const ListedPortfolio& portfolio : ReadPortfolios(cells[columns.portfolios]))
        add("token ", portfolio.token);
    for (const int column : {columns.code, columns.At(kAccountId)}) {
        if (cells[column].empty()) continue;
        std::string name = std::string(cells[column]) + '|' + cells[columns.At(kTradeType)];
        if (withBroker) (name += '|') += cells[columns.At(kQsId)];
        add("id ", name);
    }
    return names;
}

class Merger {
  public:
    Merger(const OnlineNews& news, CDataTable& accounts)
        : m_online(news.rows), m_mayAdd(news.mayAddAccounts), m_from(m_online), m_accounts(accounts) {
        for (const AccountColumn column : {kFundToken, kCanUse, kAccountMsg}) {
            const bool isTold = column == kCanUse || m_from.At(column) >= 0;
            if (isTold && FindAccountColumn(accounts, column) < 0)
                accounts.AddColumn(kAccountColumnNames[column]);
        }
        const Columns to(accounts);
        m_withBroker = m_from.At(kQsId) >= 0 && to.At(kQsId) >= 0;
        for (int row = 0; row < accounts.GetRowNumber(); ++row) {
            for (std::string& name : NamesOf(accounts, to, row, m_withBroker))
                m_rows.try_emplace(std::move(name), row);
        }
        m_canUse = to.At(kCanUse);
        m_message = to.At(kAccountMsg);
        _mapColumns(to);
        m_isNamed.resize(static_cast<size_t>(accounts.GetRowNumber()));
    }

    void Put(int from) {
        const auto names = NamesOf(m_online, m_from, from, m_withBroker);
        if (names.empty()) return CCounters::Add("account_online_row_refused");
        int row = _find(names);
        const bool isNew = row < 0;
        if (isNew && !m_mayAdd) return;
        if (isNew) row = m_accounts.AppendRow();
        if (!isNew) m_isNamed[static_cast<size_t>(row)] = true;
        const TableRow cells = m_online.GetRow(from);
        for (size_t col = 0; col < m_targets.size(); ++col) {
            const TextView text = cells[static_cast<int>(col)];
            const bool isKept = text.empty() || (!isNew && m_isIdentity[col]);
            if (m_targets[col] >= 0 && !isKept) _set(row, m_targets[col], text);
        }
        if (m_from.At(kCanUse) < 0) _set(row, m_canUse, "1");
    }

    void EndOthers() {
        for (size_t row = 0; row < m_isNamed.size(); ++row) {
            const int at = static_cast<int>(row);
            if (m_isNamed[row] || m_accounts.GetItemText(at, m_canUse) != "1") continue;
            _set(at, m_canUse, "0");
            if (m_message >= 0) _set(at, m_message, "");  // why, nobody said here
        }
    }

  private:
    // Columns that the accounts lack are nothing that they have to show.
    void _mapColumns(const Columns& to) {
        const auto count = static_cast<size_t>(m_online.GetColumnNumber());
        m_targets.resize(count);
        m_isIdentity.resize(count);
        for (size_t col = 0; col < count; ++col)
            m_targets[col] = m_accounts.FindColumn(m_online.GetColumnProperty(static_cast<int>(col), "name"));
        for (int column = 0; column < kFirstMoneyColumn; ++column) {
            const int from = m_from.known[static_cast<size_t>(column)];
            if (from >= 0) m_targets[static_cast<size_t>(from)] = to.known[static_cast<size_t>(column)];
        }
        for (const AccountColumn column : kIdentity) {
            if (m_from.At(column) >= 0) m_isIdentity[static_cast<size_t>(m_from.At(column))] = true;
        }
        if (m_from.portfolios >= 0) m_isIdentity[static_cast<size_t>(m_from.portfolios)] = true;
    }

    int _find(const std::vector<std::string>& names) const {
        for (const std::string& name : names) {
            if (const auto found = m_rows.find(name); found != m_rows.end()) return found->second;
        }
        return -1;
    }

    // Rows that stay as they are stay shared.
    void _set(int row, int column, std::string_view text) {
        if (m_accounts.GetItemText(row, column) != text) m_accounts.SetItemText(row, column, text);
    }

    const CDataTable& m_online;
    const bool m_mayAdd;
    const Columns m_from;
    CDataTable& m_accounts;
    std::unordered_map<std::string, int> m_rows;  // of the accounts, by what they are known by
    bool m_withBroker = false;
    int m_canUse = -1, m_message = -1;
    std::vector<int> m_targets;  // of the columns of `online`; -1: left out
    std::vector<bool> m_isIdentity;
    std::vector<bool> m_isNamed;  // of the rows that were there
};

}  // namespace

bool MergeOnline(const OnlineNews& news, CDataTable& accounts) {
    if (!Columns(news.rows).NameAccounts()) return false;
    if (accounts.GetColumnNumber() == 0) accounts.CopyHeader(news.rows);
    Merger merger(news, accounts);
    for (int row = 0; row < news.rows.GetRowNumber(); ++row) merger.Put(row);
    if (news.isWhole) merger.EndOthers();
    return true;
}

}  // namespace luadui
