// The hash of keys: fast on short texts, and seeded per process so that nobody outside can choose keys that collide.
#pragma once

#include <atomic>
#include <cstdint>
#include <string_view>

#include "base/short_bytes.h"

namespace luadui {

// Drawn at first use; the same for the life of the process.
class KeySeed {
  public:
    static uint64_t Get() noexcept {
        const uint64_t seed = Known();
        return seed != 0 ? seed : _draw();
    }
    // For those who come after a Get(): whoever holds a record does.
    static uint64_t Known() noexcept { return s_seed.load(std::memory_order_relaxed); }

  private:
    static uint64_t _draw() noexcept;
    static std::atomic<uint64_t> s_seed;  // 0 until it is drawn
};

constexpr size_t kShortKey = 16;

// Both halves of the 128-bit product: every bit of the operands reaches every bit of the result.
inline uint64_t MixWords(uint64_t left, uint64_t right) noexcept {
    __extension__ using Wide = unsigned __int128;
    const Wide product = static_cast<Wide>(left) * right;
    return static_cast<uint64_t>(product) ^ static_cast<uint64_t>(product >> 64);
}

// The hash of up to kShortKey bytes; `seed` may be that of bytes before them.
inline uint32_t HashShortKey(std::string_view key, uint64_t seed) noexcept {
    const char* bytes = key.data();
    const size_t size = key.size();
    uint64_t first = 0, last = 0;
    if (size >= 8) {
        first = ReadWord<uint64_t>(bytes);
        last = ReadWord<uint64_t>(bytes + size - 8);
    } else if (size >= 4) {
        first = ReadWord<uint32_t>(bytes);
        last = ReadWord<uint32_t>(bytes + size - 4);
    } else if (size >= 2) {
        first = ReadWord<uint16_t>(bytes);
        last = ReadWord<uint16_t>(bytes + size - 2);
    } else if (size == 1) {
        first = static_cast<unsigned char>(*bytes);
    }
    constexpr uint64_t kOdd1 = 0x9e3779b97f4a7c15, kOdd2 = 0xd6e8feb86659fd93;
    return static_cast<uint32_t>(MixWords(first ^ seed, last ^ (size * kOdd2) ^ kOdd1) >> 16);
}

inline uint32_t HashKey(std::string_view key) noexcept {
    constexpr uint64_t kOdd = 0xa0761d6478bd642f;
    uint64_t seed = KeySeed::Get();
    for (; key.size() > kShortKey; key.remove_prefix(16)) {
        seed = MixWords(ReadWord<uint64_t>(key.data()) ^ kOdd, ReadWord<uint64_t>(key.data() + 8) ^ seed);
    }
    return HashShortKey(key, seed);
}

}  // namespace luadui
