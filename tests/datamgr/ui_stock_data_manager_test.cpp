#include "datamgr/ui_stock_data_manager.h"

#include <gtest/gtest.h>

#include <stdexcept>

#include "base/counters.h"
#include "tests/fakes/fake_host.h"

namespace luadui {
namespace {

class Receiver : public CRequestObject {
  public:
    void OnResponse(const CQueueRespData*) override {
        ++received;
        if (throws) throw std::runtime_error("page");
    }
    bool throws = false;
    int received = 0;
};

class RouterTest : public testing::Test {
  protected:
    bool Request(int type, int32_t from, const char* key = "k", const char* uuid = "") {
        CQueueReqItem request;
        request.SetData("REQTYPE", type);
        request.SetData("From", std::to_string(from));
        request.SetData("UUID", uuid);
        CUIData params;
        params.SetData("key", key);
        params.SetData("page_sign", key);
        params.SetData("method", "page_register");
        request.SetData("Params", params);
        return router.Request(request);
    }
    void Answer(const char* uuid, const char* topic) {
        CQueueRespData response;
        response.SetData("UUID", uuid);
        response.SetData("Topic", topic);
        router.OnResponse(&response);
    }

    FakeHost host;
    CUIStockDataManager& router = CUIStockDataManager::get_mutable_instance();
    Receiver a, b, c;
};

TEST_F(RouterTest, SendsWhatIsNoSubscriptionInItsOwnName) {
    EXPECT_FALSE(Request(1601, a.GetHandle()));
    EXPECT_TRUE(Request(1604, a.GetHandle(), "event"));
    EXPECT_TRUE(host.pushed.empty());
    EXPECT_TRUE(Request(1004, a.GetHandle(), "k", "u1"));
    EXPECT_EQ(host.pushed.at(0).GetDataString("From"), std::to_string(router.GetHandle()));
    Answer("u1", "");
    Answer("", "event");
    EXPECT_EQ(a.received, 2);
    router.OnResponse(nullptr);
}

TEST_F(RouterTest, OneThatThrowsDoesNotRobTheOthers) {
    for (const Receiver* receiver : {&a, &b, &c}) Request(1601, receiver->GetHandle(), "push");
    a.throws = true;
    Answer("", "push");
    EXPECT_EQ(a.received + b.received + c.received, 3);
}

TEST_F(RouterTest, ARequestInItsOwnNameDoesNotComeBackToItself) {
    Request(1004, router.GetHandle(), "k", "own");
    Answer("own", "");
    EXPECT_EQ(a.received, 0);
}

}  // namespace
}  // namespace luadui
