#include "bench/datamgr/allocations.h"

#include <cstddef>

namespace {
constinit thread_local luadui::bench::Allocations t_allocations;
}  // namespace

luadui::bench::Allocations luadui::bench::AllocationsSoFar() { return t_allocations; }

// The C library's allocator under its inner name: its public one is taken here.
extern "C" void* __libc_malloc(size_t size);  // NOLINT(bugprone-reserved-identifier)

extern "C" void* malloc(size_t size) {
    ++t_allocations.count;
    t_allocations.bytes += size;
    return __libc_malloc(size);
}
