// Text that stays where it is stored: what getters hand out instead of a copy.
#pragma once

#include <string>
#include <string_view>

namespace luadui {

// A std::string_view that becomes a std::string by itself and always ends in a zero byte, so that getters
// read like those that return strings and cost nothing. Valid as long as its getter says; take a std::string
// to keep the text.
class TextView : public std::string_view {
  public:
    constexpr TextView() noexcept : std::string_view("", 0) {}
    // text[size] must be 0.
    constexpr TextView(const char* text, size_t size) noexcept : std::string_view(text, size) {}

    operator std::string() const { return std::string(data(), size()); }
    // The text for functions that expect a zero byte at the end.
    constexpr const char* c_str() const noexcept { return data(); }

    friend std::string operator+(std::string_view left, TextView right) {
        return std::string(left).append(right);
    }
    friend std::string operator+(TextView left, std::string_view right) {
        return std::string(left).append(right);
    }
    friend std::string operator+(TextView left, TextView right) { return std::string(left).append(right); }

  private:
    using std::string_view::remove_prefix;  // what is cut off at the end would no longer end in a zero byte
    using std::string_view::remove_suffix;
    using std::string_view::swap;
};

}  // namespace luadui
