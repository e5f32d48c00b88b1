// Hash maps by text, for those that are large or asked on every message's way; where order counts, or the texts come
// from outside, std::map<std::string, Value, std::less<>> is the right one.
#pragma once

#include <functional>
#include <string>
#include <string_view>
#include <unordered_map>

namespace luadui {

struct TextHash {
    using is_transparent = void;
    size_t operator()(std::string_view text) const noexcept { return std::hash<std::string_view>()(text); }
};

// Can be searched by any kind of text without making a string of it.
template <class Value>
using TextMap = std::unordered_map<std::string, Value, TextHash, std::equal_to<>>;

}  // namespace luadui
