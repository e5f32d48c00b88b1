#include "luadui/record_inbox.h"

#include <utility>

#include "base/counters.h"

namespace luadui {
namespace {

// Refilling is worth the lock only when the queue has drained a good part.
constexpr size_t kRefillBelow = 4096;
// In the tag of the inbox's own records: others may post records to the same window.
constexpr uint32_t kOwnRecord = 0x496E626F;

}  // namespace

CRecordInbox::Posted CRecordInbox::Post(std::unique_ptr<CQueueTaskItem> record, WPARAM wParam) {
    const std::lock_guard lock(m_mutex);
    if (m_closed) return Posted::kClosed;
    record->SetTag(kOwnRecord);
    if (m_waiting.empty() && _postLocked(wParam, record.get())) {
        static_cast<void>(record.release());
        return Posted::kPosted;
    }
    m_waiting.push_back({wParam, std::move(record)});
    m_waitingCount.store(m_waiting.size(), std::memory_order_release);
    return std::exchange(m_told, true) ? Posted::kWaiting : Posted::kTellConsumer;
}

std::unique_ptr<CQueueTaskItem> CRecordInbox::Take(LPARAM lParam) {
    std::unique_ptr<CQueueTaskItem> record(reinterpret_cast<CQueueTaskItem*>(lParam));
    if (record && record->Tag() == kOwnRecord) {
        record->SetTag(0);
        const size_t taken = m_taken.load(std::memory_order_relaxed) + 1;
        m_taken.store(taken, std::memory_order_relaxed);
        if (HasWaiting() && m_posted.load(std::memory_order_relaxed) - taken < kRefillBelow) Refill();
    }
    return record;
}

void CRecordInbox::Refill() {
    const std::lock_guard lock(m_mutex);
    while (!m_waiting.empty() && _postLocked(m_waiting.front().wParam, m_waiting.front().record.get())) {
        static_cast<void>(m_waiting.front().record.release());
        m_waiting.pop_front();
    }
    m_waitingCount.store(m_waiting.size(), std::memory_order_release);
    m_told = !m_waiting.empty();
}

bool CRecordInbox::_postLocked(WPARAM wParam, CQueueTaskItem* record) {
    const size_t posted = m_posted.load(std::memory_order_relaxed);
    m_posted.store(posted + 1,
                   std::memory_order_relaxed);  // before the post: the consumer may take it at once
    if (m_post(wParam, record)) return true;
    m_posted.store(posted, std::memory_order_relaxed);
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
