// Where a text occurs among many keys: the first key, in their order, that contains it, in a time that hardly depends
// on how many keys there are and how many of them contain it.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "codedata/range_minimum.h"

namespace luadui {

// The keys stand one after the other, in ascending order, in one text, each with a mark at its end. All positions of
// that text, sorted by what begins there (a suffix array), put the occurrences of a query side by side, and as the
// keys are in order the first one that contains it is where the least of these positions lies. A label a key (its
// market) narrows a search to the keys with that label.
//
// About 8 bytes a character of the text, 13 with labels, beside 650 KB of tables by which short queries start.
//
// Threads: any may ask; it never changes.
class SubstringIndex {
  public:
    // Characters that end a key or part it. Code page 936 has none of them, and no query matches one.
    static constexpr char16_t kFirstMark = 0xE900, kLastMark = 0xF0FF;
    static constexpr bool IsMark(uint32_t c) { return c >= kFirstMark && c <= kLastMark; }
    static constexpr size_t kMaxText = size_t{1} << 25;  // characters: forty times what real lists have
    static constexpr uint32_t kNone = UINT32_MAX;

    // The occurrences of a query: entries of the sorted positions.
    struct Range {
        uint32_t first = 0, last = 0;
        bool IsEmpty() const { return first == last; }
        uint32_t Size() const { return last - first; }
    };

    SubstringIndex() = default;
    // `text`: the keys in ascending order, each with a mark as its last character, without zeros, at most kMaxText in
    // all; `starts`: where they begin; `labels`: one a key.
    SubstringIndex(std::u16string text, std::vector<uint32_t> starts, const std::vector<uint8_t>& labels);

    size_t KeyCount() const { return m_starts.size(); }
    size_t LongestKey() const { return m_longestKey; }
    std::u16string_view Key(uint32_t key) const;  // with its mark
    uint32_t KeyStart(uint32_t key) const { return m_starts[key]; }

    // Where `query` occurs; nowhere when it is empty.
    Range Find(std::wstring_view query) const noexcept;
    // The first key with an occurrence in the range [and with that label]; kNone when there is none.
    uint32_t FirstKey(Range range) const noexcept;
    uint32_t FirstKey(Range range, uint8_t label) const noexcept;
    // An occurrence: its position in the text, the label of its key.
    uint32_t Position(uint32_t occurrence) const { return m_positions[occurrence]; }
    uint8_t Label(uint32_t occurrence) const { return m_labels[occurrence]; }
    uint32_t KeyAt(uint32_t position) const noexcept;

    size_t Bytes() const noexcept;       // of memory, the text included
    size_t LabelBytes() const noexcept;  // what of it is there for the labels

  private:
    static constexpr size_t kKeyStride = 16;     // characters between two entries of m_keyHints
    static constexpr size_t kCountStride = 128;  // occurrences between two entries of m_labelCounts

    int _compare(uint32_t occurrence, std::wstring_view query, size_t known) const noexcept;
    Range _narrow(Range range, std::wstring_view query, size_t known) const noexcept;
    void _fillHints();
    void _fillTables();
    void _fillLabels(const std::vector<uint8_t>& labels);
    uint32_t _countBefore(uint32_t occurrence, uint8_t label) const noexcept;

    std::u16string m_text;
    size_t m_longestKey = 0;
    std::vector<uint32_t> m_starts;    // of the keys, ascending
    std::vector<uint32_t> m_keyHints;  // the key at every kKeyStride-th character
    std::vector<uint32_t> m_positions;
    RangeMinimum m_minimum;           // over m_positions
    std::vector<uint32_t> m_singles;  // the first occurrence of each character or of one above it
    std::vector<Range> m_triples;     // the occurrences of each three letters or digits

    // The positions once more, sorted by label first, and what translates occurrences into these.
    std::vector<uint8_t> m_labels;        // of each occurrence
    std::vector<uint32_t> m_labelStarts;  // of each label in m_labelPositions
    std::vector<uint32_t>
        m_labelCounts;  // how many of each label stand before every kCountStride-th occurrence
    std::vector<uint32_t> m_labelPositions;
    RangeMinimum m_labelMinimum;  // over m_labelPositions
};

}  // namespace luadui
