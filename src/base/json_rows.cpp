// Where rows begin and end is found here, by counting brackets; each row is parsed by jsoncpp.
#include "base/json_rows.h"

#include <json/json.h>

#include <algorithm>
#include <deque>
#include <memory>
#include <string>
#include <vector>

#include "base/counters.h"
#include "base/json_scan.h"
#include "base/text.h"
#include "platform/code_page.h"

namespace luadui {
namespace {

// Takes one object apart. What it answers is valid until the next one.
class RowParser {
  public:
    RowParser() : m_reader(MakeReader()) {}

    // False when the text is no object that can be read.
    bool Parse(std::string_view text) {
        m_cells.clear();
        m_converted.clear();
        m_utf8 = IsAscii(text) ? std::string(text) : GbkToUtf8(text);
        m_masked = m_utf8;
        try {
            JsonScanner(m_masked).Run();
            if (!m_reader->parse(m_masked.data(), m_masked.data() + m_masked.size(), &m_root, nullptr))
                return false;
        } catch (const JsonRefusal&) {
            return false;
        } catch (const Json::Exception&) {
            return false;
        }
        for (auto member = m_root.begin(); member != m_root.end(); ++member) {
            const char* end = nullptr;
            const char* name = member.memberName(&end);
            m_cells.push_back({ToGbk(name, end), CellText(*member)});
        }
        return true;
    }
    std::span<const JsonCell> Cells() const { return m_cells; }

  private:
    static std::unique_ptr<Json::CharReader> MakeReader() {
        Json::CharReaderBuilder builder;
        builder["collectComments"] = false;
        builder["allowComments"] = false;
        builder["failIfExtra"] = true;
        return std::unique_ptr<Json::CharReader>(builder.newCharReader());
    }

    std::string_view CellText(const Json::Value& value) {
        if (value.isNull()) return {};
        if (!value.isString())
            return ToGbk(m_utf8.data() + value.getOffsetStart(), m_utf8.data() + value.getOffsetLimit());
        const char *begin = nullptr, *end = nullptr;
        value.getString(&begin, &end);
        return ToGbk(begin, end);
    }

    std::string_view ToGbk(const char* begin, const char* end) {
        const std::string_view utf8(begin, static_cast<size_t>(end - begin));
        return IsAscii(utf8) ? utf8 : m_converted.emplace_back(Utf8ToGbk(utf8));
    }

    const std::unique_ptr<Json::CharReader> m_reader;
    std::string m_utf8, m_masked;  // as it is, and with numbers masked
    Json::Value m_root;
    std::deque<std::string> m_converted;  // what cells show that is not ASCII
    std::vector<JsonCell> m_cells;
};

// Walks over the outermost object. Its steps answer false where the text is no JSON.
class RowWalker {
  public:
    RowWalker(std::string_view text, std::span<const std::string_view> arrays, const JsonRowSink& take)
        : m_text(text), m_arrays(arrays), m_take(take) {}

    bool Run() {
        if (!_takes('{')) return false;
        if (!_takes('}')) {
            do {
                if (!_member()) return false;
            } while (_takes(','));
            if (!_takes('}')) return false;
        }
        _skipBlanks();
        return m_at == m_text.size();
    }
    size_t RefusedRows() const { return m_refusedRows; }

  private:
    bool _member() {
        _skipBlanks();
        const size_t start = m_at + 1;
        if (_peek() != '"' || !_skipString()) return false;
        const std::string_view name = m_text.substr(start, m_at - 1 - start);
        if (!_takes(':')) return false;
        _skipBlanks();
        const auto array = std::ranges::find(m_arrays, name);
        if (array == m_arrays.end() || _peek() != '[') return _skipValue();
        return _rows(static_cast<size_t>(array - m_arrays.begin()));
    }

    bool _rows(size_t array) {
        ++m_at;
        if (_takes(']')) return true;
        do {
            _skipBlanks();
            const size_t start = m_at;
            if (!_skipValue()) return false;
            const std::string_view row = m_text.substr(start, m_at - start);
            if (row.front() == '{' && m_parser.Parse(row)) {
                m_take(array, m_parser.Cells());
            } else {
                ++m_refusedRows;
            }
        } while (_takes(','));
        return _takes(']');
    }

    // To behind the value, whose brackets are counted whatever their kind.
    bool _skipValue() {
        const size_t start = m_at;
        int depth = 0;
        while (m_at < m_text.size()) {
            const char c = m_text[m_at];
            if (c == '"') {
                if (!_skipString()) return false;
                if (depth == 0) return true;
                continue;
            }
            if (depth == 0 && (c == ',' || IsClosing(c))) return m_at > start;
            if (c == '{' || c == '[') ++depth;
            ++m_at;
            if (IsClosing(c) && --depth == 0) return true;
        }
        return false;
    }

    bool _skipString() {
        for (++m_at; m_at < m_text.size();) {
            const char c = m_text[m_at];
            if (c == '"') {
                ++m_at;
                return true;
            }
            if (c == '\\') ++m_at;
            m_at += m_at < m_text.size() ? code_page::CharLength(m_text, m_at) : 0;
        }
        return false;
    }

    static bool IsClosing(char c) { return c == '}' || c == ']'; }
    // Zero at the end.
    char _peek() const { return m_at < m_text.size() ? m_text[m_at] : '\0'; }
    void _skipBlanks() { m_at = std::min(m_text.find_first_not_of(" \t\r\n", m_at), m_text.size()); }
    bool _takes(char c) {
        _skipBlanks();
        if (_peek() != c) return false;
        ++m_at;
        return true;
    }

    const std::string_view m_text;
    const std::span<const std::string_view> m_arrays;
    const JsonRowSink& m_take;
    RowParser m_parser;
    size_t m_at = 0;
    size_t m_refusedRows = 0;
};

}  // namespace

bool ReadJsonRows(std::string_view text, std::span<const std::string_view> arrays, const JsonRowSink& take) {
    RowWalker walker(text, arrays, take);
    const bool isWhole = walker.Run();
    if (!isWhole) CCounters::Add("json_text_refused");
    if (walker.RefusedRows() != 0) CCounters::Add("json_row_refused", walker.RefusedRows());
    return isWhole && walker.RefusedRows() == 0;
}

}  // namespace luadui
