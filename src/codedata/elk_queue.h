// The queue that carries log records from the threads where they arise to the UI thread, which ships them.
#pragma once

#include <cstddef>
#include <cstdint>
#include <list>
#include <mutex>
#include <string>
#include <vector>

#include "base/text_log.h"
#include "base/ui_data.h"

namespace luadui {

class CQueueLogElkItem;

// Takes batches to the server of logs.
class ElkSink {
  public:
    // Ships a batch: a record with the table "Table", one row an item in the order of arrival, whose columns
    // are "Time" (local, "2026-11-21 09:03:47.123", when the item was queued), "ItemType" (decimal),
    // "TraceID", "LogSource", "Module", "ClientUser", "Stage" and "Fields" (a JSON object). False: not now;
    // the same items come again with a later call. Runs on the UI thread; it may queue items, and may detach
    // itself.
    virtual bool ShipLogs(const CUIData& batch) = 0;

  protected:
    ~ElkSink() = default;
};

// A bounded queue. When it is full the oldest items go, since the latest ones tell what is wrong now; each
// counts as "elk_dropped". An item above kMaxItemBytes is not taken at all and counts as
// "elk_item_too_large".
//
// Threads: Push and the sizes from any; Ship on one thread.
class ElkQueue {
  public:
    struct Limits {
        size_t items = 10000;
        size_t bytes = 8u << 20;  // of texts and of their place in the queue
    };
    static constexpr size_t kMaxItemBytes = 64u << 10;
    static constexpr size_t kBatchItems = 200;

    ElkQueue() : ElkQueue(Limits(), CTextLog::SystemTime) {}
    explicit ElkQueue(Limits limits, CTextLog::Clock clock = CTextLog::SystemTime);
    ElkQueue(const ElkQueue&) = delete;
    ElkQueue& operator=(const ElkQueue&) = delete;

    // Queues what `item` holds now. Never throws: without memory the item is lost and counts as
    // "elk_dropped".
    void Push(const CQueueLogElkItem& item) noexcept;
    // Hands up to kBatchItems of the oldest items to `sink` in one batch and answers how many it took. What
    // it refuses goes back to its place, within the limits, and counts as "elk_batch_refused"; an exception
    // of the sink is such a refusal. Without effect, 0, inside a call of itself.
    size_t Ship(ElkSink& sink);

    size_t Items() const;
    size_t Bytes() const;  // as the limit counts them

  private:
    // One text per column, then nothing else to do for the thread that ships.
    struct Line {
        std::vector<std::string> cells;
        size_t bytes;
    };
    using Lines = std::list<Line>;  // takes no memory while it is empty

    Line _line(const CQueueLogElkItem& item) const;
    Lines _take();
    void _giveBack(Lines lines);
    static CUIData _batch(const Lines& lines);
    void _dropOldest(Lines& dropped);

    const Limits m_limits;
    const CTextLog::Clock m_clock;
    bool m_isShipping = false;  // of the shipping thread

    mutable std::mutex m_mutex;  // guards what follows
    Lines m_lines;
    size_t m_bytes = 0;
};

}  // namespace luadui
