// Rows as servers write them - texts without escapes, numbers, true, false, null - are cut apart where they lie.
// Every other row is left to CJsonObject, which knows all of JSON.
#include "base/json_rows.h"

#include <algorithm>
#include <deque>
#include <string>
#include <vector>

#include "base/counters.h"
#include "base/json_object.h"
#include "base/number_text.h"
#include "base/text.h"
#include "platform/code_page.h"

namespace luadui {
namespace {

bool IsBlank(char c) { return c == ' ' || c == '\t' || c == '\r' || c == '\n'; }
bool IsClosing(char c) { return c == '}' || c == ']'; }

// A place in JSON text. Steps answer false, at no particular place, where the text is something else.
class Cursor {
  public:
    explicit Cursor(std::string_view text) : m_text(text) {}

    size_t At() const { return m_at; }
    bool IsAtEnd() const { return m_at == m_text.size(); }
    // The character behind the blanks; zero at the end.
    char Peek() {
        while (m_at < m_text.size() && IsBlank(m_text[m_at])) ++m_at;
        return m_at < m_text.size() ? m_text[m_at] : '\0';
    }
    bool Takes(char c) {
        if (Peek() != c || IsAtEnd()) return false;
        ++m_at;
        return true;
    }
    // What is between the quotes. `hasEscapes` becomes true when it has any.
    bool TakesString(std::string_view& text, bool& hasEscapes) {
        if (!Takes('"')) return false;
        const size_t start = m_at;
        for (size_t at = start; at < m_text.size();) {
            const char c = m_text[at];
            if (c == '"') {
                text = m_text.substr(start, at - start);
                m_at = at + 1;
                return true;
            }
            if (c == '\\') {
                hasEscapes = true;
                ++at;
            }
            if (at < m_text.size()) at += code_page::CharLength(m_text, at);
        }
        return false;
    }
    // A number or a word, unchecked.
    bool TakesScalar(std::string_view& text) {
        Peek();
        const size_t start = m_at;
        while (m_at < m_text.size() && !IsBlank(m_text[m_at]) && m_text[m_at] != ',' &&
               !IsClosing(m_text[m_at]))
            ++m_at;
        text = m_text.substr(start, m_at - start);
        return !text.empty();
    }
    // Any value. Brackets are counted whatever their kind: who reads the value finds out.
    bool TakesValue(std::string_view& value) {
        const char first = Peek();
        const size_t start = m_at;
        std::string_view part;
        bool hasEscapes = false;
        if (first == '"') {
            if (!TakesString(part, hasEscapes)) return false;
        } else if (first != '{' && first != '[') {
            return TakesScalar(value);
        } else {
            int depth = 0;
            do {
                const char c = Peek();
                if (IsAtEnd()) return false;
                if (c == '"') {
                    if (!TakesString(part, hasEscapes)) return false;
                    continue;
                }
                if (c == '{' || c == '[') ++depth;
                if (IsClosing(c)) --depth;
                ++m_at;
            } while (depth > 0);
        }
        value = m_text.substr(start, m_at - start);
        return true;
    }

  private:
    std::string_view m_text;
    size_t m_at = 0;
};

// As JSON writes it; for kinds that are no text.
std::string JsonText(const ValueView& value) {
    constexpr std::string_view kBefore = R"({"":)", kAfter = "}";
    CJsonObject object, holder;
    CDataList list;
    if (value.Get(object)) return object.ToText();
    if (value.Get(list)) {
        holder.Set("", list);
    } else if (value.Kind() == kDataInteger) {
        holder.Set("", value.AsLong());
    } else if (value.Kind() == kDataDouble) {
        holder.Set("", value.AsDouble());
    } else {
        holder.Set("", value.AsBool());
    }
    const std::string text = holder.ToText();
    return text.substr(kBefore.size(), text.size() - kBefore.size() - kAfter.size());
}

// Takes rows apart. What it answers is valid until the next one.
class RowReader {
  public:
    // Moves `cursor` behind the row. False, and nothing moved, when the row is not plain.
    bool TakesPlain(Cursor& cursor) {
        Cursor at = cursor;
        m_cells.clear();
        if (!at.Takes('{')) return false;
        if (!at.Takes('}')) {
            do {
                if (!_takesPlainMember(at)) return false;
            } while (at.Takes(','));
            if (!at.Takes('}')) return false;
        }
        cursor = at;
        return true;
    }
    // False when it is no JSON object.
    bool Parse(std::string_view row) {
        m_cells.clear();
        m_texts.clear();
        CJsonObject object;
        if (!object.Parse(row)) return false;
        for (const auto [name, value] : object) {
            const bool isText = value.Kind() == kDataString, isNull = value.Kind() == kDataNull;
            const std::string& key = m_texts.emplace_back(name);
            m_cells.push_back({key, m_texts.emplace_back(isText   ? std::string(value.AsText())
                                                         : isNull ? std::string()
                                                                  : JsonText(value))});
        }
        return true;
    }
    std::span<const JsonCell> Cells() const { return m_cells; }

  private:
    bool _takesPlainMember(Cursor& at) {
        JsonCell cell;
        bool hasEscapes = false;
        if (!at.TakesString(cell.name, hasEscapes) || !at.Takes(':')) return false;
        if (at.Peek() == '"') {
            if (!at.TakesString(cell.text, hasEscapes)) return false;
        } else {
            if (!at.TakesScalar(cell.text) || !IsPlain(cell.text)) return false;
            if (cell.text == "null") cell.text = {};
        }
        m_cells.push_back(cell);
        return !hasEscapes;
    }

    static bool IsPlain(std::string_view scalar) {
        double number = 0;
        if (scalar == "true" || scalar == "false" || scalar == "null") return true;
        return (scalar[0] == '-' || (scalar[0] >= '0' && scalar[0] <= '9')) && ReadDoubleText(scalar, number);
    }

    std::vector<JsonCell> m_cells;
    std::deque<std::string> m_texts;  // what Parse made
};

// Walks over the outermost object.
class Walker {
  public:
    Walker(std::string_view text, std::span<const std::string_view> arrays, const JsonRowSink& take)
        : m_at(text), m_arrays(arrays), m_take(take) {}

    // False where the text is no JSON.
    bool Run() { return _object() && m_at.Peek() == '\0' && m_at.IsAtEnd(); }
    size_t RefusedRows() const { return m_refusedRows; }

  private:
    bool _object() {
        if (!m_at.Takes('{')) return false;
        if (m_at.Takes('}')) return true;
        do {
            if (!_member()) return false;
        } while (m_at.Takes(','));
        return m_at.Takes('}');
    }

    bool _member() {
        std::string_view name, value;
        bool hasEscapes = false;
        if (!m_at.TakesString(name, hasEscapes) || !m_at.Takes(':')) return false;
        const auto array = std::ranges::find(m_arrays, name);
        if (array == m_arrays.end() || !m_at.Takes('[')) return m_at.TakesValue(value);
        if (m_at.Takes(']')) return true;
        do {
            if (!_row(static_cast<size_t>(array - m_arrays.begin()))) return false;
        } while (m_at.Takes(','));
        return m_at.Takes(']');
    }

    bool _row(size_t array) {
        bool isRow = m_row.TakesPlain(m_at);
        if (!isRow) {
            std::string_view row;
            if (!m_at.TakesValue(row)) return false;
            isRow = m_row.Parse(row);
        }
        if (isRow) {
            m_take(array, m_row.Cells());
        } else {
            ++m_refusedRows;
        }
        return true;
    }

    Cursor m_at;
    const std::span<const std::string_view> m_arrays;
    const JsonRowSink& m_take;
    RowReader m_row;
    size_t m_refusedRows = 0;
};

}  // namespace

bool ReadJsonRows(std::string_view text, std::span<const std::string_view> arrays, const JsonRowSink& take) {
    Walker walker(text, arrays, take);
    const bool isWhole = walker.Run();
    if (!isWhole) CCounters::Add("json_text_refused");
    if (walker.RefusedRows() != 0) CCounters::Add("json_row_refused", walker.RefusedRows());
    return isWhole && walker.RefusedRows() == 0;
}

}  // namespace luadui
