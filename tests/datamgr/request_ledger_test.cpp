#include "datamgr/request_ledger.h"

#include <gtest/gtest.h>

#include "base/counters.h"

namespace luadui {
namespace {

constexpr int kType = 1202;

CQueueReqItem Request(const std::string& uuid) {
    CQueueReqItem request;
    request.SetData("REQTYPE", kType);
    request.SetData("UUID", uuid);
    return request;
}

RequestLedger::Entry Entry(const std::string& token) {
    RequestLedger::Entry entry;
    entry.fundToken = token;
    return entry;
}

class RequestLedgerTest : public testing::Test {
  protected:
    void Send(const std::string& uuid, const std::string& token) {
        ledger.Describe(uuid, Entry(token));
        ledger.Sent(Request(uuid));
    }

    RequestLedger ledger;
};

TEST_F(RequestLedgerTest, AgesAscendInTheOrderOfSending) {
    ledger.Describe("late", Entry("a"));
    Send("early", "a");
    ledger.Sent(Request("late"));
    const Age early = ledger.Find("early")->age;
    EXPECT_GT(early, 0u);
    EXPECT_GT(ledger.Find("late")->age, early);
    EXPECT_GT(ledger.NextAge(), ledger.Find("late")->age);
}

TEST_F(RequestLedgerTest, AnAccountIsUnderWayUntilItsLastQueryEnded) {
    Send("1", "a");
    Send("2", "a");
    Send("2", "a");  // the same one once more
    Send("3", "b");
    EXPECT_TRUE(ledger.Finish(*ledger.Find("1")));
    EXPECT_FALSE(ledger.Finish(*ledger.Find("1"))) << "answered twice";
    EXPECT_TRUE(ledger.IsUnderWay(kType, "a"));
    EXPECT_FALSE(ledger.IsUnderWay(kType + 1, "a"));
    ledger.Drop("2");
    EXPECT_FALSE(ledger.IsUnderWay(kType, "a"));
    EXPECT_TRUE(ledger.IsUnderWay(kType, "b"));
}

TEST_F(RequestLedgerTest, WhatWasDroppedIsUnknownUntilItIsDescribedAgain) {
    Send("1", "a");
    ledger.Drop("1");
    ledger.Drop("never described");
    EXPECT_EQ(ledger.Find("1"), nullptr);
    ledger.Describe("1", Entry("b"));
    ASSERT_NE(ledger.Find("1"), nullptr);
    EXPECT_EQ(ledger.Find("1")->fundToken, "b");
    EXPECT_EQ(ledger.Find("1")->age, 0u);
}

TEST_F(RequestLedgerTest, TheOldestGoFirstAndCountWhenUnanswered) {
    for (const char* uuid : {"answered", "dropped", "waiting", "kept"}) Send(uuid, uuid);
    ledger.Finish(*ledger.Find("answered"));
    ledger.Drop("dropped");
    const uint64_t evicted = CCounters::Get("ledger_entry_evicted");
    for (size_t i = 0; i < RequestLedger::kMaxEntries - 1; ++i) Send("more" + std::to_string(i), "z");
    for (const char* uuid : {"answered", "dropped", "waiting"}) EXPECT_EQ(ledger.Find(uuid), nullptr) << uuid;
    EXPECT_EQ(CCounters::Get("ledger_entry_evicted"), evicted + 1);
    EXPECT_FALSE(ledger.IsUnderWay(kType, "waiting"));
    EXPECT_TRUE(ledger.IsUnderWay(kType, "kept"));
}

}  // namespace
}  // namespace luadui
