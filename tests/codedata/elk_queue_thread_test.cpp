#include <gtest/gtest.h>
#include <atomic>
#include <map>
#include <thread>
#include <vector>

#include "base/counters.h"
#include "base/data_table.h"
#include "codedata/elk_item.h"
#include "codedata/elk_queue.h"

namespace luadui {
namespace {

// Refuses every third batch, and takes rows in the order in which each thread queued them.
class OrderedSink : public ElkSink {
  public:
    bool ShipLogs(const CUIData& batch) override {
        if (++m_calls % 3 == 0) return false;
        CDataTable table;
        EXPECT_TRUE(batch.GetData("Table", table));
        for (int row = 0; row < table.GetRowNumber(); ++row) {
            int& last = m_last.try_emplace(table.GetItemText(row, "Module"), -1).first->second;
            const int number = std::stoi(std::string(table.GetItemText(row, "TraceID")));
            EXPECT_GT(number, last);
            EXPECT_EQ(table.GetItemText(row, "Fields"), "{\"n\":\"" + std::to_string(number) + "\"}");
            last = number;
            ++rows;
        }
        return true;
    }

    uint64_t rows = 0;

  private:
    int m_calls = 0;
    std::map<std::string, int> m_last;
};

TEST(ElkQueueThreads, EveryItemIsShippedOrCounted) {
    constexpr int kThreads = 2, kItems = 4000;
    ElkQueue queue({500, 1u << 20});
    const uint64_t dropped = CCounters::Get("elk_dropped");
    std::atomic<int> running{kThreads};
    std::vector<std::thread> threads;
    for (int thread = 0; thread < kThreads; ++thread) {
        threads.emplace_back([&, module = std::to_string(thread)] {
            for (int i = 0; i < kItems; ++i) {
                const std::string number = std::to_string(i);
                CQueueLogElkItem item(number, "", module, "", "end", {{"n", number}});
                queue.Push(item);
                item.SetField("n", "changed afterwards");
            }
            --running;
        });
    }
    OrderedSink sink;
    while (running || queue.Items() > 0) queue.Ship(sink);
    for (std::thread& thread : threads) thread.join();
    while (queue.Items() > 0) queue.Ship(sink);
    EXPECT_EQ(sink.rows + CCounters::Get("elk_dropped") - dropped, uint64_t{kThreads} * kItems);
    EXPECT_GE(sink.rows, 500u);
    EXPECT_EQ(queue.Bytes(), 0u);
}

}  // namespace
}  // namespace luadui
