// Threads that hold copies of the same storage. The thread sanitizer looks on.
#include <gtest/gtest.h>

#include <string>
#include <thread>
#include <vector>

#include "base/base_object.h"
#include "base/counters.h"
#include "base/data_set.h"
#include "base/data_table.h"
#include "base/json_object.h"
#include "base/ui_data.h"

namespace luadui {
namespace {

template <class Body>
void InThreads(int count, Body body) {
    std::vector<std::thread> threads;
    for (int i = 0; i < count; ++i) threads.emplace_back([&body, i] { body(i); });
    for (auto& thread : threads) thread.join();
}

CUIData Sample() {
    CUIData inner;
    inner.SetData("n", 1);
    CDataSet set;
    set.Insert("x");
    CJsonObject json;
    json.Append("array", 1);
    CUIData record("sample");
    record.SetData("number", 1);
    record.SetData("text", "short");
    record.SetData("long", std::string(1000, 'x'));
    record.SetData("inner", inner);
    record.SetData("set", set);
    record.SetData("json", json);
    for (int i = 0; i < 50; ++i) record.SetData("key" + std::to_string(i), i);
    return record;
}

TEST(RecordThreadTest, CopiesOfOneBodyAreIndependent) {
    const CUIData sample = Sample();
    InThreads(4, [&](int thread) {
        CUIData mine = sample;  // one const handle, read by all
        for (int i = 0; i < 3000; ++i) {
            CUIData copy = i % 2 ? mine : sample;
            copy.SetData("number", thread);
            CUIData inner;
            ASSERT_TRUE(copy.GetDataShared("inner", inner));
            inner.SetData("n", i);
            CDataSet set;
            ASSERT_TRUE(copy.GetData("set", set));
            set.Insert(std::to_string(i));
            copy.SetData("set", set);
            copy.Remove("key7");
            ASSERT_EQ(sample.GetDataLong("number"), 1);
            ASSERT_EQ(sample.GetDataText("long").size(), 1000u);
            ASSERT_EQ(copy.GetDataLong("number"), thread);
            mine = i % 5 ? copy : sample;
        }
    });
    CUIData inner;
    ASSERT_TRUE(sample.GetData("inner", inner));
    EXPECT_EQ(inner.GetDataLong("n"), 1);
    EXPECT_TRUE(sample.Has("key7"));
}

// A record goes from thread to thread and is written by whoever has the last reference.
TEST(RecordThreadTest, TheLastOwnerMayWriteInPlace) {
    for (int round = 0; round < 500; ++round) {
        CUIData record = Sample();
        std::thread other([copy = record]() mutable { copy.SetData("number", 2); });
        record.SetData("number", 3);
        EXPECT_EQ(record.GetDataLong("number"), 3);
        other.join();
    }
}

// What a host publishes, unchanged, while the library takes it over and publishes it again.
TEST(RecordThreadTest, OneSharedTableIsPublishedByTwoThreads) {
    CDataTable table;
    table.AddColumn("code");
    table.AppendRow();
    CUIData host;
    ASSERT_TRUE(host.SetDataShared("Table", table));
    InThreads(2, [copy = host](int) {
        for (int i = 0; i < 2000; ++i) {
            CDataTable mine;
            CUIData record;
            ASSERT_TRUE(copy.GetDataShared("Table", mine));
            ASSERT_TRUE(record.SetDataShared("Table", mine));
            ASSERT_TRUE(record.IsShared("Table"));
            ASSERT_EQ(mine.GetRowNumber(), 1);
        }
    });
}

TEST(CountersThreadTest, NothingIsLost) {
    const uint64_t before = CCounters::Get("test_thread_shared");
    InThreads(4, [&](int thread) {
        const std::string own = "test_thread_" + std::to_string(thread);
        for (int i = 0; i < 5000; ++i) {
            CCounters::Add("test_thread_shared");
            CCounters::Add(own.c_str(), 2);
        }
        EXPECT_EQ(CCounters::Get(own) % 10000, 0u);
    });
    EXPECT_EQ(CCounters::Get("test_thread_shared"), before + 20000);
}

TEST(BaseObjectThreadTest, HandlesAreUniqueAndFoundFromEveryThread) {
    std::vector<std::vector<int32_t>> handles(4);
    const CBaseObject lasting;
    InThreads(4, [&](int thread) {
        for (int i = 0; i < 2000; ++i) {
            const CBaseObject object;
            ASSERT_EQ(CBaseObject::Find(object.GetHandle()), &object);
            ASSERT_EQ(CBaseObject::Find(lasting.GetHandle()), &lasting);
            handles[static_cast<size_t>(thread)].push_back(object.GetHandle());
        }
    });
    std::vector<int32_t> all;
    for (const auto& part : handles) all.insert(all.end(), part.begin(), part.end());
    std::sort(all.begin(), all.end());
    EXPECT_EQ(std::unique(all.begin(), all.end()), all.end());
    for (const int32_t handle : all) ASSERT_EQ(CBaseObject::Find(handle), nullptr);
}

}  // namespace
}  // namespace luadui
