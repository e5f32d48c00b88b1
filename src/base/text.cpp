#include "base/text.h"

#include <algorithm>

#include "base/counters.h"
#include "platform/code_page.h"

namespace luadui {
namespace {

template <class Result, class Source>
Result Converted(Result (*convert)(Source, size_t*), Source text) {
    size_t replaced = 0;
    Result result = convert(text, &replaced);
    if (replaced != 0) CCounters::Add("text_replaced", replaced);
    return result;
}

// Applies `change` to the one-byte characters.
template <class Change>
std::string ChangedBytes(std::string_view text, Change change) {
    std::string result(text);
    for (size_t at = 0, length = 0; at < text.size(); at += length) {
        length = code_page::CharLength(text, at);
        if (length == 1) result[at] = change(result[at]);
    }
    return result;
}

}  // namespace

std::string GbkToUtf8(std::string_view text) { return Converted(code_page::ToUtf8, text); }
std::string Utf8ToGbk(std::string_view text) { return Converted(code_page::FromUtf8, text); }
std::wstring GbkToWide(std::string_view text) { return Converted(code_page::ToWide, text); }
std::string WideToGbk(std::wstring_view text) { return Converted(code_page::FromWide, text); }

std::filesystem::path PathFromText(std::string_view text) {
    std::string utf8 = GbkToUtf8(text);
    std::replace(utf8.begin(), utf8.end(), '\\', '/');
    return std::filesystem::path(std::u8string(utf8.begin(), utf8.end()));  // whatever the locale
}

bool IsAscii(std::string_view text) noexcept { return code_page::IsAscii(text); }

bool EndsInsideCharacter(std::string_view text) noexcept {
    size_t at = text.size();
    while (at > 0 && code_page::IsLeadByte(text[at - 1])) --at;  // what is before is no lead byte: a border
    // From the border on: an odd number of lead bytes leaves the last one alone.
    return (text.size() - at) % 2 == 1;
}

std::string_view CutAtCharacter(std::string_view text, size_t maxBytes) noexcept {
    return code_page::Truncate(text, maxBytes);
}

std::vector<std::string_view> SplitText(std::string_view text, char separator) {
    std::vector<std::string_view> parts;
    size_t start = 0;
    for (size_t at; (at = code_page::FindAscii(text, separator, start)) != std::string_view::npos;
         start = at + 1) {
        parts.push_back(text.substr(start, at - start));
    }
    parts.push_back(text.substr(start));
    return parts;
}

std::string_view TrimText(std::string_view text) noexcept {
    constexpr std::string_view kBlanks = " \t\r\n";  // none of them is a second byte
    const size_t first = text.find_first_not_of(kBlanks);
    if (first == std::string_view::npos) return {};
    return text.substr(first, text.find_last_not_of(kBlanks) - first + 1);
}

std::string ToLowerText(std::string_view text) {
    return ChangedBytes(text,
                        [](char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c; });
}

std::string ToUpperText(std::string_view text) {
    return ChangedBytes(text,
                        [](char c) { return c >= 'a' && c <= 'z' ? static_cast<char>(c - 'a' + 'A') : c; });
}

bool ContainsText(std::string_view text, std::string_view part) noexcept {
    for (size_t at = 0; at < text.size(); at += code_page::CharLength(text, at)) {
        if (text.substr(at).starts_with(part)) return true;
    }
    return part.empty();
}

std::string ReplaceText(std::string_view text, std::string_view from, std::string_view to) {
    if (from.empty()) return std::string(text);
    std::string result;
    size_t copied = 0;
    for (size_t at = 0; at < text.size();) {
        if (text.substr(at).starts_with(from)) {
            result.append(text, copied, at - copied).append(to);
            copied = at += from.size();
        } else {
            at += code_page::CharLength(text, at);
        }
    }
    return result.append(text, copied);
}

}  // namespace luadui
