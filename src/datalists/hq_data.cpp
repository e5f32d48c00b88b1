#include "datalists/hq_data.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cstdint>
#include <cstring>
#include <deque>
#include <limits>
#include <optional>
#include <string>
#include <vector>

#include "base/counters.h"
#include "base/data_set.h"
#include "base/row_merge.h"
#include "base/short_bytes.h"
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
        const int64_t number = _readMarket(market);
        if (SaysNothing(code) || code.size() > CHqData::kMostCodeBytes || number < 0 ||
            number > std::numeric_limits<int>::max()) {
            return false;
        }
        m_market = static_cast<int>(number);
        CopyShort(m_text, code.data(), code.size());
        m_codeSize = code.size();
        m_text[m_codeSize] = ':';
        m_end = std::to_chars(m_text + m_codeSize + 1, std::end(m_text), m_market).ptr;
        return true;
    }
    std::string_view View() const noexcept { return {m_text, m_end}; }
    std::string_view Code() const noexcept { return {m_text, m_codeSize}; }
    int Market() const noexcept { return m_market; }
    // Codes of at most 8 bytes as a word, and what makes it, with the other, the whole key.
    bool IsShort() const noexcept { return m_codeSize <= sizeof(uint64_t); }
    uint64_t CodeWord() const noexcept {
        uint64_t word = 0;
        std::memcpy(&word, m_text, m_codeSize);
        return word;
    }
    uint64_t RestWord() const noexcept {
        return uint64_t{m_codeSize} << 32 | static_cast<uint32_t>(m_market);
    }

  private:
    // Below zero when it is none. Nearly always two or three digits.
    static int64_t _readMarket(std::string_view text) noexcept {
        if (text.empty() || text.size() > 3) return ParseLong(text).value_or(-1);
        int64_t number = 0;
        for (const char c : text) {
            const int digit = c - '0';
            if (static_cast<unsigned>(digit) > 9) return ParseLong(text).value_or(-1);
            number = number * 10 + digit;
        }
        return number;
    }

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
    explicit Quote(const QuoteKey& quoteKey)
        : key(quoteKey.View()), security(quoteKey.Code(), quoteKey.Market()) {}

    const std::string key;
    CUIData record;  // attached to all outputs that it was put into
    QuoteSecurity security;
};

// Numbers of quotes by their keys. The ordinary ones lie in the slots of one hash table: each row that is pushed asks
// here, and seldom for the same quote as the row before.
class QuoteIndex {
  public:
    // -1 when there is none.
    int Find(const QuoteKey& key) const {
        if (!key.IsShort()) {
            const auto found = m_long.find(key.View());
            return found == m_long.end() ? -1 : found->second;
        }
        return m_slots.empty() ? -1 : m_slots[_locate(key.CodeWord(), key.RestWord())].quote;
    }
    void Add(const QuoteKey& key, int quote) {
        if (!key.IsShort()) {
            m_long.emplace(key.View(), quote);
            return;
        }
        if (2 * (m_used + 1) > m_slots.size()) _grow();
        m_slots[_locate(key.CodeWord(), key.RestWord())] = {key.CodeWord(), key.RestWord(), quote};
        ++m_used;
    }

  private:
    struct Slot {
        uint64_t code = 0, rest = 0;
        int quote = -1;
    };

    // Where the key is, or would go.
    size_t _locate(uint64_t code, uint64_t rest) const {
        const std::array<uint64_t, 2> words{code, rest};
        const HashedKey hashed({reinterpret_cast<const char*>(words.data()), sizeof words});
        size_t slot = hashed.hash & (m_slots.size() - 1);
        while (m_slots[slot].quote >= 0 && (m_slots[slot].code != code || m_slots[slot].rest != rest))
            slot = (slot + 1) & (m_slots.size() - 1);
        return slot;
    }
    void _grow() {
        std::vector<Slot> slots(std::max<size_t>(64, 2 * m_slots.size()));
        slots.swap(m_slots);
        for (const Slot& slot : slots) {
            if (slot.quote >= 0) m_slots[_locate(slot.code, slot.rest)] = slot;
        }
    }

    std::vector<Slot> m_slots;  // a power of two, at most half of them used
    size_t m_used = 0;
    TextMap<int> m_long;
};

// Room for all fields at once.
constexpr size_t kRecordEntries = QuoteSecurity::kKeys;
constexpr size_t kRecordBytes = 1400;

}  // namespace

class CHqData::Store {
  public:
    explicit Store(std::string_view kind)
        : m_kind(kind), m_emptyTable(EmptyPushTable()), m_known(m_emptyTable), m_fromPush(m_emptyTable) {}

    void InitPush(CUIData& owner) {
        ClearPush();
        m_table = m_emptyTable;
        owner.SetDataShared("push_table", m_table);
        owner.SetDataShared("push_code2row", m_rows);
    }

    void ClearPush() {
        if (m_pushed.empty()) return;
        for (const int quote : m_pushed) m_pushRows[static_cast<size_t>(quote)] = -1;
        m_pushed.clear();
        m_table.DeleteAllRows();
        m_rows.Clear();
    }

    void Merge(const CDataTable& pushed) {
        const Source& source = _sourceOf(pushed);
        m_merged.clear();
        for (int row = 0; row < pushed.GetRowNumber(); ++row) {
            const int quote = _quoteOf(pushed.GetRow(row), source);
            if (quote < 0) continue;
            const int pushRow = m_pushRows[static_cast<size_t>(quote)];
            m_merged.push_back({pushRow < 0 ? _addPush(quote) : pushRow, row});
        }
        m_table.MergeRows(m_merged, pushed, source.merge);
    }

    bool Flush(CUIData& out) {
        if (m_pushed.empty()) return false;
        for (size_t row = 0; row < m_pushed.size(); ++row) {
            _expect(row);
            _update(m_pushed[row], m_table, static_cast<int>(row), m_fromPush, true);
        }
        if (!out.IsEmpty()) {
            _tell(m_pushed, true, out);
        } else {
            if (!_wasTold()) _remember();
            out = m_told;
        }
        return true;
    }

    void BuildQuery(const CDataTable& answer, CUIData& out) {
        const Source& source = _sourceOf(answer);
        std::vector<int> quotes;
        for (int row = 0; row < answer.GetRowNumber(); ++row) {
            const int quote = _quoteOf(answer.GetRow(row), source);
            if (quote < 0) continue;
            quotes.push_back(quote);
            _update(quote, answer, row, source, false);
            const int pushRow = m_pushRows[static_cast<size_t>(quote)];
            if (pushRow >= 0) _overtake(pushRow, answer, row, source);
        }
        _tell(quotes, false, out);
    }

    bool Fill(const CDataTable& table, int row, CUIData& record) {
        const Source& source = _sourceOf(table);
        QuoteKey key;
        if (!_readKey(table.GetRow(row), source, key)) return false;
        QuoteSecurity security(key.Code(), key.Market());
        CDataTable known = m_emptyTable;
        known.AppendRow();
        _fill(known, 0, table, row, source, false, key.View(), security, record);
        return true;
    }

    bool Find(std::string_view code, std::string_view market, CUIData& out) const {
        QuoteKey key;
        const int quote = key.Set(code, market) ? m_index.Find(key) : -1;
        if (quote < 0 || m_quotes[static_cast<size_t>(quote)].record.IsEmpty()) return false;
        out = CUIData(m_quotes[static_cast<size_t>(quote)].record);
        return true;
    }

  private:
    // What is known of the columns of a table.
    struct Source {
        explicit Source(const CDataTable& pushTable, const CDataTable& table)
            : merge(pushTable, table, kNothing),
              code(table.FindColumn("4")),
              market(table.FindColumn("3")),
              change(table.FindColumn("199112")) {}
        explicit Source(const CDataTable& pushTable) : Source(pushTable, pushTable) {}

        RowMerge merge;
        int code, market, change;
    };

    // Servers send the same columns again and again.
    const Source& _sourceOf(const CDataTable& table) {
        if (!m_source || !m_source->merge.Fits(m_emptyTable, table)) m_source.emplace(m_emptyTable, table);
        return *m_source;
    }

    static bool _readKey(const TableRow& cells, const Source& source, QuoteKey& key) {
        const bool hasKey =
            source.code >= 0 && source.market >= 0 && key.Set(cells[source.code], cells[source.market]);
        if (!hasKey) CCounters::Add("quote_row_without_security");
        return hasKey;
    }

    // Made when it is not there; -1 when there is none.
    int _quoteOf(const TableRow& cells, const Source& source) {
        QuoteKey key;
        if (!_readKey(cells, source, key)) return -1;
        const int found = m_index.Find(key);
        if (found >= 0) return found;
        if (m_quotes.size() >= kMostQuotes) {
            CCounters::Add("quote_store_full");
            return -1;
        }
        const int quote = m_known.AppendRow();
        m_quotes.emplace_back(key);
        m_pushRows.push_back(-1);
        m_index.Add(key, quote);
        return quote;
    }

    int _addPush(int quote) {
        const int row = m_table.AppendRow();
        m_pushed.push_back(quote);
        m_pushRows[static_cast<size_t>(quote)] = row;
        m_rows.SetData(m_quotes[static_cast<size_t>(quote)].key, row);
        return row;
    }

    // What was pushed before an answer is not to come back with the next tick.
    void _overtake(int pushRow, const CDataTable& answer, int row, const Source& source) {
        m_table.MergeRow(pushRow, answer, row, source.merge);
        m_table.SetItemText(pushRow, m_fromPush.change, _changeIn(answer, row, source));
    }

    void _update(int number, const CDataTable& table, int row, const Source& source, bool isPush) {
        Quote& quote = m_quotes[static_cast<size_t>(number)];
        if (quote.record.IsEmpty()) {
            quote.record.Reserve(kRecordEntries, kRecordBytes);
            quote.record.SetType(m_kind);
        }
        _fill(m_known, number, table, row, source, isPush, quote.key, quote.security, quote.record);
    }

    // Asks for the memory of the quotes behind this one: together they are more than caches hold.
    void _expect(size_t row) const {
        constexpr size_t kBlockBytes = kRecordBytes + kRecordEntries * 24;
        if (row + 3 < m_pushed.size()) {
            const auto quote = static_cast<size_t>(m_pushed[row + 3]);
            const auto* const memory = reinterpret_cast<const char*>(&m_quotes[quote]);
            for (size_t at = 0; at < sizeof(Quote); at += 64) __builtin_prefetch(memory + at);
        }
        if (row + 1 < m_pushed.size()) {
            m_table.ExpectRow(static_cast<int>(row + 1));
            m_known.ExpectRow(m_pushed[row + 1]);
            m_quotes[static_cast<size_t>(m_pushed[row + 1])].record.Expect(kBlockBytes);
        }
    }

    void _tell(const std::vector<int>& quotes, bool isPush, CUIData& out) {
        constexpr size_t kKeyBytes = 16;
        CDataSet keys;
        out.Reserve(quotes.size() + 8, (quotes.size() + 8) * kKeyBytes);
        out.SetType(m_kind);
        for (const int number : quotes) {
            Quote& quote = m_quotes[static_cast<size_t>(number)];
            out.SetDataShared(quote.key, quote.record);
            keys.Insert(quote.key);
        }
        out.SetData("updatecode", keys);
        out.SetData("is_push", isPush ? 1 : 0);
    }

    // Whether the last tick told the same quotes.
    bool _wasTold() const {
        return m_pushed.size() == m_toldQuotes.size() && std::ranges::all_of(m_pushed, [&](int quote) {
                   return static_cast<size_t>(quote) < m_isTold.size() &&
                          m_isTold[static_cast<size_t>(quote)];
               });
    }
    void _remember() {
        for (const int quote : m_toldQuotes) m_isTold[static_cast<size_t>(quote)] = false;
        m_toldQuotes = m_pushed;
        m_isTold.resize(m_quotes.size());
        for (const int quote : m_toldQuotes) m_isTold[static_cast<size_t>(quote)] = true;
        m_told = CUIData();
        _tell(m_toldQuotes, true, m_told);
    }

    void _fill(CDataTable& known, int place, const CDataTable& table, int row, const Source& source,
               bool isPush, std::string_view key, QuoteSecurity& security, CUIData& record) {
        m_changes.clear();
        known.MergeRow(place, table, row, source.merge, &m_changes);
        FillQuote({known.GetRow(place), m_changes, _changeIn(table, row, source), isPush}, key, security,
                  record);
    }
    static TextView _changeIn(const CDataTable& table, int row, const Source& source) {
        return source.change >= 0 ? table.GetItemText(row, source.change) : TextView();
    }

    const std::string m_kind;
    const CDataTable m_emptyTable;
    CDataTable m_table;         // attached to "push_table"
    CUIData m_rows;             // attached to "push_code2row"
    std::vector<int> m_pushed;  // the quotes, in the order of the rows

    // By number of the quote.
    std::deque<Quote> m_quotes;
    std::vector<int> m_pushRows;  // -1: not pushed
    CDataTable m_known;           // the last cells that said something
    QuoteIndex m_index;

    // What the last tick told, for ticks often tell the same quotes: who gets it shares it.
    CUIData m_told;
    std::vector<int> m_toldQuotes;
    std::vector<bool> m_isTold;  // by number of the quote; may be shorter

    const Source m_fromPush;
    std::optional<Source> m_source;             // of the table that came last
    std::vector<int> m_changes;                 // of the row that is looked at
    std::vector<CDataTable::RowPair> m_merged;  // which row goes where
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
