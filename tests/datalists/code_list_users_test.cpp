// What the lists take from the code list. It stays for the other tests of the process, whose codes it does not have.
#include <gtest/gtest.h>

#include "base/text.h"
#include "codedata/data_manager.h"
#include "datalists/message_center_list.h"
#include "datalists/order_messages.h"
#include "datalists/position_list.h"
#include "tests/fakes/fake_host.h"
#include "tests/fakes/tables.h"

namespace luadui {
namespace {

class FundOwner : public ListOwner {
  public:
    void RegisterNotify(unsigned int, std::string) override {}
    bool GetData(const std::string&, CUIData&) override { return false; }
    bool GetData(unsigned int, std::string, std::string, CDataTable& out) override {
        out = MakeTable({"TotalAssets"}, {{"100"}});
        return true;
    }
    void ResponseNotify(CUIData* record, int, bool) override { published = *record; }
    CUIData published;
};

class CodeListUsersTest : public testing::Test {
  protected:
    CodeListUsersTest() {
        FakeHost host;
        host.AnswerOthers([](CQueueReqItem& request) {
            request.SetData("result",
                            Gbk("\"990001\",\"浦\",\"17\",\"P\"\n\"990001\",\"指数\",\"21\",\"ZS\"\n"
                                "\"990002\",\"万&#032;科Ａ\",\"33\",\"WKA\"\n"));
        });
        EXPECT_TRUE(CDataManager::InitKeyFairy(""));
        EXPECT_EQ(CDataManager::Get_KeyFairy_Size(), 3);  // waits for the load
    }

    FundOwner owner;
};

TEST_F(CodeListUsersTest, PositionsWithoutMarketGetTheOneOfCodeAndName) {
    CPositionList list(&owner);
    list.SetPositionTable("a",
                          MakeTable({"SecurityID", "SecurityName", "Market"}, {{"990001", Gbk("指数"), ""},
                                                                               {"990001", Gbk("浦"), ""},
                                                                               {"990001", Gbk("浦"), "33"},
                                                                               {"990002", Gbk("万 科Ａ"), ""},
                                                                               {"990001", Gbk("别"), ""},
                                                                               {"", "", ""}}),
                          false);
    CDataTable held;
    ASSERT_TRUE(list.GetData("a", held));
    std::string markets;
    for (int row = 0; row < held.GetRowNumber(); ++row)
        markets += std::string(held.GetItemText(row, "Market")) + '|' +
                   std::string(held.GetItemText(row, "SecurityMarket")) + '\n';
    EXPECT_EQ(markets, "21|990001:21\n17|990001:17\n33|990001:33\n33|990002:33\n|990001:\n|:\n");
}

TEST_F(CodeListUsersTest, MessagesNameTheSecurity) {
    CMessageCenterList list(&owner);
    CUIData push("str_subkey_risk_push");
    push.SetData("Table", MakeTable({"SecurityID", "MarketID", "Side", "OrderQty", "account", "OrderPrice"},
                                    {{"990002", "33", "0", "300", "A", "10.5"}}));
    list.OnNotify(&push);
    CDataTable messages;
    ASSERT_TRUE(owner.published.GetData("messagecenter", messages));
    EXPECT_EQ(messages.GetItemText(0, "OrderMessage"), Gbk("万 科Ａ（990002），10.5元，A买入300股"));

    struct Case {
        OrderWords order;
        const char* text;
    };
    for (const Case& c : {Case{{"990001", "21", "1", "A", "", "2", ""}, "指数（990001），1元，A2股"},
                          Case{{"990001", "2", "1", "A", "", "2", ""}, "浦（990001），1元，A2股"},
                          Case{{"990001", "33", "1", "A", "", "2", ""}, "（990001），1元，A2股"},
                          Case{{"990001", "17", "1", "A", "", "2", "own"}, "own（990001），1元，A2股"}})
        EXPECT_EQ(GbkToUtf8(OrderText(c.order)), c.text);
}

}  // namespace
}  // namespace luadui
