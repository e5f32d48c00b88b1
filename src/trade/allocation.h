// How a quantity is divided among accounts.
#pragma once

#include <cstdint>
#include <span>
#include <vector>

#include "trade/decimal.h"
#include "trade/stock_type.h"
#include "trade/trade.h"

namespace luadui {

// What one account may get.
struct AllocationShare {
    Decimal weight;    // its share is this part of the sum of all; not above zero: it gets nothing
    int64_t most = 0;  // what it can pay for when buying, what it can deliver when selling
};

// What orders of the allocation have in common.
struct AllocationOrder {
    StockType stockType = StockType::kUnknown;
    int direction = kTradeBuy;
    int64_t unit = 1;  // as in TRADE_INFO
};

// Divides `whole` by weight; answers the part of each account, in the order of `shares`. Each part is a quantity
// that may be declared and no more than its account's most, their sum is no more than the whole, and no account
// with a share could get more without breaking one of these.
//
// What an account cannot take goes to the others by their weights. What rounding leaves goes out in single lots,
// the largest share first (of equal ones the one given first). What is left then goes in the same order, as much as
// each can take: that are odd lots, and lots of those who could not have a least quantity before.
//
// Threads: any. Takes n log n steps for n accounts. Weights count exactly as long as 62 bits hold their sum in units
// of its smallest decimal.
std::vector<int64_t> AllocateQuantity(int64_t whole, std::span<const AllocationShare> shares,
                                      const AllocationOrder& order);

}  // namespace luadui
