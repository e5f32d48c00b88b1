#include "datalists/hq_data.h"

#include <charconv>
#include <cstdint>
#include <limits>
#include <optional>
#include <string>
#include <vector>

#include "base/counters.h"
#include "base/data_set.h"
#include "base/row_merge.h"
#include "base/text.h"
#include "base/text_map.h"
#include "datalists/quote_record.h"

namespace luadui {
namespace {

constexpr std::string_view kNothing = "-";

// "code:market", written once for each row.
class QuoteKey {
  public:
    // False when it is no security.
    bool Set(std::string_view code, std::string_view market) noexcept {
        const int64_t number = ParseLong(market).value_or(-1);
        if (SaysNothing(code) || code.size() > CHqData::kMostCodeBytes || number < 0 ||
            number > std::numeric_limits<int>::max()) {
            return false;
        }
        m_market = static_cast<int>(number);
        m_codeSize = code.copy(m_text, code.size());
        m_text[m_codeSize] = ':';
        m_end = std::to_chars(m_text + m_codeSize + 1, std::end(m_text), m_market).ptr;
        return true;
    }
    std::string_view View() const noexcept { return {m_text, m_end}; }
    std::string_view Code() const noexcept { return {m_text, m_codeSize}; }
    int Market() const noexcept { return m_market; }

  private:
    char m_text[CHqData::kMostCodeBytes + 16];
    const char* m_end = m_text;
    size_t m_codeSize = 0;
    int m_market = 0;
};

CDataTable EmptyPushTable() {
    CDataTable table;
    for (const std::string_view column : kPushColumns) table.AddColumn(column);
    return table;
}

struct Quote {
    explicit Quote(const QuoteKey& key) : security(key.Code(), key.Market()) {}

    CUIData record;  // attached to all outputs that it was put into
    QuoteSecurity security;
    int pushRow = -1;  // in the table of pushes
};

// Room for all fields at once.
constexpr size_t kRecordEntries = QuoteSecurity::kKeys;
constexpr size_t kRecordBytes = 1400;

}  // namespace

class CHqData::Store {
  public:
    using Entry = TextMap<Quote>::value_type;  // these stay where they are

    explicit Store(std::string_view kind)
        : m_kind(kind), m_emptyTable(EmptyPushTable()), m_pushColumns(m_emptyTable) {}

    void InitPush(CUIData& owner) {
        ClearPush();
        m_table = m_emptyTable;
        owner.SetDataShared("push_table", m_table);
        owner.SetDataShared("push_code2row", m_rows);
    }

    void ClearPush() {
        if (m_pushed.empty()) return;
        for (Entry* const entry : m_pushed) entry->second.pushRow = -1;
        m_pushed.clear();
        m_table.DeleteAllRows();
        m_rows.Clear();
    }

    void Merge(const CDataTable& pushed) {
        if (!m_merge || !m_merge->Fits(m_emptyTable, pushed)) m_merge.emplace(m_emptyTable, pushed, kNothing);
        const QuoteColumns& columns = _columnsOf(pushed);
        for (int row = 0; row < pushed.GetRowNumber(); ++row) {
            Entry* const entry = _entryOf(pushed.GetRow(row), columns);
            if (entry && (entry->second.pushRow >= 0 || _addPush(*entry)))
                m_table.MergeRow(entry->second.pushRow, pushed, row, *m_merge);
        }
    }

    bool Flush(CUIData& out) {
        if (m_pushed.empty()) return false;
        CDataSet keys;
        _start(out, m_pushed.size());
        for (Entry* const entry : m_pushed)
            _publish(m_table.GetRow(entry->second.pushRow), m_pushColumns, true, *entry, keys, out);
        _finish(true, keys, out);
        return true;
    }

    void BuildQuery(const CDataTable& answer, CUIData& out) {
        const QuoteColumns& columns = _columnsOf(answer);
        CDataSet keys;
        _start(out, static_cast<size_t>(answer.GetRowNumber()));
        for (int row = 0; row < answer.GetRowNumber(); ++row) {
            const TableRow cells = answer.GetRow(row);
            if (Entry* const entry = _entryOf(cells, columns))
                _publish(cells, columns, false, *entry, keys, out);
        }
        _finish(false, keys, out);
    }

    bool Fill(const CDataTable& table, int row, CUIData& record) {
        const QuoteColumns& columns = _columnsOf(table);
        const TableRow cells = table.GetRow(row);
        QuoteKey key;
        if (!_readKey(cells, columns, key)) return false;
        QuoteSecurity security(key.Code(), key.Market());
        FillQuote(cells, columns, key.View(), false, security, record);
        return true;
    }

    bool Find(std::string_view code, std::string_view market, CUIData& out) const {
        QuoteKey key;
        if (!key.Set(code, market)) return false;
        const auto found = m_quotes.find(key.View());
        if (found == m_quotes.end() || found->second.record.IsEmpty()) return false;
        out = CUIData(found->second.record);
        return true;
    }

  private:
    const QuoteColumns& _columnsOf(const CDataTable& table) {
        if (!m_columns || !m_columns->Fits(table)) m_columns.emplace(table);
        return *m_columns;
    }

    static bool _readKey(const TableRow& cells, const QuoteColumns& columns, QuoteKey& key) {
        const bool hasKey = columns.Code() >= 0 && columns.Market() >= 0 &&
                            key.Set(cells[columns.Code()], cells[columns.Market()]);
        if (!hasKey) CCounters::Add("quote_row_without_security");
        return hasKey;
    }

    // Made when it is not there; null when there is none.
    Entry* _entryOf(const TableRow& cells, const QuoteColumns& columns) {
        QuoteKey key;
        if (!_readKey(cells, columns, key)) return nullptr;
        const auto found = m_quotes.find(key.View());
        if (found != m_quotes.end()) return &*found;
        if (m_quotes.size() >= kMostQuotes) {
            CCounters::Add("quote_store_full");
            return nullptr;
        }
        return &*m_quotes.emplace(key.View(), Quote(key)).first;
    }

    bool _addPush(Entry& entry) {
        const int row = m_table.AppendRow();
        if (row < 0) return false;
        m_pushed.push_back(&entry);
        entry.second.pushRow = row;
        m_rows.SetData(entry.first, row);
        return true;
    }

    void _start(CUIData& out, size_t quotes) const {
        constexpr size_t kKeyBytes = 16;
        out.Reserve(quotes + 8, (quotes + 8) * kKeyBytes);
        out.SetType(m_kind);
    }

    void _publish(const TableRow& cells, const QuoteColumns& columns, bool isPush, Entry& entry,
                  CDataSet& keys, CUIData& out) {
        Quote& quote = entry.second;
        if (quote.record.IsEmpty()) {
            quote.record.Reserve(kRecordEntries, kRecordBytes);
            quote.record.SetType(m_kind);
        }
        FillQuote(cells, columns, entry.first, isPush, quote.security, quote.record);
        out.SetDataShared(entry.first, quote.record);
        keys.Insert(entry.first);
    }

    static void _finish(bool isPush, const CDataSet& keys, CUIData& out) {
        out.SetData("updatecode", keys);
        out.SetData("is_push", isPush ? 1 : 0);
    }

    const std::string m_kind;
    const CDataTable m_emptyTable;
    const QuoteColumns m_pushColumns;
    CDataTable m_table;  // attached to "push_table"
    CUIData m_rows;      // attached to "push_code2row"
    TextMap<Quote> m_quotes;
    std::vector<Entry*> m_pushed;  // in the order of the rows
    // For the columns that came last: servers send the same ones again and again.
    std::optional<RowMerge> m_merge;
    std::optional<QuoteColumns> m_columns;
};

CHqData::CHqData(std::string_view kind) : CUIData(kind), m_store(std::make_unique<Store>(kind)) {
    InitPushTable();
}

CHqData::~CHqData() = default;

const char* CHqData::ClassName() const { return "CHqData"; }

void CHqData::InitPushTable() { m_store->InitPush(*this); }

void CHqData::ClearPush() { m_store->ClearPush(); }

void CHqData::MergePushRows(const CDataTable& pushed) { m_store->Merge(pushed); }

bool CHqData::FlushPush(CUIData& out) { return m_store->Flush(out); }

void CHqData::BuildQueryQuotes(const CDataTable& answer, CUIData& out) { m_store->BuildQuery(answer, out); }

bool CHqData::FillQuoteRecord(const CDataTable& table, int row, CUIData& record) {
    return m_store->Fill(table, row, record);
}

bool CHqData::FindQuote(std::string_view code, std::string_view market, CUIData& out) const {
    return m_store->Find(code, market, out);
}

}  // namespace luadui
