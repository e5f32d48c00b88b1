// What the program takes from the allocator. Counted where every allocation ends up: new, containers and the pools of
// the records alike.
#pragma once

#include <cstdint>

namespace luadui::bench {

struct Allocations {
    uint64_t count = 0;
    uint64_t bytes = 0;
};

// Of the calling thread, so far.
Allocations AllocationsSoFar();

// What a call of `body` allocates once it has run often enough for pools and containers to have their size: the mean of
// `calls` calls, so that what a container takes for many at once shows, too.
struct AllocationsPerCall {
    double count;
    double bytes;
};
template <class Body>
AllocationsPerCall CountAllocations(Body&& body, int calls = 1000) {
    for (int i = 0; i < calls; ++i) body();
    const Allocations before = AllocationsSoFar();
    for (int i = 0; i < calls; ++i) body();
    const Allocations after = AllocationsSoFar();
    return {static_cast<double>(after.count - before.count) / calls,
            static_cast<double>(after.bytes - before.bytes) / calls};
}

}  // namespace luadui::bench
