#include "codedata/suffix_sort.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <span>

#include "codedata/substring_index.h"

namespace luadui {
namespace {

constexpr uint32_t kCharacters = 1u << 16;
constexpr size_t kStep = 4;  // characters in a word

// A position with the next characters that count.
struct Suffix {
    uint64_t word;
    uint32_t position;
};

class Sorter {
  public:
    explicit Sorter(std::u16string_view text) : m_text(text) {}

    std::vector<uint32_t> Sort() {
        const std::vector<uint32_t> starts = _spread();
        for (uint32_t c = 0; c < kCharacters; ++c) {
            if (!SubstringIndex::IsMark(c)) _sortBucket(starts[c], starts[c + 1]);
        }
        return std::move(m_positions);
    }

  private:
    // Puts positions in the order of their first characters. Answers where each character's bucket begins.
    std::vector<uint32_t> _spread() {
        std::vector<uint32_t> starts(kCharacters + 1);
        for (const char16_t c : m_text) ++starts[c + 1u];
        for (uint32_t c = 0; c < kCharacters; ++c) starts[c + 1] += starts[c];
        m_positions.resize(m_text.size());
        std::vector<uint32_t> next(starts.begin(), starts.end() - 1);
        for (uint32_t at = 0; at < m_text.size(); ++at) m_positions[next[m_text[at]]++] = at;
        return starts;
    }

    void _sortBucket(uint32_t first, uint32_t last) {
        if (last - first < 2) return;
        m_suffixes.resize(last - first);
        for (uint32_t i = first; i < last; ++i) m_suffixes[i - first].position = m_positions[i];
        m_groups.push_back({0, last - first, 1});
        while (!m_groups.empty()) {
            const Group group = m_groups.back();
            m_groups.pop_back();
            _sortGroup(group);
        }
        for (uint32_t i = first; i < last; ++i) m_positions[i] = m_suffixes[i - first].position;
    }

    // Suffixes that are equal in their first `depth` characters.
    struct Group {
        size_t first, last, depth;
    };

    // Sorts a group by its next word; what is equal there, too, and goes on, is left as groups of its own.
    void _sortGroup(const Group& group) {
        const auto suffixes = std::span(m_suffixes).subspan(group.first, group.last - group.first);
        for (Suffix& suffix : suffixes) suffix.word = _word(suffix.position + group.depth);
        _sortByWord(suffixes);
        for (size_t i = 0, end; i < suffixes.size(); i = end) {
            for (end = i + 1; end < suffixes.size() && suffixes[end].word == suffixes[i].word;) ++end;
            if (end - i > 1 && (suffixes[i].word & 0xFFFF) != 0) {
                m_groups.push_back({group.first + i, group.first + end, group.depth + kStep});
            }
        }
    }

    // What many share is set apart first: sorting equals would cost as much as sorting others.
    static void _sortByWord(std::span<Suffix> suffixes) {
        const uint64_t pivot = suffixes[suffixes.size() / 2].word;
        const auto less = [](const Suffix& left, const Suffix& right) { return left.word < right.word; };
        const auto equal = std::partition(suffixes.begin(), suffixes.end(),
                                          [pivot](const Suffix& suffix) { return suffix.word < pivot; });
        const auto greater = std::partition(equal, suffixes.end(),
                                            [pivot](const Suffix& suffix) { return suffix.word == pivot; });
        std::sort(suffixes.begin(), equal, less);
        std::sort(greater, suffixes.end(), less);
    }

    // The characters from `at` on, the first one highest; zero from the first mark on.
    uint64_t _word(size_t at) const {
        uint64_t word = 0;
        for (size_t i = 0; i < kStep; ++i) {
            const char16_t c = m_text[at + i];
            if (SubstringIndex::IsMark(c)) break;
            word |= uint64_t{c} << (16 * (kStep - 1 - i));
        }
        return word;
    }

    const std::u16string_view m_text;
    std::vector<uint32_t> m_positions;
    std::vector<Suffix> m_suffixes;  // of the bucket at hand
    std::vector<Group> m_groups;     // of it that are still to be sorted
};

}  // namespace

std::vector<uint32_t> SortSuffixes(std::u16string_view text) { return Sorter(text).Sort(); }

}  // namespace luadui
