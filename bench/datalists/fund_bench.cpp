// What a change of an account's money costs, beside doing the same with binary numbers in plain structures.
#include <cstdio>
#include <cstdlib>
#include <map>
#include <string>
#include <vector>

#include "base/text.h"
#include "bench/report.h"
#include "datalists/fund_list.h"
#include "datalists/position_list.h"

namespace luadui::bench {
namespace {

constexpr int kAccounts = 200;
constexpr int kPositions = 1000;
const std::string kToken = "880100";

std::string TokenOf(int account) { return std::to_string(880'000 + account); }

CDataTable Table(const std::vector<std::string>& columns) {
    CDataTable table;
    for (const std::string& column : columns) table.AddColumn(column);
    return table;
}

void Append(CDataTable& table, const std::vector<std::string>& cells) {
    const int row = table.AppendRow();
    for (size_t col = 0; col < cells.size(); ++col) table.SetItemText(row, static_cast<int>(col), cells[col]);
}

CDataTable Funds(int account) {
    CDataTable table = Table({"Currency", "TotalAssets", "AvailableValue", "Inst_AvailableValue",
                              "FrozenValue", "MarketValue", "DayProfit"});
    const std::string money = std::to_string(1'000'000 + 7'919 * account) + ".25";
    for (const char* currency : {"USD", "HKD", "CNY"})
        Append(table, {currency, money, money, money, "0.00", money, "-12.50"});
    return table;
}

CDataTable Positions(int rows) {
    CDataTable table = Table({"SecurityID", "SecurityName", "Market", "StockBalance", "AvailableStockBalance",
                              "CostPrice", "LastPrice", "MarketValue", "FloatProfit", "DayProfit", "Currency",
                              "Inst_AvailableStockBalance"});
    for (int row = 0; row < rows; ++row)
        Append(table, {std::to_string(600'000 + row), "NAME", "17", "1000", "1000", "12.345", "13.21",
                       std::to_string(13'210 + row) + ".50", "865.00", "10.00", "CNY", "0"});
    return table;
}

// The manager of a terminal with 200 accounts, and a page that keeps what was published last.
class Desk : public ListOwner {
  public:
    explicit Desk(int accounts = kAccounts, int rows = kPositions) : positions(this) {
        const CDataTable table = Positions(rows);
        for (int account = 0; account < accounts; ++account) {
            funds.TakeAnswer(TokenOf(account), Funds(account), 1);
            positions.TakeAnswer(TokenOf(account), table, 1);
        }
    }
    void RegisterNotify(unsigned int, std::string) override {}
    bool GetData(const std::string&, CUIData&) override { return false; }
    bool GetData(unsigned int, std::string, std::string token, CDataTable& out) override {
        return funds.GetTable(token, out);
    }
    void ResponseNotify(CUIData* record, int, bool) override { m_page = *record; }

    CFundList funds;
    CPositionList positions;

  private:
    CUIData m_page;
};

struct PlainPosition {
    std::string security, market, marketValue, rate;
};

LUADUI_REPORT(WeightsOfPositions) {
    Desk desk;
    CDataTable push = Funds(100);
    CUIData news("fund");
    news.SetData("update_user", kToken);
    int64_t cents = 100'000'000;
    const auto change = [&] {
        push.SetItemText(0, "TotalAssets", LongText(++cents));
        desk.funds.UpdateFundTable(kToken, push);
        desk.positions.OnNotify(&news);
    };
    std::vector<PlainPosition> plain(kPositions, {"600000", "17", "13210.50", ""});
    std::vector<PlainPosition> page;
    double assets = 1e8;
    const auto plainChange = [&] {
        assets += 1;
        for (PlainPosition& position : plain) {
            char text[32];
            std::snprintf(text, sizeof text, "%.3f",
                          std::strtod(position.marketValue.c_str(), nullptr) / assets * 100);
            position.rate = text;
        }
        page = plain;
    };
    const Timing time = Compare(change, plainChange);
    AtMost("fund_change_to_weights_of_1000_us", time.ours * 1e6, 1000);
    AtMost("fund_change_to_weights_vs_plain_doubles", time.CostRatio(), 1.5);
}

// A change of one account's money, up to its position on the page.
class FundChange {
  public:
    explicit FundChange(int accounts) : m_desk(accounts, 1) { m_news.SetData("update_user", m_token); }
    void operator()() {
        m_push.SetItemText(0, "TotalAssets", LongText(++m_cents));
        m_desk.funds.UpdateFundTable(m_token, m_push);
        m_desk.positions.OnNotify(&m_news);
    }

  private:
    const std::string m_token = TokenOf(0);
    Desk m_desk;
    CDataTable m_push = Funds(0);
    CUIData m_news{"fund"};
    int64_t m_cents = 100'000'000;
};

LUADUI_REPORT(FundsOfManyAccounts) {
    const Timing time = Compare(FundChange(5'000), FundChange(10));
    AtMost("fund_change_of_5000_accounts_us", time.ours * 1e6, 10);
    AtMost("fund_change_of_5000_accounts_vs_10", time.CostRatio(), 1.5);
}

LUADUI_REPORT(BuyableQuantity) {
    Desk desk;
    CUIData request("stock_available");
    CDataSet tokens;
    std::map<std::string, std::map<std::string, std::string>> plain;
    for (int account = 0; account < kAccounts; ++account) {
        tokens.Insert(TokenOf(account));
        plain[TokenOf(account)]["AvailableValue"] = Funds(account).GetItemText(2, "AvailableValue");
    }
    request.SetData("fund_token", tokens);
    request.SetData("stock_code", "600000");
    request.SetData("stock_marketid", "17");
    request.SetData("stock_price", "13.21");
    request.SetData("entrust_type", "buy");
    request.SetData("currency", "CNY");
    const auto count = [&] {
        CUIData asked = request;
        desk.funds.CalcStockAvailable(asked);
        Keep(asked);
    };
    const auto plainCount = [&] {
        std::map<std::string, double> amounts;
        double total = 0;
        for (const std::string& token : tokens) {
            const double money = std::strtod(plain[token]["AvailableValue"].c_str(), nullptr);
            total += amounts[token] = static_cast<double>(static_cast<int64_t>(money / 13.21 / 100) * 100);
        }
        Keep(total);
    };
    const Timing time = Compare(count, plainCount);
    AtMost("buyable_of_200_accounts_us", time.ours * 1e6, 100);
    AtMost("buyable_of_200_accounts_vs_plain_doubles", time.CostRatio(), 2.5);
}

}  // namespace
}  // namespace luadui::bench
