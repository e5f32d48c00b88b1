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

// A thread's own blocks.
struct Magazine {
    Block* head = nullptr;
    uint32_t count = 0;
};

// The thread ends.
void WINAPI CloseMagazine(void* magazine) {
    FreeAll(static_cast<Magazine*>(magazine)->head);
    delete static_cast<Magazine*>(magazine);
}

// Null when there is no memory for it.
//
// Not a thread_local object: a runtime library destroys those under a lock of its own and waits there for the lock of the
// system's loader, while another thread that ends holds that one and waits for the first. Both would wait for ever, and
// with them every thread that starts.
Magazine* OwnMagazine() noexcept {
    static const DWORD slot = [] {
        PinModuleOf(reinterpret_cast<const void*>(&CloseMagazine));  // it must still be there then
        return FlsAlloc(CloseMagazine);
    }();
    if (void* const magazine = FlsGetValue(slot)) return static_cast<Magazine*>(magazine);
    auto* const magazine = new (std::nothrow) Magazine;
    if (!magazine || FlsSetValue(slot, magazine)) return magazine;
    delete magazine;
    return nullptr;
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
    Magazine* const magazine = kPools ? OwnMagazine() : nullptr;
    if (magazine && !magazine->head) {
        magazine->head = TheDepot().Get();
        magazine->count = magazine->head ? kBatch : 0;
    }
    if (magazine && magazine->head) {
        Block* const block = magazine->head;
        magazine->head = block->next;
        --magazine->count;
        return block;
    }
    void* const block = std::malloc(kBlockSize);
    if (!block) throw std::bad_alloc();
    return block;
}

void Give(void* block) noexcept {
    Magazine* const magazine = kPools ? OwnMagazine() : nullptr;
    if (!magazine) return std::free(block);
    magazine->head = new (block) Block{magazine->head};
    if (++magazine->count == 2 * kBatch) HandOver(*magazine);
}

}  // namespace luadui::block_pool
