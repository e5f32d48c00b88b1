// Sorting the positions of a text by what begins there.
#pragma once

#include <cstdint>
#include <string_view>
#include <vector>

namespace luadui {

// All positions of `text` (below 2^32 of them), sorted by the text from there on; what comes after the first mark
// (SubstringIndex::IsMark) does not count, so positions that are equal up to there stand in any order. The text must
// end with a mark. The time grows with the text and the length of what repeats in it, never with the square.
std::vector<uint32_t> SortSuffixes(std::u16string_view text);

}  // namespace luadui
