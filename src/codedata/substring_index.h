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

// Every place in every key is an occurrence of whatever begins there. Sorted by that text (a suffix array), the
// occurrences of a query stand side by side; an occurrence is a number with its key in the upper bits, so the least of
// them is in the first key that contains the query. Tables by the first characters say where to look, and the two
// characters after these stand beside each occurrence, so that the text itself is rarely read. A label a key (its
// market) narrows a search to the keys with that label.
//
// About 12 bytes a character of the text, 19 with labels, beside 850 KB of tables.
//
// Threads: any may ask; it never changes.
class SubstringIndex {
  public:
    // Characters that end a key or part it. Code page 936 has none of them, and no query matches one.
    static constexpr char16_t kFirstMark = 0xE900, kLastMark = 0xF0FF;
    static constexpr bool IsMark(uint32_t c) { return c >= kFirstMark && c <= kLastMark; }

    static constexpr size_t kMaxText = size_t{1} << 25;  // characters: forty times what real lists have
    static constexpr size_t kMaxKey = 512, kMaxKeys = UINT32_MAX / kMaxKey;
    static constexpr uint32_t kNone = UINT32_MAX;

    // The occurrences of a query.
    struct Range {
        uint32_t first = 0, last = 0;
        bool IsEmpty() const { return first >= last; }
    };

    SubstringIndex() = default;
    // `text`: the keys in ascending order, each with a mark as its last character, without zeros; `starts`: where they
    // begin; `labels`: one a key. At most kMaxText characters, kMaxKeys keys of kMaxKey.
    SubstringIndex(std::u16string text, std::vector<uint32_t> starts, std::vector<uint8_t> labels);

    size_t KeyCount() const { return m_starts.size(); }
    size_t LongestKey() const { return m_longestKey; }
    std::u16string_view Key(uint32_t key) const;  // with its mark
    uint8_t Label(uint32_t key) const { return m_labels[key]; }

    // Where `query` occurs; nowhere when it is empty.
    Range Find(std::wstring_view query) const noexcept;
    // The first key with an occurrence in the range [and with that label]; kNone when there is none.
    uint32_t FirstKey(Range range) const noexcept;
    uint32_t FirstKey(Range range, uint8_t label) const noexcept;
    // Of the occurrence at that place of a range.
    uint32_t KeyAt(uint32_t place) const { return m_occurrences[place] / kMaxKey; }
    uint32_t OffsetAt(uint32_t place) const { return m_occurrences[place] % kMaxKey; }

    size_t Bytes() const noexcept;       // of memory, the text included
    size_t LabelBytes() const noexcept;  // what of it is there for the labels

  private:
    static constexpr uint32_t kSampleStride = 16;  // places between two entries of m_samples
    static constexpr uint32_t kCountStride = 128;  // places between two entries of m_labelCounts

    // The occurrences of some letters and digits; in those from `tail` on a character above 'Z' comes next.
    struct Bucket {
        uint32_t first = 0, last = 0, tail = 0;
    };

    const char16_t* _textAt(uint32_t place) const {
        return m_text.data() + m_starts[KeyAt(place)] + OffsetAt(place);
    }
    int _compare(uint32_t place, std::wstring_view query, size_t known) const noexcept;
    uint32_t _lowerBound(Range range, uint64_t next) const noexcept;
    Range _narrow(Range range, std::wstring_view query, size_t known) const noexcept;
    Range _narrowByText(Range range, std::wstring_view query, size_t known) const noexcept;
    void _fillOccurrences();
    void _fillTables();
    void _fillLabelOrder();
    uint32_t _countBefore(uint32_t place, uint8_t label) const noexcept;

    std::u16string m_text;
    size_t m_longestKey = 0;
    std::vector<uint32_t> m_starts;       // of the keys
    std::vector<uint8_t> m_labels;        // of the keys
    std::vector<uint32_t> m_occurrences;  // key * kMaxKey + offset, sorted by what begins there
    std::vector<uint32_t>
        m_next;  // the two characters after those by which an occurrence is found in the tables
    std::vector<uint32_t> m_samples;  // of m_next: few enough to stay in a cache
    RangeMinimum m_minimum;           // over m_occurrences

    std::vector<uint32_t> m_singles;  // by character: the first place with that one or one above it
    std::vector<Bucket> m_buckets;    // by one, two or three letters or digits

    // The occurrences once more, those of one label side by side, and what translates places into that order.
    std::vector<uint32_t> m_byLabel;
    std::vector<uint32_t> m_labelStarts;  // of each label in m_byLabel
    std::vector<uint8_t> m_labelAt;       // by place
    std::vector<uint32_t> m_labelCounts;  // how many of each label stand before every kCountStride-th place
    RangeMinimum m_labelMinimum;          // over m_byLabel
};

}  // namespace luadui
