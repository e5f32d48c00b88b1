// Writing JSON text. jsoncpp quotes strings; the order of the members and the form of numbers are ours.
#include <json/json.h>

#include <cmath>
#include <memory>
#include <sstream>

#include "base/counters.h"
#include "base/json_object.h"
#include "base/text.h"

namespace luadui {
namespace {

// Characters that stand for themselves in a JSON string.
bool IsPlain(std::string_view text) {
    for (const char c : text) {
        if (static_cast<unsigned char>(c) < 0x20 || static_cast<unsigned char>(c) >= 0x7F || c == '"' ||
            c == '\\') {
            return false;
        }
    }
    return true;
}

class Writer {
  public:
    std::string Take() { return std::move(m_out); }

    void Object(const CJsonObject& object, int depth) {
        char separator = '{';
        for (const auto [name, value] : object) {
            m_out += separator;
            _quote(name);
            m_out += ':';
            _value(value, depth);
            separator = ',';
        }
        m_out += object.IsEmpty() ? "{}" : "}";
    }

  private:
    void _array(const CDataList& list, int depth) {
        char separator = '[';
        for (const auto [name, value] : list) {
            m_out += separator;
            _value(value, depth);
            separator = ',';
        }
        m_out += list.IsEmpty() ? "[]" : "]";
    }

    void _value(const ValueView& value, int depth) {
        switch (value.Kind()) {
            case kDataNull:
                m_out += "null";
                return;
            case kDataBoolean:
                m_out += value.AsBool() ? "true" : "false";
                return;
            case kDataString:
                _quote(value.AsText());
                return;
            case kDataInteger:
                _integer(value);
                return;
            case kDataDouble:
                _double(value.AsDouble());
                return;
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
        m_out += value.AsLong() < 0 && value.AsDouble() > 0
                     ? std::to_string(static_cast<uint64_t>(value.AsLong()))
                     : std::to_string(value.AsLong());
    }

    void _double(double value) {
        if (!std::isfinite(value)) return _drop();
        const std::string text = DoubleText(value);
        m_out += text;
        if (text.find_first_of(".e") == std::string::npos)
            m_out += ".0";  // or it would read back as an integer
    }

    void _drop() {
        m_out += "null";
        CCounters::Add("json_value_dropped");
    }

    void _quote(std::string_view text) {
        if (IsPlain(text)) {
            m_out.append(1, '"').append(text).append(1, '"');
            return;
        }
        if (!m_quoter) {
            Json::StreamWriterBuilder builder;
            builder["indentation"] = "";
            builder["emitUTF8"] = true;
            m_quoter.reset(builder.newStreamWriter());
        }
        const std::string utf8 = GbkToUtf8(text);
        m_quoted.str({});
        m_quoter->write(Json::Value(utf8), &m_quoted);
        m_out += Utf8ToGbk(m_quoted.str());
    }

    std::string m_out;
    std::unique_ptr<Json::StreamWriter> m_quoter;
    std::ostringstream m_quoted;
};

}  // namespace

std::string CJsonObject::ToText() const {
    Writer writer;
    writer.Object(*this, 1);
    return writer.Take();
}

}  // namespace luadui
