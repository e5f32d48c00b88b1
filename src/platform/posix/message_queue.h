// The message queue of one thread.
#pragma once

#include <atomic>
#include <memory>
#include <mutex>
#include <optional>
#include <vector>

#include "platform/posix/parker.h"
#include "platform/posix/timer_list.h"
#include "platform/posix/win32_windows.h"

namespace luadui::posix {

class Thread;

// A message on its way from a thread that sent it to the thread that owns the window.
class SentMessage {
  public:
    // `sender` null: nobody waits for the answer.
    SentMessage(HWND window, UINT message, WPARAM wParam, LPARAM lParam, std::shared_ptr<Thread> sender);

    HWND Window() const { return m_window; }
    UINT Message() const { return m_message; }
    LRESULT Serve() const;  // calls the window procedure; 0 when the window is gone

    void Answer(LRESULT result);  // the receiving thread; only the first one counts
    bool IsAnswered() const { return m_answered.load(std::memory_order_acquire); }
    LRESULT Result() const { return m_result; }  // once answered

  private:
    const HWND m_window;
    const UINT m_message;
    const WPARAM m_wParam;
    const LPARAM m_lParam;
    const std::shared_ptr<Thread> m_sender;
    LRESULT m_result = 0;
    std::atomic<bool> m_answered{false};
};

// Others put messages in under a short lock; the owner takes all that have arrived in one go and then works on them
// without the lock. The owner is woken only by what arrives while nothing else had.
class MessageQueue {  // NOLINT(clang-analyzer-optin.performance.Padding): see kCacheLine
  public:
    static constexpr size_t kQuota = 10000;

    explicit MessageQueue(Parker& parker) : m_parker(parker) {}

    // --- any thread
    // ERROR_SUCCESS, or why the message is refused.
    DWORD Post(HWND window, UINT message, WPARAM wParam, LPARAM lParam);
    bool Send(std::shared_ptr<SentMessage> message);  // false: the queue is closed

    // --- the owner
    void Open();
    void Close();  // drops what waits and answers with 0 what was sent
    void Quit(int code) { m_quitCode = code; }
    TimerList& Timers() { return m_timers; }
    // Serves all sent messages that wait; then yields the first message that the filter takes, if there is one.
    std::optional<MSG> Get(const MessageFilter& filter, bool remove);
    void ServeSent();
    bool HasInput() const;
    Deadline NextTimer(const MessageFilter& filter = {}) const { return m_timers.NextDue(filter); }
    void Forget(HWND window);  // drops its messages and timers, answers 0 to its senders

    // The message being served that another thread sent, or null.
    SentMessage* Serving() const { return m_serving.empty() ? nullptr : m_serving.back(); }

  private:
    using SentList = std::vector<std::shared_ptr<SentMessage>>;

    std::optional<MSG> _takePosted(const MessageFilter& filter, bool remove);
    std::optional<MSG> _takeQuit(bool remove);
    void _fetch();
    MSG _remove(size_t at);
    std::shared_ptr<SentMessage> _nextSent();

    bool _isFull() const;

    static constexpr size_t kCacheLine =
        64;  // what others write lies apart from what the owner uses all the time

    Parker& m_parker;

    alignas(kCacheLine) std::mutex m_mutex;  // guards what follows up to m_sent
    bool m_open = false;
    std::vector<MSG> m_arrived;
    size_t m_mostTaken = 0;  // m_takenLeft is not more
    SentList m_sent;
    std::atomic<bool> m_hasArrived{false};  // looked at before the lock is taken

    alignas(kCacheLine) std::atomic<bool> m_hasSent{false};  // likewise

    // The owner's: posted messages it has taken over, the first of them at m_next.
    alignas(kCacheLine) std::vector<MSG> m_taken;
    size_t m_next = 0;
    std::atomic<size_t> m_takenLeft{0};  // how many, for the quota
    std::optional<int> m_quitCode;
    TimerList m_timers;
    std::vector<SentMessage*> m_serving;
    bool m_opened = false;
};

}  // namespace luadui::posix
