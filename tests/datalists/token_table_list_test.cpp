#include "datalists/token_table_list.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <map>
#include <random>
#include <string>
#include <vector>

#include "datalists/deal_list.h"
#include "datalists/page_lists.h"
#include "tests/datalists/list_probe.h"

namespace luadui {
namespace {

CDataTable Orders(const Rows& rows) { return MakeTable({"OrderID", "Status"}, rows); }

// Answers, pushes and queries of one account in random order against a model that remembers everything: what
// a list must hold is its newest answer and all pushes since, in the order in which they came.
class OrderModel {
  public:
    struct Event {
        uint64_t age;
        Rows rows;
    };
    void Answer(uint64_t age, const Rows& rows) {
        if (held && age < answerAge) return;
        held = true;
        answerAge = age;
        answer = rows;
    }
    void Push(uint64_t age, const Rows& rows, bool underWay) {
        if (held || underWay) pushes.push_back({age, rows});
    }
    // Rows by key in order of first appearance.
    std::string Expected(bool wholeTables) const {
        if (!held) return "none";
        Rows now = answer;
        for (const Event& push : pushes) {
            if (push.age < answerAge) continue;
            if (wholeTables) now = push.rows;
            for (const auto& row : push.rows) {
                auto found = std::find_if(now.begin(), now.end(), [&](auto& r) { return r[0] == row[0]; });
                if (found == now.end()) {
                    now.push_back(row);
                } else {
                    *found = row;
                }
            }
        }
        return Describe(Orders(now));
    }

    bool held = false;
    uint64_t answerAge = 0;
    Rows answer;
    std::vector<Event> pushes;
};

void RunInterleaving(bool wholeTables, uint32_t seed) {
    SCOPED_TRACE(seed);
    std::mt19937 random(seed);
    const auto below = [&random](uint32_t n) { return random() % n; };
    const auto makeRows = [&](size_t count) {
        std::map<std::string, std::string> byKey;
        while (byKey.size() < count) byKey["o" + std::to_string(below(8))] = std::to_string(random() % 1000);
        Rows rows;
        for (const auto& [key, status] : byKey) rows.push_back({key, status});
        return rows;
    };

    CTokenTableList list("entrust", "entrustmulti", wholeTables ? "" : "OrderID");
    CUIData shared;
    if (seed % 4 < 2) shared.SetDataShared("entrust", list);  // as managers keep it
    CUIData whole;                                            // as pages may read it
    std::string wholeText = "none";
    OrderModel model;
    uint64_t age = 0;
    std::vector<uint64_t> underWay;
    Rows lastRows;
    CDataTable published;
    std::string publishedText = Describe(published);
    for (int step = 0; step < 40; ++step) {
        switch (below(6)) {
            case 0:
                underWay.push_back(++age);
                break;
            case 1: {  // an answer to any of the queries; sometimes it comes twice
                if (underWay.empty()) break;
                const size_t which = below(static_cast<uint32_t>(underWay.size()));
                const Rows rows = makeRows(below(4));
                const bool taken = list.TakeAnswer("a", Orders(rows), underWay[which]);
                // A list of whole tables may refuse what a newer push replaced: the model shows no
                // difference.
                EXPECT_TRUE(wholeTables || taken == (!model.held || underWay[which] >= model.answerAge));
                model.Answer(underWay[which], rows);
                if (below(4) != 0) underWay.erase(underWay.begin() + static_cast<ptrdiff_t>(which));
                if (underWay.empty()) list.QueryEnded("a");
                break;
            }
            case 2:  // no answer comes
                if (underWay.empty()) break;
                underWay.pop_back();
                if (!underWay.empty()) break;
                list.QueryEnded("a");
                if (!model.held) model.pushes.clear();
                break;
            default: {
                if (lastRows.empty() || below(3) != 0)
                    lastRows = makeRows(1 + below(2));  // or the same again
                const std::string before = Held(list, "a");
                const PushResult result = list.TakePush("a", Orders(lastRows), ++age, !underWay.empty());
                model.Push(age, lastRows, !underWay.empty());
                EXPECT_TRUE(model.held ||
                            result == (underWay.empty() ? PushResult::kUnknown : PushResult::kKept));
                EXPECT_TRUE(result != PushResult::kUnchanged || Held(list, "a") == before);
            }
        }
        ASSERT_EQ(Held(list, "a"), model.Expected(wholeTables)) << "step " << step;
        ASSERT_EQ(Describe(published), publishedText) << "a table that was handed out changed";
        if (below(3) == 0 && list.GetTable("a", published)) publishedText = Describe(published);
        ASSERT_EQ(Held(whole, "a"), wholeText) << "a list that was read changed";
        if (below(5) == 0 && shared.GetData("entrust", whole)) wholeText = Held(whole, "a");
    }
}

TEST(TokenTableListTest, AnyOrderOfAnswersAndPushesEndsWithTheNewest) {
    for (uint32_t seed = 0; seed < 3000; ++seed) {
        RunInterleaving(seed % 2 == 0, seed);
        if (testing::Test::HasFailure()) return;
    }
}

TEST(TokenTableListTest, LateAnswerDoesNotUndoPushesThatWereForgotten) {
    CTokenTableList list("entrust", "", "OrderID");
    EXPECT_TRUE(list.TakeAnswer("a", Orders({{"1", "open"}}), 5));
    EXPECT_EQ(list.TakePush("a", Orders({{"1", "done"}}), 7, false), PushResult::kTaken);
    const Counted older("older_answer_ignored");
    EXPECT_FALSE(list.TakeAnswer("a", Orders({{"1", "open"}}), 5));  // the same once more
    EXPECT_FALSE(list.TakeAnswer("a", Orders({{"1", "open"}}), 6));
    EXPECT_FALSE(list.TakeAnswer("a", Orders({{"1", "open"}}), 0));
    EXPECT_EQ(older(), 3u);
    EXPECT_EQ(Held(list, "a"), "[OrderID,Status|1,done]");
    EXPECT_TRUE(list.TakeAnswer("a", Orders({{"1", "gone"}}), 8));
    EXPECT_EQ(Held(list, "a"), "[OrderID,Status|1,gone]");
    EXPECT_EQ(list.TakePush("a", Orders({{"1", "old"}}), 7, false), PushResult::kOlder);
    EXPECT_EQ(Held(list, "a"), "[OrderID,Status|1,gone]");
}

// Servers tell of a deal first and answer queries with it a moment later.
TEST(TokenTableListTest, AnswersDoNotTakeBackWhatWasJustPushed) {
    struct Deals : CDealList {
        uint32_t _now() const override { return now; }
        uint32_t now = ~0u - 5;
    } list;
    const auto deals = [](const Rows& rows) { return MakeTable({"ExecID"}, rows); };
    list.TakeAnswer("a", deals({{"1"}}), 1);
    list.TakePush("a", MakeTable({"Price", "ExecID"}, {{"10", "2"}, {"11", "1"}}), 2, false);
    const Counted kept("answer_lacks_pushed_row");
    list.TakeAnswer("a", deals({}), 3);  // "1" came with an answer
    EXPECT_EQ(Held(list, "a"), "[ExecID,Price|2,10]");
    list.now += Deals::kSettling - 1;
    list.TakePush("a", deals({{"3"}}), 4, false);
    list.TakeAnswer("a", deals({{"2"}, {"3"}}), 5);
    list.TakeAnswer("a", CDataTable(), 6);
    EXPECT_EQ(Held(list, "a"), "[ExecID,Price|2,|3,]");
    ++list.now;
    list.TakeAnswer("a", deals({{"4"}}), 7);
    EXPECT_EQ(Held(list, "a"), "[ExecID,Price|4,|3,]");
    EXPECT_EQ(kept(), 4u);
    CTokenTableList others("instructions", "", "OrderID");  // the user deletes them
    others.TakeAnswer("a", Orders({}), 1);
    others.TakePush("a", Orders({{"1", "open"}}), 2, false);
    others.TakeAnswer("a", Orders({}), 3);
    EXPECT_EQ(Held(others, "a"), "[OrderID,Status]");
}

TEST(TokenTableListTest, RowPushWidensTheTableAndSkipsWhatItCannotPlace) {
    CTokenTableList list("deal", "", "ExecID");
    list.TakeAnswer("a", MakeTable({"Price", "ExecID"}, {{"10", "e1"}, {"11", ""}, {"12", "e1"}}), 1);
    const Counted keyless("push_row_without_key"), dropped("list_column_dropped");
    const CDataTable push = MakeTable({"ExecID", "Volume", "Volume", ""},
                                      {{"e1", "100", "999", "x"}, {"", "1", "", ""}, {"e2", "200", "", ""}});
    EXPECT_EQ(list.TakePush("a", push, 2, false), PushResult::kTaken);
    EXPECT_EQ(Held(list, "a"), "[Price,ExecID,Volume|10,e1,100|11,,|12,e1,|,e2,200]");
    EXPECT_EQ(keyless(), 1u);
    EXPECT_EQ(dropped(), 2u);
    EXPECT_EQ(list.TakePush("a", push, 3, false), PushResult::kUnchanged);
    EXPECT_EQ(list.TakePush("a", MakeTable({"Price"}, {{"1"}, {"2"}}), 4, false), PushResult::kRefused);
    EXPECT_EQ(list.TakePush("a", CDataTable(), 5, false), PushResult::kRefused);
    EXPECT_EQ(keyless(), 4u);

    // The same cells under other names, and the same names cut elsewhere.
    list.TakePush("a", MakeTable({"ExecID", "Price", "More"}, {{"e1", "77", "m"}}), 5, false);
    list.TakePush("a", MakeTable({"ExecID", "PriceM", "ore"}, {{"e1", "78", "n"}}), 5, false);
    EXPECT_EQ(Held(list, "a"),
              "[Price,ExecID,Volume,More,PriceM,ore|77,e1,100,m,78,n|11,,,,,|12,e1,,,,|,e2,200,,,]");

    list.TakeAnswer("empty", CDataTable(), 6);
    EXPECT_EQ(list.TakePush("empty", Orders({{"1", "s"}}), 7, false), PushResult::kRefused);
    EXPECT_EQ(list.TakePush("empty", MakeTable({"ExecID"}, {{"e9"}}), 8, false), PushResult::kTaken);
    EXPECT_EQ(Held(list, "empty"), "[ExecID|e9]");
}

TEST(TokenTableListTest, TokensThatAreControlEntriesAreRefused) {
    CTokenTableList list("fund");
    list.TakeAnswer("a", Orders({}), 1);
    const Counted refused("list_token_refused");
    for (const char* token : {"", "fund_token", "update_user"}) {
        EXPECT_FALSE(list.TakeAnswer(token, Orders({}), 2)) << token;
        EXPECT_EQ(list.TakePush(token, Orders({}), 3, true), PushResult::kRefused) << token;
        EXPECT_FALSE(list.Holds(token)) << token;
        list.Remove(token);
    }
    EXPECT_EQ(refused(), 6u);
    EXPECT_EQ(Tokens(list), "a ");
    CETFMemberDataList etf;
    EXPECT_FALSE(etf.TakeAnswer("etf_code", Orders({}), 1));
    EXPECT_TRUE(etf.TakeAnswer("510300", Orders({}), 1));
    EXPECT_EQ(Tokens(etf, "etf_code"), "510300 ");
}

TEST(TokenTableListTest, MergesAccountsInOrderOrNotAtAll) {
    CTokenTableList list("deal", "dealmulti", "ExecID");
    list.TakeAnswer("a", MakeTable({"Other"}, {}), 1);
    list.TakeAnswer("b", MakeTable({"ExecID", "Price"}, {{"e1", "1"}}), 2);
    list.TakeAnswer("c", MakeTable({"Price", "ExecID", "More"}, {{"2", "e2", "x"}}), 3);
    struct Case {
        std::vector<std::string> tokens;
        const char* merged;  // null: refused
        const char* missing;
    };
    for (const Case& c :
         {Case{{"a", "b", "c"}, "[ExecID,Price|e1,1|e2,2]", ""},
          Case{{"c", "b"}, "[ExecID,Price|e1,1|e2,2]", ""}, Case{{"a"}, "[]", ""}, Case{{}, "[]", ""},
          Case{{"b", "d"}, nullptr, "d"}, Case{{"b", "fund_token"}, nullptr, "fund_token"}}) {
        CUIData request("ask");
        request.SetData("fund_token", SetOf(c.tokens));
        std::string missing;
        EXPECT_EQ(list.MergeMultiAccount(request, &missing), c.merged != nullptr);
        EXPECT_EQ(missing, c.missing);
        CDataTable merged;
        EXPECT_EQ(request.GetData("dealmulti", merged), c.merged != nullptr);
        EXPECT_EQ(request.GetType(), c.merged ? "dealmulti" : "ask");
        EXPECT_EQ(Describe(merged), c.merged ? c.merged : "[]");
    }
    CUIData one;
    one.SetData("fund_token", "b");
    EXPECT_FALSE(list.MergeMultiAccount(one));
}

TEST(TokenTableListTest, ForgetsAccountsButNotForOthers) {
    CTokenTableList list("entrust", "", "OrderID");
    const CDataTable table = Orders({{"1", "open"}});
    list.TakeAnswer("a", table, 1);
    list.TakeAnswer("b", table, 2);
    CUIData record;
    ASSERT_TRUE(list.MakeRecord("a", record));
    CDataTable published;
    EXPECT_TRUE(record.GetData("entrust", published));
    EXPECT_TRUE(published.SharesWith(table));
    const CUIData whole = list;  // as pages read it
    list.Remove("a");
    EXPECT_EQ(Tokens(list), "b ");
    EXPECT_EQ(Tokens(whole), "a b ");
    EXPECT_TRUE(list.TakeAnswer("a", table, 1));
}

TEST(TokenTableListTest, KeptPushesAreLimited) {
    CTokenTableList list("entrust", "", "OrderID");
    CDataTable big = Orders({});
    for (size_t row = 0; row < CTokenTableList::kMaxKeptRows / 4; ++row) big.AppendRow();
    big.SetItemText(0, 0, "1");
    const Counted dropped("kept_push_dropped"), unknown("push_for_unqueried_account");
    for (uint64_t age = 1; age <= 6; ++age) EXPECT_EQ(list.TakePush("a", big, age, true), PushResult::kKept);
    EXPECT_EQ(dropped(), 3u);
    EXPECT_EQ(list.TakePush("b", big, 7, true), PushResult::kRefused);
    EXPECT_EQ(list.TakePush("b", Orders({{"2", ""}}), 8, true), PushResult::kKept);
    list.QueryEnded("a");
    EXPECT_EQ(unknown(), 3u);
    EXPECT_EQ(list.TakePush("b", big, 9, true), PushResult::kKept);
}

TEST(TokenTableListTest, RowsOfDroppedPushesAreForgotten) {
    CTokenTableList list("entrust", "", "OrderID");
    CDataTable big = Orders({});
    while (static_cast<size_t>(big.GetRowNumber()) + 9 < CTokenTableList::kMaxKeptRows) big.AppendRow();
    EXPECT_EQ(list.TakePush("b", big, 1, true), PushResult::kKept);  // room for four more rows
    for (uint64_t age = 2; age < 20; ++age) {
        EXPECT_EQ(list.TakePush("a", Orders({{"o" + std::to_string(age), "s"}}), age, true),
                  PushResult::kKept);
    }
    CDataTable rows = MakeTable({"OrderID"}, {{"o2"}, {"o3"}, {"o19"}});
    list.GetRowsOf("a", rows);
    EXPECT_EQ(Describe(rows), "[OrderID,Status|o19,s]");
}

TEST(TokenTableListTest, ManyRowsAndManyAccounts) {
    CTokenTableList list("entrust", "entrustmulti", "OrderID");
    CDataTable table = Orders({});
    for (int row = 0; row < 100'000; ++row) {
        table.AppendRow();
        table.SetItemText(row, 0, "o" + std::to_string(row));
    }
    CDataSet tokens;
    for (int account = 0; account < 10'000; ++account) {
        const std::string token = "t" + std::to_string(account);
        ASSERT_TRUE(list.TakeAnswer(token, table, 1));
        tokens.Insert(token);
    }
    EXPECT_TRUE(list.Holds(tokens));
    CUIData request;
    request.SetData("fund_token", tokens);
    ASSERT_TRUE(list.MergeMultiAccount(request));
    CDataTable merged;
    request.GetData("entrustmulti", merged);
    EXPECT_EQ(merged.GetRowNumber(), 1'000'000'000);
    for (int row = 0; row < 150'000; row += 7)  // known rows and new ones, so that the index grows
        list.TakePush("t5", Orders({{"o" + std::to_string(row), "s"}}), 2 + static_cast<uint64_t>(row),
                      false);
    ASSERT_TRUE(list.GetTable("t5", table));
    EXPECT_EQ(table.GetRowNumber(), 100'000 + 50'000 / 7 + 1);
    EXPECT_EQ(table.GetItemText(99'995, "Status"), "s");
    EXPECT_EQ(table.GetItemText(99'996, "Status"), "");
    EXPECT_EQ(merged.GetItemText(7, "Status"), "");
}

}  // namespace
}  // namespace luadui
