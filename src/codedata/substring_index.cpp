#include "codedata/substring_index.h"

#include <algorithm>
#include <span>
#include <utility>

#include "codedata/suffix_sort.h"

namespace luadui {
namespace {

constexpr uint32_t kCharacters = 1u << 16;

// Codes and initials are of digits and letters: three of these are one number.
constexpr uint32_t kDigits = 36;
constexpr uint32_t kTriples = kDigits * kDigits * kDigits;

constexpr uint32_t DigitOf(uint32_t c) {
    if (c >= '0' && c <= '9') return c - '0';
    return c >= 'A' && c <= 'Z' ? c - 'A' + 10 : kDigits;
}

// kTriples when other characters are among the three.
template <class Char>
uint32_t TripleOf(const Char* text) {
    uint32_t triple = 0;
    for (int i = 0; i < 3; ++i) {
        const uint32_t digit = DigitOf(static_cast<uint32_t>(text[i]));
        if (digit == kDigits) return kTriples;
        triple = triple * kDigits + digit;
    }
    return triple;
}

bool IsInNoKey(wchar_t c) {
    const auto code = static_cast<uint32_t>(c);
    return code == 0 || code >= kCharacters || SubstringIndex::IsMark(code);
}

}  // namespace

SubstringIndex::SubstringIndex(std::u16string text, std::vector<uint32_t> starts,
                               const std::vector<uint8_t>& labels)
    : m_text(std::move(text)), m_starts(std::move(starts)) {
    m_positions = SortSuffixes(m_text);
    m_minimum = RangeMinimum(m_positions);
    _fillHints();
    _fillTables();
    _fillLabels(labels);
}

void SubstringIndex::_fillHints() {
    m_keyHints.reserve(m_text.size() / kKeyStride + 1);
    for (uint32_t key = 0; key < m_starts.size(); ++key) {
        const size_t end = key + 1 < m_starts.size() ? m_starts[key + 1] : m_text.size();
        m_longestKey = std::max(m_longestKey, end - m_starts[key]);
        while (m_keyHints.size() * kKeyStride < end) m_keyHints.push_back(key);
    }
}

void SubstringIndex::_fillTables() {
    m_singles.assign(kCharacters + 1, 0);
    for (const char16_t c : m_text) ++m_singles[c + 1u];
    for (uint32_t c = 0; c < kCharacters; ++c) m_singles[c + 1] += m_singles[c];
    m_triples.assign(kTriples, {});
    for (uint32_t i = 0; i < m_positions.size(); ++i) {
        const uint32_t position = m_positions[i];
        if (m_text.size() - position < 3) continue;
        const uint32_t triple = TripleOf(&m_text[position]);
        if (triple == kTriples) continue;
        if (m_triples[triple].IsEmpty()) m_triples[triple].first = i;
        m_triples[triple].last = i + 1;
    }
}

void SubstringIndex::_fillLabels(const std::vector<uint8_t>& labels) {
    if (labels.empty()) return;
    std::vector<uint8_t> labelAt(m_text.size());
    for (uint32_t key = 0; key < m_starts.size(); ++key) {
        const size_t end = key + 1 < m_starts.size() ? m_starts[key + 1] : m_text.size();
        std::fill(labelAt.begin() + m_starts[key], labelAt.begin() + static_cast<ptrdiff_t>(end),
                  labels[key]);
    }
    const size_t count = *std::max_element(labels.begin(), labels.end()) + size_t{1};
    m_labels.resize(m_positions.size());
    std::vector<uint32_t> seen(count);
    m_labelCounts.reserve((m_positions.size() / kCountStride + 1) * count);
    for (size_t i = 0; i <= m_positions.size(); ++i) {
        if (i % kCountStride == 0) m_labelCounts.insert(m_labelCounts.end(), seen.begin(), seen.end());
        if (i < m_positions.size()) ++seen[m_labels[i] = labelAt[m_positions[i]]];
    }
    m_labelStarts.assign(count + 1, 0);
    for (size_t label = 0; label < count; ++label)
        m_labelStarts[label + 1] = m_labelStarts[label] + seen[label];
    std::vector<uint32_t> next(m_labelStarts.begin(), m_labelStarts.end() - 1);
    m_labelPositions.resize(m_positions.size());
    for (size_t i = 0; i < m_positions.size(); ++i) m_labelPositions[next[m_labels[i]]++] = m_positions[i];
    m_labelMinimum = RangeMinimum(m_labelPositions);
}

std::u16string_view SubstringIndex::Key(uint32_t key) const {
    const size_t end = key + 1 < m_starts.size() ? m_starts[key + 1] : m_text.size();
    return std::u16string_view(m_text).substr(m_starts[key], end - m_starts[key]);
}

uint32_t SubstringIndex::KeyAt(uint32_t position) const noexcept {
    uint32_t key = m_keyHints[position / kKeyStride];
    while (key + 1 < m_starts.size() && m_starts[key + 1] <= position) ++key;
    return key;
}

SubstringIndex::Range SubstringIndex::Find(std::wstring_view query) const noexcept {
    if (query.empty() || query.size() >= m_longestKey) return {};
    if (std::any_of(query.begin(), query.end(), IsInNoKey)) return {};
    if (query.size() >= 3) {
        const uint32_t triple = TripleOf(query.data());
        if (triple != kTriples)
            return query.size() == 3 ? m_triples[triple] : _narrow(m_triples[triple], query, 3);
    }
    const auto first = static_cast<uint32_t>(query[0]);
    const Range range{m_singles[first], m_singles[first + 1]};
    return query.size() == 1 ? range : _narrow(range, query, 1);
}

// Less than 0: what occurs there comes before `query`; 0: begins with it. The first `known` characters are equal.
inline int SubstringIndex::_compare(uint32_t occurrence, std::wstring_view query,
                                    size_t known) const noexcept {
    const char16_t* text = m_text.data() + m_positions[occurrence];
    for (size_t i = known; i < query.size(); ++i) {
        const uint32_t ours = text[i], theirs = static_cast<uint32_t>(query[i]);
        if (ours != theirs) return ours < theirs || IsMark(ours) ? -1 : 1;
    }
    return 0;
}

// What in the range begins with `query`.
SubstringIndex::Range SubstringIndex::_narrow(Range range, std::wstring_view query,
                                              size_t known) const noexcept {
    for (uint32_t end = range.last; range.first < end;) {
        const uint32_t middle = range.first + (end - range.first) / 2;
        if (_compare(middle, query, known) < 0) {
            range.first = middle + 1;
        } else {
            end = middle;
        }
    }
    // Most queries occur a few times only: the end is looked for from the beginning on.
    uint32_t inside = range.first, step = 1;
    while (inside < range.last && range.last - inside > step &&
           _compare(inside + step - 1, query, known) == 0) {
        inside += step;
        step *= 2;
    }
    uint32_t end = std::min(range.last, inside + step);
    while (inside < end) {
        const uint32_t middle = inside + (end - inside) / 2;
        if (_compare(middle, query, known) == 0) {
            inside = middle + 1;
        } else {
            end = middle;
        }
    }
    return {range.first, inside};
}

uint32_t SubstringIndex::FirstKey(Range range) const noexcept {
    return range.IsEmpty() ? kNone : KeyAt(m_minimum.Of(m_positions, range.first, range.last));
}

uint32_t SubstringIndex::FirstKey(Range range, uint8_t label) const noexcept {
    if (range.IsEmpty() || label + size_t{1} >= m_labelStarts.size()) return kNone;
    const size_t start = m_labelStarts[label];
    const size_t first = start + _countBefore(range.first, label),
                 last = start + _countBefore(range.last, label);
    return first == last ? kNone : KeyAt(m_labelMinimum.Of(m_labelPositions, first, last));
}

uint32_t SubstringIndex::_countBefore(uint32_t occurrence, uint8_t label) const noexcept {
    const size_t labels = m_labelStarts.size() - 1, stride = occurrence / kCountStride;
    const auto counted = m_labels.begin() + static_cast<ptrdiff_t>(stride * kCountStride);
    const auto rest = std::count(counted, m_labels.begin() + static_cast<ptrdiff_t>(occurrence), label);
    return m_labelCounts[stride * labels + label] + static_cast<uint32_t>(rest);
}

size_t SubstringIndex::Bytes() const noexcept {
    return m_text.capacity() * sizeof(char16_t) + m_triples.capacity() * sizeof(Range) + m_minimum.Bytes() +
           (m_starts.capacity() + m_keyHints.capacity() + m_positions.capacity() + m_singles.capacity()) *
               sizeof(uint32_t) +
           LabelBytes();
}

size_t SubstringIndex::LabelBytes() const noexcept {
    return m_labels.capacity() + m_labelMinimum.Bytes() +
           (m_labelStarts.capacity() + m_labelCounts.capacity() + m_labelPositions.capacity()) *
               sizeof(uint32_t);
}

}  // namespace luadui
