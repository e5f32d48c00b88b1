#include "platform/posix/message_queue.h"

#include <algorithm>

#include "platform/posix/thread.h"
#include "platform/posix/window.h"

namespace luadui::posix {

SentMessage::SentMessage(HWND window, UINT message, WPARAM wParam, LPARAM lParam,
                         std::shared_ptr<Thread> sender)
    : m_window(window), m_message(message), m_wParam(wParam), m_lParam(lParam), m_sender(std::move(sender)) {}

LRESULT SentMessage::Serve() const {
    if (m_message == kDestroyRequest) return DestroyWindow(m_window);
    const auto* window = FindOwn(m_window);
    return window ? window->procedure.load()(m_window, m_message, m_wParam, m_lParam) : 0;
}

void SentMessage::Answer(LRESULT result) {
    if (m_answered.load(std::memory_order_relaxed)) return;
    m_result = result;
    m_answered.store(true, std::memory_order_release);
    if (m_sender) m_sender->GetParker().Unpark();
}

bool MessageQueue::_isFull() const {
    // How many the owner has left changes with every message; only when it matters is it looked at.
    return m_arrived.size() + m_mostTaken >= kQuota &&
           m_arrived.size() + m_takenLeft.load(std::memory_order_relaxed) >= kQuota;
}

DWORD MessageQueue::Post(HWND window, UINT message, WPARAM wParam, LPARAM lParam) {
    const MSG posted{window, message, wParam, lParam, GetTickCount(), {}};
    {
        const std::lock_guard lock(m_mutex);
        if (!m_open) return ERROR_INVALID_THREAD_ID;
        if (m_arrived.size() + m_takenLeft.load(std::memory_order_relaxed) >= kQuota)
            return ERROR_NOT_ENOUGH_QUOTA;
        m_arrived.push_back(posted);
        if (m_arrived.size() > 1) return ERROR_SUCCESS;  // whoever posted the first one wakes the owner
        m_hasArrived.store(true, std::memory_order_release);
    }
    m_parker.Unpark();
    return ERROR_SUCCESS;
}

bool MessageQueue::Send(std::shared_ptr<SentMessage> message) {
    {
        const std::lock_guard lock(m_mutex);
        if (!m_open) return false;
        m_sent.push_back(std::move(message));
        m_hasSent.store(true, std::memory_order_release);
    }
    m_parker.Unpark();
    return true;
}

void MessageQueue::Open() {
    if (m_opened) return;
    m_opened = true;
    const std::lock_guard lock(m_mutex);
    m_open = true;
}

void MessageQueue::Close() {
    SentList unserved;
    {
        const std::lock_guard lock(m_mutex);
        m_open = false;
        m_arrived = {};
        unserved.swap(m_sent);
    }
    m_taken = {};
    m_timers.Clear();
    for (const auto& sent : unserved) sent->Answer(0);
}

std::shared_ptr<SentMessage> MessageQueue::_nextSent() {
    if (!m_hasSent.load(std::memory_order_acquire)) return nullptr;
    const std::lock_guard lock(m_mutex);
    if (m_sent.empty()) return nullptr;
    auto first = std::move(m_sent.front());
    m_sent.erase(m_sent.begin());
    m_hasSent.store(!m_sent.empty(), std::memory_order_relaxed);
    return first;
}

void MessageQueue::ServeSent() {
    // What is being served ends with an answer, however the window procedure is left.
    struct Service {
        std::vector<SentMessage*>& serving;
        SentMessage& message;
        Service(std::vector<SentMessage*>& list, SentMessage& sent) : serving(list), message(sent) {
            serving.push_back(&message);
        }
        ~Service() {
            serving.pop_back();
            message.Answer(0);
        }
    };
    while (const auto sent = _nextSent()) {
        const Service service(m_serving, *sent);
        sent->Answer(sent->Serve());
    }
}

std::optional<MSG> MessageQueue::Get(const MessageFilter& filter, bool remove) {
    ServeSent();
    if (auto posted = _takePosted(filter, remove)) return posted;
    if (auto quit = _takeQuit(remove)) return quit;
    return m_timers.TakeDue(filter, remove);
}

std::optional<MSG> MessageQueue::_takePosted(const MessageFilter& filter, bool remove) {
    for (size_t passed = 0;; ++passed) {
        if (m_next + passed == m_taken.size()) {
            if (!m_hasArrived.load(std::memory_order_acquire)) return std::nullopt;
            _fetch();
        }
        const MSG& candidate = m_taken[m_next + passed];
        if (!filter.Takes(candidate.hwnd, candidate.message)) continue;
        return remove ? _remove(m_next + passed) : candidate;
    }
}

// Takes over what has arrived; there is something.
void MessageQueue::_fetch() {
    constexpr size_t kKeep = 1024;
    m_taken.erase(m_taken.begin(), m_taken.begin() + static_cast<ptrdiff_t>(m_next));
    m_next = 0;
    if (m_taken.empty() && m_taken.capacity() > kKeep) m_taken = {};  // a burst is over
    const std::lock_guard lock(m_mutex);
    if (m_taken.empty()) {
        m_taken.swap(m_arrived);
    } else {
        m_taken.insert(m_taken.end(), m_arrived.begin(), m_arrived.end());
        m_arrived.clear();
    }
    m_mostTaken = m_taken.size();
    m_takenLeft.store(m_taken.size(), std::memory_order_relaxed);
    m_hasArrived.store(false, std::memory_order_relaxed);
}

MSG MessageQueue::_remove(size_t at) {
    const MSG message = m_taken[at];
    const auto first = m_taken.begin() + static_cast<ptrdiff_t>(m_next);
    std::move_backward(first, m_taken.begin() + static_cast<ptrdiff_t>(at),
                       m_taken.begin() + static_cast<ptrdiff_t>(at) + 1);
    ++m_next;
    m_takenLeft.store(m_taken.size() - m_next, std::memory_order_relaxed);
    return message;
}

std::optional<MSG> MessageQueue::_takeQuit(bool remove) {
    if (!m_quitCode) return std::nullopt;
    const MSG quit{nullptr, WM_QUIT, static_cast<WPARAM>(*m_quitCode), 0, GetTickCount(), {}};
    if (remove) m_quitCode.reset();
    return quit;
}

bool MessageQueue::HasInput() const {
    return m_hasSent.load(std::memory_order_acquire) || m_hasArrived.load(std::memory_order_acquire) ||
           m_next < m_taken.size() || m_quitCode || m_timers.NextDue({}) <= Clock::now();
}

void MessageQueue::Forget(HWND window) {
    const auto isHis = [window](const MSG& message) { return message.hwnd == window; };
    m_timers.Forget(window);
    m_taken.erase(std::remove_if(m_taken.begin() + static_cast<ptrdiff_t>(m_next), m_taken.end(), isHis),
                  m_taken.end());
    SentList unserved;
    {
        const std::lock_guard lock(m_mutex);
        std::erase_if(m_arrived, isHis);
        m_takenLeft.store(m_taken.size() - m_next, std::memory_order_relaxed);
        m_hasArrived.store(!m_arrived.empty(), std::memory_order_relaxed);
        const auto split = std::stable_partition(
            m_sent.begin(), m_sent.end(), [window](const auto& sent) { return sent->Window() != window; });
        unserved.assign(std::make_move_iterator(split), std::make_move_iterator(m_sent.end()));
        m_sent.erase(split, m_sent.end());
        m_hasSent.store(!m_sent.empty(), std::memory_order_relaxed);
    }
    for (const auto& sent : unserved) sent->Answer(0);
}

}  // namespace luadui::posix
