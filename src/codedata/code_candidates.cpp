#include "codedata/code_candidates.h"

#include <algorithm>
#include <functional>

#include "codedata/code_book.h"

namespace luadui {
namespace {

class Search {
  public:
    Search(const CodeBook& book, std::wstring_view query, size_t max)
        : m_book(book), m_index(book.Index()), m_query(query), m_max(std::min(max, book.Size())) {}

    std::vector<CodeCandidate> Run() {
        const SubstringIndex::Range range = m_index.Find(m_query);
        if (range.IsEmpty()) return {};
        m_isTaken.resize(m_book.Size());
        using enum CodeBook::Part;
        _take(range, CodeMatch::kExactCode,
              [this](uint32_t i) { return _begins(kCode, i) && _isWholeCode(i); });
        _take(range, CodeMatch::kCodePrefix, [this](uint32_t i) { return _begins(kCode, i); });
        _take(range, CodeMatch::kInitialsPrefix, [this](uint32_t i) { return _begins(kReading, i); });
        _take(range, CodeMatch::kNamePrefix, [this](uint32_t i) { return _begins(kName, i); });
        _take(range, CodeMatch::kInside, [this](uint32_t i) { return _begins(kInside, i); });
        return std::move(m_found);
    }

  private:
    // An occurrence, ordered by market and, within it, by key, which begins with the code.
    uint64_t _hit(uint32_t place) const {
        const uint32_t key = m_index.KeyAt(place);
        return uint64_t{m_index.Label(key)} << 48 | uint64_t{key} << 16 | m_index.OffsetAt(place);
    }

    bool _begins(CodeBook::Part part, uint32_t place) const { return m_book.PartAt(place) == part; }

    bool _isWholeCode(uint32_t place) const {
        return m_book.At(m_index.KeyAt(place)).code.size() == m_query.size();
    }

    // Takes the first ones of those occurrences that are of the kind.
    template <class IsOfKind>
    void _take(SubstringIndex::Range range, CodeMatch match, IsOfKind isOfKind) {
        if (m_found.size() == m_max) return;
        m_hits.clear();
        for (uint32_t i = range.first; i < range.last; ++i) {
            if (isOfKind(i)) m_hits.push_back(_hit(i));
        }
        std::make_heap(m_hits.begin(), m_hits.end(), std::greater<>());
        while (!m_hits.empty() && m_found.size() < m_max) {
            std::pop_heap(m_hits.begin(), m_hits.end(), std::greater<>());
            _takeKey(m_hits.back() >> 16 & UINT32_MAX, m_hits.back() & UINT16_MAX, match);
            m_hits.pop_back();
        }
    }

    void _takeKey(size_t key, size_t start, CodeMatch match) {
        if (m_isTaken[key]) return;
        m_isTaken[key] = true;
        const CodeBook::Entry entry = m_book.At(key);
        CodeField field = CodeField::kCode;
        const size_t lengths[] = {entry.code.size(), m_book.WideName(key).size()};
        for (const size_t length : lengths) {
            if (start < length) break;
            start -= length;
            field = static_cast<CodeField>(static_cast<int>(field) + 1);
        }
        m_found.push_back({std::string(entry.code), std::string(entry.name), std::string(entry.market),
                           std::string(entry.phonetic), match, field, start, m_query.size()});
    }

    const CodeBook& m_book;
    const SubstringIndex& m_index;
    const std::wstring_view m_query;
    const size_t m_max;
    std::vector<uint64_t> m_hits;
    std::vector<bool> m_isTaken;  // by key
    std::vector<CodeCandidate> m_found;
};

}  // namespace

std::vector<CodeCandidate> FindCandidates(const CodeBook& book, std::wstring_view query, size_t max) {
    return Search(book, query, max).Run();
}

}  // namespace luadui
