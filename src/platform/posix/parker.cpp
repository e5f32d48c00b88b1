#include "platform/posix/parker.h"

#include <linux/futex.h>
#include <sys/syscall.h>
#include <unistd.h>
#include <algorithm>
#include <ctime>

namespace luadui::posix {

namespace {

timespec ToTimespec(Deadline deadline) {
    const auto since = std::max(deadline.time_since_epoch(), Clock::duration::zero());
    const auto seconds = std::chrono::duration_cast<std::chrono::seconds>(since);
    const auto rest = std::chrono::duration_cast<std::chrono::nanoseconds>(since - seconds);
    return {static_cast<time_t>(seconds.count()), static_cast<long>(rest.count())};
}

}  // namespace

Deadline DeadlineAfter(DWORD milliseconds) {
    if (milliseconds == INFINITE) return kNever;
    return Clock::now() + std::chrono::milliseconds(milliseconds);
}

void Parker::Unpark() noexcept {
    if (m_state.exchange(kToken, std::memory_order_release) == kParked) {
        syscall(SYS_futex, &m_state, FUTEX_WAKE_PRIVATE, 1, nullptr, nullptr, 0);
    }
}

void Parker::Park(Deadline deadline) noexcept {
    uint32_t empty = kEmpty;
    if (m_state.compare_exchange_strong(empty, kParked, std::memory_order_acquire)) {
        const timespec time = ToTimespec(deadline);
        // The time is absolute, on the clock that Deadline counts.
        syscall(SYS_futex, &m_state, FUTEX_WAIT_BITSET_PRIVATE, kParked, deadline == kNever ? nullptr : &time,
                nullptr, FUTEX_BITSET_MATCH_ANY);
    }
    m_state.exchange(kEmpty, std::memory_order_acquire);
}

}  // namespace luadui::posix
