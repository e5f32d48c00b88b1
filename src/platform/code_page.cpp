#include "platform/code_page.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstring>
#include <iterator>

namespace luadui::code_page {

namespace {

constexpr unsigned kFirstLead = 0x81, kLastLead = 0xFE, kFirstTrail = 0x40, kLastTrail = 0xFE,
                   kNoTrail = 0x7F;
constexpr unsigned kTrails = kLastTrail - kFirstTrail;  // one of the range is none
constexpr unsigned kPairs = (kLastLead - kFirstLead + 1) * kTrails;
constexpr uint16_t kUnicodeOf80 = 0x20AC, kUnicodeOfFF = 0xF8F5;

// By lead byte, then trail byte; every pair is assigned.
constexpr std::array<uint16_t, kPairs> kUnicodeOfPair{
#include "platform/code_page_table.inc"
};

constexpr unsigned PairIndex(unsigned lead, unsigned trail) {
    return (lead - kFirstLead) * kTrails + trail - kFirstTrail - (trail > kNoTrail ? 1 : 0);
}

constexpr uint16_t PairAt(unsigned index) {
    const unsigned lead = index / kTrails + kFirstLead;
    const unsigned trail = index % kTrails + kFirstTrail;
    return static_cast<uint16_t>(lead << 8 | (trail < kNoTrail ? trail : trail + 1));
}

// The byte or pair of each Unicode value; 0 for what the code page lacks.
constexpr std::array<uint16_t, 0x10000> kCodeOf = [] {
    std::array<uint16_t, 0x10000> codes{};
    for (unsigned index = 0; index < kPairs; ++index) codes[kUnicodeOfPair[index]] = PairAt(index);
    codes[kUnicodeOf80] = 0x80;
    codes[kUnicodeOfFF] = 0xFF;
    return codes;
}();

constexpr char32_t kBroken = 0xFFFFFFFF;
constexpr char32_t kReplacement = 0xFFFD;

constexpr bool IsScalar(char32_t c) { return c < 0xD800 || (c >= 0xE000 && c <= 0x10FFFF); }

unsigned ByteAt(std::string_view text, size_t at) { return static_cast<unsigned char>(text[at]); }

// --- The kinds of text. Take reads the character at `at` and steps behind it; a broken one is kBroken. Put writes a
// character at `out`, where there is room for kLongest units, and returns where the next one goes; null when this kind
// of text cannot hold it.

struct Gbk {
    using Unit = char;
    static constexpr size_t kLongest = 2;
    static constexpr char32_t kInstead = '?';

    static char32_t Take(std::string_view text, size_t& at) {
        const unsigned lead = ByteAt(text, at);
        if (lead < 0x80) return ++at, lead;
        if (CharLength(text, at) == 2) {
            at += 2;
            return kUnicodeOfPair[PairIndex(lead, ByteAt(text, at - 1))];
        }
        ++at;
        return lead == 0x80 ? kUnicodeOf80 : lead == 0xFF ? kUnicodeOfFF : kBroken;
    }

    static Unit* Put(Unit* out, char32_t c) {
        const unsigned code = c < 0x80 ? c : c < kCodeOf.size() ? kCodeOf[c] : 0;
        if (code == 0 && c != 0) return nullptr;
        if (code > 0xFF) *out++ = static_cast<Unit>(code >> 8);
        *out++ = static_cast<Unit>(code & 0xFF);
        return out;
    }
};

struct Utf8 {
    using Unit = char;
    static constexpr size_t kLongest = 4;
    static constexpr char32_t kInstead = kReplacement;

    // Broken text is one broken character up to the byte that cannot go on.
    static char32_t Take(std::string_view text, size_t& at) {
        const unsigned first = ByteAt(text, at++);
        if (first < 0x80) return first;
        const unsigned more = first < 0xC2 ? 0 : first < 0xE0 ? 1 : first < 0xF0 ? 2 : first < 0xF5 ? 3 : 0;
        if (more == 0) return kBroken;
        // The bounds of the second byte keep out long forms, surrogates and what lies beyond U+10FFFF.
        unsigned low = first == 0xE0 ? 0xA0 : first == 0xF0 ? 0x90 : 0x80;
        unsigned high = first == 0xED ? 0x9F : first == 0xF4 ? 0x8F : 0xBF;
        char32_t c = first & (0x3F >> more);
        for (unsigned i = 0; i < more; ++i, low = 0x80, high = 0xBF) {
            if (at == text.size() || ByteAt(text, at) < low || ByteAt(text, at) > high) return kBroken;
            c = c << 6 | (ByteAt(text, at++) & 0x3F);
        }
        return c;
    }

    static Unit* Put(Unit* out, char32_t c) {
        const auto more = [c](unsigned shift) { return static_cast<Unit>(0x80 | (c >> shift & 0x3F)); };
        if (c < 0x80) {
            *out++ = static_cast<Unit>(c);
        } else if (c < 0x800) {
            *out++ = static_cast<Unit>(0xC0 | c >> 6);
            *out++ = more(0);
        } else if (c < 0x10000) {
            *out++ = static_cast<Unit>(0xE0 | c >> 12);
            *out++ = more(6);
            *out++ = more(0);
        } else {
            *out++ = static_cast<Unit>(0xF0 | c >> 18);
            *out++ = more(12);
            *out++ = more(6);
            *out++ = more(0);
        }
        return out;
    }
};

struct Wide {
    using Unit = wchar_t;
    static constexpr size_t kLongest = 2;
    static constexpr char32_t kInstead = kReplacement;
    static constexpr bool kUtf16 = sizeof(wchar_t) == 2;

    static char32_t Take(std::wstring_view text, size_t& at) {
        const auto c = static_cast<char32_t>(text[at++]);
        if (!kUtf16 || c < 0xD800 || c > 0xDBFF || at == text.size()) return IsScalar(c) ? c : kBroken;
        const auto low = static_cast<char32_t>(text[at]);
        if (low < 0xDC00 || low > 0xDFFF) return kBroken;
        ++at;
        return 0x10000 + ((c - 0xD800) << 10) + (low - 0xDC00);
    }

    static Unit* Put(Unit* out, char32_t c) {
        if (kUtf16 && c >= 0x10000) {
            *out++ = static_cast<Unit>(0xD800 + ((c - 0x10000) >> 10));
            c = 0xDC00 + (c & 0x3FF);
        }
        *out++ = static_cast<Unit>(c);
        return out;
    }
};

size_t PlainPrefix(std::string_view text) { return AsciiPrefix(text); }

size_t PlainPrefix(std::wstring_view text) {
    const auto isPlain = [](wchar_t c) { return static_cast<char32_t>(c) < 0x80; };
    return static_cast<size_t>(std::find_if_not(text.begin(), text.end(), isPlain) - text.begin());
}

// The plain beginning is copied; the rest goes through a small buffer, so that nothing is made larger than it must be.
template <class From, class To>
std::basic_string<typename To::Unit> Convert(std::basic_string_view<typename From::Unit> text,
                                             size_t* replaced) {
    size_t at = PlainPrefix(text);
    std::basic_string<typename To::Unit> out(text.begin(), text.begin() + static_cast<ptrdiff_t>(at));
    typename To::Unit buffer[256];
    while (at < text.size()) {
        auto* end = buffer;
        while (at < text.size() && end + To::kLongest <= std::end(buffer)) {
            const char32_t c = From::Take(text, at);
            auto* const next = c == kBroken ? nullptr : To::Put(end, c);
            end = next ? next : To::Put(end, To::kInstead);
            if (!next && replaced) ++*replaced;
        }
        out.append(buffer, end);
    }
    return out;
}

}  // namespace

std::string ToUtf8(std::string_view text, size_t* replaced) { return Convert<Gbk, Utf8>(text, replaced); }
std::string FromUtf8(std::string_view utf8, size_t* replaced) { return Convert<Utf8, Gbk>(utf8, replaced); }
std::wstring ToWide(std::string_view text, size_t* replaced) { return Convert<Gbk, Wide>(text, replaced); }
std::string FromWide(std::wstring_view wide, size_t* replaced) { return Convert<Wide, Gbk>(wide, replaced); }
std::wstring Utf8ToWide(std::string_view utf8, size_t* replaced) {
    return Convert<Utf8, Wide>(utf8, replaced);
}
std::string WideToUtf8(std::wstring_view wide, size_t* replaced) {
    return Convert<Wide, Utf8>(wide, replaced);
}

size_t AsciiPrefix(std::string_view text) noexcept {
    constexpr uint64_t kHighBits = 0x8080808080808080;
    size_t at = 0;
    for (uint64_t eight; at + sizeof(eight) <= text.size(); at += sizeof(eight)) {
        std::memcpy(&eight, text.data() + at, sizeof(eight));
        if (eight & kHighBits) break;
    }
    while (at < text.size() && ByteAt(text, at) < 0x80) ++at;
    return at;
}

size_t FindAscii(std::string_view text, char c, size_t from) noexcept {
    if (from >= text.size()) return std::string_view::npos;
    if (ByteAt({&c, 1}, 0) < kFirstTrail) return text.find(c, from);  // no trail byte looks like it
    for (size_t at = from; at < text.size(); at += CharLength(text, at)) {
        if (text[at] == c) return at;
    }
    return std::string_view::npos;
}

std::string_view Truncate(std::string_view text, size_t limit) noexcept {
    const std::string_view most = text.substr(0, limit);
    size_t at = AsciiPrefix(most);
    while (at < most.size()) {
        if (IsLeadByte(most[at]) && at + 1 == most.size()) break;
        at += CharLength(most, at);
    }
    return most.substr(0, at);
}

}  // namespace luadui::code_page
