// Lookup in constant tables: by text through a hash index, by number in sorted order. Tables and indexes are
// made by the compiler, lie in read-only memory and allocate nothing; a table with doubled keys does not
// compile.
//
//     constexpr KindType kRows[] = {{"fund", 1201}, {"position", 1202}};
//     using Index = KindIndex<kRows, &KindType::kind>;
//     const KindType* row = Index::Find("fund");   // null when absent
//
// Threads: any.
#pragma once

#include <array>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <iterator>
#include <string_view>
#include <type_traits>
#include <utility>

namespace luadui {

namespace kind_table {

// Written out, not a loop: compilers then make one load of it.
template <size_t... kByte>
constexpr uint64_t Word(const char* bytes, std::index_sequence<kByte...>) noexcept {
    return (... | (uint64_t{static_cast<unsigned char>(bytes[kByte])} << (8 * kByte)));
}
template <size_t kBytes>
constexpr uint64_t Word(const char* bytes) noexcept {
    return Word(bytes, std::make_index_sequence<kBytes>());
}

constexpr uint64_t Mix(uint64_t hash, uint64_t word) noexcept {
    hash = (hash ^ word) * 0x9E3779B97F4A7C15u;
    return hash ^ (hash >> 32);
}

// Eight bytes at a time, the last eight once more: names are long. Whoever chooses the text to look up cannot
// make it slow: what counts is how the table's own names lie.
constexpr uint64_t Hash(std::string_view text) noexcept {
    const char* const bytes = text.data();
    const size_t size = text.size();
    uint64_t hash = size;
    if (size >= 8) {
        for (size_t i = 0; i + 8 < size; i += 8) hash = Mix(hash, Word<8>(bytes + i));
        return Mix(hash, Word<8>(bytes + size - 8));
    }
    if (size >= 4) return Mix(hash, Word<4>(bytes) | Word<4>(bytes + size - 4) << 32);
    for (size_t i = 0; i < size; ++i) hash = Mix(hash, Word<1>(bytes + i));
    return hash;
}

// Where the rows lie in a hash table: row number + 1 a slot, 0 ends a search. At most a quarter full, so that
// every search ends soon.
template <size_t kRowCount>
struct Places {
    static_assert(kRowCount < UINT16_MAX);

    static constexpr size_t kSlots = std::bit_ceil(kRowCount) * 4;
    static constexpr size_t Home(std::string_view text) { return Hash(text) % kSlots; }
    static constexpr size_t Next(size_t slot) { return (slot + 1) % kSlots; }

    std::array<uint16_t, kSlots> rows{};
    bool distinct = true;
};

template <size_t kCount, class Row, class Key>
constexpr Places<kCount> Place(const Row* rows, Key key) {
    Places<kCount> places;
    for (size_t i = 0; i < kCount; ++i) {
        const std::string_view text = std::invoke(key, rows[i]);
        size_t slot = places.Home(text);
        for (; places.rows[slot] != 0; slot = places.Next(slot)) {
            if (std::invoke(key, rows[places.rows[slot] - 1]) == text) places.distinct = false;
        }
        places.rows[slot] = static_cast<uint16_t>(i + 1);
    }
    return places;
}

}  // namespace kind_table

// True when no two rows have the same text.
template <class Row, size_t kCount, class Key = std::identity>
constexpr bool IsDistinct(const Row (&rows)[kCount], Key key = {}) {
    return kind_table::Place<kCount>(rows, key).distinct;
}

// True when every row's key is greater than the one before.
template <class Row, size_t kCount, class Key = std::identity>
constexpr bool IsSortedUnique(const Row (&rows)[kCount], Key key = {}) {
    for (size_t i = 1; i < kCount; ++i) {
        if (!(std::invoke(key, rows[i - 1]) < std::invoke(key, rows[i]))) return false;
    }
    return true;
}

// The rows of `kRows`, a constexpr array in any order, by their text: the member `kKey`, or the row itself
// when it is a std::string_view.
template <const auto& kRows, auto kKey = std::identity{}>
class KindIndex {
  public:
    using Row = std::remove_cvref_t<decltype(kRows[0])>;

    static constexpr const Row* Find(std::string_view text) noexcept {
        for (size_t slot = kPlaces.Home(text);; slot = kPlaces.Next(slot)) {
            const size_t place = kPlaces.rows[slot];
            if (place == 0) return nullptr;
            const Row& row = kRows[place - 1];
            if (std::invoke(kKey, row) == text) return &row;
        }
    }
    static constexpr bool Contains(std::string_view text) noexcept { return Find(text) != nullptr; }

  private:
    static constexpr auto kPlaces = kind_table::Place<std::size(kRows)>(std::data(kRows), kKey);
    static_assert(kPlaces.distinct, "a name occurs twice");
};

// The rows of `kRows`, a constexpr array sorted by a number: the member `kKey`, or the row itself.
template <const auto& kRows, auto kKey = std::identity{}>
class NumberIndex {
  public:
    using Row = std::remove_cvref_t<decltype(kRows[0])>;

    static constexpr const Row* Find(int number) noexcept {
        const Row* row = std::begin(kRows);
        // Halving without a branch that could be guessed wrong.
        for (size_t left = std::size(kRows); left > 1;) {
            const size_t half = left / 2;
            row = std::invoke(kKey, row[half]) <= number ? row + half : row;
            left -= half;
        }
        return std::invoke(kKey, *row) == number ? row : nullptr;
    }
    static constexpr bool Contains(int number) noexcept { return Find(number) != nullptr; }

  private:
    static_assert(IsSortedUnique(kRows, kKey), "the numbers must ascend");
};

}  // namespace luadui
