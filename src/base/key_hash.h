// The hash of keys: fast on short texts, and secret per process, so that nobody outside can choose keys that collide.
//
// Multiplying is one-sided: when one operand is 0, the other one no longer counts. So each operand of every product is
// mixed with a secret word of its own, and which texts make it 0 cannot be known.
#pragma once

#include <atomic>
#include <bit>
#include <cstdint>
#include <string_view>

#include "base/short_bytes.h"

namespace luadui {

// What the hash of a text depends on besides the text.
struct KeySeed {
    uint64_t left, right;
};

// The seed of this process, drawn at first use.
class KeySecret {
  public:
    static KeySeed Get() noexcept { return s_left.load(std::memory_order_acquire) != 0 ? Known() : _draw(); }
    // For those who come after a Get(): whoever holds a record does.
    static KeySeed Known() noexcept {
        return {s_left.load(std::memory_order_relaxed), s_right.load(std::memory_order_relaxed)};
    }

  private:
    static KeySeed _draw() noexcept;
    static std::atomic<uint64_t> s_left;  // 0 until both are drawn
    static std::atomic<uint64_t> s_right;
};

constexpr size_t kShortKey = 16;

// Both halves of the 128-bit product: every bit of the operands reaches every bit of the result.
inline uint64_t MixWords(uint64_t left, uint64_t right) noexcept {
    __extension__ using Wide = unsigned __int128;
    const Wide product = static_cast<Wide>(left) * right;
    return static_cast<uint64_t>(product) ^ static_cast<uint64_t>(product >> 64);
}

// The hash of up to kShortKey bytes; `seed.left` may stand for the bytes before them.
inline uint32_t HashShortKey(std::string_view key, KeySeed seed) noexcept {
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
    // The size turns the secret instead of being mixed with the text, which could make up for it.
    const uint64_t right = std::rotl(seed.right, static_cast<int>(size));
    return static_cast<uint32_t>(MixWords(first ^ seed.left, last ^ right) >> 16);
}

inline uint32_t HashKey(std::string_view key) noexcept {
    KeySeed seed = KeySecret::Get();
    for (; key.size() > kShortKey; key.remove_prefix(16)) {
        seed.left = MixWords(ReadWord<uint64_t>(key.data()) ^ seed.left,
                             ReadWord<uint64_t>(key.data() + 8) ^ seed.right);
    }
    return HashShortKey(key, seed);
}

}  // namespace luadui
