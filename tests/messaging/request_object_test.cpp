#include "messaging/request_object.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <memory>

#include "base/counters.h"
#include "messaging/page_sign_registry.h"
#include "messaging/response_routing.h"
#include "tests/fakes/fake_host.h"

namespace luadui {
namespace {

bool IsGuid(const std::string& text) {
    const std::string shape = "xxxxxxxx-xxxx-xxxx-xxxx-xxxxxxxxxxxx";
    return std::ranges::equal(text, shape, [](char c, char s) {
        return s == '-' ? c == '-' : std::string_view("0123456789abcdef").find(c) != std::string_view::npos;
    });
}

class RequestObjectTest : public testing::Test {
  protected:
    std::string Handle() const { return std::to_string(object->GetHandle()); }
    CQueueRespData Notice(int type, const char* fundToken) const {
        CQueueRespData notice;
        notice.SetData("DATATYPE", 2010);
        notice.SetData("REQTYPE", type);
        notice.SetData("FundToken", fundToken);
        return notice;
    }
    // Without what differs from run to run.
    static std::string Sent(CQueueReqItem request) {
        for (const char* key : {"UUID", "CreateTime", "From", "CheckTimeout", "PassThrough", "Processed"})
            request.Remove(key);
        return Describe(request);
    }

    FakeHost host;
    std::unique_ptr<CRequestObject> object = std::make_unique<CRequestObject>();
};

TEST_F(RequestObjectTest, OperationsBuildTheirRecords) {
    object->SetRequestSource("page");
    CDataTable table;
    EXPECT_TRUE(object->SendQuery("F01", 1004, {{"b", "2"}, {"a", "1"}}, true));
    EXPECT_TRUE(object->SendQuery("", 1004, {{"fund_token", "F02"}}, false));
    EXPECT_TRUE(object->SendQuery("F01", 1004, false));
    EXPECT_TRUE(object->SendSubcribe("F01", 1601, "Fund|"));
    EXPECT_TRUE(object->SendSubcribe("F01", 1601, StringMap{{"key", "k"}}));
    EXPECT_TRUE(object->SendOrder("F01", 1101, {}, &table));
    EXPECT_TRUE(object->SendOrder("F01", 1101, {}, nullptr));
    const char* const kRest = "log_source=page routeType= destServer=}";
    const std::string expected[] = {
        "REQTYPE=1004 Refresh=true Params={a=1 b=2 log_source=page bNeedRefresh=true routeType= destServer=} "
        "FundToken=F01",
        std::string("REQTYPE=1004 Refresh=false Params={fund_token=F02 ") + kRest + " FundToken=F02",
        std::string("REQTYPE=1004 Refresh=false Params={") + kRest + " FundToken=F01",
        std::string("REQTYPE=1601 Refresh=false Params={key=Fund| ") + kRest + " FundToken=F01",
        std::string("REQTYPE=1601 Refresh=false Params={key=k ") + kRest + " FundToken=F01",
        std::string("REQTYPE=1101 Refresh=false Params={") + kRest + " FundToken=F01 Table=[]",
        std::string("REQTYPE=1101 Refresh=false Params={") + kRest + " FundToken=F01"};
    ASSERT_EQ(host.pushed.size(), std::size(expected));
    for (size_t i = 0; i < std::size(expected); ++i) {
        EXPECT_EQ(Sent(host.pushed[i]), expected[i]);
        EXPECT_EQ(host.pushed[i].GetDataString("From"), Handle());
    }
}

TEST_F(RequestObjectTest, RequestCompletesTheRecord) {
    CQueueReqItem request;
    request.SetData("RouteType", "All-Tunnel");
    request.SetData("DestServer", "S1");
    EXPECT_TRUE(object->Request(request));
    EXPECT_EQ(Describe(FakeHost::Params(host.pushed.at(0))),
              "log_source= routeType=All-Tunnel destServer=S1");
    const std::string uuid = request.GetDataString("UUID");
    EXPECT_TRUE(IsGuid(uuid)) << uuid;
    EXPECT_TRUE(object->Request(request));
    EXPECT_EQ(host.pushed.at(1).GetDataString("UUID"), uuid) << "a UUID that is there stays";
    request.Remove("UUID");
    EXPECT_TRUE(object->Request(request));
    EXPECT_NE(host.pushed.at(2).GetDataString("UUID"), uuid);

    for (const bool isMistyped : {false, true}) {
        CQueueReqItem bad;
        bad.Remove("Params");
        if (isMistyped) bad.SetData("Params", "text");
        EXPECT_FALSE(object->Request(bad));
    }
    EXPECT_EQ(host.pushed.size(), 3U);
}

TEST_F(RequestObjectTest, TheHostCopiesARequestWithoutCost) {
    host.onPush = [](CQueueReqItem& request) { EXPECT_TRUE(CUIData(request).SharesWith(request)); };
    EXPECT_TRUE(object->SendQuery("F", 1, false));
}

TEST_F(RequestObjectTest, TypesBeyond32BitsAreNobodysButTheHosts) {
    CQueueReqItem request;
    request.SetData("REQTYPE", (int64_t{1} << 32) + 1603);
    EXPECT_TRUE(object->Request(request));
    EXPECT_EQ(host.pushed.size(), 1U);
}

TEST_F(RequestObjectTest, ASleeperRemembersALimitedNumberOfTypes) {
    object->Sleep(true);
    for (int type = 2000; type < 12000; ++type) {
        const CQueueRespData notice = Notice(type, "A");
        EXPECT_TRUE(object->PreHandleResponse(&notice));
    }
    object->Sleep(false);
    EXPECT_EQ(host.pushed.size(), 4096U);
}

TEST_F(RequestObjectTest, AThrowingHostFailsTheCallOnly) {
    host.onPush = host.onAsk = [](CQueueReqItem&) { throw std::runtime_error("host"); };
    const auto before = CCounters::Get("host_callback_threw");
    std::string value = "kept";
    EXPECT_FALSE(object->SendQuery("F", 1, false));
    EXPECT_FALSE(object->RequestSync(0x80001, "k", value, "f"));
    EXPECT_EQ(object->SendLuaSync("m", "{}", ""), "");
    EXPECT_EQ(value, "kept");
    EXPECT_EQ(CCounters::Get("host_callback_threw") - before, 3U);
    host.onPush = [](CQueueReqItem&) {};
    EXPECT_TRUE(object->SendQuery("F", 1, false));
}

TEST_F(RequestObjectTest, RequestSyncReplacesTheValueOnlyByAnAnswer) {
    std::string value = "old";
    EXPECT_TRUE(object->RequestSync(0x80002, "key", value, "file.cfg"));
    EXPECT_EQ(value, "old");
    EXPECT_EQ(Describe(FakeHost::Params(host.asked.at(0))), "FileName=file.cfg Key=key Value=old");
    host.onAsk = [](CQueueReqItem& request) { request.SetData("result", "new"); };
    EXPECT_TRUE(object->RequestSync(0x80001, "key", value, "file.cfg"));
    EXPECT_EQ(value, "new");
}

TEST_F(RequestObjectTest, SynchronousParametersComeBackAsTexts) {
    host.onAsk = [](CQueueReqItem& request) {
        CUIData params;
        request.GetDataShared("Params", params);
        params.SetData("a", "changed");
        params.SetData("new", "added");
        params.SetData("number", 5);
        request.SetData("result", 7);  // no text: no answer
    };
    StringMap params{{"a", "1"}, {"b", "2"}};
    std::string result = "kept";
    EXPECT_TRUE(CHostLink::Instance().RequestSync(0x80003, params, &result));
    EXPECT_EQ(params, (StringMap{{"a", "changed"}, {"b", "2"}, {"new", "added"}}));
    EXPECT_EQ(result, "kept");
    EXPECT_TRUE(CHostLink::Instance().RequestSync(0x80003, params, nullptr));
    host.onAsk = [](CQueueReqItem& request) { request.Remove("Params"); };
    EXPECT_TRUE(CHostLink::Instance().RequestSync(0x80003, params, nullptr));
    EXPECT_EQ(params.size(), 3U);
}

TEST_F(RequestObjectTest, LuaCallsAskTheHostAndRegisterThePage) {
    host.onAsk = [](CQueueReqItem& request) { request.SetData("result", "answer"); };
    EXPECT_EQ(object->SendLuaSync("price", "{\"a\":1}", "sign1"), "answer");
    ASSERT_EQ(host.asked.size(), 1U);
    EXPECT_EQ(host.asked[0].GetDataLong("REQTYPE"), 1502);
    EXPECT_EQ(FakeHost::Params(host.asked[0]).GetDataString("params"), "{\"a\":1}");
    EXPECT_EQ(object->SendLuaSync("page_register", "", "sign2"), "");
    CQueueReqItem registration;
    registration.SetData("REQTYPE", 1603);
    CUIData params;
    params.SetData("page_sign", "sign3");
    registration.SetData("Params", params);
    EXPECT_TRUE(object->Request(registration));
    EXPECT_EQ(host.asked.size(), 1U) << "a registration never calls the host";
    EXPECT_TRUE(host.pushed.empty());
    auto& signs = CPageSignRegistry::Instance();
    for (const char* sign : {"sign1", "sign2", "sign3"}) EXPECT_EQ(signs.Find(sign), Handle());
    EXPECT_EQ(signs.Find("unknown"), "");
    object.reset();
    EXPECT_EQ(signs.Find("sign2"), "") << "a page that has gone is forgotten";
}

TEST_F(RequestObjectTest, LoginPassesThrough) {
    alignas(8) static const char kNoServers[sizeof(StringMap)] = {};
    const auto& servers = reinterpret_cast<const ServerMap&>(kNoServers);
    EXPECT_TRUE(object->SendLogin(3, "user", "secret", servers, nullptr, 9));
    EXPECT_EQ(host.logins, std::vector<std::string>{"3user9"});
}

TEST_F(RequestObjectTest, ChangeNoticesAskAgainAtOnceOrOnceOnWaking) {
    EXPECT_FALSE(object->PreHandleResponse(nullptr));
    const CQueueRespData first = Notice(1005, "A");
    EXPECT_TRUE(object->PreHandleResponse(&first));
    EXPECT_EQ(
        Sent(host.pushed.at(0)),
        "REQTYPE=1005 Refresh=false Params={isSub=true log_source= routeType= destServer=} FundToken=A");
    object->Sleep(true);
    EXPECT_FALSE(object->isActive());
    for (const auto& [type, token] : {std::pair{1005, "A"}, {1004, "X"}, {1005, "B"}}) {
        const CQueueRespData notice = Notice(type, token);
        EXPECT_TRUE(object->PreHandleResponse(&notice));
    }
    EXPECT_EQ(host.pushed.size(), 1U) << "nothing is sent while asleep";
    object->Sleep(false);
    ASSERT_EQ(host.pushed.size(), 3U);
    EXPECT_EQ(host.pushed[1].GetDataLong("REQTYPE"), 1004);
    EXPECT_EQ(host.pushed[2].GetDataString("FundToken"), "B");
    object->Sleep(false);
    EXPECT_EQ(host.pushed.size(), 3U);
    CQueueRespData answer = Notice(1005, "A");
    answer.SetData("Request", CUIData());
    EXPECT_FALSE(object->PreHandleResponse(&answer));
}

TEST_F(RequestObjectTest, MayDisappearWhileItWakes) {
    object->Sleep(true);
    for (const int type : {1, 2, 3}) {
        const CQueueRespData notice = Notice(type, "A");
        object->PreHandleResponse(&notice);
    }
    host.onPush = [this](CQueueReqItem&) { object.reset(); };
    object->Sleep(false);
    EXPECT_EQ(host.pushed.size(), 1U);
}

class Receiver : public CRequestObject {
  public:
    void OnResponse(const CQueueRespData* response) override {
        received.push_back(response->GetDataString("Topic"));
        if (onResponse) onResponse();
    }
    std::vector<std::string> received;
    std::function<void()> onResponse;
};

int Route(const std::string& to) {
    auto response = std::make_unique<CQueueRespData>();
    response->SetData("To", to);
    response->SetData("Topic", "t");
    return RouteResponse(std::move(response));
}

TEST(ResponseRouting, FindsTheRequestObjectInTo) {
    Receiver receiver;
    const CBaseObject other;
    const std::string handle = std::to_string(receiver.GetHandle());
    const std::string wrong[] = {"",
                                 "-1",
                                 "0",
                                 "x",
                                 handle + "x",
                                 " " + handle,
                                 "+" + handle,
                                 "4294967296" + handle,
                                 "99999999999999999999999999",
                                 "2147483647",
                                 std::to_string(other.GetHandle()),
                                 handle + std::string(1, '\0'),
                                 std::to_string((int64_t{1} << 32) + receiver.GetHandle())};
    for (const std::string& to : wrong) {
        const auto before = CCounters::Get("response_without_receiver");
        EXPECT_EQ(Route(to), 0) << to;
        EXPECT_EQ(CCounters::Get("response_without_receiver") - before, 1U);
    }
    EXPECT_TRUE(receiver.received.empty());
    EXPECT_EQ(Route(handle), 1);
    receiver.onResponse = [] { throw 1; };
    EXPECT_EQ(Route("00" + handle), 1) << "leading zeros are the same number; an exception stays inside";
    EXPECT_EQ(receiver.received.size(), 2U);
}

TEST(ResponseRouting, ReceiverMayDisappearInItsOwnResponse) {
    auto* const receiver = new Receiver;
    const std::string handle = std::to_string(receiver->GetHandle());
    receiver->onResponse = [receiver] { delete receiver; };
    EXPECT_EQ(Route(handle), 1);
    EXPECT_EQ(Route(handle), 0);
}

}  // namespace
}  // namespace luadui
