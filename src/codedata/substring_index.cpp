#include "codedata/substring_index.h"

#include <algorithm>
#include <utility>

#include "codedata/suffix_sort.h"

namespace luadui {
namespace {

constexpr uint32_t kCharacters = 1u << 16;
constexpr uint32_t kFewPlaces = 64, kFewTexts = 8;  // that are looked through one by one

// Codes and initials are of digits and letters: up to three of these are the number of a bucket.
constexpr uint32_t kDigits = 36;
constexpr size_t kMostDigits = 3;
constexpr uint32_t kLevelStarts[kMostDigits + 1] = {0, 0, kDigits, kDigits + kDigits* kDigits};
constexpr uint32_t kBuckets = kLevelStarts[kMostDigits] + kDigits * kDigits * kDigits;

constexpr uint32_t DigitOf(uint32_t c) {
    if (c >= '0' && c <= '9') return c - '0';
    return c >= 'A' && c <= 'Z' ? c - 'A' + 10 : kDigits;
}

// How many letters and digits a text begins with, up to three, and what bucket they make.
struct Prefix {
    template <class Char>
    Prefix(const Char* text, size_t size) {
        uint32_t number = 0;
        for (; length < std::min(size, kMostDigits); ++length) {
            const uint32_t digit = DigitOf(static_cast<uint32_t>(text[length]));
            if (digit == kDigits) break;
            number = number * kDigits + digit;
        }
        bucket = kLevelStarts[length] + number;
    }
    size_t length = 0;
    uint32_t bucket;
};

bool IsInNoKey(wchar_t c) {
    const auto code = static_cast<uint32_t>(c);
    return code == 0 || code >= kCharacters || SubstringIndex::IsMark(code);
}

}  // namespace

SubstringIndex::SubstringIndex(std::u16string text, std::vector<uint32_t> starts, std::vector<uint8_t> labels)
    : m_text(std::move(text)), m_starts(std::move(starts)), m_labels(std::move(labels)) {
    _fillOccurrences();
    m_minimum = RangeMinimum(m_occurrences);
    _fillTables();
    _fillLabelOrder();
}

void SubstringIndex::_fillOccurrences() {
    std::vector<uint32_t> occurrenceAt(m_text.size());
    for (uint32_t key = 0; key < m_starts.size(); ++key) {
        const auto length = static_cast<uint32_t>(Key(key).size());
        m_longestKey = std::max<size_t>(m_longestKey, length);
        for (uint32_t i = 0; i < length; ++i) occurrenceAt[m_starts[key] + i] = key * kMaxKey + i;
    }
    m_occurrences = SortSuffixes(m_text);
    for (uint32_t& position : m_occurrences) position = occurrenceAt[position];
}

void SubstringIndex::_fillTables() {
    m_singles.assign(kCharacters + 1, 0);
    for (const char16_t c : m_text) ++m_singles[c + 1u];
    for (uint32_t c = 0; c < kCharacters; ++c) m_singles[c + 1] += m_singles[c];
    m_buckets.assign(kBuckets, {});
    m_next.resize(m_occurrences.size());
    for (uint32_t place = 0; place < m_occurrences.size(); ++place) {
        const char16_t* text = _textAt(place);
        if (IsMark(*text)) continue;
        const Prefix prefix(text, kMostDigits);  // a mark ends it, too
        for (size_t length = prefix.length, number = prefix.bucket - kLevelStarts[length]; length > 0;
             --length) {
            Bucket& bucket = m_buckets[kLevelStarts[length] + number];
            if (bucket.last == 0) bucket.first = bucket.tail = place;
            bucket.last = place + 1;
            if (text[length] <= 'Z' || IsMark(text[length])) bucket.tail = place + 1;
            number /= kDigits;
        }
        text += std::max<size_t>(prefix.length, 1);
        if (IsMark(text[0])) continue;
        m_next[place] = static_cast<uint32_t>(text[0]) << 16 | (IsMark(text[1]) ? 0u : text[1]);
    }
    for (size_t place = 0; place < m_next.size(); place += kSampleStride) m_samples.push_back(m_next[place]);
}

void SubstringIndex::_fillLabelOrder() {
    if (m_labels.empty()) return;
    const size_t count = *std::max_element(m_labels.begin(), m_labels.end()) + size_t{1};
    m_labelAt.resize(m_occurrences.size());
    m_labelCounts.reserve((m_occurrences.size() / kCountStride + 1) * count);
    std::vector<uint32_t> seen(count);
    for (uint32_t place = 0; place <= m_occurrences.size(); ++place) {
        if (place % kCountStride == 0) m_labelCounts.insert(m_labelCounts.end(), seen.begin(), seen.end());
        if (place < m_occurrences.size()) ++seen[m_labelAt[place] = m_labels[KeyAt(place)]];
    }
    m_labelStarts.assign(count + 1, 0);
    for (size_t label = 0; label < count; ++label)
        m_labelStarts[label + 1] = m_labelStarts[label] + seen[label];
    std::vector<uint32_t> next(m_labelStarts.begin(), m_labelStarts.end() - 1);
    m_byLabel.resize(m_occurrences.size());
    for (size_t place = 0; place < m_occurrences.size(); ++place) {
        m_byLabel[next[m_labelAt[place]]++] = m_occurrences[place];
    }
    m_labelMinimum = RangeMinimum(m_byLabel);
}

std::u16string_view SubstringIndex::Key(uint32_t key) const {
    const size_t end = key + 1 < m_starts.size() ? m_starts[key + 1] : m_text.size();
    return std::u16string_view(m_text).substr(m_starts[key], end - m_starts[key]);
}

SubstringIndex::Range SubstringIndex::Find(std::wstring_view query) const noexcept {
    if (query.empty() || query.size() >= m_longestKey) return {};
    if (std::any_of(query.begin(), query.end(), IsInNoKey)) return {};
    const Prefix prefix(query.data(), query.size());
    if (prefix.length == 0) {
        const auto first = static_cast<uint32_t>(query[0]);
        return _narrow({m_singles[first], m_singles[first + 1]}, query, 1);
    }
    const Bucket& bucket = m_buckets[prefix.bucket];
    if (query.size() == prefix.length) return {bucket.first, bucket.last};
    if (prefix.length == kMostDigits) return _narrow({bucket.first, bucket.last}, query, kMostDigits);
    if (query[prefix.length] > L'Z') return _narrow({bucket.tail, bucket.last}, query, prefix.length);
    // What follows here may be in a bucket of its own, or not.
    return _narrowByText({bucket.first, bucket.tail}, query, prefix.length);
}

// The first place of the range whose next characters are not below these.
inline uint32_t SubstringIndex::_lowerBound(Range range, uint64_t next) const noexcept {
    // Samples within the range tell the one stretch between two of them to look through.
    uint32_t sample = (range.first + kSampleStride - 1) / kSampleStride;
    for (uint32_t end = (range.last + kSampleStride - 1) / kSampleStride; sample < end;) {
        const uint32_t middle = sample + (end - sample) / 2;
        if (m_samples[middle] < next) {
            sample = middle + 1;
        } else {
            end = middle;
        }
    }
    const uint32_t end = std::min(sample * kSampleStride, range.last);
    const uint32_t place = std::max(range.first, (std::max(sample, 1u) - 1) * kSampleStride);
    __builtin_prefetch(m_occurrences.data() + place);  // looked at right after
    uint32_t below = 0;
    for (uint32_t i = place; i < end; ++i) below += m_next[i] < next;
    return place + below;
}

// What in the range begins with `query`; its first `known` characters are those by which the tables find the range.
SubstringIndex::Range SubstringIndex::_narrow(Range range, std::wstring_view query,
                                              size_t known) const noexcept {
    if (query.size() == known || range.IsEmpty()) return range;
    const bool hasTwo = query.size() > known + 1;
    const uint32_t least =
        static_cast<uint32_t>(query[known]) << 16 | (hasTwo ? static_cast<uint32_t>(query[known + 1]) : 0);
    const uint32_t most = hasTwo ? least : least | 0xFFFF;
    range.first = _lowerBound(range, least);
    // The end is near as a rule.
    uint32_t end = range.first;
    for (uint32_t near = std::min(end + kSampleStride, range.last); end < near && m_next[end] <= most;) ++end;
    const bool isFurther = end == range.first + kSampleStride && end < range.last;
    range.last = isFurther ? _lowerBound({end, range.last}, uint64_t{most} + 1) : end;
    return query.size() > known + 2 ? _narrowByText(range, query, known + 2) : range;
}

// The same for any range in which all occurrences have the first `known` characters.
SubstringIndex::Range SubstringIndex::_narrowByText(Range range, std::wstring_view query,
                                                    size_t known) const noexcept {
    if (range.last - range.first <= kFewTexts &&
        !range.IsEmpty()) {  // reading all at once beats waiting for each
        Range found{range.last, range.last};
        for (uint32_t place = range.first; place < range.last; ++place) {
            const int order = _compare(place, query, known);
            if (order >= 0) found.first = std::min(found.first, place);
            if (order > 0) found.last = std::min(found.last, place);
        }
        return found;
    }
    for (uint32_t end = range.last; range.first < end;) {
        const uint32_t middle = range.first + (end - range.first) / 2;
        if (_compare(middle, query, known) < 0) {
            range.first = middle + 1;
        } else {
            end = middle;
        }
    }
    uint32_t inside = range.first;
    for (uint32_t end = range.last; inside < end;) {
        const uint32_t middle = inside + (end - inside) / 2;
        if (_compare(middle, query, known) == 0) {
            inside = middle + 1;
        } else {
            end = middle;
        }
    }
    return {range.first, inside};
}

// Less than 0: what occurs there comes before `query`; 0: begins with it.
int SubstringIndex::_compare(uint32_t place, std::wstring_view query, size_t known) const noexcept {
    const char16_t* const text = _textAt(place);
    for (size_t i = known; i < query.size(); ++i) {
        const uint32_t ours = text[i], theirs = static_cast<uint32_t>(query[i]);
        if (ours != theirs) return ours < theirs || IsMark(ours) ? -1 : 1;
    }
    return 0;
}

uint32_t SubstringIndex::FirstKey(Range range) const noexcept {
    return range.IsEmpty() ? kNone : m_minimum.Of(m_occurrences, range.first, range.last) / kMaxKey;
}

uint32_t SubstringIndex::FirstKey(Range range, uint8_t label) const noexcept {
    if (range.IsEmpty() || label + size_t{1} >= m_labelStarts.size()) return kNone;
    if (range.last - range.first <= kFewPlaces) {
        uint32_t first = kNone;
        for (uint32_t place = range.first; place < range.last; ++place) {
            const uint32_t key = KeyAt(place);
            first = std::min(first, m_labels[key] == label ? key : kNone);
        }
        return first;
    }
    const uint32_t start = m_labelStarts[label];
    const uint32_t first = start + _countBefore(range.first, label),
                   last = start + _countBefore(range.last, label);
    return first == last ? kNone : m_labelMinimum.Of(m_byLabel, first, last) / kMaxKey;
}

uint32_t SubstringIndex::_countBefore(uint32_t place, uint8_t label) const noexcept {
    const size_t labels = m_labelStarts.size() - 1, stride = place / kCountStride;
    uint8_t rest = 0;  // below kCountStride
    for (size_t i = stride * kCountStride; i < place; ++i) rest += m_labelAt[i] == label;
    return m_labelCounts[stride * labels + label] + rest;
}

size_t SubstringIndex::Bytes() const noexcept {
    return m_text.capacity() * sizeof(char16_t) + m_buckets.capacity() * sizeof(Bucket) + m_minimum.Bytes() +
           (m_starts.capacity() + m_occurrences.capacity() + m_next.capacity() + m_samples.capacity() +
            m_singles.capacity()) *
               sizeof(uint32_t) +
           LabelBytes();
}

size_t SubstringIndex::LabelBytes() const noexcept {
    return m_labels.capacity() + m_labelAt.capacity() + m_labelMinimum.Bytes() +
           (m_labelStarts.capacity() + m_labelCounts.capacity() + m_byLabel.capacity()) * sizeof(uint32_t);
}

}  // namespace luadui
