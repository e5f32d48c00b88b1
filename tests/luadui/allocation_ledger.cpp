#include "tests/luadui/allocation_ledger.h"

#include <atomic>
#include <cstdlib>
#include <new>

namespace {
std::atomic<int64_t> g_live{0};

void* TryAllocate(size_t size) noexcept {
    void* const block = std::malloc(size ? size : 1);
    if (block) g_live.fetch_add(1, std::memory_order_relaxed);
    return block;
}

void* Allocate(size_t size) {
    void* const block = TryAllocate(size);
    if (!block) throw std::bad_alloc();
    return block;
}

void Free(void* block) noexcept {
    if (!block) return;
    g_live.fetch_sub(1, std::memory_order_relaxed);
    std::free(block);
}
}  // namespace

int64_t luadui::LiveAllocations() { return g_live.load(); }

void* operator new(size_t size) { return Allocate(size); }
void* operator new[](size_t size) { return Allocate(size); }
void* operator new(size_t size, const std::nothrow_t&) noexcept { return TryAllocate(size); }
void* operator new[](size_t size, const std::nothrow_t&) noexcept { return TryAllocate(size); }
void operator delete(void* block) noexcept { Free(block); }
void operator delete[](void* block) noexcept { Free(block); }
void operator delete(void* block, size_t) noexcept { Free(block); }
void operator delete[](void* block, size_t) noexcept { Free(block); }
