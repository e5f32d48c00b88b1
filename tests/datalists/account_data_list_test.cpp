#include "datalists/account_data_list.h"

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

#include "base/counters.h"
#include "base/text.h"
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
        EXPECT_EQ(rows.GetColumnNumber(), 5);
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

TEST_F(AccountDataListTest, ChangesOfAccountsAndGroupsShowAtOnce) {
    plain.SetAccounts(Accounts());
    plain.SetGroups(Groups({{"g1", "one", "1", R"(["1001"])"}}));
    EXPECT_EQ(GroupTokens(plain, "one"), "t1 ");
    plain.SetGroups(Groups({{"g1", "renamed", "1", R"(["1001","1003"])"}}));
    EXPECT_EQ(GroupTokens(plain, "one"), "unknown");
    EXPECT_EQ(GroupTokens(plain, "renamed"), "p1 p2 t1 t3 ");
    plain.SetAccounts(MakeTable({"accountid", "tradetype", "fund_token"}, {{"1001", "", "new"}}));
    EXPECT_EQ(GroupTokens(plain, "renamed"), "new ");
}

TEST_F(AccountDataListTest, UnreadableGroupsKeepTheirMembers) {
    plain.SetAccounts(Accounts());
    const std::string halfCharacter = Gbk("户").substr(0, 1);
    const std::string texts[] = {"",
                                 "[",
                                 R"(["1003")",
                                 "1003",
                                 R"({"a":["1003"]})",
                                 R"("1003")",
                                 "[],[\"1003\"]",
                                 "[\"1003\"]" + halfCharacter};
    for (const std::string& text : texts) {
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
    EXPECT_EQ(rows.FindColumn("fund_token"), 2);
    SetAll(CDataTable(), CDataTable());
    EXPECT_EQ(GroupTokens(plain, ""), "");
}

}  // namespace
}  // namespace luadui
