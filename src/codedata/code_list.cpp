#include "codedata/code_list.h"

#include <algorithm>
#include <array>

#include "base/counters.h"
#include "base/text.h"
#include "platform/code_page.h"

namespace luadui {
namespace {

constexpr bool IsDigit(char c) { return c >= '0' && c <= '9'; }
constexpr bool IsLineEnd(char c) { return c == '\n' || c == '\r'; }
constexpr bool IsBetweenFields(char c) { return c == ',' || c == ';' || c == ' ' || c == '\t'; }
constexpr bool IsRowEnd(char c) { return IsLineEnd(c) || c == '{' || c == '}'; }

}  // namespace

bool CodeList::IsCode(std::string_view text) noexcept {
    return !text.empty() && text.size() <= kMaxCode && std::all_of(text.begin(), text.end(), [](char c) {
        return c > ' ' && c <= '~' && c != ',' && c != ':' && c != '|';
    });
}

bool CodeList::IsMarket(std::string_view text) noexcept {
    return !text.empty() && text.size() <= kMaxMarket && std::all_of(text.begin(), text.end(), IsDigit);
}

// Goes through a reply once; what fields decode to goes into the list's text, one behind the other.
class CodeList::Reader {
  public:
    Reader(std::string_view reply, const CodeListLimits& limits, CodeList& list)
        : m_reply(reply.substr(0, limits.bytes)), m_limits(limits), m_list(list) {
        m_isCut = m_reply.size() < reply.size();
        m_list.m_text = std::make_unique_for_overwrite<char[]>(m_reply.size());  // no field grows
        m_end = m_list.m_text.get();
    }

    void Read() {
        while (m_at < m_reply.size() && !m_isFull) {
            const char c = m_reply[m_at];
            if (IsRowEnd(c)) {
                _endRow();
                ++m_at;
            } else if (IsBetweenFields(c)) {
                ++m_at;
            } else if (!_readField()) {
                _refuseRow();
            }
        }
        if (m_isCut && m_fieldCount > 0) m_isRefused = true;  // nobody knows how it goes on
        _endRow();
        _count();
    }

  private:
    bool _readField() {
        const bool isLong = m_reply.substr(m_at).starts_with("[[");
        if (!isLong && m_reply[m_at] != '"') return false;
        if (m_fieldCount == m_fields.size()) return false;
        m_at += isLong ? 2 : 1;
        const char* const start = m_end;
        if (!_decode(isLong ? "]]" : "\"")) return false;
        m_fields[m_fieldCount++] = {start, static_cast<size_t>(m_end - start)};
        return true;
    }

    // Up to behind `close`; false when the line ends before.
    bool _decode(std::string_view close) {
        while (m_at < m_reply.size()) {
            const char c = m_reply[m_at];
            if (code_page::CharLength(m_reply, m_at) == 2) {
                *m_end++ = c;
                *m_end++ = m_reply[m_at + 1];
                m_at += 2;
            } else if (IsLineEnd(c)) {
                return false;
            } else if (c == close[0] && m_reply.substr(m_at).starts_with(close)) {
                m_at += close.size();
                return true;
            } else if (c != '&' || !_decodeReference()) {
                *m_end++ = _replaceBroken(c);
                ++m_at;
            }
        }
        return false;
    }

    // "&#032;"
    bool _decodeReference() {
        const std::string_view text = m_reply.substr(m_at, 6);
        if (text.size() < 6 || !text.starts_with("&#") || text[5] != ';' || !IsDigit(text[2]) ||
            !IsDigit(text[3]) || !IsDigit(text[4]))
            return false;
        const int number = (text[2] - '0') * 100 + (text[3] - '0') * 10 + (text[4] - '0');
        if (number < ' ' || number > '~') return false;
        *m_end++ = static_cast<char>(number);
        m_at += text.size();
        return true;
    }

    char _replaceBroken(char c) {
        const bool isControl = (c >= 0 && c < ' ') || c == 0x7F;
        if (!isControl && !code_page::IsLeadByte(c)) return c;
        m_isReplaced = true;
        return '?';
    }

    // To the end of the row, which quotes cannot tell any more.
    void _refuseRow() {
        m_isRefused = true;
        while (m_at < m_reply.size() && !IsRowEnd(m_reply[m_at]))
            m_at += code_page::CharLength(m_reply, m_at);
    }

    void _endRow() {
        if ((m_fieldCount > 0 || m_isRefused) && (m_isRefused || !_takeRow())) ++m_refused;
        m_fieldCount = 0;
        m_isRefused = m_isReplaced = false;
    }

    bool _takeRow() {
        if (m_fieldCount != m_fields.size()) return false;
        const std::string_view code = TrimText(m_fields[0]), market = TrimText(m_fields[2]);
        if (!IsCode(code) || !IsMarket(market)) return false;
        m_isFull = m_list.m_records.size() >= m_limits.records;
        if (m_isFull) return true;
        m_list.m_records.push_back(
            {code, _cut(m_fields[1], kMaxName), market, _cut(m_fields[3], kMaxPhonetic)});
        if (m_isReplaced) ++m_replaced;
        return true;
    }

    std::string_view _cut(std::string_view text, size_t limit) {
        if (text.size() <= limit) return text;
        ++m_cut;
        return CutAtCharacter(text, limit);
    }

    void _count() const {
        if (m_isCut || m_isFull) CCounters::Add("code_list_cut");
        if (m_refused > 0) CCounters::Add("code_list_row_refused", m_refused);
        if (m_cut > 0) CCounters::Add("code_list_text_cut", m_cut);
        if (m_replaced > 0) CCounters::Add("code_list_text_replaced", m_replaced);
    }

    const std::string_view m_reply;
    const CodeListLimits m_limits;
    CodeList& m_list;
    size_t m_at = 0;  // in the reply
    char* m_end;      // of the list's text
    std::array<std::string_view, 4> m_fields;
    size_t m_fieldCount = 0;
    bool m_isRefused = false, m_isReplaced = false;  // the row
    bool m_isCut = false, m_isFull = false;
    size_t m_refused = 0, m_cut = 0, m_replaced = 0;
};

CodeList CodeList::Parse(std::string_view reply, const CodeListLimits& limits) {
    CodeList list;
    Reader(reply, limits, list).Read();
    return list;
}

}  // namespace luadui
