#include "platform/code_page.h"

#include <gtest/gtest.h>
#include <vector>

#include "platform/win32.h"
#ifndef _WIN32
#include <iconv.h>
#endif

namespace luadui::platform_test {
namespace {

using namespace code_page;

std::string Bytes(std::initializer_list<unsigned> values) {
    std::string bytes;
    for (unsigned value : values) bytes += static_cast<char>(static_cast<unsigned char>(value));
    return bytes;
}

// Every character of the code page: 130 bytes and 23,940 pairs.
std::vector<std::string> AllCharacters() {
    std::vector<std::string> all;
    for (unsigned byte = 0; byte < 0x100; ++byte) {
        if (byte <= 0x80 || byte == 0xFF) all.push_back(Bytes({byte}));
    }
    for (unsigned lead = 0x81; lead <= 0xFE; ++lead) {
        for (unsigned trail = 0x40; trail <= 0xFE; ++trail) {
            if (trail != 0x7F) all.push_back(Bytes({lead, trail}));
        }
    }
    return all;
}

#ifdef _WIN32
// What the system makes of it; it replaces nothing by what only looks alike.
std::wstring SystemsWide(const std::string& text) {
    wchar_t wide[4];
    const int length = MultiByteToWideChar(936, 0, text.data(), static_cast<int>(text.size()), wide, 4);
    return {wide, static_cast<size_t>(length)};
}
std::string SystemsGbk(const std::wstring& wide) {
    char text[4];
    const int length = WideCharToMultiByte(936, WC_NO_BEST_FIT_CHARS, wide.data(),
                                           static_cast<int>(wide.size()), text, 4, nullptr, nullptr);
    return {text, static_cast<size_t>(length)};
}
#else
// An independent table, which lacks the private characters, 0x80 and 0xFF: those are empty.
std::wstring SystemsWide(const std::string& text) {
    static const iconv_t converter = iconv_open("WCHAR_T", "GBK");
    wchar_t wide[4];
    std::string copy = text;
    char *in = copy.data(), *out = reinterpret_cast<char*>(wide);
    size_t inLeft = copy.size(), outLeft = sizeof(wide);
    iconv(converter, nullptr, nullptr, nullptr, nullptr);
    if (iconv(converter, &in, &inLeft, &out, &outLeft) != 0) return {};
    return {wide, 4 - outLeft / sizeof(wchar_t)};
}
std::string SystemsGbk(const std::wstring& wide) { return FromWide(wide); }
#endif

TEST(CodePage, EveryCharacterGoesThereAndBack) {
    size_t checked = 0, replaced = 0;
    for (const std::string& character : AllCharacters()) {
        const std::wstring wide = ToWide(character, &replaced);
        ASSERT_EQ(wide.size(), 1u);
        ASSERT_EQ(FromWide(wide, &replaced), character);
        ASSERT_EQ(FromUtf8(ToUtf8(character, &replaced), &replaced), character);
        ASSERT_EQ(WideToUtf8(wide, &replaced), ToUtf8(character));
        ASSERT_EQ(Utf8ToWide(ToUtf8(character), &replaced), wide);
        const std::wstring systems = SystemsWide(character);
        if (systems.empty()) continue;
        ASSERT_EQ(wide, systems) << testing::PrintToString(character);
        ASSERT_EQ(SystemsGbk(wide), character);
        ++checked;
    }
    EXPECT_EQ(replaced, 0u);
    EXPECT_GE(checked, 21791u + 128);
}

// In both directions: nothing outside the code page gets in.
TEST(CodePage, HoldsExactlyItsCharacters) {
    size_t held = 0;
    for (unsigned c = 0; c < 0x10000; ++c) {
        size_t replaced = 0;
        const std::wstring wide(1, static_cast<wchar_t>(c));
        const std::string text = FromWide(wide, &replaced);
        held += replaced == 0;
        if (replaced) {
            ASSERT_EQ(text, "?");
        }
#ifdef _WIN32
        if (c < 0xD800 || c > 0xDFFF) {
            ASSERT_EQ(text, SystemsGbk(wide)) << c;
        }
#endif
    }
    EXPECT_EQ(held, AllCharacters().size());
}

TEST(CodePage, BrokenTextCostsOneReplacementEach) {
    const struct {
        std::string text, utf8;
        size_t replaced;
    } cases[] = {
        {"", "", 0},
        {"plain {\"a\":1}|", "plain {\"a\":1}|", 0},
        {std::string("a\0b", 3), std::string("a\0b", 3), 0},
        {"\x80\xFF", "\u20AC\uF8F5", 0},
        {"\xD6\xD0\xCE\xC4", "中文", 0},
        {"\xD6", "\uFFFD", 1},
        {"\xD6\"", "\uFFFD\"", 1},
        {"\xD6\x7F", "\uFFFD\x7F", 1},
        {"\xD6\xFF|", "\uFFFD\uF8F5|", 1},
        {"\xD6\xD0\xCE", "中\uFFFD", 1},
        {"\xFE\xFE\xFE", "\uE4C5\uFFFD", 1},
    };
    for (const auto& [text, utf8, expected] : cases) {
        size_t replaced = 0;
        EXPECT_EQ(ToUtf8(text, &replaced), utf8);
        EXPECT_EQ(replaced, expected) << utf8;
        replaced = 0;
        EXPECT_EQ(WideToUtf8(ToWide(text, &replaced)), utf8);
        EXPECT_EQ(replaced, expected) << utf8;
    }
}

TEST(CodePage, BrokenUnicodeCostsOneReplacementEach) {
    const struct {
        std::string utf8, text;
        size_t replaced;
    } cases[] = {
        {"中\xE4\xB8", "\xD6\xD0?", 1},   // cut short
        {"\xE4\xB8|", "?|", 1},           // a separator after it stays
        {"\xC0\xAF", "??", 2},            // a long form
        {"\xE0\x80\xAF", "???", 3},       //
        {"\xED\xA0\x80", "???", 3},       // a surrogate
        {"\xF4\x90\x80\x80", "????", 4},  // beyond the last character
        {"\xF0\x9F\x98\x80!", "?!", 1},   // good, but not in the code page
        {"é\uFFFD", "\xA8\xA6?", 1},      //
        {"\xFF\xFE\x80", "???", 3},       //
    };
    for (const auto& [utf8, text, expected] : cases) {
        size_t replaced = 0;
        EXPECT_EQ(FromUtf8(utf8, &replaced), text);
        EXPECT_EQ(replaced, expected) << text;
    }
    size_t replaced = 0;
    EXPECT_EQ(WideToUtf8(Utf8ToWide("a\U0001F600é", &replaced), &replaced), "a\U0001F600é");
    EXPECT_EQ(replaced, 0u);
    const wchar_t surrogates[] = {L'a', static_cast<wchar_t>(0xDC00), static_cast<wchar_t>(0xD800), L'b'};
    EXPECT_EQ(FromWide({surrogates, 4}, &replaced), "a??b");
    EXPECT_EQ(replaced, 2u);
}

// Whatever stands in a quoted text of a list, the quote and the separator after it are still there.
TEST(CodePage, NoBytesSwallowADelimiter) {
    for (unsigned first = 0; first < 0x100; ++first) {
        for (unsigned second = 0; second < 0x100; ++second) {
            const std::string inner = Bytes({first, second}), text = "\"" + inner + "\"|";
            ASSERT_TRUE(ToUtf8(text).ends_with("\"|")) << first << ' ' << second;
            const bool isPair = CharLength(inner, 0) == 2;
            ASSERT_EQ(FindAscii(text, '|'), inner[0] == '|' ? 1u : !isPair && inner[1] == '|' ? 2u : 4u);
            ASSERT_EQ(FindAscii(text, '"', 1), inner[0] == '"' ? 1u : inner[1] == '"' ? 2u : 3u);
            ASSERT_EQ(FindAscii(text, 'x', 5), std::string::npos);
        }
    }
}

TEST(CodePage, TextIsCutBetweenCharacters) {
    const struct {
        std::string text;
        std::vector<size_t> lengths;  // by limit from 0 on
    } cases[] = {
        {"\xC6\xD6\xB7\xA2", {0, 0, 2, 2, 4, 4}}, {"a\xC6\xD6", {0, 1, 1, 3, 3}},
        {"\xC6|\x80\xC6", {0, 0, 2, 3, 3}},  // a pair, then a lone lead byte
        {"\xC6\x22\xC6\xD6", {0, 0, 2, 2, 4}},    {"plain text", {0, 1, 2, 3}},
    };
    for (const auto& [text, lengths] : cases) {
        for (size_t limit = 0; limit < lengths.size(); ++limit) {
            EXPECT_EQ(Truncate(text, limit).size(), lengths[limit]) << testing::PrintToString(text) << limit;
        }
    }
}

}  // namespace
}  // namespace luadui::platform_test
