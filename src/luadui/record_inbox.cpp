#include "luadui/record_inbox.h"

#include <utility>

#include "base/counters.h"

namespace luadui {
namespace {

// Refilling is worth the lock only when the queue has drained a good part.
constexpr size_t kRefillBelow = 4096;

}  // namespace

CRecordInbox::Posted CRecordInbox::Post(std::unique_ptr<CQueueTaskItem> record, WPARAM wParam) {
    const std::lock_guard lock(m_mutex);
    if (m_closed) return Posted::kClosed;
    if (m_waiting.empty() && _postLocked(wParam, record.get())) {
        static_cast<void>(record.release());
        return Posted::kPosted;
    }
    m_waiting.push_back({wParam, std::move(record)});
    m_waitingCount.store(m_waiting.size());
    if (m_underWay.load() != 0 || std::exchange(m_stuckTold, true)) return Posted::kWaiting;
    return Posted::kStuck;
}

std::unique_ptr<CQueueTaskItem> CRecordInbox::Take(LPARAM record) {
    size_t underWay = m_underWay.load();
    while (underWay != 0 && !m_underWay.compare_exchange_weak(underWay, underWay - 1)) {
    }
    if (underWay <= kRefillBelow && m_waitingCount.load() != 0) Refill();
    return std::unique_ptr<CQueueTaskItem>(reinterpret_cast<CQueueTaskItem*>(record));
}

void CRecordInbox::Refill() {
    const std::lock_guard lock(m_mutex);
    m_stuckTold = false;
    while (!m_waiting.empty() && _postLocked(m_waiting.front().wParam, m_waiting.front().record.get())) {
        static_cast<void>(m_waiting.front().record.release());
        m_waiting.pop_front();
    }
    m_waitingCount.store(m_waiting.size());
}

bool CRecordInbox::_postLocked(WPARAM wParam, CQueueTaskItem* record) {
    m_underWay.fetch_add(1);  // before the post: the consumer may take it at once
    if (m_post(wParam, record)) return true;
    m_underWay.fetch_sub(1);
    return false;
}

void CRecordInbox::Close() {
    std::deque<Waiting> waiting;
    {
        const std::lock_guard lock(m_mutex);
        m_closed = true;
        waiting.swap(m_waiting);
        m_waitingCount.store(0);
    }
    if (!waiting.empty()) CCounters::Add("records_dropped_at_shutdown", waiting.size());
}

}  // namespace luadui
