// Copying, comparing and reading a few bytes without calling the library: keys and most texts are that short.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>

namespace luadui {

template <class Word>
Word ReadWord(const char* bytes) noexcept {
    Word word;
    std::memcpy(&word, bytes, sizeof word);
    return word;
}

namespace short_bytes {

struct Word16 {
    uint64_t low, high;
    bool operator==(const Word16&) const = default;
};

// The first and the last word of `size` bytes cover all of them when size is sizeof(Word) to twice that.
template <class Word>
void CopyEnds(char* to, const char* from, size_t size) noexcept {
    const Word first = ReadWord<Word>(from);
    const Word last = ReadWord<Word>(from + size - sizeof(Word));
    std::memcpy(to, &first, sizeof first);
    std::memcpy(to + size - sizeof(Word), &last, sizeof last);
}

template <class Word>
bool EqualEnds(const char* left, const char* right, size_t size) noexcept {
    return ReadWord<Word>(left) == ReadWord<Word>(right) &&
           ReadWord<Word>(left + size - sizeof(Word)) == ReadWord<Word>(right + size - sizeof(Word));
}

}  // namespace short_bytes

// For some hundred bytes at most. They may overlap where `to` comes first.
inline void CopyShort(char* to, const char* from, size_t size) noexcept {
    using namespace short_bytes;
    if (size > 32) {
        const Word16 last = ReadWord<Word16>(from + size - 16);
        for (size_t done = 0; done < size - 16; done += 16) std::memcpy(to + done, from + done, 16);
        std::memcpy(to + size - 16, &last, 16);
    } else if (size >= 16) {
        CopyEnds<Word16>(to, from, size);
    } else if (size >= 8) {
        CopyEnds<uint64_t>(to, from, size);
    } else if (size >= 4) {
        CopyEnds<uint32_t>(to, from, size);
    } else if (size >= 2) {
        CopyEnds<uint16_t>(to, from, size);
    } else if (size == 1) {
        *to = *from;
    }
}

// Up to 16 bytes.
inline bool EqualShort(const char* left, const char* right, size_t size) noexcept {
    using namespace short_bytes;
    if (size >= 8) return EqualEnds<uint64_t>(left, right, size);
    if (size >= 4) return EqualEnds<uint32_t>(left, right, size);
    if (size >= 2) return EqualEnds<uint16_t>(left, right, size);
    return size == 0 || *left == *right;
}

}  // namespace luadui
