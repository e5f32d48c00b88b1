#include "codedata/range_minimum.h"

namespace luadui {

RangeMinimum::RangeMinimum(std::span<const uint32_t> numbers) {
    const size_t blocks = numbers.size() / kBlock;
    if (blocks == 0) return;
    std::vector<uint32_t>& singles = m_rows.emplace_back(blocks);
    for (size_t b = 0; b < blocks; ++b) singles[b] = _walk(numbers, b * kBlock, (b + 1) * kBlock);
    for (size_t half = 1; 2 * half <= blocks; half *= 2) {
        std::vector<uint32_t> row(blocks - 2 * half + 1);
        const std::vector<uint32_t>& halves = m_rows.back();
        for (size_t b = 0; b < row.size(); ++b) row[b] = std::min(halves[b], halves[b + half]);
        m_rows.push_back(std::move(row));
    }
}

size_t RangeMinimum::Bytes() const noexcept {
    size_t bytes = 0;
    for (const auto& row : m_rows) bytes += row.capacity() * sizeof(uint32_t) + sizeof row;
    return bytes;
}

}  // namespace luadui
