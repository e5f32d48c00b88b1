// Writing JSON text. jsoncpp escapes strings; the order of the members and the form of numbers are ours.
#include <json/json.h>

#include <array>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <memory>
#include <sstream>

#include "base/counters.h"
#include "base/json_object.h"
#include "base/json_text.h"
#include "base/text.h"
#include "platform/code_page.h"

namespace luadui {
namespace {

// By byte: ASCII characters that stand for themselves in a JSON string.
constexpr std::array<bool, 256> kIsPlain = [] {
    std::array<bool, 256> plain{};
    for (unsigned c = 0x20; c < 0x7F; ++c) plain[c] = c != '"' && c != '\\';
    return plain;
}();

// Whether eight bytes are all such characters. A borrow may only spoil what is above a byte that is none.
bool ArePlain(const char* bytes) {
    constexpr uint64_t kOnes = 0x0101010101010101, kHigh = 0x8080808080808080;
    uint64_t eight = 0;
    std::memcpy(&eight, bytes, sizeof eight);
    const auto hasZero = [](uint64_t each) { return (each - kOnes) & ~each; };
    const uint64_t isControl = eight - kOnes * 0x20;
    const uint64_t isAbove = eight + kOnes;  // 0x7F
    return ((eight | isControl | isAbove | hasZero(eight ^ kOnes * '"') | hasZero(eight ^ kOnes * '\\')) &
            kHigh) == 0;
}

// How many bytes at `at` stand for themselves, as characters of two bytes do too.
size_t PlainBytes(std::string_view text, size_t at) {
    const size_t start = at;
    while (at < text.size()) {
        if (kIsPlain[static_cast<unsigned char>(text[at])]) {
            at += at + 8 <= text.size() && ArePlain(text.data() + at) ? 8 : 1;
        } else if (code_page::CharLength(text, at) == 2) {
            at += 2;
        } else {
            break;
        }
    }
    return at - start;
}

// With the quotes. For texts with control characters or broken ones.
std::string Quoted(std::string_view text) {
    static const auto* const factory = [] {
        auto* const builder = new Json::StreamWriterBuilder;
        (*builder)["indentation"] = "";
        (*builder)["emitUTF8"] = true;
        return builder;
    }();
    const std::unique_ptr<Json::StreamWriter> writer(factory->newStreamWriter());
    std::ostringstream quoted;
    writer->write(Json::Value(GbkToUtf8(text)), &quoted);
    return Utf8ToGbk(quoted.str());
}

class Writer {
  public:
    std::string Take() { return m_out.Take(); }

    void Object(const CJsonObject& object, int depth) {
        m_out.BeginObject();
        for (const auto [name, value] : object) {
            m_out.Name(name);
            _value(value, depth);
        }
        m_out.EndObject();
    }

  private:
    void _array(const CDataList& list, int depth) {
        m_out.BeginArray();
        for (const auto [name, value] : list) _value(value, depth);
        m_out.EndArray();
    }

    void _value(const ValueView& value, int depth) {
        switch (value.Kind()) {
            case kDataNull:
                return m_out.Json("null");
            case kDataBoolean:
                return m_out.Json(value.AsBool() ? "true" : "false");
            case kDataString:
                return m_out.Text(value.AsText());
            case kDataInteger:
                return _integer(value);
            case kDataDouble:
                return _double(value.AsDouble());
            default:
                _nested(value, depth + 1);
        }
    }

    void _nested(const ValueView& value, int depth) {
        CJsonObject object;
        CDataList list;
        if (depth > CJsonObject::kMaxNesting) {
            _drop();
        } else if (value.Get(object)) {
            Object(object, depth);
        } else if (value.Get(list)) {
            _array(list, depth);
        } else {
            _drop();
        }
    }

    void _integer(const ValueView& value) {
        // Above the range of int64_t a value reads as a larger double than as an integer, which wraps.
        m_out.Json(value.AsLong() < 0 && value.AsDouble() > 0
                       ? std::to_string(static_cast<uint64_t>(value.AsLong()))
                       : std::to_string(value.AsLong()));
    }

    void _double(double value) {
        if (!std::isfinite(value)) return _drop();
        std::string text = DoubleText(value);
        if (text.find_first_of(".e") == std::string::npos)
            text += ".0";  // or it would read back as an integer
        m_out.Json(text);
    }

    void _drop() {
        m_out.Json("null");
        CCounters::Add("json_value_dropped");
    }

    JsonText m_out;
};

}  // namespace

void JsonText::Name(std::string_view name) {
    _separate();
    _quote(name);
    m_text += ':';
    m_isBehindValue = false;
}

void JsonText::Text(std::string_view text) {
    _separate();
    _quote(text);
    m_isBehindValue = true;
}

void JsonText::Json(std::string_view json) {
    _separate();
    m_text += json;
    m_isBehindValue = true;
}

void JsonText::_open(char bracket) {
    _separate();
    m_text += bracket;
    m_isBehindValue = false;
}

void JsonText::_close(char bracket) {
    m_text += bracket;
    m_isBehindValue = true;
}

void JsonText::_quote(std::string_view text) {
    const size_t start = m_text.size();
    m_text += '"';
    for (size_t at = 0; at < text.size();) {
        const size_t plain = PlainBytes(text, at);
        m_text.append(text, at, plain);
        at += plain;
        if (at == text.size()) break;
        if (text[at] != '"' && text[at] != '\\') {
            m_text.resize(start);
            m_text += Quoted(text);
            return;
        }
        (m_text += '\\') += text[at++];
    }
    m_text += '"';
}

std::string CJsonObject::ToText() const {
    Writer writer;
    writer.Object(*this, 1);
    return writer.Take();
}

}  // namespace luadui
