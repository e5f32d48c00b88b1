// What has to be done to JSON text before jsoncpp reads it.
#pragma once

#include <algorithm>
#include <cstddef>
#include <string>
#include <string_view>

#include "base/json_object.h"
#include "base/number_text.h"

namespace luadui {

// Why a text was refused.
struct JsonRefusal {
    std::string reason;
};

// A walk over JSON text (UTF-8) before jsoncpp gets it: numbers with a fraction or exponent, which jsoncpp reads
// through the global C++ locale, become digits of the same length; nesting, over which jsoncpp recurses, is
// measured.
class JsonScanner {
  public:
    explicit JsonScanner(std::string& text) : m_text(text) {}

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
        throw JsonRefusal{"nested deeper than " + std::to_string(CJsonObject::kMaxNesting) +
                          " levels at byte " + std::to_string(m_at)};
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

}  // namespace luadui
