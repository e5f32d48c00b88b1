#include "datamgr/answer_routes.h"

#include <gtest/gtest.h>

#include <set>

#include "base/counters.h"
#include "datamgr/position_sum.h"
#include "datamgr/push_routes.h"
#include "tests/datamgr/answer_cases.h"
#include "tests/datamgr/traffic.h"
#include "trade/trade.h"

namespace luadui {
namespace {

CDataSet SetOf(std::initializer_list<const char*> items) {
    CDataSet set;
    for (const char* item : items) set.Insert(item);
    return set;
}

class AnswerRoutesTest : public testing::Test {
  protected:
    // What the asker receives of an answer.
    std::string Answered(TestManager::Ask ask, std::string_view answer) {
        ask.handle = m_asker.GetHandle();
        m_manager.Answer(ask, answer);
        return m_asker.Take();
    }

    // What the other listener received, the asker's handle as A, the columns of account data lists as "accounts".
    std::string Heard() {
        const std::string text =
            ReplaceText(m_other.Take(), "handle=" + std::to_string(m_asker.GetHandle()), "handle=A");
        return ReplaceText(
            text,
            "accountkey,accountid,accountname,accountmark,nickname,qsid,qsname,tradetype,canuse,"
            "AccountMsg,fund_token,portfolioid,portfolioname,Currency,TotalAssets,AvailableValue,"
            "MarketValue,FrozenValue,DayProfit",
            "accounts");
    }

    TestManager m_manager;
    Receiver m_asker, m_other;
};

TEST_F(AnswerRoutesTest, TheAskerReceives) {
    std::set<int> types;
    for (const auto& row : kAnswerCases) {
        EXPECT_EQ(Answered({.type = row.type, .kind = std::string(row.asked)}, row.answer),
                  std::string(row.record) + kAnswerEnd)
            << row.type << ' ' << row.asked;
        types.insert(row.type);
    }
    // Trading tables stay with their lists.
    for (const char* kind : {"position", "deal", "entrust", "positioncredit", "dealcredit", "entrustcredit",
                             "position_ggt", "deal_ggt", "entrust_ggt", "deal_his_ggt", "fund_ggt"}) {
        EXPECT_TRUE(m_manager.Lists().Find(kind) && m_manager.Lists().Find(kind)->Holds("F1")) << kind;
    }
    for (const std::string kind : {"rate_ggt", "tb_price_spred_ggt"})
        EXPECT_EQ(m_manager.GetData(kind).GetDataType(kind), kDataTable) << kind;
    for (const int type : {1034, 1035, 1099, 1201, 1205, 1051, 1055, 1058})
        types.insert(type);  // below; of quotes see quotes_test.cpp
    EXPECT_EQ(types.size(), AnswerRoutes().size());
    for (const AnswerRoute& route : AnswerRoutes()) EXPECT_TRUE(types.contains(route.type)) << route.type;
}

// Views of several accounts: nothing until the last account of the ask has answered.
struct ViewCase {
    int type;
    const char* view;
    const char* answers[2];  // of F1 and F2
    const char* record;
};
constexpr char kTwo[] = " fund_token=<F1,F2> handle=H ret_code=0 ret_message= ";
constexpr ViewCase kViewCases[] = {
    {1202,
     "positionmulti",
     {"SecurityID,Qty;600000,1", "SecurityID,Qty;600000,2"},
     "positionmulti=[SecurityID,Qty|600000,1|600000,2]"},
    {1202,
     "positionsum",
     {"SecurityID,Market,MarketValue;600000,SH,1.50", "SecurityID,Market,MarketValue;600000,SH,2;000001,SZ,"},
     "positionsum=[SecurityID,Market,MarketValue|600000,SH,3.50|000001,SZ,]"},
    {1206, "positionmulticredit", {"A;1", "A"}, "positionmulticredit=[A|1]"},
    {131073, "position_ggt_multi", {"A", "A;2"}, "position_ggt_multi=[A|2]"},
    {1203, "dealmulti", {"ExecID;1", "ExecID;2"}, "dealmulti=[ExecID|1|2]"},
    {1207, "dealmulticredit", {"ExecID;3", "ExecID;4"}, "dealmulticredit=[ExecID|3|4]"},
    {131076, "deal_ggt_multi", {"ExecID;5", "ExecID;6"}, "deal_ggt=[ExecID|5|6]"},
    {1204, "entrustmulti", {"OrderID;1", "OrderID;1"}, "entrustmulti=[OrderID|1|1]"},
    {1208, "entrustmulticredit", {"OrderID;7", "OrderID;8"}, "entrustmulticredit=[OrderID|7|8]"},
    {131074, "entrust_ggt_multi", {"OrderID;9", "OrderID"}, "entrust_ggt=[OrderID|9]"},
};

TEST_F(AnswerRoutesTest, ViewsComeOnceAllAccountsHaveAnswered) {
    for (const auto& row : kViewCases) {
        TestManager manager;
        TestManager::Ask ask{
            .type = row.type, .kind = row.view, .tokens = SetOf({"F1", "F2"}), .handle = m_asker.GetHandle()};
        manager.Answer(ask, row.answers[0]);
        EXPECT_EQ(m_asker.Take(), "") << row.view;
        ask.fundToken = "F2";
        manager.Answer(ask, row.answers[1]);
        // The merged Stock Connect views carry the name of their list.
        const std::string kind = std::string(row.record).substr(0, std::string(row.record).find('='));
        EXPECT_EQ(m_asker.Take(), kind + kTwo + row.record);
    }
    EXPECT_EQ(Answered({.type = 1204, .kind = "entrustmulti", .fundToken = "F3"}, "OrderID;3"),
              "entrustmulti fund_token=<F3> handle=H ret_code=0 ret_message= entrustmulti=[OrderID|3]");
}

TEST_F(AnswerRoutesTest, FundsNameTheAccountThatChanged) {
    constexpr char kEnd[] = " fund_token=F1 handle=H ret_code=0 ret_message= update_user=F1";
    EXPECT_EQ(Answered({1201, "fund"}, "Currency;CNY"), std::string("fund fund=[Currency|CNY]") + kEnd);
    EXPECT_EQ(Answered({1205, "credit_fund"}, "Currency;HKD"),
              std::string("credit_fund credit_fund=[Currency|HKD]") + kEnd);
}

TEST_F(AnswerRoutesTest, AnOlderAnswerBringsWhatIsNewer) {
    const TestManager::Ask ask{.type = 1202, .kind = "position", .handle = m_asker.GetHandle()};
    const CQueueReqItem older = m_manager.Send(ask), newer = m_manager.Send(ask);
    m_manager.Answer(newer, ResponseOf("No;new"));
    m_asker.Take();
    m_manager.Answer(older, ResponseOf("No;old"));
    EXPECT_EQ(m_asker.Take(), "position position=[No|new] fund_token=F1 handle=H ret_code=0 ret_message=");
    m_manager.Answer(newer, ResponseOf("No;again"));
    EXPECT_EQ(m_asker.Take(), "");
}

// Answers in parts: rows under one name are joined, with all columns; an older one never replaces a newer one.
TEST_F(AnswerRoutesTest, NoPartOfABasketIsLost) {
    CUIData params;
    params.SetData("InstanceID", "B");
    const TestManager::Ask ask{
        .type = 1228, .kind = "order", .handle = m_asker.GetHandle(), .params = params};
    const CQueueReqItem older = m_manager.Send(ask), newer = m_manager.Send(ask);
    std::string records;
    for (const CQueueReqItem* request : {&newer, &older}) {
        for (const char* part : {"1", "2", "3"}) {
            const bool isTable = *part != '2';
            CQueueRespData response =
                ResponseOf(std::string(R"({"more":[{"m)") + part + R"(":1}]})" +
                           (isTable ? std::string("OrderID,C") + part + ";" + part + ",x" : ""));
            if (request == &newer)
                response.SetData("RawData",
                                 std::string(R"({"DealOrderArray":[{"ExecID":"E)") + part + R"("}]})");
            response.SetData("IsLast", *part == '3');
            CQueueRespData arrived;
            arrived.CopyFrom(response);
            m_manager.Answer(*request, arrived);
        }
        const std::string got = m_asker.Take();
        for (const char* rows : {"order=[OrderID,C1,C3|1,x,|3,,x]", " B=[OrderID,C1,C3|1,x,|3,,x]",
                                 "more=[m1,m2,m3|1,,|,1,|,,1]"})
            EXPECT_NE(got.find(rows), got.npos) << rows << got;
        const size_t deals = got.find("basket_deal_table=["), end = got.find(']', deals);
        for (const char* id : {",E1,", ",E2,", ",E3,"}) EXPECT_LT(got.find(id, deals), end) << id << got;
    }
}

// Rows that came are not all there are: they must not replace those held.
TEST_F(AnswerRoutesTest, OneFailedPartFailsTheAnswer) {
    Answered({1203, "deal"}, "ExecID;1");
    const TestManager::Ask ask{.type = 1203, .kind = "deal", .handle = m_asker.GetHandle()};
    const CQueueReqItem request = m_manager.Send(ask);
    for (const char* part : {"ExecID;2", R"({"retcode":7,"message":"no"})", R"({"retcode":8})", "ExecID;3"}) {
        CQueueRespData response = ResponseOf(part);
        response.SetData("IsLast", std::string_view(part) == "ExecID;3");
        CQueueRespData arrived;
        arrived.CopyFrom(response);
        m_manager.Answer(request, arrived);
    }
    EXPECT_NE(m_asker.Take().find("ret_code=7 ret_message=no"), std::string::npos);
    EXPECT_EQ(Describe(m_manager.GetData("deal")), "F1=[ExecID|1] fund_token=<F1>");
}

// A question that the manager asked by itself, after a notice of change: all hear of it, under each kind they
// know.
TEST_F(AnswerRoutesTest, TheAnswerToNobodyGoesToAll) {
    for (const char* kind : {"position", "positionmulti", "positionsum", "deal"})
        m_manager.RegisterNotify(m_other.GetHandle(), kind);
    m_manager.Answer({.type = 1202}, "No;1");
    constexpr char kEnd[] = "=[No|1] fund_token=F1 handle=-1 ret_code=0 ret_message=";
    std::string expected;
    for (const std::string kind : {"position", "positionmulti", "positionsum"})
        expected += (expected.empty() ? "" : " / ") + kind + ' ' + kind + kEnd;
    EXPECT_EQ(m_other.Take(), expected);
    EXPECT_EQ(m_asker.Take(), "");
}

TEST_F(AnswerRoutesTest, FailuresReachTheAskerAndChangeNothing) {
    Answered({1202, "position"}, "No;1");
    constexpr char kError[] = R"({"retcode":7,"message":"no"})";
    constexpr char kMessage[] = "error_msg error_msg=no handle=H / ";
    constexpr char kEnd[] = " retcode=7 message=no fund_token=F1 handle=H ret_code=7 ret_message=no";
    for (const auto& [type, kind] :
         std::initializer_list<std::pair<int, const char*>>{{1202, "position"},
                                                            {1202, "positionmulti"},
                                                            {1034, "account"},
                                                            {1035, "accountgroupcredit"},
                                                            {1099, "holidays"},
                                                            {1240, "query_inst_autoalgo"},
                                                            {1101, "create_entrust"}}) {
        EXPECT_EQ(Answered({type, kind}, kError), std::string(kMessage) + kind + kEnd);
    }
    EXPECT_EQ(Answered({1202, "positionmulti"}, std::string(kError) + "No;2"),
              std::string(kMessage) + "positionmulti retcode=7 message=no positionmulti=[No|2]" +
                  std::string(kEnd).substr(sizeof(" retcode=7 message=no") - 1));
    EXPECT_EQ(Describe(m_manager.GetData("position")), "F1=[No|1] fund_token=<F1>");
    for (const char* kind : {"account", "accountgroupcredit", "holidays"})
        EXPECT_TRUE(m_manager.GetData(kind).IsEmpty()) << kind;
    const uint64_t unknown = CCounters::Get("answer_without_handler");
    EXPECT_EQ(Answered({.type = 1044, .kind = "account_xy"}, "No;1"), "");
    EXPECT_EQ(CCounters::Get("answer_without_handler"), unknown + 1);
}

TEST_F(AnswerRoutesTest, AccountsReachEachFamily) {
    for (const char* kind : {"account", "account_xy", "accountdatalist", "accountdatalistcredit",
                             "accountdatalist_ggt", "accountdatalist_push"})
        m_manager.RegisterNotify(m_other.GetHandle(), kind);
    constexpr char kRows[] = "account_id,trade_type,fund_token;1,1,F1;2,2,C1";
    const auto ask =
        m_manager.Send({.type = 1034, .kind = "account", .fundToken = "", .handle = m_asker.GetHandle()});
    m_manager.Answer({.type = 1034, .kind = "account", .fundToken = "", .handle = m_asker.GetHandle()},
                     kRows);
    EXPECT_EQ(
        m_asker.Take(),
        "account account=[account_id,trade_type,fund_token|1,1,F1|2,2,C1] handle=H ret_code=0 ret_message=");
    constexpr char kEnd[] = " handle=-1 ret_code=0 ret_message=";
    EXPECT_EQ(
        Heard(),
        std::string("account account=[account_id,trade_type,fund_token|1,1,F1|2,2,C1] handle=A ret_code=0 "
                    "ret_message= / accountdatalist "
                    "accountdatalist=[accounts|1||1,1,,,,,,1,,,F1,,,,,,,,] fund_token=<F1>") +
            kEnd +
            " / accountdatalist_push accountdatalist_push=[accounts|1||1,1,,,,,,1,,,F1,,,,,,,,] operate=add "
            "all_update_account=<F1> fund_token=<F1>" +
            kEnd +
            " / accountdatalist_ggt accountdatalist_ggt=[accounts|1||1,1,,,,,,1,,,F1,,,,,,,,] "
            "fund_token=<F1>" +
            kEnd + " / account_xy account_xy=[account_id,trade_type,fund_token|2,2,C1]" + kEnd +
            " / accountdatalistcredit accountdatalistcredit=[accounts|2||2,2,,,,,,2,,,C1,,,,,,,,] "
            "fund_token=<C1>" +
            kEnd);
    for (const char* entry : {"handle", "sleep_refresh_request"})
        EXPECT_FALSE(m_manager.GetData("account").Has(entry)) << entry;
    EXPECT_EQ(Describe(m_manager.GetData("account_xy").GetDataView("account_xy")),
              "[account_id,trade_type,fund_token|2,2,C1]");
    m_manager.Answer(
        ask, ResponseOf("account_id"));  // asked earlier: its asker gets what is newer, others nothing new
    EXPECT_EQ(
        m_asker.Take(),
        "account account=[account_id,trade_type,fund_token|1,1,F1|2,2,C1] handle=H ret_code=0 ret_message=");
    EXPECT_EQ(
        Heard(),
        "account account=[account_id,trade_type,fund_token|1,1,F1|2,2,C1] handle=A ret_code=0 ret_message=");
}

TEST_F(AnswerRoutesTest, WhereNobodyTradesOnCreditNobodyHearsOfIt) {
    for (const char* kind : {"account_xy", "accountdatalistcredit"})
        m_manager.RegisterNotify(m_other.GetHandle(), kind);
    Answered({1034, "account"}, "account_id,trade_type,fund_token;1,1,F1");
    EXPECT_EQ(Heard(), "");
}

TEST_F(AnswerRoutesTest, GroupsReachEachFamily) {
    for (const char* kind :
         {"accountgroup", "accountgroupcredit", "accountdatalist", "accountdatalistcredit"})
        m_manager.RegisterNotify(m_other.GetHandle(), kind);
    Answered({1034, "account"}, "account_id,trade_type,fund_token;1,1,F1;2,2,C1");
    m_other.Take();
    constexpr char kOk[] = " ret_code=0 ret_message=";
    constexpr char kGroups[] = R"(groupid,groupname,account;g,G,["1"])";
    const std::string plain =
        R"(accountgroup accountgroup=[groupid,groupname,account|g,G,["1"]] handle=H)" + std::string(kOk);
    const std::string credit =
        R"(accountgroupcredit accountgroupcredit=[groupid,groupname,account|g,G,["1"]] handle=H)" +
        std::string(kOk);
    const std::string plainRows =
        std::string(
            "accountdatalist accountdatalist=[accounts|1||1,1,,,,,,1,,,F1,,,,,,,,] fund_token=<F1> "
            "handle=-1") +
        kOk;
    const std::string creditRows =
        std::string(
            "accountdatalistcredit accountdatalistcredit=[accounts|2||2,2,,,,,,2,,,C1,,,,,,,,] "
            "fund_token=<C1> "
            "handle=-1") +
        kOk;
    const auto as = [](const std::string& text, const char* handle) {
        return ReplaceText(text, "=H", handle);
    };
    EXPECT_EQ(Answered({.type = 1035, .kind = "accountgroup", .fundToken = ""}, kGroups), plain);
    EXPECT_EQ(Heard(), as(plain, "=A") + " / " + plainRows + " / " + as(credit, "=-1") + " / " + creditRows);
    EXPECT_EQ(Answered({.type = 1035, .kind = "accountgroupcredit", .fundToken = ""}, kGroups), credit);
    EXPECT_EQ(Heard(), as(plain, "=-1") + " / " + plainRows + " / " + as(credit, "=A") + " / " + creditRows);
    CUIData waking;
    waking.SetData("sleep_refresh_request", "true");
    Answered({.type = 1035, .kind = "accountgroup", .fundToken = "", .params = waking}, kGroups);
    EXPECT_EQ(Heard(), as(plain, "=A") + " sleep_refresh_request=true / " + plainRows + " / " +
                           as(credit, "=-1") + " / " + creditRows);
    EXPECT_TRUE(m_manager.Lists().Accounts(ListStore::kPlain)->IsInGroup("G", "F1"));
    EXPECT_EQ(Describe(m_manager.GetData("accountgroupcredit").GetDataView("accountgroupcredit")),
              R"([groupid,groupname,account|g,G,["1"]])");
}

TEST_F(AnswerRoutesTest, HolidaysAreSharedAsASet) {
    constexpr char kEnd[] = " fund_token=F1 handle=H ret_code=0 ret_message=";
    EXPECT_EQ(Answered({1099, "holidays"}, R"({"holidays":"20240101;20240209-20240210"})"),
              std::string("holidays holidays=<20240101,20240209,20240210>") + kEnd);
    EXPECT_EQ(Answered({1099, "holidays"}, R"({"holidays":""})"), std::string("holidays holidays=") + kEnd);
    EXPECT_EQ(Describe(m_manager.GetData("holidays").GetDataView("holidays")),
              "<20240101,20240209,20240210>");
}

TEST_F(AnswerRoutesTest, ListsOfSinglePagesKeepTheirAnswers) {
    constexpr char kEnd[] = " fund_token=F1 handle=H ret_code=0 ret_message=";
    for (const char* page : {"ETF", "AUTO_ALGORITHM", "MULTIINST_DUI"}) m_manager.Lists().MakePageLists(page);
    CUIData params;
    params.SetData("stock_code", "510300");
    EXPECT_EQ(Answered({.type = 1062, .kind = "etfmemberlist", .params = params}, "No;1"),
              std::string("etfmemberlist etfmemberlist=[No|1]") + kEnd + " etf_code=510300");
    EXPECT_EQ(Describe(m_manager.GetData("etfmemberlist")), "510300=[No|1] etf_code=<510300>");
    EXPECT_EQ(Answered({1240, "query_inst_autoalgo"}, "InstanceID;I1"),
              std::string("query_inst_autoalgo query_inst_autoalgo=[InstanceID|I1]") + kEnd);
    EXPECT_EQ(Describe(m_manager.GetData("auto_algo_inst")), "F1=[InstanceID|I1] fund_token=<F1>");
    Answered({1498, "basketmemberalloclistcredit"}, "No;3");
    EXPECT_EQ(Describe(m_manager.GetData("basketmemberalloclistcredit")), "F1=[No|3] fund_token=<F1>");
    EXPECT_TRUE(m_manager.GetData("basketmemberalloclist").IsEmpty());
}

// The host's scripts write to pages that registered a sign: no request, no topic.
TEST_F(AnswerRoutesTest, MessagesOfTheHostReachItsListeners) {
    m_manager.RegisterNotify(m_other.GetHandle(), "lua_subscribe");
    CQueueRespData message = ResponseOf(R"({"method":"m","params":{"a":1}})");
    message.SetData("REQTYPE", 1603);
    message.SetData("DATATYPE", 2101);
    m_manager.OnResponse(&message);
    EXPECT_EQ(m_other.Take(), R"(lua_subscribe method=m params={"a":1} handle=-1 ret_code=0 ret_message=)");
}

// A receiver may destroy the manager: nothing is touched afterwards.
TEST(AnswerHandlersTest, TheManagerMayGoInsideAnyDelivery) {
    class Closer : public CBaseObject {
      public:
        void OnNotify(void*) override { manager.reset(); }
        std::unique_ptr<TestManager> manager;
    };
    for (const auto& [type, kind, answer] : std::initializer_list<std::tuple<int, const char*, const char*>>{
             {1202, "position", "No;1"},
             {1034, "account", "account_id,trade_type,fund_token;1,1,F1;2,2,C1"},
             {1035, "accountgroup", "groupid;1"},
             {1099, "holidays", R"({"holidays":"20240101"})"}}) {
        for (const bool isAsked : {true, false}) {
            Closer closer;
            closer.manager = std::make_unique<TestManager>();
            for (const char* each :
                 {kind, "account_xy", "accountdatalist", "accountdatalistcredit", "accountgroupcredit"})
                closer.manager->RegisterNotify(closer.GetHandle(), each);
            TestManager& manager = *closer.manager;
            manager.Answer({.type = type, .kind = kind, .handle = isAsked ? closer.GetHandle() : -1}, answer);
            EXPECT_FALSE(closer.manager) << kind;
        }
    }
}

struct ResultCase {
    int dataType;
    const char* json;
    int code;
    const char* message;
    const char* error;  // for the user; null: no error
};
constexpr ResultCase kResultCases[] = {
    {2001, "{}", 0, "", nullptr},
    {2001, R"({"retcode":0,"message":"ok"})", 0, "ok", nullptr},
    {2001, R"({"retcode":"0","code":"600000"})", 0, "", nullptr},
    {2001, R"({"code":"600000"})", 0, "", nullptr},
    {2001, R"({"code":"600000","msg":"tip"})", 0, "tip", nullptr},
    {2001, R"({"code":401,"msg":"bad"})", 401, "bad", "bad"},
    {2001, R"({"code":401})", 0, "", nullptr},
    {2001, R"({"retcode":-3,"message":"bad"})", -3, "bad", "bad"},
    {2001, R"({"ret_code":"17","ret_message":"m"})", 17, "m", "m"},
    {2001, R"({"error_code":"E1","msg":"m"})", -1, "m", "m"},
    {2001, R"({"retcode":0.5})", -1, "", "请求失败，错误码：-1"},
    {2001, R"({"retcode":1e30})", -1, "", "请求失败，错误码：-1"},
    {2001, R"({"retcode":true})", 1, "", "请求失败，错误码：1"},
    {2001, R"({"retcode":null,"error_code":5})", 5, "", "请求失败，错误码：5"},
    {2001, R"({"retcode":{},"ret_code":[],"error_code":" "})", 0, "", nullptr},
    {2001, R"({"retcode":4,"message":7})", 4, "", "请求失败，错误码：4"},
    {-1, "{}", -1, "", "请求失败，错误码：-1"},
    {-1, R"({"code":401,"message":"m"})", 401, "m", "m"},
    {-1, R"({"retcode":0,"message":"m"})", -1, "m", "m"},
};

TEST(ServerResultTest, CodesAndMessages) {
    for (const auto& row : kResultCases) {
        CQueueRespData response = ResponseOf(row.json), asText;
        for (CQueueRespData* each : {&response, &asText}) each->SetData("DATATYPE", row.dataType);
        asText.SetData("JsonData", row.json);
        for (const CQueueRespData* each : {&response, &asText}) {
            int code = 99;
            std::string message, error = "unchanged";
            ReadResult(*each, code, message);
            EXPECT_EQ(code, row.code) << row.json;
            EXPECT_EQ(message, row.message) << row.json;
            EXPECT_EQ(CTrade::HandleResponseError(*each, error), row.error != nullptr) << row.json;
            EXPECT_EQ(error, row.error ? Gbk(row.error) : "unchanged") << row.json;
        }
    }
}

// Server fields of every kind keep it; none can pass for what the manager says.
TEST_F(AnswerRoutesTest, FieldsOfAnswers) {
    struct {
        const char* answer;
        const char* record;
    } const kCases[] = {
        {R"({"i":-5,"u":18446744073709551615,"d":0.25,"b":true,"s":"t","n":null,"o":{"x":[1]},"l":[1,"a",[]],"e":[]})",
         R"(i=-5 u=-1 d=0.25 b=true s=t o={"x":[1]} l=(1,a,()) e=() fund_token=F1 handle=H ret_code=0 ret_message=)"},
        {R"({"rows":[{"a":1,"b":"x"},{"c":0.5,"a":{"z":[]}},{"b":[1,true],"a":false}],"mixed":[{"a":1},2]})",
         R"(rows=[a,b,c|1,x,|{"z":[]},,0.5|false,[1,true],] mixed=({"a":1},2) fund_token=F1 handle=H ret_code=0 ret_message=)"},
        {R"({"handle":1,"ret_code":0,"ret_message":"mine","sleep_refresh_request":"true","fund_token":"F9","fund_detail":"text"}No;1)",
         "fund_token=F1 fund_detail=[No|1] handle=H ret_code=0 ret_message=mine"},
        {R"({"fund_token":["F9"],"retcode":[]})",
         "retcode=() fund_token=F1 handle=H ret_code=0 ret_message="},
        {",,;1,2,3", "fund_detail=[,,|1,2,3] fund_token=F1 handle=H ret_code=0 ret_message="},
        {"A,A;1,2", "fund_detail=[A,A|1,2] fund_token=F1 handle=H ret_code=0 ret_message="},
    };
    for (const auto& row : kCases)
        EXPECT_EQ(Answered({1250, "fund_detail"}, row.answer), std::string("fund_detail ") + row.record);
    CUIData waking;
    waking.SetData("sleep_refresh_request", "true");
    EXPECT_EQ(Answered({.type = 1250, .kind = "fund_detail", .fundToken = "", .params = waking}, "{}"),
              "fund_detail handle=H ret_code=0 ret_message= sleep_refresh_request=true");
}

TEST_F(AnswerRoutesTest, HostileTables) {
    std::string wide = R"({"rows":[{)";
    for (int i = 0; i < 300; ++i) wide += (i ? ",\"c" : "\"c") + std::to_string(i) + "\":1";
    CJsonObject json;
    ASSERT_TRUE(json.Parse(wide + "}]}"));
    CQueueRespData response;
    response.SetData("JsonData", json);
    response.SetData("Table", "600000");  // text instead of a table
    Answer answer(response);
    CDataTable rows;
    ASSERT_TRUE(MakeAnswerRecord(answer, "fund_detail").GetData("rows", rows));
    EXPECT_EQ(rows.GetColumnNumber(), 256);
    EXPECT_EQ(CCounters::Get("json_column_dropped"), 44u);

    // A million rows cost what one row costs: they are shared, never walked over.
    CDataTable million = TableOf("SecurityID;1");
    while (million.GetRowNumber() < 1'000'000) million.InsertTable(CDataTable(million));
    CQueueRespData large;
    large.SetData("Table", million);
    const TestManager::Ask ask{.type = 1202, .kind = "positionmulti", .handle = m_asker.GetHandle()};
    class Counter : public CBaseObject {
      public:
        void OnNotify(void* data) override {
            CDataTable table;
            if (static_cast<CUIData*>(data)->GetData("positionmulti", table)) rows = table.GetRowNumber();
        }
        int rows = 0;
    } counter;
    TestManager::Ask own = ask;
    own.handle = counter.GetHandle();
    m_manager.Answer(m_manager.Send(own), large);
    EXPECT_EQ(counter.rows, million.GetRowNumber());
    m_manager.Answer(m_manager.Send({.type = 1202, .kind = "positionmulti", .handle = counter.GetHandle()}),
                     CQueueRespData());  // neither rows nor fields
    EXPECT_EQ(counter.rows, million.GetRowNumber());
}

TEST(PositionSumTest, AddsExactlyAndKeepsWhatAgrees) {
    const CDataTable sums = SumPositions(TableOf(
        "SecurityID,Market,SecurityName,CostPrice,StockBalance,MarketValue;"
        "600000,SH,a,1.5,100,0.10;600000,SZ,b,2,5,9;600000,SH,a,1.6,200,0.2;600000,SH,a,1.5,-,-1000.305;"
        "600000,SZ,b,2,,9223372036854775807;600000,SZ,b,2,1,1"));
    EXPECT_EQ(Describe(sums),
              "[SecurityID,Market,SecurityName,CostPrice,StockBalance,MarketValue|600000,SH,a,,300,-1000.005|"
              "600000,SZ,b,2,6,9223372036854775808]");
    EXPECT_EQ(Describe(SumPositions(TableOf("No;1;2"))), "[No|1|2]");
    EXPECT_EQ(Describe(SumPositions(CDataTable())), "[]");
}

}  // namespace
}  // namespace luadui
