// Which fields hold secrets: whatever writes logs or sends traces asks here first.
#pragma once

#include <cstddef>
#include <string_view>

namespace luadui {

// What stands in the place of a secret.
inline constexpr std::string_view kSecretMask = "***";

namespace secret_fields {

constexpr char Lower(char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c; }

// `word` is in lower case.
constexpr bool StandsAt(std::string_view name, size_t at, std::string_view word) {
    if (name.size() - at < word.size()) return false;
    for (size_t i = 0; i < word.size(); ++i) {
        if (Lower(name[at + i]) != word[i]) return false;
    }
    return true;
}

constexpr bool Contains(std::string_view name, std::string_view word) {
    for (size_t at = 0; at < name.size(); ++at) {
        if (StandsAt(name, at, word)) return true;
    }
    return false;
}

constexpr bool EndsIn(std::string_view name, std::string_view word) {
    return name.size() >= word.size() && StandsAt(name, name.size() - word.size(), word);
}

}  // namespace secret_fields

// True for the names of passwords and session tokens, in any case of letters: what contains "password", "passwd",
// "pwd" or "secret", or ends in "token". A fund token names an account and is none.
constexpr bool IsSecretField(std::string_view name) {
    using namespace secret_fields;
    for (const std::string_view word : {"password", "passwd", "pwd", "secret"}) {
        if (Contains(name, word)) return true;
    }
    return EndsIn(name, "token") && !EndsIn(name, "fund_token") && !EndsIn(name, "fundtoken");
}

}  // namespace luadui
