// Text as records hold it: bytes of code page 936, in which a character has one or two bytes and the second
// one may look like '\', '|', '[', '{', '}' or a letter. Everything here steps by character, never by byte.
//
// Threads: any. Nothing depends on the locale. Pure ASCII is never converted.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "platform/export.h"

namespace luadui {

// Conversions. What cannot be converted becomes one replacement character (U+FFFD from, '?' to code page
// 936), is counted as "text_replaced", and the rest goes on.
TESSEL_API std::string GbkToUtf8(std::string_view text);
TESSEL_API std::string Utf8ToGbk(std::string_view text);
TESSEL_API std::wstring GbkToWide(std::string_view text);
TESSEL_API std::string WideToGbk(std::wstring_view text);

// The helper for literals: Gbk("主窗口") is the text in code page 936. Source files are UTF-8.
inline std::string Gbk(std::string_view utf8Literal) { return Utf8ToGbk(utf8Literal); }

// The same where it is needed many times: GbkText<"主窗口">() converts once.
template <size_t kSize>
struct Utf8Literal {
    consteval Utf8Literal(const char (&literal)[kSize]) { std::copy_n(literal, kSize, text); }
    char text[kSize];
};
template <Utf8Literal kLiteral>
const std::string& GbkText() {
    static const auto* const text = new std::string(Gbk(kLiteral.text));
    return *text;
}

// The path that `text` (code page 936) names; '/' and '\\' both separate.
TESSEL_API std::filesystem::path PathFromText(std::string_view text);

TESSEL_API bool IsAscii(std::string_view text) noexcept;
// True when the last byte is the first half of a two-byte character.
TESSEL_API bool EndsInsideCharacter(std::string_view text) noexcept;
// The longest beginning of `text` with at most `maxBytes` bytes that does not end inside a character.
TESSEL_API std::string_view CutAtCharacter(std::string_view text, size_t maxBytes) noexcept;
// The parts between separators (an ASCII character): one more than there are separators, so "" has one,
// empty, part.
TESSEL_API std::vector<std::string_view> SplitText(std::string_view text, char separator);
// Without blanks, tabs and line ends at both ends.
TESSEL_API std::string_view TrimText(std::string_view text) noexcept;
// Changes the case of ASCII letters, leaving two-byte characters alone.
TESSEL_API std::string ToLowerText(std::string_view text);
TESSEL_API std::string ToUpperText(std::string_view text);
// Whether `part` is somewhere in `text`, from the border of a character on.
TESSEL_API bool ContainsText(std::string_view text, std::string_view part) noexcept;
// Replaces every occurrence of `from` (found at character borders), going on after what was put in.
TESSEL_API std::string ReplaceText(std::string_view text, std::string_view from, std::string_view to);

// Numbers. ParseDouble and ParseLong follow the rule of ValueView (base/data_value.h): nothing when the whole
// text is no number or out of range; ParseLong truncates a fraction toward zero.
TESSEL_API std::optional<double> ParseDouble(std::string_view text) noexcept;
TESSEL_API std::optional<int64_t> ParseLong(std::string_view text) noexcept;
// The shortest text that reads back as the same number; "nan", "inf" and "-inf" for what is not finite.
TESSEL_API std::string DoubleText(double value);
TESSEL_API std::string LongText(int64_t value);

}  // namespace luadui
