// The lists of orders, deals, funds and positions: what each adds to CTokenTableList.
#include <gtest/gtest.h>

#include <functional>
#include <memory>

#include "base/text.h"
#include "datalists/deal_list.h"
#include "datalists/entrust_list.h"
#include "datalists/fund_list.h"
#include "datalists/position_list.h"
#include "tests/datalists/list_probe.h"
#include "trade/trade.h"

namespace luadui {
namespace {

const std::string kLongNumber(30, '9');

CDataTable Order(const std::string& status, const std::string& volume, const char* column = "DealVolume") {
    return MakeTable({"OrderID", "OrderStatus", column}, {{"1", Gbk(status), volume}});
}

struct OrderCase {
    const char *heldStatus, *heldVolume, *status;
    std::string volume;
    bool isTaken;          // the row; else it is refused
    bool isVolume = true;  // the volume is taken with it
};

TEST(EntrustListTest, OrdersNeverGoBack) {
    const OrderCase cases[] = {{"未成交", "0", "部分成交", "100", true},
                               {"部分成交", "9", "部分成交", "10", true},
                               {"部分成交", "10", "部分成交", "9", false},
                               {"部分成交", "100.0", "部分成交", "100", true},
                               {"部分成交", "100", "部分成交", "1e3", true},
                               {"部分成交", "100", "未成交", "99.99", false},
                               {"部分成交", "0", "部分成交", "-1", false},
                               {"未成交", "-", "部分成交", "5", true},
                               {"废单", "0", "未成交", "0", false},
                               {"部成部撤", "100", "部分成交", "200", false},
                               {"已撤单", "0", "", "0", false},
                               {"全部成交", "100", "已报", "100", false},
                               {"部分撤单", "100", "全部撤单", "100", true},
                               {"部分成交", "100", "全部撤单", "", true, false},
                               {"部分成交", "100", "全部撤单", "1,234.50", true, false},
                               {"部分成交", "100", "全部成交", kLongNumber, true, false}};
    for (const OrderCase& c : cases) {
        SCOPED_TRACE(std::string(c.heldStatus) + " " + c.heldVolume + " -> " + c.status + " " + c.volume);
        CEntrustList list;
        list.TakeAnswer("a", Order(c.heldStatus, c.heldVolume), 1);
        const Counted refused("push_row_refused"), unreadable("entrust_deal_volume_unreadable");
        EXPECT_EQ(list.TakePush("a", Order(c.status, c.volume), 2, false),
                  c.isTaken ? PushResult::kTaken : PushResult::kUnchanged);
        EXPECT_EQ(refused(), c.isTaken ? 0u : 1u);
        EXPECT_EQ(unreadable(), c.isVolume ? 0u : 1u);
        EXPECT_EQ(Held(list, "a"), Describe(Order(c.isTaken ? c.status : c.heldStatus,
                                                  c.isTaken && c.isVolume ? c.volume : c.heldVolume)));
    }
}

// An answer may leave after a push and yet have been made before it.
TEST(EntrustListTest, AnswersReopenNoOrder) {
    const auto orders = [](const Rows& rows) {
        return MakeTable({"OrderID", "SecurityID", "OrderDate", "OrderStatus", "DealVolume", "Note"}, rows);
    };
    const std::string open = Gbk("部分成交"), done = Gbk("全部成交");
    // Nothing is so fresh that an answer may lack it.
    struct : CEntrustList {
        uint32_t _now() const override { return m_clock += kSettling; }
        mutable uint32_t m_clock = 0;
    } list;
    list.TakeAnswer("a", orders({{"1", "600000", "1", open, "0", ""}, {"2", "600000", "1", open, "10", ""}}),
                    1);
    list.TakePush("a", orders({{"1", "600000", "1", done, "100", "x"}, {"3", "5", "", done, "7", ""}}), 5,
                  false);
    const Counted refused("answer_row_refused"), unreadable("entrust_deal_volume_unreadable");
    // Twice: what was kept must stay kept. In another order, with a new row, without row 3.
    for (uint64_t age = 6; age < 8; ++age) {
        list.TakeAnswer("a",
                        orders({{"4", "5", "1", open, "1", ""},
                                {"2", "600000", "", done, "-", "y"},
                                {"1", "600000", "1", open, "50", "z"}}),
                        age);
        EXPECT_EQ(Held(list, "a"), Describe(orders({{"4", "5", "1", open, "1", ""},
                                                    {"2", "600000", "", done, "10", "y"},
                                                    {"1", "600000", "1", done, "100", "x"}})));
    }
    EXPECT_EQ(refused(), 2u);
    EXPECT_EQ(unreadable(), 2u);
    // The numbers are used again.
    const CDataTable next = orders({{"1", "600000", "2", open, "0", ""},
                                    {"2", "000001", "1", open, "0", ""},
                                    {"4", "5", "1", open, "2", ""}});
    list.TakeAnswer("a", next, 8);
    EXPECT_EQ(Held(list, "a"), Describe(next));
    list.TakePush("a", orders({{"4", "5", "1", done, "9", ""}}), 9, false);
    list.TakeAnswer("a", CDataTable(), 10);
    EXPECT_EQ(Held(list, "a"), "[]");
}

TEST(EntrustListTest, OlderColumnsMissingColumnsAndLateAnswers) {
    CEntrustListCredit older;
    older.TakeAnswer("a", Order("部分成交", "100", "TradeVolume"), 1);
    older.TakePush("a", Order("部分成交", "90", "TradeVolume"), 2, false);
    EXPECT_EQ(Held(older, "a"), Describe(Order("部分成交", "100", "TradeVolume")));

    CEntrustListGGT list;
    list.TakePush("a", Order("全部撤单", "100"), 5, true);
    list.TakePush("a", Order("部分成交", "200"), 6, true);
    list.TakeAnswer("a", Order("未成交", "0"), 4);  // left before the order was final
    list.QueryEnded("a");
    EXPECT_EQ(Held(list, "a"), Describe(Order("全部撤单", "100")));
    const CDataTable poor = MakeTable({"OrderID", "OrderPrice"}, {{"1", "9.99"}});
    EXPECT_EQ(list.TakePush("a", poor, 7, false), PushResult::kTaken);
    CDataTable rows = MakeTable({"OrderID"}, {{"2"}, {""}, {"1"}});
    list.GetRowsOf("a", rows);
    EXPECT_EQ(GbkToUtf8(Describe(rows)), "[OrderID,OrderStatus,DealVolume,OrderPrice|1,全部撤单,100,9.99]");
}

TEST(FundListTest, PushesMergeByCurrency) {
    const CDataTable held = MakeTable({"Currency", "AvailableValue", "TotalAssets"},
                                      {{"CNY", "1", "10"}, {"", "2", "20"}, {"HKD", "3", "30"}});
    struct Case {
        CDataTable held, push;
        const char* expected;
        uint64_t newCurrencies = 0, withoutCurrency = 0;
    };
    const Case cases[] = {
        {held, MakeTable({"AvailableValue", "Currency", "More"}, {{"7", "HKD", "x"}, {"8", "HKD", "y"}}),
         "[Currency,AvailableValue,TotalAssets|CNY,1,10|,2,20|HKD,8,]"},
        {held, MakeTable({"Currency", "AvailableValue"}, {{"USD", "7"}, {"", "8"}, {"EUR", "9"}}),
         "[Currency,AvailableValue,TotalAssets|CNY,1,10|,2,20|HKD,3,30]", 2, 1},
        {held, MakeTable({"AvailableValue"}, {{"7"}}),
         "[Currency,AvailableValue,TotalAssets|CNY,1,10|,2,20|HKD,3,30]", 0, 1},
        {held, CDataTable(), "[Currency,AvailableValue,TotalAssets|CNY,1,10|,2,20|HKD,3,30]"},
        {MakeTable({"TotalAssets"}, {{"1"}}), MakeTable({"Currency"}, {{"CNY"}}), "[TotalAssets|1]", 1},
        {MakeTable({"TotalAssets"}, {}), MakeTable({"Currency", "X"}, {{"", "1"}}), "[Currency,X|,1]"}};
    for (const Case& c : cases) {
        SCOPED_TRACE(Describe(c.held) + " <- " + Describe(c.push));
        CFundList list;
        list.TakeAnswer("a", c.held, 1);
        list.TakeAnswer("b", c.held, 1);
        const Counted isNew("fund_row_of_new_currency"), without("fund_row_without_currency");
        list.UpdateFundTable("a", c.push);
        EXPECT_EQ(Held(list, "a"), c.expected);
        EXPECT_EQ(Held(list, "b"), Describe(c.held));
        EXPECT_EQ(isNew(), c.newCurrencies);
        EXPECT_EQ(without(), c.withoutCurrency);
        EXPECT_EQ(list.GetDataString("update_user"), "a");
    }
}

TEST(FundListTest, PushesWaitForTheAnswerInOrder) {
    const auto fund = [](const char* money) { return MakeTable({"Currency", "Money"}, {{"CNY", money}}); };
    CFundList list;
    EXPECT_EQ(list.TakePush("a", fund("1"), 2, false), PushResult::kUnknown);
    EXPECT_EQ(list.TakePush("a", fund("2"), 3, true), PushResult::kKept);
    EXPECT_EQ(list.TakePush("a", fund("3"), 4, true), PushResult::kKept);
    list.TakeAnswer("a", MakeTable({"Currency", "Money"}, {{"HKD", "5"}, {"CNY", "6"}}), 1);
    EXPECT_EQ(Held(list, "a"), "[Currency,Money|HKD,5|CNY,3]");
    list.TakePush("a", fund("4"), 6, true);
    list.TakeAnswer("a", MakeTable({"Currency", "Money"}, {{"CNY", "7"}}), 5);
    EXPECT_EQ(Held(list, "a"), "[Currency,Money|CNY,4]");
}

// A data manager with the list of funds.
class FakeOwner : public ListOwner {
  public:
    void RegisterNotify(unsigned int handle, std::string kind) override {
        registered.push_back(kind + ":" + std::to_string(handle));
    }
    bool GetData(const std::string&, CUIData&) override { return false; }
    bool GetData(unsigned int, std::string kind, std::string token, CDataTable& out) override {
        return kind == funds.GetTypeText() && funds.GetTable(token, out);
    }
    void ResponseNotify(CUIData* record, int handle, bool notifyOthers) override {
        EXPECT_TRUE(handle == -1 && notifyOthers);
        published.push_back(*record);
        if (onPublish) onPublish();
    }

    CFundList funds;
    std::vector<std::string> registered;
    std::vector<CUIData> published;
    std::function<void()> onPublish;
};

class PositionListTest : public testing::Test {
  protected:
    void SetFund(const std::string& totalAssets) {
        owner.funds.TakeAnswer("a", MakeTable({"TotalAssets"}, {{totalAssets}, {"7"}}), ++age);
    }
    void Notify(const char* user = "a", const char* source = "", const char* kind = "fund") {
        CUIData record(kind);
        record.SetData("update_user", user);
        record.SetData("Push_Source", source);
        CBaseObject::Notify(list->GetHandle(), &record);
    }
    static CDataTable Position(const std::string& marketValue) {
        return MakeTable({"SecurityID", "Market", "MarketValue"}, {{"600000", "17", marketValue}});
    }

    FakeOwner owner;
    std::unique_ptr<CPositionList> list = std::make_unique<CPositionList>(&owner);
    uint64_t age = 0;
};

TEST_F(PositionListTest, WeightsAreExact) {
    struct Case {
        std::string marketValue, totalAssets, rate;
        uint64_t unreadable = 0;
    };
    for (const Case& c :
         {Case{"100", "300", "33.333"}, Case{"200", "300", "66.667"}, Case{"1.005", "1000", "0.101"},
          Case{"-1", "3", "-33.333"}, Case{"1e9", "2e9", "50.000"}, Case{"5", "0.00001", "0.000"},
          Case{"5", "0.00002", "25000000.000"}, Case{"5", "-10", "0.000"}, Case{"5", "0", "0.000"},
          Case{"", "10", "0.000", 1}, Case{"-", "10", "0.000", 1}, Case{"1,234.50", "10", "0.000", 1},
          Case{"5", "", "0.000", 1}, Case{kLongNumber, kLongNumber, "0.000", 2}}) {
        SCOPED_TRACE(c.marketValue + " of " + c.totalAssets);
        SetFund(c.totalAssets);
        const Counted values("position_market_value_unreadable"), assets("fund_total_assets_unreadable");
        list->SetPositionTable("a", Position(c.marketValue), false);
        EXPECT_EQ(Held(*list, "a"),
                  "[SecurityID,Market,MarketValue,MarketValueRate,SecurityMarket|600000,17," + c.marketValue +
                      "," + c.rate + ",600000:17]");
        EXPECT_EQ(values() + assets(), c.unreadable);
    }
}

TEST_F(PositionListTest, FundsRepublishTheirAccountOnly) {
    EXPECT_EQ(owner.registered[0], "fund:" + std::to_string(list->GetHandle()));
    list->SetPositionTable("a", Position("5"), true);
    EXPECT_EQ(Held(*list, "a"), "none");
    list->SetPositionTable("a", Position("5"), false);  // without funds nothing can be computed
    list->SetPositionTable("b", Position("5"), false);
    EXPECT_EQ(Held(*list, "a"), Describe(Position("5")));
    SetFund("20");
    for (const auto& [user, source, kind] : {std::tuple{"", "", "fund"},
                                             {"b", "", "fund"},
                                             {"c", "", "fund"},
                                             {"fund_token", "", "fund"},
                                             {"a", "AssetManager_Thread", "fund"},
                                             {"a", "", "credit_fund"}})
        Notify(user, source, kind);
    EXPECT_TRUE(owner.published.empty());

    Notify("a", "else");
    ASSERT_EQ(owner.published.size(), 1u);
    const CUIData& news = owner.published[0];
    EXPECT_EQ(news.GetType() + news.GetDataString("fund_token") + news.GetDataString("update_type"),
              "positionafund");
    EXPECT_EQ(Held(news, "position"),
              "[SecurityID,Market,MarketValue,MarketValueRate,SecurityMarket|600000,17,5,25.000,600000:17]");
    EXPECT_EQ(Held(*list, "a"), Held(news, "position"));
    EXPECT_EQ(Held(*list, "b"), Describe(Position("5")));

    list->SetPositionTable("a", Position("6"), true);  // a push is stored as it is
    EXPECT_EQ(Held(*list, "a"), Describe(Position("6")));
    owner.onPublish = [this] { list.reset(); };
    Notify("a");
    EXPECT_FALSE(list);
}

TEST_F(PositionListTest, AnyColumnMayBeMissing) {
    SetFund("20");
    list->SetPositionTable("a", MakeTable({"X"}, {{"1"}}), false);
    EXPECT_EQ(Held(*list, "a"), "[X,MarketValueRate,SecurityMarket|1,0.000,:]");
    CPositionListCredit alone(nullptr);
    alone.SetPositionTable("a", Position("5"), false);
    EXPECT_EQ(Held(alone, "a"), Describe(Position("5")));
}

TEST(PositionListGGTTest, AnAnswerWithoutTableStillRegisters) {
    const std::string tricky = "a|" + Gbk("|户");
    CPositionListGGT list;
    CUIData response;
    for (const std::string& token : {std::string("a"), tricky, std::string(), std::string("fund_token")}) {
        response.SetData("FundToken", token);
        list.SetGGTPositionResponse(response);
    }
    EXPECT_EQ(Tokens(list), "a " + tricky + " ");
    EXPECT_EQ(list.TakePush("b", MakeTable({"X"}, {{"1"}}), 1, false), PushResult::kUnknown);
    // What came before the answer stays.
    EXPECT_EQ(list.TakePush("a", MakeTable({"X"}, {{"1"}}), 1, true), PushResult::kKept);
    list.QueryEnded("a");
    EXPECT_EQ(Held(list, "a"), "[X|1]");
    response.SetData("Table", MakeTable({"X"}, {{"2"}}));
    response.SetData("FundToken", tricky);
    list.SetGGTPositionResponse(response);
    response.SetData("fund_token", SetOf({"a", tricky}));
    EXPECT_TRUE(list.MergeMultiAccount(response));
    EXPECT_EQ(Held(response, "position_ggt_multi"), "[X|1|2]");
}

struct AvailableCase {
    std::vector<std::pair<const char*, const char*>> request;
    const char *available, *amounts;
};

// Asks for 600000 of four accounts; what the lists tell as "a=1 b=2 ".
template <class List>
void ExpectAvailable(const List& list, const AvailableCase& c) {
    CUIData request("ask"), amounts;
    request.SetData("fund_token", SetOf({"a", "b", "c", "d|"}));
    request.SetData("stock_code", "600000");
    request.SetData("stock_marketid", "17");
    std::string trace;
    for (const auto& [key, value] : c.request) {
        request.SetData(key, value);
        trace += std::string(key) + "=" + value + " ";
    }
    SCOPED_TRACE(trace);
    const Counted unknown("stock_available_account_unknown");
    EXPECT_TRUE(list.CalcStockAvailable(request));
    EXPECT_EQ(request.GetDataString("stock_available"), c.available);
    request.GetData("multi_account_amount", amounts);
    std::string text;
    for (const auto [token, value] : amounts)
        text += std::string(token) + "=" + DoubleText(value.AsDouble()) + " ";
    EXPECT_EQ(text, c.amounts);
    EXPECT_EQ(unknown(), 1u);
}

TEST(StockAvailableTest, MoneyOfOrdinaryAccounts) {
    CFundList list;
    const std::vector<std::string> columns = {"Currency", "AvailableValue", "Inst_AvailableValue"};
    list.TakeAnswer("a", MakeTable(columns, {{"HKD", "5000", ""}, {"CNY", "10000", "2000"}}), 1);
    list.TakeAnswer("b", MakeTable(columns, {{"", "1999.99", "-"}, {"CNY", "9e9", "1"}}), 1);
    list.TakeAnswer("d|", MakeTable({"X"}, {{"1"}}), 1);
    for (const AvailableCase& c :
         {AvailableCase{{{"stock_price", "10"}, {"currency", "CNY"}}, "1100", "a=1000 b=100 d|=0 "},
          {{{"stock_price", "10"}}, "600", "a=500 b=100 d|=0 "},
          {{{"stock_price", "10"}, {"currency", "CNY"}, {"client_type", "PB_MODE"}},
           "200",
           "a=200 b=0 d|=0 "},
          {{{"stock_price", "10"}, {"currency", "CNY"}, {"stock_unit", "1000"}}, "1000", "a=1000 b=0 d|=0 "},
          {{{"stock_price", "10"}, {"currency", "CNY"}, {"commission_rate", "0.0001"}},
           "1000",
           "a=900 b=100 d|=0 "},
          {{{"stock_price", "1,0"}, {"currency", "CNY"}}, "0", "a=0 b=0 d|=0 "}})
        ExpectAvailable(list, c);
    CTrade::AddCodeData("00700", "76", "", 500);
    ExpectAvailable(list, {{{"stock_code", "00700"}, {"stock_marketid", "76"}, {"stock_price", "10"}},
                           "500",
                           "a=500 b=0 d|=0 "});
    CUIData bare;
    bare.SetData("stock_price", 0.1);
    EXPECT_TRUE(list.CalcStockAvailable(bare));
    EXPECT_EQ(bare.GetDataString("stock_available"), "0");
}

TEST(StockAvailableTest, MoneyOfCreditAccounts) {
    CFundListCredit list;
    const CDataTable fund = MakeTable({"FinEnableQuota", "AvailableValue", "WT_RZRQ_RQXYZYLL"},
                                      {{"1000", "2000", "3000"}, {"9999", "9999", "9999"}});
    list.TakeAnswer("a", fund, 1);
    list.TakeAnswer("b", MakeTable({"X"}, {{""}}), 1);
    list.TakeAnswer("c", fund, 1);
    for (const AvailableCase& c :
         {AvailableCase{{{"stock_price", "10"}}, "200", "a=100 b=0 c=100 "},
          {{{"stock_price", "10"}, {"usertoken_type", "2"}}, "400", "a=200 b=0 c=200 "},
          {{{"stock_price", "10"}, {"usertoken_type", "3"}}, "200", "a=100 b=0 c=100 "},
          {{{"stock_price", "10"}, {"usertoken_type", "3"}, {"entrust_type", "sell"}},
           "600",
           "a=300 b=0 c=300 "}})
        ExpectAvailable(list, c);
}

TEST(StockAvailableTest, Positions) {
    const CDataTable table =
        MakeTable({"SecurityID", "Market", "AvailableStockBalance", "Inst_AvailableStockBalance"},
                  {{"600000", "17", "1000.00", "7"},
                   {"000001", "33", "5", "5"},
                   {"600000", "17", "11", "8"},
                   {"600000", "17", "-"}});
    CPositionList list(nullptr);
    CPositionListCredit credit(nullptr);
    for (const char* token : {"a", "b"}) {
        list.SetPositionTable(token, table, false);
        credit.SetPositionTable(token, table, false);
    }
    for (PositionTables* tables :
         {static_cast<PositionTables*>(&list), static_cast<PositionTables*>(&credit)})
        tables->SetPositionTable("c", MakeTable({"X"}, {{"1"}}), false);
    ExpectAvailable(list, {{}, "2022", "a=1011 b=1011 "});
    ExpectAvailable(list, {{{"client_type", "PB_MODE"}}, "30", "a=15 b=15 "});
    ExpectAvailable(credit, {{{"client_type", "PB_MODE"}}, "2022", "a=1011 b=1011 "});
    CUIData bare;
    EXPECT_FALSE(list.CalcStockAvailable(bare));
    EXPECT_TRUE(bare.IsEmpty());
}

}  // namespace
}  // namespace luadui
