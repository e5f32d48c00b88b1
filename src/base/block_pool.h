// Memory blocks of one size for records. A record is often made on one thread and freed on another: an allocator gives
// such blocks back to the first thread's arena one by one, under a lock that both threads fight for. Here they change
// threads in batches.
#pragma once

#include <cstddef>

namespace luadui::block_pool {

inline constexpr size_t kBlockSize = 1024;

// A block of kBlockSize bytes, aligned for every type. Throws std::bad_alloc.
void* Take();
// Takes back a block from Take(), on any thread.
void Give(void* block) noexcept;

}  // namespace luadui::block_pool
