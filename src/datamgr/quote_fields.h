// The quote fields that the quote server is asked for.
#pragma once

namespace luadui {

// Field numbers, in the order in which the server returns them.
inline constexpr char kQuoteDataItems[] =
    "1,3,4,5,6,7,8,9,10,13,14,19,1510,31,30,33,32,35,34,49,80,127,153,152,157,156,55,154,155,150,151,193,28,"
    "29,26,27,24,25,69,"
    "70,199112,93";

}  // namespace luadui
