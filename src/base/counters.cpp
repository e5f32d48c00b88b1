#include "base/counters.h"

#include <algorithm>
#include <array>
#include <atomic>
#include <cstdlib>
#include <cstring>

namespace luadui {
namespace {

// Names are copied: the module that a literal lies in may be unloaded. Slots are filled once and never
// emptied.
struct Slot {
    std::atomic<const char*> name{nullptr};
    std::atomic<uint64_t> value{0};
};

constexpr size_t kSlots = 1024;
constexpr const char* kOverflow = "counters_overflow";

constinit std::array<Slot, kSlots> g_slots;
constinit std::atomic<uint64_t> g_overflow{0};

size_t FirstSlot(std::string_view name) noexcept {
    uint32_t hash = 2166136261u;
    for (const char c : name) hash = (hash ^ static_cast<unsigned char>(c)) * 16777619u;
    return hash % kSlots;
}

// The slot of `name`; null when there is none and none could be taken.
Slot* FindSlot(std::string_view name, const char* toInsert) noexcept {
    char* copy = nullptr;
    Slot* found = nullptr;
    size_t index = FirstSlot(name);
    for (size_t probes = 0; probes < kSlots && !found; ++probes, index = (index + 1) % kSlots) {
        Slot& slot = g_slots[index];
        const char* taken = slot.name.load(std::memory_order_acquire);
        if (!taken) {
            if (!toInsert) break;
            if (!copy && !(copy = strdup(toInsert))) break;
            if (slot.name.compare_exchange_strong(taken, copy, std::memory_order_acq_rel)) {
                copy = nullptr;
                return &slot;
            }
        }
        if (taken == name) found = &slot;
    }
    std::free(copy);  // another thread was faster
    return found;
}

}  // namespace

void CCounters::Add(const char* name, uint64_t n) noexcept {
    Slot* slot = name ? FindSlot(name, name) : nullptr;
    (slot ? slot->value : g_overflow).fetch_add(n, std::memory_order_relaxed);
}

uint64_t CCounters::Get(std::string_view name) noexcept {
    if (name == kOverflow) return g_overflow.load(std::memory_order_relaxed);
    const Slot* slot = FindSlot(name, nullptr);
    return slot ? slot->value.load(std::memory_order_relaxed) : 0;
}

std::vector<std::pair<std::string, uint64_t>> CCounters::All() {
    std::vector<std::pair<std::string, uint64_t>> all;
    for (const Slot& slot : g_slots) {
        const char* name = slot.name.load(std::memory_order_acquire);
        if (name) all.emplace_back(name, slot.value.load(std::memory_order_relaxed));
    }
    if (const uint64_t lost = Get(kOverflow)) all.emplace_back(kOverflow, lost);
    std::sort(all.begin(), all.end());
    return all;
}

}  // namespace luadui
