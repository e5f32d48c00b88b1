#include "datalists/order_list.h"

#include <gtest/gtest.h>

#include <string>
#include <tuple>
#include <vector>

#include "base/counters.h"
#include "base/text.h"

namespace luadui {
namespace {

using Rows = std::vector<std::vector<std::string>>;

CDataTable Table(const std::vector<std::string>& columns, const Rows& rows) {
    CDataTable table;
    for (const std::string& column : columns) table.AddColumn(column);
    for (const auto& cells : rows) {
        const int row = table.AppendRow();
        for (size_t col = 0; col < cells.size(); ++col)
            table.SetItemText(row, static_cast<int>(col), Gbk(cells[col]));
    }
    return table;
}

CDataTable TableIn(const CUIData& record, const char* name) {
    CDataTable table;
    EXPECT_TRUE(record.GetData(name, table)) << name;
    return table;
}

// The named cells of all rows, "a|b" each.
std::vector<std::string> Cells(const CDataTable& table, const std::vector<const char*>& columns) {
    std::vector<std::string> rows;
    for (int row = 0; row < table.GetRowNumber(); ++row) {
        std::string& text = rows.emplace_back();
        for (const char* column : columns)
            text.append(column == columns[0] ? "" : "|").append(GbkToUtf8(table.GetItemText(row, column)));
    }
    return rows;
}

class OrderListTest : public testing::Test {
  protected:
    OrderListTest() {
        accounts.SetData(
            "Table",
            Table({"fund_token", "account_name", "accountid", "accountmark", "product_name", "portfolios"},
                  {{"t1", "张三", "1001", "主", "P", ""},
                   {"t2", "李四", "1002", "", "P", R"([{"fund_token":"t2b","portfolioname":"组合"},7])"}}));
    }
    CUIData Answer(const std::string& rawData, const CDataTable& table = CDataTable()) const {
        CUIData params, request, answer("answer");
        answer.SetData("UUID", query);
        params.SetData("InstanceID", instance);
        params.SetData("TaskID", 23);
        request.SetData("Params", params);
        answer.SetData("Request", request);
        answer.SetData("RawData", Gbk(rawData));
        if (table.GetColumnNumber() > 0) answer.SetData("Table", table);
        return answer;
    }
    CUIData Take(CUIData answer, uint64_t age = 0) {
        CUIData out;
        EXPECT_TRUE(list.SetBasketDetail(answer, &accounts, out, age));
        EXPECT_EQ(answer.GetType(), "order");
        EXPECT_TRUE(TableIn(answer, "basket_pending_table").SharesWith(TableIn(out, "basket_pending_table")));
        return out;
    }

    COrderList list;
    CUIData accounts{"account"};
    std::string instance = "1", query;
};

TEST_F(OrderListTest, PendingOrdersGetProgressColourAndAccount) {
    struct Case {
        const char *order, *cells, *color;
    };
    const std::vector<Case> cases = {
        {R"("fund_token":"t1","OrderQty":"300","DealVolume":"100","OrderStatusMsg":"已结束")",
         "t1|张三|1001|主||张三 主||33.33%|--|--|--", "0xFF9A9A9A"},
        {R"("fund_token":"t2b","OrderQty":3e2,"DealVolume":"-","OrderStatusMsg":"部分\u64a4\u5355")",
         "t2b|李四|1002||组合|李四|组合 P|0.00%|--|--|--", "0xFF5BA7E5"},
        {R"("fund_token":"t9","accountmark":"m","OrderQty":"0.0001","TradeVolume":1,"TradeProgress":"x")",
         "t9|未登录|未登录|m|||||--|--|--", "0xFFFF8C5A"},
        {R"("OrderQty":200,"TradeVolume":199.99,"OrderStatusMsg":null,"x":{"y":[1]})",
         "|未登录|未登录|||||100.00%|--|--|--", "0xFFFF8C5A"},
        {R"("OrderQty":"1,000","DealVolume":true)", "|未登录|未登录||||||--|--|--", "0xFFFF8C5A"}};
    std::string json;
    for (const Case& c : cases) json.append(json.empty() ? "{" : ",{").append(c.order).append("}");
    const uint64_t unreadable = CCounters::Get("basket_pending_order_qty_unreadable");
    const CUIData out = Take(Answer(R"({"x":[{"a":"]"}],"PendingOrderArray":[)" + json + "]}"));

    const CDataTable pending = TableIn(out, "basket_pending_table");
    const auto rows = Cells(
        pending, {"fund_token", "accountname", "accountid", "accountmark", "portfoliomsg", "accountname_ex",
                  "portforlioname_ex", "TradeProgress", "SecurityMarket", "ChangeRate", "LastPrice"});
    ASSERT_EQ(rows.size(), cases.size());
    for (size_t i = 0; i < cases.size(); ++i) {
        EXPECT_EQ(rows[i], cases[i].cells) << i;
        EXPECT_EQ(pending.GetItemTextColor(static_cast<int>(i), "OrderStatusMsg"), cases[i].color) << i;
    }
    EXPECT_EQ(pending.GetColumnNumber(), 29);
    EXPECT_EQ(TableIn(out, "basket_deal_table").GetColumnNumber(), 25);
    EXPECT_FALSE(out.Has("incomplete"));
    EXPECT_EQ(out.GetDataText("InstanceID") + out.GetDataText("TaskID"), "123");
    EXPECT_EQ(CCounters::Get("basket_pending_order_qty_unreadable"), unreadable + 1);
}

// Wherever the text ends, the rows before are kept as they are; a broken row costs itself.
TEST_F(OrderListTest, BrokenJsonKeepsWhatIsWhole) {
    const std::string text =
        R"({"a":"\"x\\","DealOrderArray":[{"OrderID":"O1","AvgPx":1.50},)"
        R"({"OrderID":"O\u0032","SideName":"買入"}, {"OrderID":"O3\\"}] , "b":{"c":[]}})";
    const std::vector<const char*> columns = {"OrderID", "AvgPx", "SideName"};
    const auto whole = Cells(TableIn(Take(Answer(text)), "basket_deal_table"), columns);
    EXPECT_EQ(whole, (std::vector<std::string>{"O1|1.50|", "O2||買入", "O3\\||"}));
    const std::string gbk = Gbk(text);
    for (size_t size = 1; size < gbk.size(); ++size) {
        CUIData answer = Answer("");
        answer.SetData("RawData", gbk.substr(0, size));
        const CUIData out = Take(answer);
        EXPECT_TRUE(out.GetDataBool("incomplete")) << size;
        const auto rows = Cells(TableIn(out, "basket_deal_table"), columns);
        EXPECT_TRUE(std::equal(rows.begin(), rows.end(), whole.begin())) << size;
    }
    for (const char* broken : {R"({"OrderID":"X"])", R"({"OrderID" "X"})", "7", "[]", "null",
                               R"({"OrderID":X})", R"({"OrderID":1e999})", R"("{")"}) {
        const CUIData out = Take(
            Answer(R"({"DealOrderArray":[{"OrderID":"A"},)" + std::string(broken) + R"(,{"OrderID":"B"}]})"));
        EXPECT_TRUE(out.GetDataBool("incomplete")) << broken;
        EXPECT_EQ(Cells(TableIn(out, "basket_deal_table"), {"OrderID"}), (std::vector<std::string>{"A", "B"}))
            << broken;
    }
    // Deep nesting, among members that nobody asked for and in a row, neither crashes nor hangs.
    const std::string deep(100'000, '[');
    Take(Answer(R"({"x":)" + deep));
    Take(Answer(R"({"DealOrderArray":[{"x":)" + deep + std::string(100'000, ']') + "}]}"));
    Take(Answer(deep));
}

TEST_F(OrderListTest, PartsAreAppendedAndRowsThatComeAgainRenewed) {
    const std::vector<std::string> columns = {"OrderID", "fund_token", "OrderStatus"};
    const auto held = [this](const CDataTable& table) {
        return Cells(TableIn(Take(Answer("", table)), "123"),
                     {"OrderID", "fund_token", "OrderStatus", "Extra"});
    };
    EXPECT_EQ(held(Table(columns, {{"1", "t1", "a"}, {"", "t1", "b"}})),
              (std::vector<std::string>{"1|t1|a|", "|t1|b|"}));
    EXPECT_EQ(held(Table({"OrderStatus", "Extra", "fund_token", "OrderID"},
                         {{"c", "e", "t1", "1"}, {"d", "", "t2", "1"}, {"b", "", "t1", ""}})),
              (std::vector<std::string>{"1|t1|c|e", "|t1|b|", "1|t2|d|", "|t1|b|"}));
    EXPECT_EQ(held(Table({"OrderStatus"}, {{"z"}})).size(), 5u);  // nothing to know it by
    EXPECT_EQ(held(Table({"PendingOrderID", "OrderID"}, {{"1", ""}, {"", "1"}})).size(), 7u);
    EXPECT_EQ(TableIn(Take(Answer("no JSON")), "123").GetRowNumber(), 7);

    // Parts of one query add up, another query starts anew; rows that are doubled within an answer are one.
    const CDataTable noIds = Table({"Qty"}, {{"1"}, {"1"}});
    const CDataTable doubled = Table(columns, {{"1", "t1", "a"}, {"2", "t1", "b"}, {"1", "t1", "c"}});
    for (const auto& [uuid, table, rows] : std::initializer_list<std::tuple<const char*, CDataTable, int>>{
             {"a", noIds, 2}, {"a", noIds, 4}, {"b", noIds, 2}, {"b", doubled, 4}, {"c", doubled, 2}}) {
        query = uuid;
        EXPECT_EQ(held(table).size(), static_cast<size_t>(rows)) << uuid;
    }
    EXPECT_EQ(held(doubled), (std::vector<std::string>{"1|t1|c|", "2|t1|b|"}));

    instance = "";
    CUIData answer("answer"), request, out;
    EXPECT_FALSE(list.SetBasketDetail(answer, nullptr, out));
    answer.SetData("Request", request);
    EXPECT_FALSE(list.SetBasketDetail(answer, nullptr, out));
    EXPECT_EQ(answer.GetType() + out.GetType(), "answer");
}

TEST_F(OrderListTest, OlderAnswersChangeNothing) {
    const auto taken = [this](const char* uuid, uint64_t age) {
        query = uuid;
        const std::string id = std::string(R"([{"OrderID":")") + uuid + R"("}]})";
        const CUIData out = Take(Answer(R"({"DealOrderArray":)" + id, Table({"OrderID"}, {{uuid}})), age);
        return Cells(TableIn(out, "123"), {"OrderID"})[0] +
               Cells(TableIn(out, "basket_deal_table"), {"OrderID"})[0];
    };
    EXPECT_EQ(taken("new", 5), "newnew");
    EXPECT_EQ(taken("old", 4), "newnew");
    EXPECT_EQ(taken("newer", 6), "newernewer");
}

TEST_F(OrderListTest, KeepsTheTablesOfTheLastKeys) {
    for (size_t i = 0; i <= COrderList::kMaxTables; ++i) {
        for (const std::string& each : {std::to_string(1000 + i), std::string("used")}) {
            instance = each;
            Take(Answer("", Table({"OrderID"}, {{"1"}})));
        }
    }
    EXPECT_EQ(list.Size(), COrderList::kMaxTables);
    EXPECT_TRUE(list.Has("used23"));
    EXPECT_FALSE(list.Has("100023"));
}

}  // namespace
}  // namespace luadui
