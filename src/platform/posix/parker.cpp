#include "platform/posix/parker.h"

#include <linux/futex.h>
#include <sys/syscall.h>
#include <unistd.h>
#include <algorithm>
#include <ctime>

namespace luadui::posix {

namespace {

constexpr int kLooks = 400;  // some microseconds
constexpr auto kShortSleep = std::chrono::microseconds(50);

// Tells the processor that this is a waiting loop.
inline void Pause() {
#if defined(__x86_64__) || defined(__i386__)
    __builtin_ia32_pause();
#endif
}

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

// True when a token came while looking.
bool Parker::_awaitToken() noexcept {
    for (int look = 0; look < m_looks; ++look) {
        if (m_state.load(std::memory_order_relaxed) == kToken) return true;
        Pause();
    }
    return false;
}

void Parker::Park(Deadline deadline) noexcept {
    uint32_t empty = kEmpty;
    if (!_awaitToken() && m_state.compare_exchange_strong(empty, kParked, std::memory_order_acquire)) {
        const auto begin = Clock::now();
        const timespec time = ToTimespec(deadline);
        // The time is absolute, on the clock that Deadline counts.
        syscall(SYS_futex, &m_state, FUTEX_WAIT_BITSET_PRIVATE, kParked, deadline == kNever ? nullptr : &time,
                nullptr, FUTEX_BITSET_MATCH_ANY);
        m_looks = Clock::now() - begin < kShortSleep ? kLooks : 0;
    }
    m_state.exchange(kEmpty, std::memory_order_acquire);
}

}  // namespace luadui::posix
