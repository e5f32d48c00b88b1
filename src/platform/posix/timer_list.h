// The timers of one thread.
#pragma once

#include <cstddef>
#include <optional>
#include <vector>

#include "platform/posix/parker.h"
#include "platform/posix/win32_windows.h"

namespace luadui::posix {

// Which messages a caller of GetMessageW or PeekMessageW wants.
struct MessageFilter {
    HWND window = nullptr;
    UINT first = 0, last = 0;

    bool IsValid() const;  // the window, if any, exists
    bool Takes(HWND target, UINT message) const;
};

// Only its own thread touches it, so there is no lock. A timer that is due yields one message, however long nobody
// asked, and keeps its beat: the next one is due on the next multiple of the period.
class TimerList {
  public:
    // Starts a timer, or starts it anew. `window` null: an unknown `id` is replaced by a new one. Returns the id.
    UINT_PTR Set(HWND window, UINT_PTR id, UINT milliseconds, TIMERPROC procedure);
    bool Kill(HWND window, UINT_PTR id);
    void Forget(HWND window);
    void Clear() { m_timers.clear(); }
    // The timer still runs, with this procedure.
    bool Has(HWND window, UINT_PTR id, TIMERPROC procedure) const;

    // When the next timer that the filter takes is due; kNever when there is none.
    Deadline NextDue(const MessageFilter& filter) const;
    // The message of the timer that is due longest. `remove`: and set it to its next time.
    std::optional<MSG> TakeDue(const MessageFilter& filter, bool remove);

  private:
    struct Timer {
        HWND window;
        UINT_PTR id;
        Clock::duration period;
        TIMERPROC procedure;
        Deadline due;
    };
    std::vector<Timer>::iterator _find(HWND window, UINT_PTR id);
    size_t _earliest(const MessageFilter& filter) const;  // its index; m_timers.size() when there is none

    std::vector<Timer> m_timers;
    UINT_PTR m_lastThreadTimer = 0x7FFF;  // above what windows use, so that a mix-up shows
};

}  // namespace luadui::posix
