// In a program of its own, since there is one code list a process.
#include <gtest/gtest.h>

#include "base/text.h"
#include "codedata/data_manager.h"
#include "codedata/zqdm_info.h"
#include "tests/fakes/fake_host.h"

namespace luadui {
namespace {

using Getter = int (*)(std::string_view, CUIData&);

struct FamilyCase {
    const char* name;
    Getter get;
    std::vector<std::string> keys;  // of all codes of the list
};

// A security for each market, and in those of funds one that is exchange-traded and one that is not.
constexpr const char* kCodes[] = {"600000", "000001", "900901", "200002", "010107", "510050",
                                  "500001", "101001", "159915", "160105", "700001", "00700",
                                  "000300", "399001", "688001", "830001"};
constexpr char kReply[] =
    "\"600000\",\"a|b\",\"17\",\"PFYH\"\n\"000001\",\"b\",\"33\",\"B\"\n\"900901\",\"c\",\"18\",\"C\"\n"
    "\"200002\",\"d\",\"34\",\"D\"\n\"010107\",\"e\",\"19\",\"E\"\n\"510050\",\"f\",\"20\",\"F\"\n"
    "\"500001\",\"g\",\"20\",\"G\"\n\"101001\",\"h\",\"35\",\"H\"\n\"159915\",\"i\",\"36\",\"I\"\n"
    "\"160105\",\"j\",\"36\",\"J\"\n\"700001\",\"k\",\"22\",\"K\"\n\"00700\",\"l\",\"153\",\"L\"\n"
    "\"00700\",\"l\",\"156\",\"L\"\n\"00700\",\"l\",\"73\",\"L\"\n\"00700\",\"l\",\"76\",\"L\"\n"
    "\"000300\",\"m\",\"21\",\"M\"\n\"399001\",\"n\",\"37\",\"N\"\n\"688001\",\"o\",\"145\",\"O\"\n"
    "\"830001\",\"p\",\"146\",\"P\"\n\"000001\",\"q\",\"21\",\"Q\"\n\"600000\",\"doubled\",\"17\",\"X\"\n";

TEST(CodeInfo, EveryGetterKnowsItsFamily) {
    FakeHost host;
    host.onAsk = [](CQueueReqItem& request) { request.SetData("result", kReply); };
    ASSERT_TRUE(CDataManager::InitKeyFairy(""));
    ASSERT_EQ(CDataManager::Get_KeyFairy_Size(), 20);  // waits for the load

    const FamilyCase cases[] = {
        {"base",
         CDataManager::GetCodeInfoFromListBase,
         {"600000:17", "000001:33", "900901:18", "200002:34", "688001:145", "830001:146"}},
        {"etf", CDataManager::GetETFCodeInfoFromList, {"510050:20", "159915:36"}},
        {"ggt", CDataManager::GetGgtCodeInfoFromList, {"00700:153", "00700:156", "00700:73", "00700:76"}},
        {"hggt", CDataManager::GetHGgtCodeInfoFromList, {"00700:153", "00700:156"}},
        {"sggt", CDataManager::GetSGgtCodeInfoFromList, {"00700:73", "00700:76"}},
        {"gz", CDataManager::GetGzCodeInfoFromList, {"010107:19", "101001:35"}},
        {"none", CDataManager::GetCodeInfoFromList, {}},
    };
    for (const FamilyCase& c : cases) {
        CUIData out;
        int count = 0;
        for (const char* code : kCodes) count += c.get(code, out);
        const bool takesAll = c.get == CDataManager::GetCodeInfoFromList;
        EXPECT_EQ(count, takesAll ? 20 : static_cast<int>(c.keys.size())) << c.name;
        EXPECT_EQ(out.Size(), static_cast<size_t>(count)) << c.name;
        for (const std::string& key : c.keys) EXPECT_TRUE(out.Has(key)) << c.name << ' ' << key;
        for (const char* other : {"", "60000", "6000000", "pfyh", "a"})
            EXPECT_EQ(c.get(other, out), 0) << c.name;
    }
}

TEST(CodeInfo, RecordsHoldFourTextsAndWhatWasThereStays) {
    const HelperZqdmInfo info{"600000", Gbk("浦发银行"), "17", "PFYH"};
    EXPECT_EQ(info.Key(), "600000:17");
    const CUIData record = info.ToRecord();
    EXPECT_EQ(record.GetDataText("stock_code"), "600000");
    EXPECT_EQ(record.GetDataText("stock_name"), Gbk("浦发银行"));
    EXPECT_EQ(record.GetDataText("stock_marketid"), "17");
    EXPECT_EQ(record.GetDataText("stock_phonetic"), "PFYH");
    EXPECT_EQ(record.Size(), 4U);
    CUIData out;
    out.SetData("other", 1);
    CDataManager::GetCodeInfoFromList("no such code", out);
    EXPECT_EQ(Describe(out), "other=1");
}

}  // namespace
}  // namespace luadui
