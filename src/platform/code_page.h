// Code page 936: conversion to and from UTF-8 and wide text, and steps by character.
//
// A character has one byte (below 0x80, and 0x80 = U+20AC and 0xFF = U+F8F5) or two: a lead byte 0x81..0xFE
// and a trail byte 0x40..0xFE but 0x7F, which may look like '\', '|', '[', '{' or a letter. Every such pair
// is assigned, the private ones to U+E000..U+E864, so text that came from the code page goes back to the same
// bytes. One table serves all systems, so the bytes are the same everywhere.
//
// Broken text never takes its neighbours along: a lead byte without a trail byte is one broken character, and
// the byte after it is read on its own. Each broken character, and each that the other side lacks, becomes
// one replacement (U+FFFD, or '?' in code page 936); nothing is replaced by a merely similar character.
//
// Threads: any. Failure: none but std::bad_alloc. Nothing depends on the locale. Pure ASCII is copied, not
// converted.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

#include "platform/export.h"

namespace luadui::code_page {

// Conversions. `replaced`, if given, is increased by the number of replacements. Wide text is UTF-32 or
// UTF-16, as the system has it.
TESSEL_API std::string ToUtf8(std::string_view text, size_t* replaced = nullptr);
TESSEL_API std::string FromUtf8(std::string_view utf8, size_t* replaced = nullptr);
TESSEL_API std::wstring ToWide(std::string_view text, size_t* replaced = nullptr);
TESSEL_API std::string FromWide(std::wstring_view wide, size_t* replaced = nullptr);
TESSEL_API std::wstring Utf8ToWide(std::string_view utf8, size_t* replaced = nullptr);
TESSEL_API std::string WideToUtf8(std::wstring_view wide, size_t* replaced = nullptr);

// Length of the ASCII text at the start of `text` (of bytes: the first byte from 0x80 on ends it).
TESSEL_API size_t AsciiPrefix(std::string_view text) noexcept;
inline bool IsAscii(std::string_view text) noexcept { return AsciiPrefix(text) == text.size(); }

constexpr bool IsLeadByte(char c) noexcept {
    const auto byte = static_cast<unsigned char>(c);
    return byte >= 0x81 && byte <= 0xFE;
}

constexpr bool IsTrailByte(char c) noexcept {
    const auto byte = static_cast<unsigned char>(c);
    return byte >= 0x40 && byte <= 0xFE && byte != 0x7F;
}

// Bytes of the character that starts at `at` < text.size(): 1 or 2. A broken one has 1.
constexpr size_t CharLength(std::string_view text, size_t at) noexcept {
    return at + 1 < text.size() && IsLeadByte(text[at]) && IsTrailByte(text[at + 1]) ? 2 : 1;
}

// Where the ASCII character `c` stands as a character, not as a trail byte, at or after `from`, which must be
// the start of a character; npos when nowhere.
TESSEL_API size_t FindAscii(std::string_view text, char c, size_t from = 0) noexcept;

// The longest beginning of `text` of at most `limit` bytes that ends between two characters and not in a lone
// lead byte.
TESSEL_API std::string_view Truncate(std::string_view text, size_t limit) noexcept;

}  // namespace luadui::code_page
