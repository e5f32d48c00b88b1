#include "datalists/message_center_list.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "base/counters.h"
#include "base/json_object.h"
#include "base/text.h"
#include "datalists/order_messages.h"

namespace luadui {
namespace {

class FakeOwner : public ListOwner {
  public:
    void RegisterNotify(unsigned int handle, std::string kind) override {
        registered.push_back(kind + ":" + std::to_string(handle));
    }
    bool GetData(const std::string&, CUIData&) override { return false; }
    void ResponseNotify(CUIData* record, int handle, bool notifyOthers) override {
        EXPECT_EQ(handle, expectedHandle);
        EXPECT_TRUE(notifyOthers);
        published.push_back(*record);
        if (onPublish) onPublish();
    }

    int expectedHandle = -1;
    std::vector<std::string> registered;
    std::vector<CUIData> published;
    std::function<void()> onPublish;
};

CDataTable OneRow(const std::vector<std::pair<std::string, std::string>>& cells) {
    CDataTable table;
    const int row = table.AppendRow();
    for (const auto& [name, text] : cells) table.SetItemText(row, table.AddColumn(name), text);
    return table;
}

CUIData RiskPush(const CDataTable& table) {
    CUIData push("str_subkey_risk_push");
    push.SetData("Table", table);
    return push;
}

class MessageCenterTest : public testing::Test {
  protected:
    CDataTable History() const {
        CDataTable history;
        list->GetData("messagecenter", history);
        return history;
    }
    CDataTable Last() const {
        CDataTable table;
        if (!owner.published.empty()) owner.published.back().GetData("messagecenter", table);
        return table;
    }
    void Fail(const char* json, const CUIData& params = CUIData(), const char* uuid = "u1") {
        CJsonObject body;
        body.Parse(Gbk(json));
        CUIData response, request;
        request.SetData("Params", params);
        response.SetData("JsonData", body);
        response.SetData("Request", request);
        response.SetData("REQTYPE", 1101);
        response.SetData("FundToken", "tok-1");
        response.SetData("UUID", uuid);
        CUIData accounts("account"), credit("account_xy");
        accounts.SetData("account",
                         OneRow({{"fund_token", "tok-1"},
                                 {"accountname", Gbk("张三")},
                                 {"portfolios", R"([{"fund_token":"tok-1","portfolioname":"P"}])"}}));
        list->AddErrorMessage(response, accounts, credit, "demo");
    }

    FakeOwner owner;
    std::unique_ptr<CMessageCenterList> list = std::make_unique<CMessageCenterList>(&owner);
};

TEST_F(MessageCenterTest, RiskPushBecomesAMessage) {
    EXPECT_EQ(
        std::ranges::count(owner.registered, "str_subkey_risk_push:" + std::to_string(list->GetHandle())), 1);
    CUIData push = RiskPush(OneRow({{"LocalID", "7"},
                                    {"SecurityID", "600000"},
                                    {"MarketID", "17"},
                                    {"Side", "0"},
                                    {"OrderQty", "300"},
                                    {"account", Gbk("张三")},
                                    {"OrderPrice", "10.5"}}));
    list->OnNotify(&push);
    ASSERT_EQ(owner.published.size(), 1u);
    EXPECT_EQ(owner.published[0].GetType(), "messagecenter");
    const CDataTable message = Last();
    EXPECT_EQ(message.GetRowNumber(), 1);
    EXPECT_EQ(message.GetItemText(0, "LocalID"), "7_risk");
    EXPECT_EQ(message.GetItemText(0, "MsgType"), Gbk("风控提示"));
    EXPECT_EQ(message.GetItemText(0, "MsgTypeContents"), Gbk("风控提示"));
    EXPECT_EQ(message.GetItemText(0, "Text"), Gbk("触发风控，请在触警查询中查看"));
    EXPECT_EQ(message.GetItemText(0, "OrderMessage"), Gbk("（600000），10.5元，张三买入300股"));
    EXPECT_EQ(message.GetItemText(0, "TextColor"), "#FFFF0000");
    std::string time(message.GetItemText(0, "MsgTime"));
    std::ranges::replace_if(
        time, [](char c) { return c >= '0' && c <= '9'; }, '9');
    EXPECT_EQ(time, "9999/99/99 99:99");

    CUIData sell = RiskPush(
        OneRow({{"Side", "1"}, {"account", Gbk("x" + std::string(90, 'y') + "户户户户户户户户户户户户")}}));
    list->OnNotify(&sell);
    const std::string text = Last().GetItemText(0, "OrderMessage");
    EXPECT_LE(text.size(), 127u);
    EXPECT_FALSE(EndsInsideCharacter(text));
}

TEST_F(MessageCenterTest, OtherNotificationsArePassedOver) {
    CUIData empty = RiskPush(CDataTable()), other("fund"), noTable("str_subkey_risk_push");
    other.SetData("Table", OneRow({{"LocalID", "1"}}));
    for (CUIData* record : {&empty, &other, &noTable, static_cast<CUIData*>(nullptr)}) list->OnNotify(record);
    EXPECT_TRUE(owner.published.empty());
    EXPECT_EQ(History().GetRowNumber(), 0);
}

TEST_F(MessageCenterTest, FailedAnswerTellsWhoWhatAndWhy) {
    CUIData portfolioMode;
    portfolioMode.SetData("PB_MODE", "true");
    struct Case {
        const char* json;
        const CUIData params;
        const char *text, *orderMessage;
    };
    for (const Case& c :
         {Case{R"({"error_code":17,"message":"资金不足"})",
               {},
               "资金不足",
               "账户张三，请求类型1101，错误码17：资金不足"},
          Case{R"({"code":"E1","msg":"no"})", portfolioMode, "no", "账户张三-P，请求类型1101，错误码E1：no"},
          Case{R"({"retcode":-3})", {}, "请求失败", "账户张三，请求类型1101，错误码-3：请求失败"},
          Case{"not JSON", {}, "请求失败", "账户张三，请求类型1101：请求失败"}}) {
        SCOPED_TRACE(c.json);
        Fail(c.json, c.params);
        EXPECT_EQ(Last().GetItemText(0, "Text"), Gbk(c.text));
        EXPECT_EQ(Last().GetItemText(0, "OrderMessage"), Gbk(c.orderMessage));
        EXPECT_EQ(Last().GetItemText(0, "LocalID"), "u1_error");
        EXPECT_EQ(owner.published.back().GetDataString("user"), "demo");
    }
    EXPECT_EQ(History().GetRowNumber(), 1);  // the same request each time
    Fail("{}", {}, "");
    Fail("{}", {}, "");
    EXPECT_EQ(History().GetRowNumber(), 3);
}

TEST_F(MessageCenterTest, SecretsThatTheServerRepeatsAreMasked) {
    CUIData params;
    params.SetData("password", "hunter2");
    params.SetData("Table", OneRow({{"TxPassword", "swordfish"}, {"volume", "100"}}));
    Fail(R"({"message":"tok-1/hunter2/swordfish/100 refused"})", params);
    EXPECT_EQ(Last().GetItemText(0, "Text"), "***/***/***/100 refused");
    for (const char* secret : {"tok-1", "hunter2", "swordfish"}) {
        for (int col = 0; col < Last().GetColumnNumber(); ++col)
            EXPECT_EQ(Last().GetItemText(0, col).find(secret), std::string::npos) << secret;
    }
    Fail((R"({"message":")" + std::string(100'000, 'x') + R"("})").c_str());
    EXPECT_EQ(Last().GetItemText(0, "Text").size(), CMessageCenterList::kMaxText);
}

CUIData OrderPush(const char* fields, const CDataTable& orders) {
    CJsonObject json;
    EXPECT_TRUE(json.Parse(Gbk(fields)));
    CUIData push;
    for (const auto [name, value] : json) push.SetData(name, value);
    push.SetData("Table", orders);
    return push;
}

CDataTable Order(const char* status, const char* orderId = "O1") {
    CDataTable order = OneRow({{"SecurityName", Gbk("浦发银行")}, {"SecurityID", "600000"}, {"Side", "0"}});
    const std::pair<const char*, std::string> more[] = {{"OrderPrice", "10.5"},
                                                        {"OrderQty", "300"},
                                                        {"OrderID", orderId},
                                                        {"OrderStatus", Gbk(status)},
                                                        {"OrderStatusMsg", Gbk("说明")}};
    for (const auto& [name, text] : more) order.SetItemText(0, order.AddColumn(name), text);
    return order;
}

TEST_F(MessageCenterTest, OrdersBecomeMessagesByKindAndStatus) {
    owner.expectedHandle = list->GetHandle();
    struct Case {
        const char *fields, *status, *message;
    };
    for (const Case& c :
         {Case{R"({"inst_type":2,"LocalID":"L","InstanceID":7,"account":"张三","action":"grid_order"})",
               "未成交", "篮子交易|张三，指令7，说明|委托回报|委托回报|L_未成交|委托成功"},
          {R"({"inst_type":"1","LocalID":"L"})", "部分成交",
           "多户交易|说明|成交回报|成交回报|L_部分成交|部分成交"},
          {R"({"InstanceID":"7","TaskID":"8","LocalID":"L"})", "废单",
           "篮子交易|指令7，说明|废单提示|废单提示|L|说明"},
          {R"({"InstanceID":"7","from":"topic.oms.order","LocalID":"L","msg":"资金不足"})", "废单",
           "单户交易|指令7，说明|废单提示|废单提示|L|资金不足"},
          {R"({"action":"grid_order","InstanceID":7,"TaskID":8,"data":{"LocalID":"G","localid":"x"}})",
           "全部成交", "网格交易|指令7，说明|成交回报|成交回报|G_全部成交|全部成交"},
          {R"({"action":"condition_order","data":"{\"LocalID\":1,\"localid\":5}","msg":"m"})", "废单",
           "条件交易|说明|废单提示|废单提示|5|说明"},
          {R"({"from":"entrustret","LocalID":"L","data":"no JSON"})", "全部成交",
           "算法交易|说明|成交回报|成交回报|L_全部成交|全部成交"},
          {R"({"account":"张三"})", "未成交",
           "算法交易|张三，说明|委托回报|委托回报|张三_O1_未成交|委托成功"}}) {
        for (int repeat = 0; repeat < 2; ++repeat)
            list->AddOrderMessages(OrderPush(c.fields, Order(c.status)));
        std::string message, columns;
        for (int col = 8; col < Last().GetColumnNumber(); ++col) {
            const std::string name = Last().GetColumnProperty(col, "name");
            columns += name + " ";
            if (name != "OrderMessage" && name != "MsgTime")
                message += (col == 8 ? "" : "|") + GbkToUtf8(Last().GetItemText(0, col));
        }
        EXPECT_EQ(message, c.message);
        EXPECT_EQ(columns,
                  "InstrctionType OrderMessage NoteMessage MsgTime MsgType MsgTypeContents LocalID Text ");
    }
    EXPECT_EQ(owner.published.size(), 16u);
    EXPECT_EQ(History().GetRowNumber(), 7);  // two of the eight carry the same LocalID
    EXPECT_EQ(Last().GetItemText(0, "OrderMessage"),
              Gbk("浦发银行（600000），10.5元，张三买入300股，合同编号O1"));
}

TEST_F(MessageCenterTest, PushesOfSeveralOrdersAreOneRecordOfThoseWorthAMessage) {
    owner.expectedHandle = list->GetHandle();
    CDataTable orders = Order("已撤单");
    list->AddOrderMessages(OrderPush("{}", orders));
    list->AddOrderMessages(CUIData());
    EXPECT_TRUE(owner.published.empty());
    const int64_t number = NextMessageNumber();
    orders.AddColumn("fund_token");
    for (const char* token : {"F1", "F2"}) {
        CDataTable order = Order("未成交", "O2");
        order.SetItemText(0, order.AddColumn("fund_token"), token);
        orders.InsertTable(order);
    }
    for (const char* id : {"O3", ""}) orders.InsertTable(Order("未成交", id));
    orders.InsertTable(Order("废单", ""));
    list->AddOrderMessages(OrderPush(R"({"LocalID":"L"})", orders));
    ASSERT_EQ(owner.published.size(), 1u);
    std::vector<std::string> ids;
    for (int row = 0; row < Last().GetRowNumber(); ++row)
        ids.push_back(GbkToUtf8(Last().GetItemText(row, "LocalID")));
    EXPECT_EQ(ids, (std::vector<std::string>{"L_F1_O2_未成交", "L_F2_O2_未成交", "L_O3_未成交",
                                             "L_" + std::to_string(number + 1) + "_未成交",
                                             "L_" + std::to_string(number + 2)}));
    owner.expectedHandle = -1;
    Fail("{}");  // into the history, whose columns are all of both
    EXPECT_EQ(History().GetItemText(0, "OrderID") + History().GetItemText(5, "Text"), Gbk("O2请求失败"));
    EXPECT_EQ(History().GetItemText(5, "OrderID"), "");
}

TEST_F(MessageCenterTest, HistoryIsBoundedAndReplacesRepeatedMessages) {
    CMessageCenterList alone(nullptr);
    for (int id = 0; id < CMessageCenterList::kMaxHistory + 5; ++id) {
        for (const char* side : {"0", "1"}) {
            CUIData push = RiskPush(OneRow({{"LocalID", std::to_string(id)}, {"Side", side}}));
            alone.OnNotify(&push);
        }
    }
    CDataTable history;
    ASSERT_TRUE(alone.GetData("messagecenter", history));
    EXPECT_EQ(history.GetRowNumber(), CMessageCenterList::kMaxHistory);
    EXPECT_EQ(history.GetItemText(0, "LocalID"), "5_risk");
    EXPECT_EQ(history.GetItemText(0, "OrderMessage"), Gbk("（），元，卖出股"));

    // Of a push of very many orders the last ones count, and each replaces its own row.
    owner.expectedHandle = list->GetHandle();
    CDataTable orders = Order("未成交", "");
    while (orders.GetRowNumber() < 8192) orders.InsertTable(CDataTable(orders));
    for (int row = 0; row < 8192; ++row) orders.SetItemText(row, "OrderID", std::to_string(row));
    for (int times = 0; times < 2; ++times) list->AddOrderMessages(OrderPush("{}", orders));
    EXPECT_EQ(Last().GetRowNumber(), CMessageCenterList::kMaxHistory);
    EXPECT_EQ(History().GetRowNumber(), CMessageCenterList::kMaxHistory);
    EXPECT_EQ(History().GetItemText(0, "OrderID"), "7192");
}

TEST_F(MessageCenterTest, MayGoWhilePublishing) {
    owner.onPublish = [this] { list.reset(); };
    CUIData push = RiskPush(OneRow({{"LocalID", "1"}}));
    list->OnNotify(&push);
    EXPECT_EQ(list, nullptr);
}

}  // namespace
}  // namespace luadui
