// JsonText: JSON text written piece by piece, for those who write much and keep none of it as objects.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <utility>

#include "platform/export.h"

namespace luadui {

// Text in code page 936 on one line without blanks, as CJsonObject::ToText() writes it. The caller closes what it opens,
// and gives every value inside an object its name.
//
// Threads: one at a time.
class TESSEL_API JsonText {
  public:
    // `expected`: bytes that the text will have, about.
    explicit JsonText(size_t expected = 0) { m_text.reserve(expected); }

    void BeginObject() { _open('{'); }
    void EndObject() { _close('}'); }
    void BeginArray() { _open('['); }
    void EndArray() { _close(']'); }
    void Name(std::string_view name);
    // A text, in quotes; what has to be escaped is.
    void Text(std::string_view text);
    void Member(std::string_view name, std::string_view text) {
        Name(name);
        Text(text);
    }
    // Something that is JSON already.
    void Json(std::string_view json);

    // What was written; nothing is left.
    std::string Take() { return std::exchange(m_text, {}); }

  private:
    void _open(char bracket);
    void _close(char bracket);
    void _separate() {
        if (m_isBehindValue) m_text += ',';
    }
    void _quote(std::string_view text);

    std::string m_text;
    bool m_isBehindValue = false;
};

}  // namespace luadui
