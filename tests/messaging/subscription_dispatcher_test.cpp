#include "messaging/subscription_dispatcher.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <memory>

#include "base/counters.h"
#include "messaging/request_object.h"
#include "messaging/request_types.h"
#include "tests/fakes/fake_host.h"

namespace luadui {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

class DispatcherTest : public testing::Test {
  protected:
    bool Offer(int type, const std::string& from, const StringMap& params, std::string* uuid = nullptr) {
        CQueueReqItem request;
        request.SetData("REQTYPE", type);
        request.SetData("From", from);
        CUIData record;
        for (const auto& [key, value] : params) record.SetData(key, value);
        request.SetData("Params", record);
        if (uuid) request.SetData("UUID", *uuid);
        const bool isTaken = dispatcher.Offer(request);
        if (uuid) *uuid = request.GetDataString("UUID");
        topic = FakeHost::Params(request).GetDataString("key");
        return isTaken;
    }
    std::vector<int32_t> Receivers(const std::string& uuid, const std::string& topicName) {
        CUIData response;
        response.SetData("UUID", uuid);
        response.SetData("Topic", topicName);
        return dispatcher.Receivers(response);
    }

    CSubscriptionDispatcher dispatcher;
    CBaseObject a;
    CBaseObject b;
    const std::string aHandle = std::to_string(a.GetHandle());
    const std::string bHandle = std::to_string(b.GetHandle());
    std::string topic;
};

TEST_F(DispatcherTest, TypesAreTestedIndependently) {
    struct Case {
        int type;
        bool isCodeKeyed, isSubscription, isInstruction, isRegistration;
    };
    for (const auto& [type, isCodeKeyed, isSubscription, isInstruction, isRegistration] :
         {Case{1051, true, false, false, false},
          {1602, true, true, false, false},
          {1702, true, false, true, false},
          {1601, false, true, false, false},
          {1604, false, true, false, false},
          {1701, false, false, true, false},
          {1502, false, false, false, true},
          {1603, false, false, false, true},
          {1004, false, false, false, false}}) {
        EXPECT_EQ(IsCodeKeyedRequest(type), isCodeKeyed) << type;
        EXPECT_EQ(IsSubscription(type), isSubscription) << type;
        EXPECT_EQ(IsInstructionSubscription(type), isInstruction) << type;
        EXPECT_EQ(IsPageRegistration(type), isRegistration) << type;
    }
}

TEST_F(DispatcherTest, AccountTopicsAreCompleted) {
    for (const char* key : {"Trade|", "Fund|", "Entrust|", "Position|", "TradeCredit|", "FundCredit|",
                            "EntrustCredit|", "PositionCredit|"}) {
        EXPECT_TRUE(Offer(1601, aHandle, {{"key", key}, {"fund_token", "F01"}}));
        EXPECT_EQ(topic, std::string(key) + "F01");
        EXPECT_THAT(Receivers("", topic), ElementsAre(a.GetHandle()));
    }
    for (const char* key : {"Fund|X", "fund|", "Fund", "hq"}) {
        EXPECT_TRUE(Offer(1601, aHandle, {{"key", key}, {"fund_token", "F01"}}));
        EXPECT_EQ(topic, key);
    }
    EXPECT_THAT(Receivers("", "Fund|"), IsEmpty());
}

TEST_F(DispatcherTest, PushesReachEachSubscriberOnce) {
    for (const int type : {1601, 1602, 1701, 1702}) EXPECT_TRUE(Offer(type, aHandle, {{"key", "k"}})) << type;
    EXPECT_FALSE(Offer(1604, bHandle, {{"key", "k"}})) << "recorded but not taken";
    EXPECT_TRUE(Offer(1602, bHandle, {{"code", "600000"}}));
    EXPECT_THAT(Receivers("", "k"), ElementsAre(a.GetHandle(), b.GetHandle()));
    EXPECT_THAT(Receivers("", "600000"), ElementsAre(b.GetHandle()));
    EXPECT_THAT(Receivers("", "k2"), IsEmpty());
    EXPECT_TRUE(Offer(1601, aHandle, {{"key", "k"}, {"unsub", "true"}}));
    EXPECT_TRUE(Offer(1601, aHandle, {{"key", "never"}, {"unsub", "true"}}));
    EXPECT_THAT(Receivers("", "k"), ElementsAre(b.GetHandle()));
    EXPECT_EQ(dispatcher.RouteCount(), 0U);
}

TEST_F(DispatcherTest, AnswersGoToWhoAskedAlone) {
    std::string uuid;
    std::string given = "given";
    Offer(1601, bHandle, {{"key", "k"}});
    EXPECT_FALSE(Offer(1051, aHandle, {}, &uuid));
    EXPECT_FALSE(Offer(1004, aHandle, {}, &given));
    EXPECT_FALSE(uuid.empty());
    EXPECT_EQ(given, "given");
    EXPECT_THAT(Receivers(uuid, "k"), ElementsAre(a.GetHandle()));
    EXPECT_THAT(Receivers(uuid, ""), ElementsAre(a.GetHandle())) << "an answer may have several parts";
    EXPECT_FALSE(Offer(1004, bHandle, {}, &given));
    EXPECT_THAT(Receivers("given", "k"), ElementsAre(b.GetHandle())) << "the last sender of a UUID has it";
    EXPECT_THAT(Receivers("unknown", "k"), ElementsAre(b.GetHandle())) << "an unknown UUID leaves the topic";
}

TEST_F(DispatcherTest, RefusesWhatNamesNoTopicOrSender) {
    const auto before = CCounters::Get("subscription_refused");
    EXPECT_TRUE(Offer(1601, aHandle, {}));
    EXPECT_TRUE(Offer(1601, aHandle, {{"code", "600000"}}));
    EXPECT_TRUE(Offer(1601, "", {{"key", "k"}}));
    EXPECT_TRUE(Offer(1601, "no handle", {{"key", "k"}}));
    EXPECT_TRUE(Offer(1601, "2147483647", {{"key", "k"}})) << "a sender that does not exist";
    EXPECT_EQ(CCounters::Get("subscription_refused") - before, 5U);
    EXPECT_EQ(dispatcher.TopicCount(), 0U);
    CQueueReqItem withoutParams;
    withoutParams.SetData("REQTYPE", 1601);
    withoutParams.Remove("Params");
    EXPECT_TRUE(dispatcher.Offer(withoutParams));
}

TEST_F(DispatcherTest, SendersThatHaveGoneAreForgotten) {
    auto gone = std::make_unique<CBaseObject>();
    const std::string handle = std::to_string(gone->GetHandle());
    std::string uuid;
    Offer(1601, handle, {{"key", "k"}});
    Offer(1601, handle, {{"key", "k2"}});
    Offer(1004, handle, {}, &uuid);
    gone.reset();
    EXPECT_THAT(Receivers(uuid, "k"), IsEmpty());
    EXPECT_EQ(dispatcher.TopicCount(), 0U);
    EXPECT_EQ(dispatcher.RouteCount(), 0U);

    auto& shared = CSubscriptionDispatcher::Instance();
    auto object = std::make_unique<CRequestObject>();
    CQueueReqItem request;
    request.SetData("REQTYPE", 1004);
    request.SetData("From", std::to_string(object->GetHandle()));
    const size_t before = shared.RouteCount();
    shared.Offer(request);
    EXPECT_EQ(shared.RouteCount(), before + 1);
    object.reset();
    EXPECT_EQ(shared.RouteCount(), before) << "a request object tells that it goes";
}

TEST_F(DispatcherTest, RemembersALimitedNumberOfUuids) {
    const auto before = CCounters::Get("uuid_route_evicted");
    std::string quiet = "quiet";
    Offer(1004, bHandle, {}, &quiet);
    for (size_t i = 0; i < CSubscriptionDispatcher::kMaxRoutes + 3; ++i) {
        std::string uuid = std::to_string(i);
        Offer(1004, aHandle, {}, &uuid);
        Offer(1502, aHandle, {});  // answered at once: takes nobody's place
    }
    EXPECT_EQ(dispatcher.RouteCount(), CSubscriptionDispatcher::kMaxRoutes + 1);
    EXPECT_EQ(CCounters::Get("uuid_route_evicted") - before, 3U);
    EXPECT_THAT(Receivers("2", ""), IsEmpty());
    EXPECT_THAT(Receivers("3", ""), ElementsAre(a.GetHandle()));
    EXPECT_THAT(Receivers(quiet, ""), ElementsAre(b.GetHandle())) << "who floods loses his own";
    dispatcher.Forget(a.GetHandle());
    dispatcher.Forget(b.GetHandle());
    EXPECT_EQ(dispatcher.RouteCount(), 0U);
}

}  // namespace
}  // namespace luadui
