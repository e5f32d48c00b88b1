// The one place where a thread sleeps.
#pragma once

#include <atomic>
#include <chrono>
#include <cstdint>

#include "platform/posix/win32_types.h"

namespace luadui::posix {

using Clock = std::chrono::steady_clock;
using Deadline = Clock::time_point;
inline constexpr Deadline kNever = Deadline::max();

// The time `milliseconds` from now; never for INFINITE.
Deadline DeadlineAfter(DWORD milliseconds);

// A token that others put down and the owner picks up. Whoever gives a thread
// something to look at does so first and then unparks it; the thread looks
// first and then parks: so no wake-up is lost, and one that comes early costs
// another look. A thread that is awake is unparked without a system call.
//
// In a dense stream of messages each would cost a sleep and a wake-up, more
// than the work itself. So a thread looks for its token a little longer before
// it sleeps, as long as that pays; now and then it tries whether it would.
// Where both threads share a processor it never does.
class Parker {
  public:
    void Unpark() noexcept;  // any thread
    // Returns once there is a token, which it takes, or when the time has come,
    // or for no reason.
    void Park(Deadline deadline) noexcept;  // the owner

  private:
    enum State : uint32_t { kEmpty, kToken, kParked };
    bool _lookForToken() noexcept;

    std::atomic<uint32_t> m_state{kEmpty};
    bool m_lookingPays = false;  // these two are the owner's
    unsigned m_parks = 0;
};

}  // namespace luadui::posix
