// Takes the fuzzer's bytes apart.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <string_view>

namespace luadui {

// What is not there any more reads as zero bytes and empty texts.
class Input {
  public:
    Input(const uint8_t* data, size_t size) : m_rest(reinterpret_cast<const char*>(data), size) {}
    bool IsEmpty() const { return m_rest.empty(); }
    uint8_t Byte() {
        if (m_rest.empty()) return 0;
        const auto byte = static_cast<uint8_t>(m_rest[0]);
        m_rest.remove_prefix(1);
        return byte;
    }
    // Up to the next `end`, which is passed over.
    std::string_view Text(char end) {
        const std::string_view text = m_rest.substr(0, m_rest.find(end));
        m_rest.remove_prefix(std::min(m_rest.size(), text.size() + 1));
        return text;
    }

  private:
    std::string_view m_rest;
};

}  // namespace luadui
