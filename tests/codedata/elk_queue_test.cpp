#include "codedata/elk_queue.h"

#include <gmock/gmock.h>
#include <functional>
#include <stdexcept>

#include "base/counters.h"
#include "base/data_table.h"
#include "base/secret_fields.h"
#include "base/text.h"
#include "codedata/data_manager.h"
#include "codedata/elk_item.h"

namespace luadui {
namespace {

using ::testing::ElementsAre;

// Notes the trace ids of what it takes.
class FakeSink : public ElkSink {
  public:
    bool ShipLogs(const CUIData& batch) override {
        if (onShip) onShip();
        if (!accepts) return false;
        CDataTable table;
        EXPECT_TRUE(batch.GetData("Table", table));
        for (int row = 0; row < table.GetRowNumber(); ++row) {
            ids.push_back(table.GetItemText(row, "TraceID"));
        }
        last = table;
        return true;
    }

    bool accepts = true;
    std::function<void()> onShip;
    std::vector<std::string> ids;
    CDataTable last;
};

CQueueLogElkItem Item(const std::string& id, size_t bytes = 0) {
    return {id, "", "", std::string(bytes, 'u'), "end", {}};
}

LogTime Morning() { return {2024, 1, 5, 9, 5, 7, 45}; }

TEST(ElkQueue, ShipsARowAnItemWithoutSecrets) {
    ElkQueue queue({}, Morning);
    const std::string name = Gbk("委托");
    CQueueLogElkItem item("id-1", "", name, "user", "end", {{"TxPassword", "canary"}, {"key", "\"" + name}});
    item.SetField("Token", "canary");
    queue.Push(item);
    CUIData fields;  // past SetField
    fields.SetData("login_PWD", "canary");
    item.SetData("Fields", fields);
    item.SetTag(7);
    queue.Push(item);
    queue.Push(CQueueLogElkItem());

    FakeSink sink;
    EXPECT_EQ(queue.Ship(sink), 3u);
    const CDataTable& table = sink.last;
    const std::vector<std::string> columns = {"Time",   "ItemType",   "TraceID", "LogSource",
                                              "Module", "ClientUser", "Stage",   "Fields"};
    const std::string time = "2024-01-05 09:05:07.045";
    const std::vector<std::vector<std::string>> rows = {
        {time, "256", "id-1", "", name, "user", "end",
         R"({"TxPassword":"***","key":"\")" + name + R"(","Token":"***"})"},
        {time, "7", "id-1", "", name, "user", "end", R"({"login_PWD":"***"})"},
        {time, "256", "", "", "", "", "", "{}"}};
    ASSERT_EQ(table.GetColumnNumber(), static_cast<int>(columns.size()));
    for (int col = 0; col < table.GetColumnNumber(); ++col) {
        const auto at = static_cast<size_t>(col);
        EXPECT_EQ(table.GetColumnProperty(col, "name"), columns[at]);
        for (size_t row = 0; row < rows.size(); ++row) {
            EXPECT_EQ(table.GetItemText(static_cast<int>(row), col), rows[row][at]) << columns[at];
        }
    }
}

TEST(SecretFields, AreToldByName) {
    for (const char* name : {"password", "TxPassword", "DynamicPassword", "key_password", "old_PWD", "token",
                             "UserToken", "client_secret", "passwd2"}) {
        EXPECT_TRUE(IsSecretField(name)) << name;
    }
    for (const char* name : {"", "pw", "fund_token", "default_Fund_Token", "FundToken", "usertoken_type"}) {
        EXPECT_FALSE(IsSecretField(name)) << name;
    }
}

TEST(ElkQueue, DropsTheOldestWhenFull) {
    struct Case {
        ElkQueue::Limits limits;
        size_t itemBytes;
        std::vector<std::string> left;
    };
    const std::vector<Case> cases = {
        {{3, 1u << 20}, 0, {"2", "3", "4"}}, {{100, 5000}, 1800, {"3", "4"}}, {{0, 1u << 20}, 0, {}}};
    for (const Case& test : cases) {
        ElkQueue queue(test.limits);
        const uint64_t dropped = CCounters::Get("elk_dropped");
        for (int i = 0; i < 5; ++i) queue.Push(Item(std::to_string(i), test.itemBytes));
        EXPECT_LE(queue.Bytes(), test.limits.bytes);
        FakeSink sink;
        EXPECT_EQ(queue.Ship(sink), test.left.size());
        EXPECT_EQ(sink.ids, test.left);
        EXPECT_EQ(CCounters::Get("elk_dropped") - dropped, 5 - test.left.size());
        EXPECT_EQ(queue.Bytes(), 0u);
    }
    ElkQueue queue;
    queue.Push(Item("kept"));
    const uint64_t refused = CCounters::Get("elk_item_too_large");
    queue.Push(Item("large", ElkQueue::kMaxItemBytes));
    EXPECT_EQ(CCounters::Get("elk_item_too_large"), refused + 1);
    EXPECT_EQ(queue.Items(), 1u);
}

TEST(ElkQueue, WhatIsRefusedComesAgainInItsPlace) {
    constexpr size_t kLimit = ElkQueue::kBatchItems + 2;
    ElkQueue queue({kLimit, 1u << 20});
    for (size_t i = 0; i < kLimit; ++i) queue.Push(Item(std::to_string(i)));
    FakeSink sink;
    sink.accepts = false;
    EXPECT_EQ(queue.Ship(sink), 0u);
    sink.onShip = [] { throw std::runtime_error("host"); };
    EXPECT_EQ(queue.Ship(sink), 0u);
    EXPECT_EQ(queue.Items(), kLimit);

    // What arrives meanwhile counts too, and a call inside the call does nothing.
    sink.onShip = [&] {
        EXPECT_EQ(queue.Ship(sink), 0u);
        queue.Push(Item("new"));
    };
    EXPECT_EQ(queue.Ship(sink), 0u);
    EXPECT_EQ(queue.Items(), kLimit);
    sink.onShip = nullptr;
    sink.accepts = true;
    EXPECT_EQ(queue.Ship(sink), ElkQueue::kBatchItems);
    EXPECT_EQ(queue.Ship(sink), 2u);
    EXPECT_EQ(queue.Ship(sink), 0u);
    ASSERT_EQ(sink.ids.size(), kLimit);
    for (size_t i = 0; i + 1 < kLimit; ++i) EXPECT_EQ(sink.ids[i], std::to_string(i + 1));
    EXPECT_EQ(sink.ids.back(), "new");
}

TEST(DataManagerElk, WaitsForASinkThatMayDetachItself) {
    CDataManager& manager = CDataManager::Instance();
    CQueueLogElkItem item = Item("1");
    manager.PushELK(item);
    EXPECT_EQ(manager.ShipELK(), 0u);
    FakeSink sink;
    sink.onShip = [&] { manager.SetElkSink(nullptr); };
    manager.SetElkSink(&sink);
    EXPECT_EQ(manager.ShipELK(), 1u);
    manager.PushELK(item);
    EXPECT_EQ(manager.ShipELK(), 0u);
    EXPECT_THAT(sink.ids, ElementsAre("1"));
}

}  // namespace
}  // namespace luadui
