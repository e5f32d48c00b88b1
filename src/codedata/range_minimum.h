// The least of a range of numbers, in the same time for every range.
#pragma once

#include <algorithm>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

namespace luadui {

// Keeps the minima of runs of 1, 2, 4, ... blocks; a range is two such runs, which may overlap, and what sticks out
// of its blocks at both ends. The numbers stay with the caller, who gives the same ones each time. Takes
// log2(n / kBlock) / kBlock words a number.
//
// Threads: any may ask.
class RangeMinimum {
  public:
    RangeMinimum() = default;
    explicit RangeMinimum(std::span<const uint32_t> numbers);

    // The least of numbers[first, last); UINT32_MAX when that is empty.
    uint32_t Of(std::span<const uint32_t> numbers, size_t first, size_t last) const noexcept {
        const size_t firstBlock = (first + kBlock - 1) / kBlock, lastBlock = last / kBlock;
        if (firstBlock >= lastBlock) return _walk(numbers, first, last);
        const auto row = static_cast<size_t>(std::bit_width(lastBlock - firstBlock) - 1);
        const std::vector<uint32_t>& minima = m_rows[row];
        return std::min({_walk(numbers, first, firstBlock * kBlock), minima[firstBlock],
                         minima[lastBlock - (size_t{1} << row)], _walk(numbers, lastBlock * kBlock, last)});
    }

    size_t Bytes() const noexcept;  // of memory

  private:
    static constexpr size_t kBlock = 32;

    static uint32_t _walk(std::span<const uint32_t> numbers, size_t first, size_t last) noexcept {
        uint32_t least = UINT32_MAX;
        for (; first < last; ++first) least = std::min(least, numbers[first]);
        return least;
    }

    std::vector<std::vector<uint32_t>> m_rows;  // m_rows[r][b]: of the 2^r blocks from b on
};

}  // namespace luadui
