// The way of heap records to one consuming thread: a message each, in order, none lost because the queue is
// full.
#pragma once

#include <atomic>
#include <deque>
#include <functional>
#include <memory>
#include <mutex>

#include "messaging/queue_data.h"
#include "platform/win32.h"

namespace luadui {

// A message queue takes some thousand messages and refuses more. What it refuses waits here in order, and so
// does everything later, until the consumer has worked off enough.
//
// Threads: Post from any; the rest on the consumer's thread.
class CRecordInbox {
  public:
    // Posts one message that carries `record`; false when the queue refuses. Called under the inbox's lock,
    // so it must only post.
    using PostFunction = std::function<bool(WPARAM wParam, CQueueTaskItem* record)>;

    explicit CRecordInbox(PostFunction post) : m_post(std::move(post)) {}

    enum class Posted {
        kPosted,        // on its way
        kWaiting,       // behind the queue's end
        kTellConsumer,  // waiting, and the first to do so: the consumer must hear that it has to Refill()
        kClosed,        // the consumer has gone; the record was freed
    };
    Posted Post(std::unique_ptr<CQueueTaskItem> record, WPARAM wParam);

    // Takes over the record of a message that arrived, also one that somebody else posted, and moves up
    // waiting ones when there is room.
    std::unique_ptr<CQueueTaskItem> Take(LPARAM lParam);
    // Moves up waiting records as far as there is room.
    void Refill();
    // While this is true the consumer calls Refill() from time to time: the messages that fill the queue may not
    // be this inbox's, so that no Take() comes to move up what waits.
    bool HasWaiting() const { return m_waitingCount.load(std::memory_order_acquire) != 0; }
    // From now on every record is refused; frees those that wait. Records under way are the consumer's to
    // take.
    void Close();

  private:
    static constexpr size_t kCacheLine = 64;
    struct Waiting {
        WPARAM wParam;
        std::unique_ptr<CQueueTaskItem> record;
    };
    bool _postLocked(WPARAM wParam, CQueueTaskItem* record);

    const PostFunction m_post;
    std::mutex m_mutex;
    bool m_closed = false;          // guarded by m_mutex
    bool m_told = false;            // guarded by m_mutex; the consumer knows that records wait
    std::deque<Waiting> m_waiting;  // guarded by m_mutex
    // What one side writes for every record lies apart from what the other side does, or each record would cost both
    // a trip of the cache line.
    alignas(kCacheLine) std::atomic<size_t> m_posted{0};  // written under m_mutex
    alignas(kCacheLine) std::atomic<size_t> m_taken{0};   // written by the consumer
    alignas(kCacheLine) std::atomic<size_t> m_waitingCount{0};
};

}  // namespace luadui
