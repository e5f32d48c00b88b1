#include "accounts/account_order.h"

#include <gtest/gtest.h>

#include "base/counters.h"
#include "base/text.h"
#include "tests/fakes/describe.h"

namespace luadui {
namespace {

struct TextCase {
    const char* text;
    const char* read;  // as it is written again
    int refused = 0, cut = 0;
};
constexpr TextCase kTexts[] = {
    {"", "[]"},
    {"[]", "[]"},
    {"[;", "[]"},
    {"[a|1|1=2;b|1|1=1;]", "[a|1|1=2;b|1|1=1;]"},
    {"[a=b=3;]", "[a=b=3;]"},  // the last "=" counts
    {"[a=1;a=2;]", "[a=2;]"},  // as the last entry of a key does
    {"[a=x;b;=4;c=5;d=99999999999;e=1.5;]", "[c=5;]", 5},
    {"[;a=1;]", "[a=1;]", 1},
    {"[a=1;b=12", "[a=1;]", 0, 1},  // of 123, perhaps
    {"[a=1;b=2]", "[a=1;]", 0, 1},
    {"[账户||1=7;]", "[账户||1=7;]"},
};

TEST(AccountOrderText, IsReadBackAsItIsWritten) {
    for (const TextCase& each : kTexts) {
        SCOPED_TRACE(each.text);
        const auto refused = CCounters::Get("account_order_entry_refused");
        const auto cut = CCounters::Get("account_order_text_cut");
        EXPECT_EQ(GbkToUtf8(OrderText(ParseOrderText(Gbk(each.text)))), each.read);
        EXPECT_EQ(CCounters::Get("account_order_entry_refused") - refused,
                  static_cast<uint64_t>(each.refused));
        EXPECT_EQ(CCounters::Get("account_order_text_cut") - cut, static_cast<uint64_t>(each.cut));
    }
}

TEST(AccountOrder, NumbersDecideTheTable) {
    AccountOrder order;
    EXPECT_TRUE(order.Learn("b", 2147483647));
    EXPECT_TRUE(order.Learn("a", 7));
    EXPECT_FALSE(order.Learn("a", 7));
    EXPECT_EQ(order.Append({"a", "d", "c"}), 2U);  // nothing comes after the largest number of all
    EXPECT_EQ(Describe(order.Table()),
              "[Index,AccountKey,AccountOrder|0,a,7|1,b,2147483647|2,c,2147483647|3,d,2147483647]");
    EXPECT_FALSE(order.HasUnsaved());
}

TEST(AccountOrder, TheUsersWishHoldsUntilItIsSaved) {
    AccountOrder order;
    order.Append({"a", "b"});
    EXPECT_TRUE(order.Set("a", 5));
    EXPECT_FALSE(order.Learn("a", 1));
    EXPECT_EQ(order.Find("a"), 5);
    order.SetSaved();
    EXPECT_TRUE(order.Learn("a", 1));
    EXPECT_FALSE(order.Set("a", 1));
    EXPECT_FALSE(order.HasUnsaved());
}

}  // namespace
}  // namespace luadui
