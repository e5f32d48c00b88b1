// What one answer of the account service costs, beside building and writing the same accounts with jsoncpp.
#include <json/json.h>

#include <cstdlib>
#include <memory>
#include <string>
#include <vector>

#include "accounts/account_list.h"
#include "bench/report.h"

namespace luadui::bench {
namespace {

constexpr int kAccounts = 5000;

const char* const kColumns[] = {"account_id",   "account_code", "account_name",   "alias",
                                "account_mark", "product_id",   "product_name",   "institution_id",
                                "user_id",      "broker_id",    "broker_name",    "yyb_id",
                                "yyb_name",     "trade_type",   "user_key",       "issimulate",
                                "bind_status",  "src_server",   "permission_code"};

std::string Cell(const char* column, int account) { return column + std::to_string(100'000 + account); }

std::string PortfoliosOf(int account) {
    const std::string number = std::to_string(account);
    return R"([{"portfolio_id":"p)" + number +
           R"(","portfolio_name":"unit","portfolio_code":"c","remarks":"",)" + R"("fund_token":"T)" + number +
           R"(","is_default":"1"}])";
}

CQueueRespData AnswerWith(int accounts) {
    CDataTable table;
    for (const char* const column : kColumns) table.AddColumn(column);
    const int portfolios = table.AddColumn("portfolios");
    for (int account = 0; account < accounts; ++account) {
        const int row = table.AppendRow();
        for (int col = 0; col < portfolios; ++col) table.SetItemText(row, col, Cell(kColumns[col], account));
        table.SetItemText(row, portfolios, PortfoliosOf(account));
    }
    CQueueRespData answer;
    answer.SetData("REQTYPE", kQueryAccounts.type);
    answer.SetData("UUID", "one");
    answer.SetData("Table", table);
    return answer;
}

class Ignore : public ResultEventSink {
    void OnResultEvent(const ResultEvent&) override {}
};

// Nobody listens and no host answers: what it costs is the list's own.
class Desk {
  public:
    explicit Desk(int accounts) : m_answer(AnswerWith(accounts)) { Start(); }

    void Start() { m_list = std::make_unique<CAccountList>(m_sink); }
    void Answer() {
        CUIData values;
        values.SetData("UUID", "one");
        m_list->Query(values);
        m_list->OnResponse(&m_answer);
        if (m_list->All().empty()) std::abort();
    }

  private:
    Ignore m_sink;
    CQueueRespData m_answer;
    std::unique_ptr<CAccountList> m_list;
};

std::string WriteWithJsoncpp() {
    Json::Value accounts(Json::arrayValue);
    for (int account = 0; account < kAccounts; ++account) {
        Json::Value json;
        for (const char* const column : kColumns) json[column] = Cell(column, account);
        for (const char* const secret : {"password", "txpassword", "dynamicpassword", "canuse", "AccountMsg"})
            json[secret] = "";
        Json::Value portfolio;
        for (const char* const name : {"portfolioid", "portfolioname", "portfoliocode", "fund_token"})
            portfolio[name] = Cell(name, account);
        json["portfolios"].append(portfolio);
        accounts.append(json);
    }
    return Json::FastWriter().write(accounts);
}

LUADUI_REPORT(BuildingTheList) {
    Desk desk(kAccounts), small(kAccounts / 10);
    const auto first = [](Desk& each) {
        each.Start();
        each.Answer();
    };
    const auto build = Compare([&] { first(desk); }, [] { Keep(WriteWithJsoncpp()); });
    AtMost("accounts_5000_built_ms", build.ours * 1e3, 100);
    AtMost("accounts_5000_built_vs_jsoncpp", build.CostRatio(), 1);
    const auto linear = Compare([&] { first(desk); }, [&] { first(small); });
    AtMost("accounts_5000_vs_500_each", linear.CostRatio() / 10, 1.6);
    AtMost("accounts_5000_refreshed_ms", Measure([&] { desk.Answer(); }) * 1e3, 100);
}

}  // namespace
}  // namespace luadui::bench
