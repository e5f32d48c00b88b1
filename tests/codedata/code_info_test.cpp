// In a program of its own, since there is one code list a process.
#include <gtest/gtest.h>

#include "base/text.h"
#include "codedata/data_manager.h"
#include "tests/fakes/fake_host.h"

namespace luadui {
namespace {

struct Security {
    const char *code, *market;
};

// One for each market, and in those of funds one that is exchange-traded and one that is not.
constexpr Security kList[] = {{"600000", "17"}, {"000001", "33"},  {"900901", "18"}, {"200002", "34"},
                              {"010107", "19"}, {"510050", "20"},  {"500001", "20"}, {"101001", "35"},
                              {"159915", "36"}, {"160105", "36"},  {"700001", "22"}, {"00700", "153"},
                              {"00700", "156"}, {"00700", "73"},   {"00700", "76"},  {"000001", "21"},
                              {"399001", "37"}, {"688001", "145"}, {"830001", "146"}};

std::string Reply() {
    std::string reply;
    for (const auto& [code, market] : kList)
        reply += std::string("\"") + code + "\",\"" + Gbk("浦") + market + "\",\"" + market + "\",\"P\"\n";
    return reply + reply;
}

TEST(CodeInfo, EveryGetterKnowsItsFamily) {
    FakeHost host;
    host.AnswerOthers([](CQueueReqItem& request) { request.SetData("result", Reply()); });
    ASSERT_TRUE(CDataManager::InitKeyFairy(""));
    ASSERT_EQ(CDataManager::Get_KeyFairy_Size(), 19);  // waits for the load

    struct Case {
        int (*get)(std::string_view, CUIData&);
        std::string markets;  // in the order of the list
    };
    for (const Case& c : {Case{CDataManager::GetCodeInfoFromList,
                               "17 33 18 34 19 20 20 35 36 36 22 153 156 73 76 21 37 145 146 "},
                          Case{CDataManager::GetCodeInfoFromListBase, "17 33 18 34 145 146 "},
                          Case{CDataManager::GetETFCodeInfoFromList, "20 36 "},
                          Case{CDataManager::GetGgtCodeInfoFromList, "153 156 73 76 "},
                          Case{CDataManager::GetHGgtCodeInfoFromList, "153 156 "},
                          Case{CDataManager::GetSGgtCodeInfoFromList, "73 76 "},
                          Case{CDataManager::GetGzCodeInfoFromList, "19 35 "}}) {
        std::string markets;
        for (const auto& [code, market] : kList) {
            CUIData out, record;
            out.SetData("other", 1);
            const int count = c.get(code, out);
            EXPECT_EQ(out.Size(), static_cast<size_t>(count) + 1);
            if (!out.GetData(std::string(code) + ':' + market, record)) continue;
            markets.append(market).append(" ");
            EXPECT_EQ(Describe(record), std::string("stock_code=") + code + " stock_name=" + Gbk("浦") +
                                            market + " stock_marketid=" + market + " stock_phonetic=P");
        }
        EXPECT_EQ(markets, c.markets);
        CUIData out;
        for (const char* other : {"", "60000", "6000000", "P"}) EXPECT_EQ(c.get(other, out), 0) << other;
    }
    CUIData etf;
    EXPECT_EQ(CDataManager::GetETFCodeInfoFromList("510050", etf), 1);
}

}  // namespace
}  // namespace luadui
