// Reading JSON text. jsoncpp parses; what it does not do is done around it:
//   - text is converted from code page 936 to UTF-8 before and every string of the result back after;
//   - nesting is measured before, since jsoncpp recurses;
//   - members come sorted by name, so their order is restored from their offsets in the text;
//   - numbers with a fraction or exponent are read here, since jsoncpp reads them through the global C++ locale. It
//     gets digits of the same length instead.
#include <json/json.h>

#include <algorithm>
#include <memory>
#include <vector>

#include "base/counters.h"
#include "base/json_object.h"
#include "base/number_text.h"
#include "base/record_body.h"
#include "base/text.h"
#include "platform/code_page.h"

namespace luadui {
namespace {

// Why a text was refused.
struct Refusal {
    std::string reason;
};

// A walk over the tokens outside of strings and comments.
class Scanner {
  public:
    explicit Scanner(std::string& text) : m_text(text) {}

    // Masks the numbers; throws when the nesting is too deep.
    void Run() {
        while (m_at < m_text.size()) _step();
    }

  private:
    void _step() {
        const char c = m_text[m_at];
        if (c == '"') {
            _skipString();
        } else if (c == '/') {
            _skipComment();
        } else if (c == '-' || (c >= '0' && c <= '9')) {
            _maskNumber();
        } else {
            if (c == '{' || c == '[') _enter();
            if (c == '}' || c == ']') --m_depth;
            ++m_at;
        }
    }

    void _enter() {
        if (++m_depth <= CJsonObject::kMaxNesting) return;
        throw Refusal{"nested deeper than " + std::to_string(CJsonObject::kMaxNesting) + " levels at byte " +
                      std::to_string(m_at)};
    }

    void _skipString() {
        for (++m_at; m_at < m_text.size() && m_text[m_at] != '"'; ++m_at) {
            if (m_text[m_at] == '\\') ++m_at;
        }
        ++m_at;
    }

    void _skipComment() {
        const std::string_view rest = std::string_view(m_text).substr(m_at);
        size_t end = m_at + 1;
        if (rest.starts_with("//")) end = m_text.find_first_of("\r\n", m_at);
        if (rest.starts_with("/*")) end = m_text.find("*/", m_at + 2);
        m_at = end == std::string::npos ? m_text.size() : end;
        if (rest.starts_with("/*") && end != std::string::npos) m_at += 2;
    }

    void _maskNumber() {
        const size_t start = m_at;
        m_at = std::min(m_text.find_first_not_of("0123456789+-.eE", m_at), m_text.size());
        const std::string_view number = std::string_view(m_text).substr(start, m_at - start);
        double value = 0;
        if (number.find_first_of(".eE") == std::string_view::npos || !ReadDoubleText(number, value)) return;
        const size_t digits = start + (number.front() == '-' ? 1 : 0);
        std::fill(m_text.begin() + static_cast<std::ptrdiff_t>(digits),
                  m_text.begin() + static_cast<std::ptrdiff_t>(m_at), '1');
    }

    std::string& m_text;
    size_t m_at = 0;
    int m_depth = 0;
};

// The first complaint of jsoncpp. It quotes what should have been a number: that may be anything, a password too.
std::string Complaint(const std::string& errors) {
    std::string first = errors.substr(0, errors.find("\n*"));
    const size_t quoted = first.find("\n  '");
    if (quoted != std::string::npos) first = first.substr(0, quoted) + " not a number";
    std::replace(first.begin(), first.end(), '\n', ' ');
    return std::string(TrimText(first));
}

Json::Value ParseUtf8(const std::string& text) {
    Json::CharReaderBuilder builder;
    builder["collectComments"] = false;
    builder["failIfExtra"] = true;
    const std::unique_ptr<Json::CharReader> reader(builder.newCharReader());
    Json::Value root;
    std::string errors;
    if (!reader->parse(text.data(), text.data() + text.size(), &root, &errors))
        throw Refusal{Complaint(errors)};
    if (!root.isObject()) throw Refusal{"not an object"};
    return root;
}

// Puts parsed values into our objects and lists. `text` is the text as it was before numbers were masked.
class Builder {
  public:
    explicit Builder(std::string_view text) : m_text(text) {}

    CJsonObject Object(const Json::Value& source) const {
        std::vector<Json::Value::const_iterator> members;
        members.reserve(source.size());
        for (auto member = source.begin(); member != source.end(); ++member) members.push_back(member);
        std::sort(members.begin(), members.end(), [](const auto& left, const auto& right) {
            return left->getOffsetStart() < right->getOffsetStart();
        });
        CJsonObject object;
        for (const auto& member : members) {
            const char* end = nullptr;
            const char* name = member.memberName(&end);
            const std::string key = _text(name, end);
            _store(*member, [&](const DataValue& value) { object.Set(key, value); });
        }
        return object;
    }

  private:
    CDataList _list(const Json::Value& source) const {
        CDataList list;
        for (const Json::Value& element : source) {
            _store(element, [&](const DataValue& value) { list.Append(value); });
        }
        return list;
    }

    template <class Store>
    void _store(const Json::Value& source, const Store& store) const {
        switch (source.type()) {
            case Json::nullValue:
                return store(DataValue::Null());
            case Json::booleanValue:
                return store(source.asBool());
            case Json::stringValue:
                return _storeText(source, store);
            case Json::arrayValue:
                return store(_list(source));
            case Json::objectValue:
                return store(Object(source));
            default:
                return _storeNumber(source, store);
        }
    }

    template <class Store>
    void _storeText(const Json::Value& source, const Store& store) const {
        const char *begin = nullptr, *end = nullptr;
        source.getString(&begin, &end);
        const std::string_view utf8(begin, static_cast<size_t>(end - begin));
        if (IsAscii(utf8)) return store(utf8);
        store(Utf8ToGbk(utf8));
    }

    template <class Store>
    void _storeNumber(const Json::Value& source, const Store& store) const {
        const auto start = static_cast<size_t>(source.getOffsetStart());
        const std::string_view number =
            m_text.substr(start, static_cast<size_t>(source.getOffsetLimit()) - start);
        if (number.find_first_of(".eE") == std::string_view::npos) {
            if (source.isInt64()) return store(static_cast<int64_t>(source.asInt64()));
            if (source.isUInt64()) return store(static_cast<uint64_t>(source.asUInt64()));
        }
        double value = 0;
        if (!ReadDoubleText(number, value)) {
            throw Refusal{"number out of range at byte " + std::to_string(start)};
        }
        store(value);
    }

    static std::string _text(const char* begin, const char* end) {
        const std::string_view utf8(begin, static_cast<size_t>(end - begin));
        return IsAscii(utf8) ? std::string(utf8) : Utf8ToGbk(utf8);
    }

    std::string_view m_text;
};

CJsonObject ParseText(std::string_view text) {
    if (EndsInsideCharacter(text)) throw Refusal{"the text ends inside a character"};
    const std::string utf8 = IsAscii(text) ? std::string(text) : GbkToUtf8(text);
    std::string masked = utf8;
    Scanner(masked).Run();
    return Builder(utf8).Object(ParseUtf8(masked));
}

}  // namespace

bool CJsonObject::Parse(std::string_view text, std::string* error) {
    std::string reason;
    try {
        *this = ParseText(text);
        return true;
    } catch (const Refusal& refusal) {
        reason = refusal.reason;
    } catch (const Json::Exception& exception) {
        reason = exception.what();
    }
    *this = CJsonObject();
    CCounters::Add("json_text_refused");
    if (error) *error = std::move(reason);
    return false;
}

}  // namespace luadui
