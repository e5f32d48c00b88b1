// How a book comes out of the rows of a list.
#include <algorithm>
#include <bit>
#include <functional>
#include <string>
#include <unordered_map>
#include <utility>

#include "base/counters.h"
#include "base/text.h"
#include "codedata/code_book.h"
#include "codedata/code_list_query.h"
#include "platform/duilib.h"

namespace luadui {
namespace {

// The mark of a market has its number added; separators within a key have the one below.
constexpr char16_t kSeparator = SubstringIndex::kFirstMark, kMarketMark = kSeparator + 1;
static_assert(kMarketMark + CodeBook::kMaxMarkets <= SubstringIndex::kLastMark);

// The first eight bytes, in the order of the text: comparing these is often enough.
uint64_t StartOf(std::string_view text) {
    uint64_t start = 0;
    for (size_t i = 0; i < 8; ++i)
        start = start << 8 | (i < text.size() ? static_cast<unsigned char>(text[i]) : 0);
    return start;
}

bool IsUsable(const CodeRecord& record) {
    return !record.code.empty() && record.code.size() <= CodeList::kMaxCode && IsAscii(record.code) &&
           !record.market.empty() && record.market.size() <= CodeList::kMaxMarket &&
           record.name.size() <= CodeList::kMaxName && record.phonetic.size() <= CodeList::kMaxPhonetic;
}

}  // namespace

class CodeBook::Builder {
  public:
    Builder(std::span<const CodeRecord> records, std::span<const CodeRecord> additions)
        : m_firstAddition(records.size()), m_records(records.begin(), records.end()) {
        m_records.insert(m_records.end(), additions.begin(), additions.end());
    }

    std::shared_ptr<const CodeBook> Build() {
        _numberMarkets();
        _takeRows();
        _sortByCode();
        _writeKeys();
        _sortByKey();
        _writeBook();
        _writeParts();
        _writeCodeTable();
        return m_book;
    }

  private:
    struct Row {
        uint32_t record;
        uint8_t market;
        uint64_t codeStart;
        uint32_t key, keyLength;  // in m_keys
        uint32_t entry;           // its number in the book
    };

    // Markets that the code list query names come in its order, others after them as they appear.
    void _numberMarkets() {
        std::vector<std::pair<size_t, std::string_view>> markets;
        for (const CodeRecord& record : m_records) {
            if (!IsUsable(record) || !m_marketNumbers.emplace(record.market, 0).second) continue;
            const size_t rank = CodeListRank(record.market);
            markets.emplace_back(rank < kCodeListMarkets.size() ? rank : rank + markets.size(),
                                 record.market);
        }
        std::sort(markets.begin(), markets.end());
        if (markets.size() > kMaxMarkets) markets.resize(kMaxMarkets);
        m_marketNumbers.clear();
        for (const auto& [rank, id] : markets) {
            m_marketNumbers.emplace(id, static_cast<uint8_t>(m_book->m_markets.size()));
            m_book->m_markets.push_back({std::string(id), GbkToWide(id)});
        }
    }

    void _takeRows() {
        size_t unusable = 0, refused = 0;
        m_rows.reserve(m_records.size());
        for (uint32_t i = 0; i < m_records.size(); ++i) {
            const CodeRecord& record = m_records[i];
            const auto market = m_marketNumbers.find(record.market);
            if (!IsUsable(record)) {
                ++unusable;
            } else if (market == m_marketNumbers.end()) {
                ++refused;
            } else {
                m_rows.push_back({i, market->second, StartOf(record.code), 0, 0, 0});
            }
        }
        if (unusable > 0) CCounters::Add("code_list_row_unusable", unusable);
        if (refused > 0) CCounters::Add("code_list_market_refused", refused);
    }

    std::string_view _code(const Row& row) const { return m_records[row.record].code; }

    // By code, market and place in the list; only the first of a code and market stays.
    void _sortByCode() {
        std::sort(m_rows.begin(), m_rows.end(), [this](const Row& left, const Row& right) {
            if (left.codeStart != right.codeStart) return left.codeStart < right.codeStart;
            if (const int order = _code(left).compare(_code(right)); order != 0) return order < 0;
            return std::pair(left.market, left.record) < std::pair(right.market, right.record);
        });
        size_t duplicates = 0;
        const auto isDouble = [&](const Row& left, const Row& right) {
            if (left.market != right.market || _code(left) != _code(right)) return false;
            duplicates += right.record < m_firstAddition;
            return true;
        };
        m_rows.erase(std::unique(m_rows.begin(), m_rows.end(), isDouble), m_rows.end());
        if (duplicates > 0) CCounters::Add("code_list_duplicate", duplicates);
    }

    void _writeKeys() {
        std::wstring keys;  // all of them, so that they are upper-cased in one go
        size_t count = 0;
        for (; count < std::min(m_rows.size(), SubstringIndex::kMaxKeys) &&
               keys.size() <= SubstringIndex::kMaxText;
             ++count) {
            Row& row = m_rows[count];
            row.key = static_cast<uint32_t>(keys.size());
            _appendKey(row, keys);
            row.keyLength = static_cast<uint32_t>(keys.size() - row.key);
        }
        if (keys.size() > SubstringIndex::kMaxText) keys.resize(m_rows[--count].key);
        if (count < m_rows.size()) CCounters::Add("code_list_text_refused", m_rows.size() - count);
        m_rows.resize(count);
        CDuiString upper(keys.c_str(), static_cast<int>(keys.size()));
        upper.MakeUpper();
        m_keys.assign(upper.GetData(), upper.GetData() + upper.GetLength());
    }

    void _appendKey(const Row& row, std::wstring& keys) const {
        const CodeRecord& record = m_records[row.record];
        const size_t start = keys.size();
        keys += GbkToWide(record.code);
        keys += GbkToWide(record.name);
        const size_t readings = keys.size();
        keys += GbkToWide(record.phonetic);
        for (size_t i = start; i < keys.size(); ++i) {
            const bool isSeparator = i >= readings && (keys[i] == L' ' || keys[i] == L',' || keys[i] == L';');
            if (isSeparator) keys[i] = kSeparator;
            if (keys[i] == L'\0') keys[i] = L'\xFFFD';
        }
        keys += static_cast<wchar_t>(kMarketMark + row.market);
    }

    std::u16string_view _key(const Row& row) const {
        return std::u16string_view(m_keys).substr(row.key, row.keyLength);
    }

    // Numbers the entries. Rows come by code, which begins the key, so that they are nearly in order.
    void _sortByKey() {
        m_order.resize(m_rows.size());
        for (uint32_t i = 0; i < m_order.size(); ++i) m_order[i] = i;
        std::sort(m_order.begin(), m_order.end(), [this](uint32_t left, uint32_t right) {
            const int order = _key(m_rows[left]).compare(_key(m_rows[right]));
            return order != 0 ? order < 0 : m_rows[left].record < m_rows[right].record;
        });
        for (uint32_t i = 0; i < m_order.size(); ++i) m_rows[m_order[i]].entry = i;
    }

    void _writeBook() {
        std::u16string keys;
        std::vector<uint32_t> starts;
        std::vector<uint8_t> labels;
        keys.reserve(m_keys.size());
        starts.reserve(m_rows.size());
        labels.reserve(m_rows.size());
        m_book->m_entries.reserve(m_rows.size());
        for (const uint32_t at : m_order) {
            const Row& row = m_rows[at];
            starts.push_back(static_cast<uint32_t>(keys.size()));
            labels.push_back(row.market);
            keys += _key(row);
            _writeEntry(row);
        }
        m_book->m_texts.shrink_to_fit();
        m_book->m_wideNames.shrink_to_fit();
        m_keys = {};
        m_book->m_index = SubstringIndex(std::move(keys), std::move(starts), std::move(labels));
    }

    void _writeEntry(const Row& row) {
        const CodeRecord& record = m_records[row.record];
        const std::wstring name = GbkToWide(record.name);
        std::string& texts = m_book->m_texts;
        m_book->m_entries.push_back(
            {static_cast<uint32_t>(texts.size()), static_cast<uint32_t>(m_book->m_wideNames.size()),
             static_cast<uint8_t>(record.code.size()), static_cast<uint8_t>(record.name.size()),
             static_cast<uint8_t>(record.phonetic.size()), static_cast<uint8_t>(name.size())});
        texts.append(record.code).append(record.name).append(record.phonetic);
        m_book->m_wideNames += name;
    }

    void _writeParts() {
        const SubstringIndex& index = m_book->m_index;
        std::vector<Part> parts;  // of the text of all keys
        std::vector<size_t> starts;
        for (uint32_t key = 0; key < index.KeyCount(); ++key) {
            const std::u16string_view text = index.Key(key);
            const size_t start = starts.emplace_back(parts.size()),
                         name = start + m_book->m_entries[key].code;
            parts.resize(start + text.size());
            const size_t reading = name + m_book->m_entries[key].wideLength;
            for (size_t i = reading; i < parts.size(); ++i) {
                if (i == reading || text[i - start - 1] == kSeparator) parts[i] = Part::kReading;
            }
            if (reading > name) parts[name] = Part::kName;
            parts[start] = Part::kCode;
        }
        m_book->m_parts.resize(parts.size());
        for (uint32_t i = 0; i < parts.size(); ++i)
            m_book->m_parts[i] = parts[starts[index.KeyAt(i)] + index.OffsetAt(i)];
    }

    void _writeCodeTable() {
        size_t codes = 0;
        std::vector<uint32_t>& byCode = m_book->m_byCode;
        byCode.reserve(m_rows.size());
        for (const Row& row : m_rows) {
            codes += byCode.empty() || m_book->_code(byCode.back()) != _code(row);
            byCode.push_back(row.entry);
        }
        m_book->m_slots.assign(std::bit_ceil(2 * codes), kFree);
        const size_t mask = m_book->m_slots.size() - 1;
        for (uint32_t i = 0; i < byCode.size(); ++i) {
            const std::string_view code = m_book->_code(byCode[i]);
            if (i > 0 && m_book->_code(byCode[i - 1]) == code) continue;
            size_t slot = std::hash<std::string_view>()(code) & mask;
            while (m_book->m_slots[slot] != kFree) slot = (slot + 1) & mask;
            m_book->m_slots[slot] = i;
        }
    }

    const size_t m_firstAddition;
    std::vector<CodeRecord> m_records;
    const std::shared_ptr<CodeBook> m_book{new CodeBook};
    std::unordered_map<std::string_view, uint8_t> m_marketNumbers;
    std::vector<Row> m_rows;  // by code
    std::u16string m_keys;
    std::vector<uint32_t> m_order;  // of the rows, by key
};

static_assert(CodeList::kMaxCode + CodeList::kMaxName + CodeList::kMaxPhonetic < SubstringIndex::kMaxKey);
static_assert(CodeList::kMaxCode <= UINT8_MAX && CodeList::kMaxName <= UINT8_MAX &&
              CodeList::kMaxPhonetic <= UINT8_MAX);

std::shared_ptr<const CodeBook> CodeBook::Build(std::span<const CodeRecord> records,
                                                std::span<const CodeRecord> additions) {
    return Builder(records, additions).Build();
}

}  // namespace luadui
