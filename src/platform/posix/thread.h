// A thread as this layer knows it: number, sleeping place, message queue, end.
#pragma once

#include <memory>
#include <unordered_map>

#include "platform/posix/message_queue.h"
#include "platform/posix/waitable.h"

namespace luadui::posix {

struct Window;

// Made when a thread first uses this layer, or by CreateThread. Its end is noticed by itself: then its windows, timers
// and messages go, and it becomes signalled. The object lives as long as someone holds it.
class Thread : public Waitable, public std::enable_shared_from_this<Thread> {
  public:
    Thread();

    static Thread& Current();
    static std::shared_ptr<Thread> Find(DWORD id);  // null when there is none or it has ended
    // Makes `thread`, which no thread is yet, the calling one; and the other way round, at a thread's end.
    static void Adopt(std::shared_ptr<Thread> thread);

    DWORD Id() const { return m_id; }
    Parker& GetParker() { return m_parker; }
    MessageQueue& Queue() { return m_queue; }
    MessageQueue& OpenQueue();  // from now on messages may be put into it

    // The windows of this thread, for itself: only it makes and destroys them, so it finds them without a lock.
    std::unordered_map<HWND, Window*>& OwnWindows() { return m_ownWindows; }

    bool IsSignalled() const override { return m_ended; }
    DWORD ExitCode() const { return m_exitCode; }        // under the kernel mutex
    void SetExitCode(DWORD code) { m_nextCode = code; }  // the thread itself
    void End();                                          // the thread itself, at its end

  private:
    const DWORD m_id;
    Parker m_parker;
    MessageQueue m_queue;
    std::unordered_map<HWND, Window*> m_ownWindows;
    bool m_ended = false;
    DWORD m_exitCode = STILL_ACTIVE;
    DWORD m_nextCode = 0;
};

}  // namespace luadui::posix
