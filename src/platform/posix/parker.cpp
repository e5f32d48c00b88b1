#include "platform/posix/parker.h"

#include <linux/futex.h>
#include <sys/syscall.h>
#include <unistd.h>
#include <algorithm>
#include <ctime>

namespace luadui::posix {

namespace {

constexpr int kLooks = 100;           // one to five microseconds
constexpr unsigned kParksToTry = 64;  // looks in vain cost this part of their time

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

// True when there is a token. Only one that came while looking shows that
// looking pays.
bool Parker::_lookForToken() noexcept {
    const auto hasToken = [this] { return m_state.load(std::memory_order_relaxed) == kToken; };
    if (hasToken()) return true;
    if (!m_lookingPays && ++m_parks % kParksToTry != 0) return false;
    m_lookingPays = false;
    for (int look = 0; look < kLooks && !m_lookingPays; ++look) {
        Pause();
        m_lookingPays = hasToken();
    }
    return m_lookingPays;
}

void Parker::Park(Deadline deadline) noexcept {
    uint32_t empty = kEmpty;
    if (!_lookForToken() && m_state.compare_exchange_strong(empty, kParked, std::memory_order_acquire)) {
        const timespec time = ToTimespec(deadline);
        // The time is absolute, on the clock that Deadline counts.
        syscall(SYS_futex, &m_state, FUTEX_WAIT_BITSET_PRIVATE, kParked, deadline == kNever ? nullptr : &time,
                nullptr, FUTEX_BITSET_MATCH_ANY);
    }
    m_state.exchange(kEmpty, std::memory_order_acquire);
}

}  // namespace luadui::posix
