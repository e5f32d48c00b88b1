// A program of its own: before InitMarketMap has run nothing is known, and that cannot be undone.
#include <gtest/gtest.h>
#include <iterator>

#include "codedata/code_list_query.h"
#include "codedata/data_manager.h"
#include "codedata/market_map.h"
#include "tests/fakes/fake_host.h"

namespace luadui {
namespace {

struct MarketCase {
    const char *id, *name;
    int type;
    const char* exchange;
};

constexpr MarketCase kMarkets[] = {
    {"16", "SH", 2, "2"},        {"21", "SH", 92, "2"},
    {"22", "SHT", 92, "2"},      {"18", "SHB", 5, "2"},
    {"33", "SZA", 1, "1"},       {"39", "SZA", 1, "1"},
    {"37", "SZT", 91, "1"},      {"34", "SZB", 4, "1"},
    {"145", "STA", 6, "6"},      {"146", "STB", 7, "6"},
    {"24", "HI", 900, "24"},     {"48", "HIS", 900, "48"},
    {"129", "IF", 900, "129"},   {"233", "SIOP", 900, "233"},
    {"99", "NULL", 900, "99"},   {"1", "NULL", 900, "1"},
    {"", "NULL", 900, ""},       {"017", "NULL", 900, "017"},
    {"17 ", "NULL", 900, "17 "}, {" ", "NULL", 900, " "},
    {"256", "NULL", 900, "256"}, {"32 33", "NULL", 900, "32 33"},
};

TEST(Markets, AreKnownFromInitMarketMapOn) {
    EXPECT_EQ(CDataManager::GetMarketMapSize(), 0);
    EXPECT_EQ(CDataManager::GetMarket("17"), "NULL");
    EXPECT_EQ(CDataManager::GetMarketNew("17"), 900);
    EXPECT_EQ(CDataManager::GetMarketID("17"), "17");
    for (int times = 0; times < 2; ++times) {
        CDataManager::InitMarketMap();
        EXPECT_EQ(CDataManager::GetMarketMapSize(), 24);
        for (const MarketCase& c : kMarkets) {
            EXPECT_EQ(CDataManager::GetMarket(c.id), c.name) << c.id;
            EXPECT_EQ(CDataManager::GetMarketNew(c.id), c.type) << c.id;
            EXPECT_EQ(CDataManager::GetMarketID(c.id), c.exchange) << c.id;
        }
    }
}

TEST(Markets, BelongToEveryCodeOfTheirExchange) {
    for (const char* code : {"1", "4", "37", "81", "91"}) EXPECT_TRUE(IsMarketOfExchange("36", code)) << code;
    for (const char* code : {"2", "5", "71", "82", "92"}) EXPECT_TRUE(IsMarketOfExchange("17", code)) << code;
    for (const char* code : {"6", "7"}) EXPECT_TRUE(IsMarketOfExchange("146", code)) << code;
    EXPECT_FALSE(IsMarketOfExchange("17", "1") || IsMarketOfExchange("3", "1") ||
                 IsMarketOfExchange("17", "17"));
}

TEST(CodeListQuery, AsksTheHostsScript) {
    FakeHost host;
    host.onAsk = [](CQueueReqItem& request) { request.SetData("result", "rows"); };
    EXPECT_EQ(QueryCodeList(""), "rows");
    EXPECT_EQ(QueryCodeList("a\\market.db"), "rows");
    host.onAsk = [](CQueueReqItem&) {};
    EXPECT_EQ(QueryCodeList(""), std::nullopt);
    host.onAsk = [](CQueueReqItem&) { throw 1; };
    EXPECT_EQ(QueryCodeList(""), std::nullopt);

    const std::string query =
        "select * from codelist where marketcode = '17' or marketcode ='33' or marketcode ='18' or "
        "marketcode ='34' "
        "or marketcode ='19' or marketcode ='20' or marketcode ='35' or marketcode ='36' or marketcode ='22' "
        "or "
        "marketcode='153' or marketcode='156' or marketcode='73' or marketcode='76' or marketcode='21' or "
        "marketcode='37' or marketcode='145' or marketcode='146'";
    const std::string call =
        "cmd=sync method=GetCodeList params=" + query + " script=\\LuaInterface\\marketdb.lua";
    ASSERT_EQ(host.asked.size(), 4U);
    EXPECT_EQ(host.asked[0].GetDataLong("REQTYPE"), 1502);
    EXPECT_EQ(Describe(FakeHost::Params(host.asked[0])), call);
    EXPECT_EQ(FakeHost::Params(host.asked[1]).GetDataText("path"), "a\\market.db");
}

}  // namespace
}  // namespace luadui
