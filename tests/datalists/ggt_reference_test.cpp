#include "datalists/ggt_reference.h"

#include <gtest/gtest.h>

#include <string>

#include "base/counters.h"
#include "base/text.h"

namespace luadui {
namespace {

CUIData Answer(std::initializer_list<const char*> rows) {
    CDataTable table;
    for (const char* column : {"Market", "StockType", "GGT_QDJG", "GGT_ZDJG", "GGT_JCZ"})
        table.AddColumn(column);
    for (const char* cells : rows) {
        const int row = table.AppendRow();
        int col = 0;
        for (const auto text : SplitText(cells, ' ')) table.SetItemText(row, col++, text);
    }
    CUIData answer;
    answer.SetData("Table", table);
    return answer;
}

TEST(PriceSpreadGGTTest, ThePriceFindsItsBand) {
    CPriceSpreadGGT list;
    const uint64_t refused = CCounters::Get("price_spread_band_refused");
    const uint64_t overlaps = CCounters::Get("price_spread_band_overlaps");
    const uint64_t unreadable = CCounters::Get("tb_price_spred_ggt_zdjg_unreadable");
    ASSERT_TRUE(list.SetResponse(
        Answer({"E  0.50 10.00 0.010", "E 0 0.01 0.25 0.001", "E 0 0.25 0.5 0.005", "E 2 0 9e3 0.2",
                "X 0 1 2 1", "E 0 9.99 20 7", "E 0 0 0.02 7", "E 0 0.1 0.2 7", "E 0 30 20 7", "E 0 20 20 7",
                "E 0 20 30 -1", "E 0 20 1,000 7"})));
    EXPECT_EQ(CCounters::Get("price_spread_band_overlaps"), overlaps + 3);
    EXPECT_EQ(CCounters::Get("price_spread_band_refused"), refused + 3);
    EXPECT_EQ(CCounters::Get("tb_price_spred_ggt_zdjg_unreadable"), unreadable + 1);

    // Market, type, price, and the answer if there is one.
    for (const char* text :
         {"76  0.25 0.005", "156 0 0.2499999 0.001", "73  0.5 0.01", "153  10 0.01", "E  10.00000001 0",
          "E  0.009 0", "76 2 8999.99 0.2", "X  2 1", "17  1 0", "  1", "76  -", "76  "}) {
        const auto parts = SplitText(text, ' ');
        CUIData request;
        request.SetData("MarketID", parts[0]);
        request.SetData("StockType", parts[1]);
        request.SetData("stock_price", parts[2]);
        EXPECT_EQ(list.GetPriceSpread(request), parts.size() > 3) << text;
        EXPECT_EQ(request.GetDataText("price_spread"), parts.size() > 3 ? parts[3] : "") << text;
    }
    CUIData numbers;
    numbers.SetData("Market", 76);
    numbers.SetData("stock_price", 0.25);
    EXPECT_TRUE(list.GetPriceSpread(numbers));
    EXPECT_EQ(numbers.GetDataString("price_spread"), "0.005");

    EXPECT_FALSE(list.SetResponse(CUIData()));  // what is held stays
    EXPECT_TRUE(list.GetPriceSpread(numbers));
    EXPECT_EQ(numbers.GetDataString("price_spread"), "0.005");
    EXPECT_TRUE(list.SetResponse(Answer({})));
    EXPECT_TRUE(list.GetPriceSpread(numbers));
    EXPECT_EQ(numbers.GetDataString("price_spread"), "0");
    CDataTable table;
    EXPECT_TRUE(list.GetData("tb_price_spred_ggt", table));
}

}  // namespace
}  // namespace luadui
