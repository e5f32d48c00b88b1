// The hash of keys: fast on short texts, and seeded per process so that nobody outside can choose keys that
// collide.
#pragma once

#include <cstdint>
#include <cstring>
#include <string_view>

namespace luadui {

// The seed, drawn at first use; the same for the life of the process.
uint64_t KeySeed() noexcept;

namespace key_hash {

inline uint64_t Read8(const char* bytes) noexcept {
    uint64_t value;
    std::memcpy(&value, bytes, sizeof value);
    return value;
}

inline uint64_t Read4(const char* bytes) noexcept {
    uint32_t value;
    std::memcpy(&value, bytes, sizeof value);
    return value;
}

// Both halves of the 128-bit product: every bit of the operands reaches every bit of the result.
inline uint64_t Mix(uint64_t left, uint64_t right) noexcept {
    __extension__ using Wide = unsigned __int128;
    const Wide product = static_cast<Wide>(left) * right;
    return static_cast<uint64_t>(product) ^ static_cast<uint64_t>(product >> 64);
}

}  // namespace key_hash

inline uint32_t HashKey(std::string_view key) noexcept {
    using namespace key_hash;
    constexpr uint64_t kOdd1 = 0x9e3779b97f4a7c15, kOdd2 = 0xd6e8feb86659fd93;
    uint64_t seed = KeySeed();
    const char* bytes = key.data();
    size_t size = key.size();
    for (; size > 16; bytes += 16, size -= 16) {
        seed = Mix(Read8(bytes) ^ kOdd1, Read8(bytes + 8) ^ seed);
    }
    uint64_t first = 0, last = 0;
    if (size >= 8) {
        first = Read8(bytes);
        last = Read8(bytes + size - 8);
    } else if (size >= 4) {
        first = Read4(bytes);
        last = Read4(bytes + size - 4);
    } else if (size > 0) {
        first = static_cast<unsigned char>(bytes[0]) |
                uint64_t{static_cast<unsigned char>(bytes[size / 2])} << 8 |
                uint64_t{static_cast<unsigned char>(bytes[size - 1])} << 16;
    }
    const uint64_t mixed = Mix(first ^ kOdd1, last ^ seed);
    return static_cast<uint32_t>(Mix(mixed ^ seed, key.size() ^ kOdd2) >> 16);
}

}  // namespace luadui
