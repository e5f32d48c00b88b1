#include "base/block_pool.h"

#include <cstdint>
#include <cstdlib>
#include <mutex>
#include <new>

#include "platform/module_pin.h"

namespace luadui::block_pool {
namespace {

// Under sanitizers every block comes from the allocator, which then sees what is used after it was freed.
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
constexpr bool kPools = false;
#elif defined(__has_feature)
#if __has_feature(address_sanitizer) || __has_feature(thread_sanitizer) || __has_feature(memory_sanitizer)
constexpr bool kPools = false;
#else
constexpr bool kPools = true;
#endif
#else
constexpr bool kPools = true;
#endif

constexpr uint32_t kBatch = 32;        // blocks that change threads at once
constexpr uint32_t kMaxBatches = 128;  // kept for all threads: 4 MB; more goes back to the allocator

struct Block {
    Block* next;
};

void FreeAll(Block* list) noexcept {
    while (list) {
        Block* const next = list->next;
        std::free(list);
        list = next;
    }
}

// Full batches, for whichever thread needs one.
class Depot {
  public:
    // False when there is no room.
    bool Put(Block* batch) noexcept {
        const std::lock_guard lock(m_mutex);
        if (m_count == kMaxBatches) return false;
        m_batches[m_count++] = batch;
        return true;
    }
    // A batch, or null.
    Block* Get() noexcept {
        const std::lock_guard lock(m_mutex);
        return m_count == 0 ? nullptr : m_batches[--m_count];
    }

  private:
    std::mutex m_mutex;
    uint32_t m_count = 0;
    Block* m_batches[kMaxBatches] = {};
};

Depot& TheDepot() noexcept {
    static Depot* const depot = new Depot;  // never destroyed: threads free records until the process ends
    return *depot;
}

// A thread's own blocks. Plain data, so that records freed while the thread ends still find it.
struct Magazine {
    enum State : uint8_t { kNew, kOpen, kClosed };
    Block* head;
    uint32_t count;
    State state;
};
constinit thread_local Magazine t_magazine{nullptr, 0, Magazine::kNew};

const char kInThisModule = 0;

// Gives the blocks back when the thread ends: then its destructor must still be there.
struct Closer {
    Closer() noexcept {
        static const bool pinned = PinModuleOf(&kInThisModule);
        static_cast<void>(pinned);
        t_magazine.state = Magazine::kOpen;
    }
    ~Closer() {
        FreeAll(t_magazine.head);
        t_magazine = {nullptr, 0, Magazine::kClosed};
    }
};

bool IsOpen(Magazine& magazine) noexcept {
    if (magazine.state == Magazine::kNew) {
        static thread_local const Closer closer;
        static_cast<void>(closer);
    }
    return magazine.state == Magazine::kOpen;
}

// Moves kBatch blocks to the depot, or back to the allocator when that is full.
void HandOver(Magazine& magazine) noexcept {
    Block* const batch = magazine.head;
    Block* last = batch;
    for (uint32_t i = 1; i < kBatch; ++i) last = last->next;
    magazine.head = last->next;
    magazine.count -= kBatch;
    last->next = nullptr;
    if (!TheDepot().Put(batch)) FreeAll(batch);
}

}  // namespace

void* Take() {
    if constexpr (kPools) {
        Magazine& magazine = t_magazine;
        if (!magazine.head && IsOpen(magazine)) {
            magazine.head = TheDepot().Get();
            magazine.count = magazine.head ? kBatch : 0;
        }
        if (Block* const block = magazine.head) {
            magazine.head = block->next;
            --magazine.count;
            return block;
        }
    }
    void* const block = std::malloc(kBlockSize);
    if (!block) throw std::bad_alloc();
    return block;
}

void Give(void* block) noexcept {
    Magazine& magazine = t_magazine;
    if (!kPools || !IsOpen(magazine)) return std::free(block);
    magazine.head = new (block) Block{magazine.head};
    if (++magazine.count == 2 * kBatch) HandOver(magazine);
}

}  // namespace luadui::block_pool
