// Account data lists: the money of one account changes among few accounts and among many, and beside a list that is
// made anew for every change.
#include "datalists/account_data_list.h"

#include <string>
#include <vector>

#include "bench/report.h"

namespace luadui::bench {
namespace {

CDataTable Accounts(int count) {
    CDataTable table;
    for (const char* name : {"account_id", "accountname", "qsid", "trade_type", "fund_token"})
        table.AddColumn(name);
    for (int i = 0; i < count; ++i) {
        const int row = table.AppendRow();
        const std::string id = std::to_string(880'000 + i);
        for (int col = 0; col < table.GetColumnNumber(); ++col)
            table.SetItemText(row, col, col == 3 ? "1" : id);
    }
    return table;
}

CDataTable Group(int count) {
    CDataTable table;
    for (const char* name : {"groupid", "groupname", "account"}) table.AddColumn(name);
    std::string members;
    for (int i = 0; i < count; ++i) members += (i ? ",\"" : "\"") + std::to_string(880'000 + i) + '"';
    table.AppendRow();
    for (int col = 0; col < 2; ++col) table.SetItemText(0, col, "core");
    table.SetItemText(0, 2, '[' + members + ']');
    return table;
}

CDataTable Funds(const char* total) {
    CDataTable table;
    const int row = table.AppendRow();
    for (const char* name :
         {"Currency", "TotalAssets", "AvailableValue", "MarketValue", "FrozenValue", "DayProfit"})
        table.SetItemText(row, table.AddColumn(name), total);
    return table;
}

CUIData Ask(const AccountDataList& list, const char* kind, const char* group) {
    CUIData request(kind);
    request.SetData("groupname", group);
    list.GetData(request);
    return request;
}

// Changes the funds of one account again and again, while somebody holds what all forms of the list answered and
// the news of the last change.
class FundLoop {
  public:
    explicit FundLoop(int accounts) {
        m_list.SetAccounts(Accounts(accounts));
        m_list.SetGroups(Group(accounts / 2));
        for (const char* kind : {"accountdatalist", "currency_accountdatalist"}) {
            for (const char* group : {"", "core"}) m_held.push_back(Ask(m_list, kind, group));
        }
    }
    void operator()() { m_news = m_list.SetFunds("880003", m_funds[++m_count % 2]); }
    void Answer() {
        (*this)();
        m_news.push_back(Ask(m_list, "accountdatalist", "core"));
    }

  private:
    CAccountDataList m_list;
    const CDataTable m_funds[2] = {Funds("1234567.89"), Funds("1234567.90")};
    std::vector<CUIData> m_held, m_news;
    size_t m_count = 0;
};

LUADUI_REPORT(AccountFunds) {
    const Timing time = Compare(FundLoop(5'000), FundLoop(10));
    AtMost("account_funds_among_5000_us", time.ours * 1e6, 20);
    AtMost("account_funds_among_5000_vs_10", time.CostRatio(), 1.5);

    FundLoop asked(5'000);
    const auto renew = [accounts = Accounts(5'000), groups = Group(2'500)] {
        CAccountDataList list;
        list.SetGroups(groups);
        list.SetAccounts(accounts);
        Keep(Ask(list, "accountdatalist", "core"));
    };
    const Timing answer = Compare([&] { asked.Answer(); }, renew);
    AtMost("account_answer_of_2500_after_change_us", answer.ours * 1e6, 50);
    AtLeast("account_answer_vs_list_made_anew", answer.Speedup(), 50);
}

}  // namespace
}  // namespace luadui::bench
