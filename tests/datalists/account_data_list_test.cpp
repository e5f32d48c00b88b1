#include "datalists/account_data_list.h"

#include <gtest/gtest.h>

#include <map>
#include <random>
#include <string>
#include <vector>

#include "base/counters.h"
#include "base/text.h"
#include "tests/fakes/describe.h"
#include "tests/fakes/tables.h"

namespace luadui {
namespace {

std::string Joined(const CDataSet& set) {
    std::string text;
    for (const std::string& element : set) text += element + " ";
    return text;
}

std::string GroupTokens(const AccountDataList& list, std::string_view group) {
    CDataSet tokens;
    return list.GetGroupAccount(group, tokens) ? Joined(tokens) : "unknown";
}

CDataTable Accounts() {
    return MakeTable(
        {"account_id", "trade_type", "accountname", "portfolios", "fund_token"},
        {{"1001", "1", "A", "", "t1"},
         {"1002", "2", "B", "", "t2"},
         {"1003", "1", "C", R"([{"fund_token":"p1"},{"fund_token":""},7,{"fund_token":"p2"}])", "t3"},
         {"1004", "1", "D", "", ""},
         {"1001", "2", "A on credit", "", "t5"}});
}

CDataTable Groups(const std::vector<std::vector<std::string>>& rows) {
    return MakeTable({"groupid", "groupname", "grouptype", "account"}, rows);
}

class AccountDataListTest : public testing::Test {
  protected:
    void SetAll(const CDataTable& accounts, const CDataTable& groups) {
        for (AccountDataList* list :
             {static_cast<AccountDataList*>(&plain), static_cast<AccountDataList*>(&credit),
              static_cast<AccountDataList*>(&ggt)}) {
            list->SetGroups(groups);
            list->SetAccounts(accounts);
        }
    }
    // The names in the rows of the answer, then the tokens.
    std::string Ask(const AccountDataList& list, const char* type, const char* kind, const char* group) {
        CUIData request(type);
        if (group) request.SetData("groupname", group);
        if (!list.GetData(request)) return "no answer";
        CDataTable rows;
        CDataSet tokens;
        EXPECT_TRUE(request.GetData(kind, rows));
        EXPECT_TRUE(request.GetData("usertoken_set", tokens));
        EXPECT_EQ(request.GetDataString("groupname"), group ? group : "");
        EXPECT_EQ(rows.GetColumnNumber(), kAccountColumns + 1);
        std::string text;
        for (int row = 0; row < rows.GetRowNumber(); ++row)
            text += rows.GetItemText(row, "accountname") + ",";
        return text + " " + Joined(tokens);
    }

    CAccountDataList plain;
    CAccountDataListCredit credit;
    CAccountDataListGGT ggt;
};

TEST_F(AccountDataListTest, GroupsHoldTheirAccountsInEachFamily) {
    EXPECT_EQ(Ask(plain, "accountdatalist", "accountdatalist", ""), "no answer");
    SetAll(Accounts(), Groups({{"g1", "one", "1", R"(["1003","1001"])"},
                               {"g2", "two", "2", R"(["1002"])"},
                               {"g3", "two", "1", R"(["1004","9999"])"},
                               {"g4", "none", "1", "[]"}}));
    struct Case {
        const char* group;
        const char *plain, *credit;
    };
    for (const Case& c : {Case{nullptr, "A,C,D, p1 p2 t1 t3 ", "B,A on credit, t2 t5 "},
                          Case{"one", "A,C, p1 p2 t1 t3 ", "A on credit, t5 "}, Case{"two", "D, ", "B, t2 "},
                          Case{"none", " ", " "}, Case{"other", " ", " "}}) {
        SCOPED_TRACE(c.group ? c.group : "(all)");
        EXPECT_EQ(Ask(plain, "accountdatalist", "accountdatalist", c.group), c.plain);
        EXPECT_EQ(Ask(plain, "currency_accountdatalist", "currency_accountdatalist", c.group), c.plain);
        EXPECT_EQ(Ask(credit, "accountdatalistcredit", "accountdatalistcredit", c.group), c.credit);
        EXPECT_EQ(Ask(ggt, "accountdatalist_ggt", "accountdatalist_ggt", c.group), c.plain);
        EXPECT_EQ(Ask(ggt, "else", "accountdatalist_ggt", c.group), c.plain);
    }
    EXPECT_EQ(GroupTokens(plain, "two"), "");
    EXPECT_EQ(GroupTokens(plain, "other"), "unknown");
    EXPECT_TRUE(plain.IsInGroup("one", "p2"));
    EXPECT_FALSE(plain.IsInGroup("one", "t5"));
    EXPECT_FALSE(plain.IsInGroup("other", "t1"));
    EXPECT_TRUE(plain.IsInGroup("", "t1"));
    EXPECT_FALSE(plain.IsInGroup("", "t2"));
    CDataSet all;
    EXPECT_TRUE(plain.CUIData::GetData("fund_token", all));
    EXPECT_EQ(Joined(all), "p1 p2 t1 t3 ");
}

TEST_F(AccountDataListTest, UnreadableGroupsKeepTheirMembers) {
    plain.SetAccounts(Accounts());
    for (const std::string& text :
         {std::string(), std::string("["), std::string(R"(["1003")"), std::string("1003"),
          std::string(R"({"a":["1003"]})"), std::string(R"("1003")"), std::string(R"([],["1003"])"),
          R"(["1003"])" + Gbk("户").substr(0, 1)}) {
        SCOPED_TRACE(text);
        plain.SetGroups(Groups({{"g1", "one", "1", R"(["1001"])"}}));
        const uint64_t before = CCounters::Get("account_group_unreadable");
        plain.SetGroups(Groups({{"g1", "one", "1", text}, {"g2", "new", "1", text}}));
        EXPECT_EQ(CCounters::Get("account_group_unreadable") - before, 2u);
        EXPECT_EQ(GroupTokens(plain, "one"), "t1 ");
        EXPECT_EQ(GroupTokens(plain, "new"), "");
    }
    const uint64_t before = CCounters::Get("account_group_member_dropped");
    plain.SetGroups(Groups({{"g1", "one", "1", R"(["1001", 1003, null, "", ["1003"]])"}}));
    EXPECT_EQ(CCounters::Get("account_group_member_dropped") - before, 4u);
    EXPECT_EQ(GroupTokens(plain, "one"), "t1 ");
}

TEST_F(AccountDataListTest, PoorTablesLoseNothingElse) {
    const uint64_t before = CCounters::Get("account_portfolios_unreadable");
    SetAll(MakeTable({"portfolios", "portfolios"}, {{"[{]", "x"}, {"", ""}}), CDataTable());
    EXPECT_EQ(CCounters::Get("account_portfolios_unreadable") - before, 2u);  // ordinary and Stock Connect
    CUIData request;
    EXPECT_TRUE(plain.GetData(request));
    CDataTable rows;
    EXPECT_TRUE(request.GetData("accountdatalist", rows));
    EXPECT_EQ(rows.GetRowNumber(), 2);
    EXPECT_EQ(rows.GetItemText(0, "accountkey"), "||");  // two of the same, told apart all the same
    SetAll(CDataTable(), CDataTable());
    EXPECT_EQ(GroupTokens(plain, ""), "");
}

// "column,column;cell,cell", "~" for a comma in a cell.
CDataTable TableOf(std::string_view text) {
    const auto lines = SplitText(text, ';');
    CDataTable table;
    for (const auto name : SplitText(lines[0], ',')) table.AddColumn(name);
    for (size_t line = 1; line < lines.size(); ++line) {
        const int row = table.AppendRow();
        int col = 0;
        for (const auto cell : SplitText(lines[line], ','))
            table.SetItemText(row, col++, ReplaceText(std::string(cell), "~", ","));
    }
    return table;
}

// Each row's account and money, without the empty ends.
std::string Money(const CDataTable& rows) {
    std::string text;
    for (int row = 0; row < rows.GetRowNumber(); ++row) {
        std::string cells = rows.GetItemText(row, "accountid") + ":";
        for (int col = kFirstMoneyColumn; col < kAccountColumns; ++col)
            cells += rows.GetItemText(row, col) + ",";
        text += (row ? " " : "") + cells.substr(0, cells.find_last_not_of(',') + 1);
    }
    return text;
}

CDataTable Asked(const AccountDataList& list, const char* kind, bool byPortfolio = false,
                 const char* group = "") {
    CUIData request(kind);
    request.SetData("groupname", group);
    if (byPortfolio) request.SetData("client_type", "PB_MODE");
    CDataTable rows;
    EXPECT_TRUE(list.GetData(request) && request.GetData(kind, rows));
    return rows;
}

// "kind operate rows <tokens>" of each record.
std::string Told(const AccountDataList::News& news) {
    std::string text;
    for (const CUIData& record : news) {
        CDataTable rows;
        EXPECT_TRUE(record.GetData(record.GetType(), rows));
        EXPECT_EQ(Describe(record.GetDataView("all_update_account")),
                  Describe(record.GetDataView("fund_token")));
        text += std::string(text.empty() ? "" : " / ") +
                (record.GetTypeText().starts_with("currency_") ? "by currency " : "") +
                record.GetDataString("operate") + ' ' + Money(rows) + ' ' +
                Describe(record.GetDataView("fund_token"));
    }
    return text;
}

TEST_F(AccountDataListTest, RowsSayWhoTheAccountIsHoweverTheServerSpellsIt) {
    const std::string json =
        R"([{"portfolioid":"P1"~"fund_token":"p1"}~{"portfolio_id":7~"portfolio_name":"N"~"is_default":"1"~"fund_token":"p7"}])";
    struct {
        std::string accounts;
        bool byPortfolio;
        std::string rows;
    } const kCases[] = {
        {"accountkey,accountid,accountname,accountmark,nickname,qsid,qsname,tradetype,canuse,AccountMsg,"
         "fund_token,portfolioid,portfolioname,yyb;k,1,n,m,nn,q,qn,1,1,ok,t,p,pn,y",
         false, "k,1,n,m,nn,q,qn,1,1,ok,t,p,pn,,,,,,,y"},
        {"yyb,fund_token,trade_type,broker_id,account_id,accountid,portfolios;y,t,1,q,1,2," + json, false,
         "1|q|1,1,,,,q,,1,,,t,7,N,,,,,,,y," + json},
        {"accountid,portfolios;1," + json, false, "1||,1,,,,,,,,,p7,7,N,,,,,,," + json},
        {"accountid,fund_token,portfolios;1,t," + json + ";2,t2,", true,
         "1||,1,,,,,,,,,p1,P1,,,,,,,," + json + "|1||,1,,,,,,,,,p7,7,N,,,,,,," + json +
             "|2||,2,,,,,,,,,t2,,,,,,,,,"},
    };
    for (const auto& [accounts, byPortfolio, rows] : kCases) {
        plain.SetAccounts(TableOf(accounts));
        const std::string text = Describe(Asked(plain, "accountdatalist", byPortfolio));
        EXPECT_EQ(text.substr(text.find('|') + 1), ReplaceText(rows, "~", ",") + ']') << accounts;
    }
}

struct MoneyCase {
    const char *funds, *positions, *lines;
    int unreadable = 0;
};
constexpr MoneyCase kMoneyCases[] = {
    {"", "", "1:"},
    {"Currency,TotalAssets,AvailableValue,FrozenValue,MarketValue,DayProfit;CNY,9,5.10,1,3,-1;HKD,1,1,0,0,0",
     "", "1:CNY,9,5.10,3,1,-1 1:HKD,1,1,0,0,0"},
    {"TotalAssets;1e2;2", "", "1:,1e2"},  // a fund without a currency; the second one is a repetition
    {"Currency,TotalAssets,AvailableValue;CNY,-,1~234.50;HKD,123456789012345678901234567890,-0.5", "",
     "1:CNY 1:HKD,,-0.5", 3},
    // Sums are exact, and of the first currency where positions name none.
    {"Currency;CNY;HKD", "Currency,MarketValue,DayProfit;,0.1,1;CNY,0.2,-3;HKD,1000000000000.001,1;USD,5,0",
     "1:CNY,,,0.30,,-2.00 1:HKD,,,1000000000000.001,,1.00 1:USD,,,5.00,,0.00"},
    {"Currency,MarketValue;CNY,7", "MarketValue;1", "1:CNY,,,7"},  // the server knows better
    {"", "Currency,DayProfit;HKD,1;HKD,2", "1:HKD,,,,,3.00"},
    // What lacks a position is no sum.
    {"Currency;CNY", "MarketValue,DayProfit;1,1;,2;x,3", "1:CNY,,,,,6.00", 2},
};

TEST_F(AccountDataListTest, MoneyIsTheFundsAndElseThePositions) {
    const auto counted = [] {
        uint64_t sum = 0;
        for (const auto& [name, count] : CCounters::All())
            sum += name.starts_with("account_") && name.ends_with("_unreadable") ? count : 0;
        return sum;
    };
    for (const MoneyCase& c : kMoneyCases) {
        CAccountDataList list;
        list.SetAccounts(TableOf("accountid,fund_token;1,t"));
        const uint64_t before = counted();
        list.SetFunds("t", TableOf(c.funds));
        list.SetPositions("t", TableOf(c.positions));
        const std::string lines = Money(Asked(list, "currency_accountdatalist"));
        EXPECT_EQ(lines, c.lines);
        EXPECT_EQ(Money(Asked(list, "accountdatalist")), lines.substr(0, lines.find(' ')));
        EXPECT_EQ(counted() - before, static_cast<uint64_t>(c.unreadable)) << c.lines;
    }
    plain.SetAccounts(TableOf("accountid,fund_token;1,t"));
    plain.SetFunds("t", TableOf("AvailableValue,Inst_AvailableValue;1,2"));
    EXPECT_EQ(Money(Asked(plain, "accountdatalist")) + Money(Asked(plain, "accountdatalist", true)),
              "1:,,11:,,2");
}

TEST_F(AccountDataListTest, NewsAreTheRowsThatChanged) {
    const auto accounts = [](const char* rows) {
        return TableOf(std::string("accountid,fund_token,yyb;") + rows);
    };
    EXPECT_EQ(Told(plain.SetFunds("b", TableOf("Currency,TotalAssets;CNY,8"))), "");  // before its account
    EXPECT_EQ(Told(plain.SetAccounts(accounts("1,a,x;2,b,x;3,,x"))), "add 1: 2:CNY,8 3: <a,b>");
    EXPECT_EQ(Told(plain.SetAccounts(accounts("3,,x;2,b,x;1,a,x"))), "");
    EXPECT_EQ(Told(plain.SetAccounts(accounts("1,a,x;2,b,y;3,c,x;4,d,x"))),
              "add 4: <d> / update 2:CNY,8 3: <b,c>");
    EXPECT_EQ(Told(plain.SetFunds("a", TableOf("Currency,TotalAssets;CNY,1;HKD,2"))), "update 1:CNY,1 <a>");
    EXPECT_EQ(Told(plain.SetFunds("a", TableOf("Currency,TotalAssets;CNY,1;HKD,3"))), "");
    EXPECT_EQ(Told(plain.SetAccounts(accounts("1,a,x;3,c,x;4,d,x"))), "delete 2:CNY,8 <b>");
    Asked(plain, "currency_accountdatalist");  // from now on its news go out, too
    struct {
        const char *funds, *news;
    } const kCases[] = {
        {"CNY,1;HKD,4", "by currency update 1:HKD,4 <a>"},
        {"HKD,4;CNY,1", "update 1:HKD,4 <a>"},  // another one in front, both as they were
        {"CNY,2;USD,5",
         "update 1:CNY,2 <a> / by currency delete 1:HKD,4 <a> / by currency add 1:USD,5 <a> / "
         "by currency update 1:CNY,2 <a>"},
    };
    for (const auto& [funds, news] : kCases)
        EXPECT_EQ(Told(plain.SetFunds("a", TableOf(std::string("Currency,TotalAssets;") + funds))), news)
            << funds;
}

// While somebody takes his time.
TEST_F(AccountDataListTest, NewsThatWaitAreBounded) {
    plain.SetAccounts(TableOf("accountid,fund_token;1,a"));
    const uint64_t before = CCounters::Get("account_news_replaced");
    for (int i = 0; i < 6000; ++i)
        plain.Queue(plain.SetFunds("a", TableOf("TotalAssets;" + std::to_string(i))));
    EXPECT_EQ(CCounters::Get("account_news_replaced") - before, AccountDataList::kMaxUntold + 1);
    size_t records = 0, whole = 0;
    CUIData record;
    for (plain.BeginTelling(); plain.TakeUntold(record); ++records)
        whole += record.GetTypeText() == "accountdatalist" ? 1 : 0;
    EXPECT_LT(records, 6000 - AccountDataList::kMaxUntold + 10);
    EXPECT_EQ(whole, 1u);
    CDataTable last;
    record.GetData("accountdatalist_push", last);
    EXPECT_EQ(last.GetItemText(0, "TotalAssets"), "5999");
}

TEST_F(AccountDataListTest, MoneyOfNobodyIsKeptWithinBounds) {
    const uint64_t before = CCounters::Get("account_money_dropped");
    const CDataTable funds = TableOf("TotalAssets;1");
    for (size_t i = 0; i <= AccountMoneyBook::kMaxStrangers; ++i)
        plain.SetFunds("t" + std::to_string(i), funds);
    EXPECT_EQ(CCounters::Get("account_money_dropped") - before, 1u);
    plain.SetAccounts(TableOf("accountid,fund_token;1,t0;2,t1"));
    EXPECT_EQ(Money(Asked(plain, "accountdatalist")), "1: 2:,1");
    for (const char* token : {"u0", "u1"})
        plain.SetFunds(token, funds);  // in the place of the longest unknown
    plain.SetAccounts(TableOf("accountid,fund_token;1,t2;2,t3"));
    EXPECT_EQ(Money(Asked(plain, "accountdatalist")), "1: 2:,1");
}

// A page that takes every news, row by row, holds what the list answers; and a list that was changed again and again
// answers like one that has just learned the same.
class Changes {
  public:
    explicit Changes(unsigned seed) : m_random(seed) {
        m_list.SetAccounts(m_accounts);
        for (const auto& [kind, byPortfolio] : kForms) Asked(m_list, kind, byPortfolio);
    }
    void Step() {
        const std::string token = "t" + std::to_string(_number(8));
        switch (_number(8)) {
            case 0:
                return _apply(m_list.SetAccounts(m_accounts = _accounts()));
            case 1:
                return m_list.SetGroups(m_groups = _groups());
            case 2:
            case 3:
                return _apply(
                    m_list.SetPositions(token, m_positions[token] = _money("MarketValue,Currency")));
            default:
                return _apply(m_list.SetFunds(token, m_funds[token] = _money("TotalAssets,Currency")));
        }
    }
    void Check() {
        CAccountDataList fresh;
        fresh.SetGroups(m_groups);
        for (const auto& [token, table] : m_funds) fresh.SetFunds(token, table);
        for (const auto& [token, table] : m_positions) fresh.SetPositions(token, table);
        fresh.SetAccounts(m_accounts);
        for (const auto& [kind, byPortfolio] : kForms) {
            for (const char* group : {"", "g0", "g1"}) {
                const CDataTable rows = Asked(m_list, kind, byPortfolio, group);
                ASSERT_EQ(Describe(rows), Describe(Asked(fresh, kind, byPortfolio, group))) << kind << group;
                if (*group != 0) continue;
                ASSERT_EQ((m_mirror[{kind, byPortfolio}]), _byKey(rows)) << kind << byPortfolio;
            }
        }
        ASSERT_EQ(Describe(m_list.GetDataView("accountdatalist")), Describe(Asked(fresh, "accountdatalist")));
    }

  private:
    using Mirror = std::map<std::string, std::string>;
    static constexpr std::pair<const char*, bool> kForms[] = {{"accountdatalist", false},
                                                              {"accountdatalist", true},
                                                              {"currency_accountdatalist", false},
                                                              {"currency_accountdatalist", true}};

    static Mirror _byKey(const CDataTable& rows) {
        Mirror mirror;
        for (int row = 0; row < rows.GetRowNumber(); ++row) {
            std::string cells;
            for (int col = 0; col < rows.GetColumnNumber(); ++col) cells += rows.GetItemText(row, col) + ",";
            mirror[rows.GetItemText(row, "accountkey") + "/" + rows.GetItemText(row, "portfolioid") + "/" +
                   rows.GetItemText(row, "Currency")] = cells;
        }
        return mirror;
    }
    void _apply(const AccountDataList::News& news) {
        for (const CUIData& record : news) {
            const bool byCurrency = record.GetTypeText().starts_with("currency_");
            Mirror& mirror = m_mirror[{byCurrency ? "currency_accountdatalist" : "accountdatalist",
                                       IsPortfolioMode(record)}];
            CDataTable rows;
            record.GetData(record.GetType(), rows);
            for (const auto& [key, cells] : _byKey(rows)) {
                const std::string row = key.substr(0, key.rfind('/') + 1);
                const size_t before = std::erase_if(mirror, [&, &key = key](const auto& held) {
                    return byCurrency ? held.first == key : held.first.starts_with(row);
                });
                const std::string operate = record.GetDataString("operate");
                ASSERT_EQ(before, operate == "add" ? 0u : 1u) << operate << ' ' << key;
                if (operate != "delete") mirror[key] = cells;
            }
        }
    }
    unsigned _number(unsigned end) { return m_random() % end; }
    CDataTable _money(const char* header) {
        std::string text = header;
        for (unsigned rows = _number(4); rows > 0; --rows)
            text += ';' + std::to_string(_number(3)) + ',' + (_number(2) ? "CNY" : _number(2) ? "HKD" : "");
        return TableOf(text);
    }
    CDataTable _accounts() {
        std::string text = "accountid,fund_token,portfolios,yyb";
        for (unsigned id = 0; id < 4; ++id) {
            if (_number(4) == 0) continue;
            const std::string n = std::to_string(id);
            text += ';' + n + ',' + (_number(3) ? "t" + n : "") + ',';
            if (id < 2)
                text += R"([{"portfolioid":"P"~"fund_token":"t)" + std::to_string(4 + _number(4)) +
                        R"("}~{"portfolioid":"Q"}])";
            text += ',' + std::to_string(_number(2));
        }
        return TableOf(text);
    }
    CDataTable _groups() {
        std::string text = "groupid,groupname,account";
        for (const char* group : {";g0,g", ";g1,g"})
            text += group + std::to_string(_number(3)) + R"(,[")" + std::to_string(_number(4)) + R"("~"1"])";
        return TableOf(text);
    }

    std::mt19937 m_random;
    CAccountDataList m_list;
    CDataTable m_accounts, m_groups;
    std::map<std::string, CDataTable> m_funds, m_positions;
    std::map<std::pair<std::string, bool>, Mirror> m_mirror;
};

TEST_F(AccountDataListTest, NewsAndAnswersAgreeAfterAnyChanges) {
    for (unsigned seed = 0; seed < 40 && !HasFatalFailure(); ++seed) {
        SCOPED_TRACE(seed);
        Changes changes(seed);
        for (int step = 0; step < 40 && !HasFatalFailure(); ++step) {
            changes.Step();
            changes.Check();
        }
    }
}

}  // namespace
}  // namespace luadui
