#include "platform/posix/timer_list.h"

#include <algorithm>

#include "platform/posix/win32_threads.h"

namespace luadui::posix {

namespace {

bool IsNone(HWND window) { return window == reinterpret_cast<HWND>(static_cast<INT_PTR>(-1)); }

}  // namespace

bool MessageFilter::IsValid() const { return !window || IsNone(window) || IsWindow(window); }

bool MessageFilter::Takes(HWND target, UINT message) const {
    if ((first != 0 || last != 0) && (message < first || message > last)) return false;
    if (!window) return true;
    if (IsNone(window)) return !target;
    return target == window || (target && IsChild(window, target));
}

std::vector<TimerList::Timer>::iterator TimerList::_find(HWND window, UINT_PTR id) {
    return std::find_if(m_timers.begin(), m_timers.end(),
                        [&](const Timer& timer) { return timer.window == window && timer.id == id; });
}

UINT_PTR TimerList::Set(HWND window, UINT_PTR id, UINT milliseconds, TIMERPROC procedure) {
    const std::chrono::milliseconds period(std::clamp(milliseconds, USER_TIMER_MINIMUM, USER_TIMER_MAXIMUM));
    auto timer = _find(window, id);
    if (timer == m_timers.end()) {
        if (!window) id = ++m_lastThreadTimer;
        timer = m_timers.insert(timer, Timer{window, id, {}, nullptr, {}});
    }
    timer->period = period;
    timer->procedure = procedure;
    timer->due = Clock::now() + period;
    return id;
}

bool TimerList::Kill(HWND window, UINT_PTR id) {
    const auto timer = _find(window, id);
    if (timer == m_timers.end()) return false;
    m_timers.erase(timer);
    return true;
}

void TimerList::Forget(HWND window) {
    std::erase_if(m_timers, [&](const Timer& timer) { return timer.window == window; });
}

bool TimerList::Has(HWND window, UINT_PTR id, TIMERPROC procedure) const {
    return std::any_of(m_timers.begin(), m_timers.end(), [&](const Timer& timer) {
        return timer.window == window && timer.id == id && timer.procedure == procedure;
    });
}

size_t TimerList::_earliest(const MessageFilter& filter) const {
    size_t earliest = m_timers.size();
    for (size_t i = 0; i < m_timers.size(); ++i) {
        if (earliest < m_timers.size() && m_timers[earliest].due <= m_timers[i].due) continue;
        if (filter.Takes(m_timers[i].window, WM_TIMER)) earliest = i;
    }
    return earliest;
}

Deadline TimerList::NextDue(const MessageFilter& filter) const {
    const size_t at = _earliest(filter);
    return at < m_timers.size() ? m_timers[at].due : kNever;
}

std::optional<MSG> TimerList::TakeDue(const MessageFilter& filter, bool remove) {
    const size_t at = _earliest(filter);
    if (at == m_timers.size()) return std::nullopt;
    Timer& timer = m_timers[at];
    const auto now = Clock::now();
    if (timer.due > now) return std::nullopt;
    if (remove) timer.due += ((now - timer.due) / timer.period + 1) * timer.period;
    return MSG{timer.window,   WM_TIMER, timer.id, reinterpret_cast<LPARAM>(timer.procedure),
               GetTickCount(), {}};
}

}  // namespace luadui::posix
