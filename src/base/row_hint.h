// Remembers which storage belongs to the row that was read last, so that the next column of it is found at
// once.
#pragma once

#include <algorithm>
#include <atomic>
#include <cstdint>

namespace luadui {

// One word that holds a row number (21 bits) and an address (47 bits, multiple of 16) together, so that
// readers on several threads never see the number of one row with the address of another. What does not fit
// is not remembered. Relaxed order is enough: whoever reads the hint may read the storage as well.
class RowHint {
  public:
    void Set(uint32_t row, const void* storage) const noexcept {
        const auto address = static_cast<uint64_t>(reinterpret_cast<uintptr_t>(storage));
        if (row >= kNoRow || (address & ~kAddressMask) != 0) return;
        m_word.store(_key(row) | address >> kAlignBits, std::memory_order_relaxed);
    }
    void Clear() const noexcept { m_word.store(0, std::memory_order_relaxed); }

    // The storage set for exactly this row, else null. The key is what a loop over columns computes only
    // once.
    template <class T>
    const T* Get(int row) const noexcept {
        const uint64_t rest = m_word.load(std::memory_order_relaxed) ^ _key(static_cast<uint32_t>(row));
        return rest < kKeyUnit ? _storage<T>(rest) : nullptr;
    }
    // The storage, with the row it was set for; null when there is none.
    template <class T>
    T* Last(uint32_t& row) const noexcept {
        const uint64_t word = m_word.load(std::memory_order_relaxed);
        row = static_cast<uint32_t>(word / kKeyUnit);
        return _storage<T>(word % kKeyUnit);
    }

  private:
    static constexpr int kAlignBits = 4;
    static constexpr uint64_t kKeyUnit = uint64_t{1} << 43;
    static constexpr uint64_t kAddressMask = (kKeyUnit - 1) << kAlignBits;
    static constexpr uint32_t kNoRow = (1u << 21) - 1;  // stands for all rows that cannot be remembered

    static uint64_t _key(uint32_t row) noexcept { return std::min(row, kNoRow) * kKeyUnit; }
    template <class T>
    static T* _storage(uint64_t bits) noexcept {
        return reinterpret_cast<T*>(static_cast<uintptr_t>(bits << kAlignBits));
    }

    mutable std::atomic<uint64_t> m_word{0};
};

}  // namespace luadui
