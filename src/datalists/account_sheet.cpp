#include "datalists/account_sheet.h"

#include <algorithm>

#include "base/counters.h"

namespace luadui {
namespace {

constexpr char kModeKey[] = "PB_MODE";

void SetMoneyCells(CDataTable& table, int row, const MoneyCells& cells) {
    for (int i = 0; i < MoneyCells::kColumns; ++i) {
        const std::string& text = cells.texts[static_cast<size_t>(i)];
        if (table.GetItemText(row, kFirstMoneyColumn + i) != text)
            table.SetItemText(row, kFirstMoneyColumn + i, text);
    }
}

// The columns of `target` are those of `source`.
int AppendRowOf(const CDataTable& source, int row, CDataTable& target) {
    const int added = target.AppendRow();
    const TableRow cells = source.GetRow(row);
    for (int col = 0; col < source.GetColumnNumber(); ++col) {
        if (const TextView text = cells[col]; !text.empty()) target.SetItemText(added, col, text);
    }
    return added;
}

// Whether every cell of a's row is in b's.
bool HasCellsOf(const CDataTable& a, int rowOfA, const CDataTable& b, int rowOfB) {
    const bool isAlike = a.HasSameColumns(b);
    for (int col = 0; col < a.GetColumnNumber(); ++col) {
        const int colOfB = isAlike ? col : b.FindColumn(a.GetColumnProperty(col, "name"));
        if (a.GetItemText(rowOfA, col) != b.GetItemText(rowOfB, colOfB)) return false;
    }
    return true;
}

bool AreSame(const CDataTable& a, int rowOfA, const CDataTable& b, int rowOfB) {
    return HasCellsOf(a, rowOfA, b, rowOfB) && (a.HasSameColumns(b) || HasCellsOf(b, rowOfB, a, rowOfA));
}

void MakeNews(const AccountSheet::Form& form, const char* operate, const CDataTable& rows,
              const CDataSet& tokens, std::vector<CUIData>& records) {
    if (rows.GetRowNumber() == 0) return;
    CUIData record(form.pushKind);
    record.SetData(form.pushKind, rows);
    record.SetData("operate", operate);
    record.SetData("all_update_account", tokens);
    record.SetData("fund_token", tokens);
    if (form.byPortfolio) record.SetData(kModeKey, "true");
    records.push_back(std::move(record));
}

}  // namespace

// Gathers rows by what happened to them.
class AccountSheet::News {
  public:
    void Update(const CDataTable& source, int row, const MoneyCells& cells) {
        m_updated.Add(source, row, cells);
    }
    void Insert(const CDataTable& source, int row, const MoneyCells& cells) {
        m_added.Add(source, row, cells);
    }
    void Delete(const CDataTable& source, int row, const MoneyCells& cells) {
        m_deleted.Add(source, row, cells);
    }

    void MakeRecords(const Form& form, std::vector<CUIData>& records) const {
        MakeNews(form, "delete", m_deleted.rows, m_deleted.tokens, records);
        MakeNews(form, "add", m_added.rows, m_added.tokens, records);
        MakeNews(form, "update", m_updated.rows, m_updated.tokens, records);
    }

  private:
    struct Part {
        CDataTable rows;
        CDataSet tokens;

        void Add(const CDataTable& source, int row, const MoneyCells& cells) {
            if (rows.GetColumnNumber() == 0) rows.CopyHeader(source);
            SetMoneyCells(rows, AppendRowOf(source, row, rows), cells);
            if (const TextView token = source.GetItemText(row, kFundToken); !token.empty())
                tokens.Insert(token);
        }
    };

    Part m_updated, m_added, m_deleted;
};

void AccountSheet::SetAccounts(const FamilyAccounts& accounts, const AccountMoneyBook& book,
                               std::vector<CUIData>& records) {
    TextMap<int> oldRows;
    for (size_t row = 0; row < m_units.size(); ++row) oldRows[m_units[row].key] = static_cast<int>(row);
    const std::vector<Unit> oldUnits = std::exchange(m_units, {});
    AccountUnits read = ReadAccountUnits(accounts, m_form.byPortfolio);
    const CDataTable old = std::exchange(m_rows, std::move(read.rows));
    m_byToken.clear();
    m_byId.clear();
    m_groups.clear();
    ++m_time;

    News news;
    for (AccountUnit& unit : read.units) {
        const int row = static_cast<int>(m_units.size());
        m_byId[unit.id].push_back(row);
        if (!unit.token.empty()) m_byToken[unit.token].push_back(row);
        std::vector<MoneyCells> lines = _lines(unit.token.empty() ? nullptr : book.Find(unit.token));
        if (const auto found = oldRows.find(unit.key); found != oldRows.end()) {
            const int oldRow = found->second;
            _tellLines(old, oldRow, oldUnits[static_cast<size_t>(oldRow)].lines, m_rows, row, lines, news);
            oldRows.erase(found);
        } else {
            for (const MoneyCells& line : lines) news.Insert(m_rows, row, line);
        }
        m_units.push_back({std::move(unit), std::move(lines), m_time, m_time});
    }
    for (size_t row = 0; row < oldUnits.size(); ++row) {
        if (!oldRows.contains(oldUnits[row].key)) continue;
        for (const MoneyCells& line : oldUnits[row].lines) news.Delete(old, static_cast<int>(row), line);
    }
    m_all.units.resize(m_units.size());
    for (size_t i = 0; i < m_units.size(); ++i) m_all.units[i] = static_cast<int>(i);
    _rebuild(m_all);
    news.MakeRecords(m_form, records);
}

bool AccountSheet::SetMoney(std::string_view token, const AccountMoney& money,
                            std::vector<CUIData>& records) {
    const auto found = m_byToken.find(token);
    if (found == m_byToken.end()) return false;
    const std::vector<MoneyCells> lines = _lines(&money);
    News news;
    bool isChanged = false;
    for (const int row : found->second) {
        Unit& unit = m_units[static_cast<size_t>(row)];
        if (unit.lines == lines) continue;
        if (!isChanged) ++m_time;
        isChanged = true;
        _tellLines(m_rows, row, unit.lines, m_rows, row, lines, news);
        unit.changed = m_time;
        if (unit.lines.size() != lines.size()) unit.reshaped = m_time;
        unit.lines = lines;
        if (!m_form.byCurrency) SetMoneyCells(m_all.rows, row, lines.front());
    }
    if (!m_form.byCurrency) m_all.time = m_time;
    news.MakeRecords(m_form, records);
    return isChanged;
}

void AccountSheet::TellAll(const CDataSet& tokens, std::vector<CUIData>& records) {
    MakeNews(m_form, "update", All(), tokens, records);
}

const CDataTable& AccountSheet::All() {
    _catchUp(m_all);
    return m_all.rows;
}

const CDataTable& AccountSheet::OfGroup(const std::string& group, const CDataSet& ids) {
    const auto [at, isNew] = m_groups.try_emplace(group);
    View& view = at->second;
    if (isNew) {
        for (const std::string& id : ids) {
            const auto found = m_byId.find(id);
            if (found != m_byId.end())
                view.units.insert(view.units.end(), found->second.begin(), found->second.end());
        }
        std::ranges::sort(view.units);  // as in the list of all
        _rebuild(view);
    } else {
        _catchUp(view);
    }
    return view.rows;
}

std::vector<MoneyCells> AccountSheet::_lines(const AccountMoney* money) const {
    if (!money) return {MoneyCells()};
    std::vector<MoneyCells> lines = money->Lines(m_form.byPortfolio);
    if (!m_form.byCurrency) lines.resize(1);
    return lines;
}

void AccountSheet::_tellLines(const CDataTable& was, int wasRow, const std::vector<MoneyCells>& old,
                              const CDataTable& is, int isRow, const std::vector<MoneyCells>& lines,
                              News& news) const {
    const auto find = [this](const std::vector<MoneyCells>& in, const MoneyCells& line) {
        return m_form.byCurrency ? std::ranges::find(in, line.texts[MoneyCells::kCurrency],
                                                     [](const MoneyCells& cells) -> const std::string& {
                                                         return cells.texts[MoneyCells::kCurrency];
                                                     })
                                 : in.begin();
    };
    const bool isSameRow = AreSame(was, wasRow, is, isRow);
    for (const MoneyCells& line : lines) {
        if (const auto before = find(old, line); before == old.end()) {
            news.Insert(is, isRow, line);
        } else if (!isSameRow || *before != line) {
            news.Update(is, isRow, line);
        }
    }
    for (const MoneyCells& line : old) {
        if (find(lines, line) == lines.end()) news.Delete(was, wasRow, line);
    }
}

// As long as no unit has got or lost lines, each stands where it stood.
void AccountSheet::_catchUp(View& view) const {
    if (view.time == m_time) return;
    int row = 0;
    for (const int number : view.units) {
        const Unit& unit = m_units[static_cast<size_t>(number)];
        if (unit.reshaped > view.time) return _rebuild(view);
        for (const MoneyCells& line : unit.lines) {
            if (unit.changed > view.time) SetMoneyCells(view.rows, row, line);
            ++row;
        }
    }
    view.time = m_time;
}

void AccountSheet::_rebuild(View& view) const {
    view.rows = CDataTable();
    view.rows.CopyHeader(m_rows);
    for (const int number : view.units) {
        for (const MoneyCells& line : m_units[static_cast<size_t>(number)].lines)
            SetMoneyCells(view.rows, AppendRowOf(m_rows, number, view.rows), line);
    }
    view.time = m_time;
}

}  // namespace luadui
