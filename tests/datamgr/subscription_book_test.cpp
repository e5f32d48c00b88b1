#include "datamgr/subscription_book.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "base/base_object.h"

namespace luadui {
namespace {

// What a step changed: "t" the topic got its first subscription or lost its last one, "k" the kind at this window.
std::string Text(const SubscriptionBook::Change& change) {
    return std::string(change.ofTopic ? "t" : "") + (change.ofKind ? "k" : "");
}

struct Step {
    char what;  // + or -
    const char* topic;
    const char* kind;
    uint32_t window;
    const char* change;
};
constexpr Step kSteps[] = {
    {'-', "A", "fund", 1, ""},                               // there is nothing yet
    {'+', "A", "fund", 1, "tk"}, {'+', "A", "fund", 1, ""},  // once more counts once
    {'+', "A", "sum", 1, "k"},                               // another kind of the same topic
    {'+', "A", "fund", 2, "k"},                              // another window
    {'+', "B", "fund", 1, "t"},                              // another account's topic brings the kind, too
    {'+', "B", "fund", 0, "k"},                              // the manager itself
    {'-', "A", "fund", 3, ""},                               // no such window, topic, kind
    {'-', "C", "fund", 1, ""},   {'-', "A", "other", 1, ""},
    {'-', "A", "fund", 1, ""},  // other kinds and windows want the topic, the other topic brings the kind
    {'-', "A", "fund", 1, ""},   {'-', "B", "fund", 1, "k"},
    {'-', "B", "fund", 0, "tk"}, {'-', "A", "sum", 1, "k"},
    {'-', "A", "fund", 2, "tk"}, {'-', "A", "fund", 2, ""},
    {'+', "A", "fund", 1, "tk"},
};

TEST(SubscriptionBookTest, KnowsWhoIsTheFirstAndTheLast) {
    SubscriptionBook book;
    for (const Step& step : kSteps) {
        const auto change = step.what == '+' ? book.Add(step.topic, step.kind, step.window)
                                             : book.Remove(step.topic, step.kind, step.window);
        EXPECT_EQ(Text(change), step.change) << "step " << &step - kSteps;
    }
}

TEST(SubscriptionBookTest, ForgetsWindowsThatHaveGone) {
    SubscriptionBook book;
    const CBaseObject open;
    const auto window = static_cast<uint32_t>(open.GetHandle());
    std::vector<std::string> closedOnly;
    {
        const CBaseObject closing;
        const auto gone = static_cast<uint32_t>(closing.GetHandle());
        for (size_t i = 0; i < SubscriptionBook::kKept; ++i) {
            closedOnly.push_back("T" + std::to_string(10'000 + i));
            book.Add(closedOnly.back(), "hq", gone);
        }
        book.Add("both", "hq", gone);
        book.Add("both", "hq", window);
        book.Add("own", "hq", 0);
        EXPECT_TRUE(book.DropGone().empty());  // it is still there
        for (size_t i = 0; i < SubscriptionBook::kKept; ++i) {
            closedOnly.push_back("U" + std::to_string(10'000 + i));
            book.Add(closedOnly.back(), "hq", gone);
        }
    }
    EXPECT_TRUE(book.DropGone().empty());  // not worth another look: it has not doubled since the last one
    for (size_t i = 0; i < 2 * SubscriptionBook::kKept; ++i) book.Add("V" + std::to_string(i), "hq", window);
    EXPECT_EQ(book.DropGone(), closedOnly);
    EXPECT_EQ(Text(book.Add(closedOnly[0], "hq", window)), "t");
    EXPECT_EQ(Text(book.Remove("both", "hq", window)), "t");
    EXPECT_EQ(Text(book.Remove("own", "hq", 0)), "tk");
}

TEST(SubscriptionBookTest, StaysSmallHoweverManyWindowsCome) {
    SubscriptionBook book;
    for (int round = 0; round < 4; ++round) {
        {
            const CBaseObject closing;
            for (size_t i = 0; i <= SubscriptionBook::kKept; ++i)
                book.Add(std::to_string(i), "hq", static_cast<uint32_t>(closing.GetHandle()));
        }
        EXPECT_EQ(book.DropGone().size(), SubscriptionBook::kKept + 1) << round;
    }
}

}  // namespace
}  // namespace luadui
