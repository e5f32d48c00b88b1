// The details of a basket beside jsoncpp, which reads the same text (in UTF-8, as it wants it) and frees what it
// made.
#include "datalists/order_list.h"

#include <json/json.h>

#include <array>
#include <memory>
#include <string>

#include "base/text.h"
#include "bench/report.h"

namespace luadui::bench {
namespace {

constexpr int kAccounts = 200;

std::string Order(int number) {
    const std::string id = std::to_string(10'000'000 + number);
    const bool isDone = number % 3 == 0;
    return R"({"fund_token":"tok)" + std::to_string(number % kAccounts) + R"(","SecurityID":"600)" +
           id.substr(5) +
           R"(","MarketID":"17","Side":"0","SideName":"买入","OrderQty":"3000","DealVolume":")" +
           (isDone ? "3000" : "700") + R"(","OrderPrice":"12.34","OrderStatus":"2","OrderStatusMsg":")" +
           (isDone ? "已结束" : "部分成交") + R"(","CreateTime":"20240131 093000","OrderTime":"09:30:00",)" +
           R"("PendingOrderID":"P)" + id + R"(","TradeVolume":700,"AvgPx":12.335,"ExecID":"E)" + id +
           R"(","OrderID":"O)" + id + R"(","TransactTime":"09:30:01","BusinessAmount":8634.5})";
}

std::string Orders(int count) {
    std::string array;
    for (int number = 0; number < count; ++number) array += (number == 0 ? "" : ",") + Order(number);
    return array;
}

CUIData Accounts() {
    CDataTable table;
    for (const char* column : {"fund_token", "accountname", "accountid", "accountmark"})
        table.AddColumn(column);
    for (int account = 0; account < kAccounts; ++account) {
        const int row = table.AppendRow();
        for (int col = 0; col < table.GetColumnNumber(); ++col)
            table.SetItemText(row, col, (col == 0 ? "tok" : Gbk("账户")) + std::to_string(account));
    }
    CUIData accounts("account");
    accounts.SetData("account", table);
    return accounts;
}

CUIData Answer(const std::string& rawData) {
    CUIData params, request, answer;
    params.SetData("InstanceID", "1");
    request.SetData("Params", params);
    answer.SetData("Request", request);
    answer.SetData("RawData", Gbk(rawData));
    return answer;
}

LUADUI_REPORT(BasketDetail) {
    const std::string text =
        R"({"DealOrderArray":[)" + Orders(5000) + R"(],"PendingOrderArray":[)" + Orders(5000) + "]}";
    const CUIData answer = Answer(text), accounts = Accounts();
    COrderList list;
    const auto ours = [&] {
        CUIData response = answer, out;
        list.SetBasketDetail(response, &accounts, out);
        Keep(out);
    };
    const std::unique_ptr<Json::CharReader> reader(Json::CharReaderBuilder().newCharReader());
    const auto parse = [&] {
        Json::Value root;
        reader->parse(text.data(), text.data() + text.size(), &root, nullptr);
        Keep(root);
    };
    AtMost("basket_detail_10000_orders_vs_jsoncpp", Compare(ours, parse).CostRatio(), 1.4);
}

}  // namespace
}  // namespace luadui::bench
