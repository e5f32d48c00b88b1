// One state of the code list, ready for every lookup.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "codedata/code_list.h"
#include "codedata/substring_index.h"

namespace luadui {

// The securities of a code list in the order of their search keys, found by a part of the key, by code, and by code
// with market or name.
//
// The search key of a security is its code, its short name and its phonetic initials, upper-cased, and last one
// private character that stands for its market: so the same security in two markets has two keys, and no query matches
// the mark. A phonetic column may hold several readings, separated by blanks, commas or semicolons; each of these
// separators is a mark, too, so that a query matches within one reading only, or across name and first reading.
//
// A (code, market) is there once, as its first row has it; rows without code or market, with texts longer than a
// CodeList takes or a code that is not ASCII are left out. Counted: "code_list_row_unusable", "code_list_duplicate", "code_list_market_refused" (more than kMaxMarkets different ones),
// "code_list_text_refused" (more text than an index takes).
//
// Threads: any may ask; it never changes. Texts of entries live as long as the book.
class CodeBook {
  public:
    static constexpr size_t kMaxMarkets = 250;

    // Texts of code page 936.
    struct Entry {
        std::string_view code, name, market, phonetic;
    };

    // What a position of a key begins.
    enum class Part : uint8_t { kInside, kCode, kReading, kName };

    CodeBook() = default;  // without entries
    // Of the records, which may go afterwards, and those additions that are not among them. Throws std::bad_alloc only.
    static std::shared_ptr<const CodeBook> Build(std::span<const CodeRecord> records,
                                                 std::span<const CodeRecord> additions = {});

    // Entries are numbered in the order of their search keys, from 0 on.
    size_t Size() const { return m_entries.size(); }
    Entry At(size_t entry) const;
    std::wstring_view WideName(size_t entry) const;
    std::wstring_view WideMarket(size_t entry) const;
    std::wstring SearchKey(size_t entry) const;

    // The first entry whose key contains `query`, which is upper-cased already [and whose market is exactly that].
    // None for an empty query.
    std::optional<size_t> Search(std::wstring_view query) const noexcept;
    std::optional<size_t> Search(std::wstring_view query, std::wstring_view market) const noexcept;

    // The entry of the code: of several the one of the market that the code list query names first.
    std::optional<size_t> Find(std::string_view code) const noexcept;
    // The entry of the code in the market, which is a market id or, when the code has no entry with that id, an
    // exchange code.
    std::optional<size_t> Find(std::string_view code, std::string_view market) const noexcept;
    // The entry with this code and short name; of several, as for the code alone.
    std::optional<size_t> FindByName(std::string_view code, std::string_view name) const noexcept;
    // All entries of the code, in the order of the markets in the code list query.
    std::span<const uint32_t> EntriesOf(std::string_view code) const noexcept;

    // All entries, those of one code side by side, in the order of their markets.
    std::span<const uint32_t> ByCode() const { return m_byCode; }

    const SubstringIndex& Index() const { return m_index; }
    // What begins at that place of the index.
    Part PartAt(uint32_t place) const { return m_parts[place]; }
    size_t Bytes() const noexcept;  // of memory, the index included

  private:
    // Code, name and phonetic, one after the other in m_texts from `at` on, and the name in m_wideNames.
    struct Texts {
        uint32_t at, wideName;
        uint8_t code, name, phonetic, wideLength;
    };
    struct Market {
        std::string id;
        std::wstring wideId;
    };
    class Builder;
    static constexpr uint32_t kFree = UINT32_MAX;

    std::string_view _code(size_t entry) const {
        return {m_texts.data() + m_entries[entry].at, m_entries[entry].code};
    }

    std::string m_texts;
    std::wstring m_wideNames;
    std::vector<Texts> m_entries;
    std::vector<Market> m_markets;  // in the order of the code list query; others after these
    SubstringIndex m_index;
    std::vector<Part> m_parts;
    std::vector<uint32_t> m_byCode;  // entries, those of one code side by side
    std::vector<uint32_t>
        m_slots;  // hash table of codes: where their entries begin in m_byCode, kFree for none
};

}  // namespace luadui
