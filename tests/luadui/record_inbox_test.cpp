// The way of records into a queue that refuses, step by step; and the names that page libraries may have.
#include "luadui/record_inbox.h"

#include <gtest/gtest.h>

#include <deque>
#include <random>

#include "luadui/page_library.h"

namespace luadui {
namespace {

struct Record : CQueueTaskItem {
    Record() { ++s_living; }
    ~Record() override { --s_living; }
    uint32_t sequence = 0;
    static inline int s_living = 0;
};

// A queue that refuses some posts, and the consumer behind it.
class InboxTest : public testing::Test {
  protected:
    ~InboxTest() override { EXPECT_EQ(Record::s_living, 0); }

    CRecordInbox::Posted Post() {
        auto record = std::make_unique<Record>();
        record->sequence = m_posted++;
        return inbox.Post(std::move(record), 1);
    }
    void TakeOne() {
        const auto record = inbox.Take(queue.front());
        queue.pop_front();
        EXPECT_EQ(static_cast<const Record&>(*record).sequence, m_taken++) << "out of order";
    }
    // What the consumer's loop and its timer do until nothing is left.
    void TakeAll() {
        while (!queue.empty() || inbox.HasWaiting()) {
            if (queue.empty()) {
                inbox.Refill();
            } else {
                TakeOne();
            }
        }
        EXPECT_EQ(m_taken, m_posted);
    }

    std::function<bool()> accepts = [] { return true; };
    std::deque<LPARAM> queue;
    CRecordInbox inbox{[this](WPARAM wParam, CQueueTaskItem* record) {
        EXPECT_EQ(wParam, 1U);
        if (!accepts()) return false;
        queue.push_back(reinterpret_cast<LPARAM>(record));
        return true;
    }};

  private:
    uint32_t m_posted = 0;
    uint32_t m_taken = 0;
};

TEST_F(InboxTest, KeepsTheOrderWhicheverPostsAreRefused) {
    std::mt19937 random(7);
    for (int every = 1; every <= 50; ++every) {
        int calls = 0;
        accepts = [&] { return ++calls > 2000 || calls % every != 0; };
        for (int i = 0; i < 1000; ++i) {
            Post();
            if (random() % 3 == 0 && !queue.empty()) TakeOne();
            if (random() % 50 == 0) inbox.Refill();
        }
        TakeAll();
    }
}

TEST_F(InboxTest, ALongQueueIsMovedUpAsTheConsumerWorks) {
    accepts = [&] { return queue.size() < 10000; };
    for (int i = 0; i < 50000; ++i) Post();
    EXPECT_EQ(queue.size(), 10000U);
    while (!queue.empty()) TakeOne();
    EXPECT_FALSE(inbox.HasWaiting()) << "taking moves up what waits";
    TakeAll();
}

TEST_F(InboxTest, TellsTheConsumerOnceUntilNothingWaits) {
    accepts = [] { return false; };
    EXPECT_EQ(Post(), CRecordInbox::Posted::kTellConsumer);
    EXPECT_EQ(Post(), CRecordInbox::Posted::kWaiting);
    inbox.Refill();
    EXPECT_TRUE(inbox.HasWaiting());
    EXPECT_EQ(Post(), CRecordInbox::Posted::kWaiting) << "it goes on refilling by itself";
    accepts = [] { return true; };
    EXPECT_EQ(Post(), CRecordInbox::Posted::kWaiting) << "behind those that wait, though there is room";
    inbox.Refill();
    EXPECT_FALSE(inbox.HasWaiting());
    EXPECT_EQ(Post(), CRecordInbox::Posted::kPosted);
    accepts = [] { return false; };
    EXPECT_EQ(Post(), CRecordInbox::Posted::kTellConsumer) << "the next time it is full";
    accepts = [] { return true; };
    TakeAll();
}

TEST_F(InboxTest, ClosingFreesWhatWaitsAndRefusesTheRest) {
    accepts = [&] { return queue.size() < 3; };
    for (int i = 0; i < 10; ++i) Post();
    inbox.Close();
    EXPECT_EQ(Record::s_living, 3);
    EXPECT_EQ(Post(), CRecordInbox::Posted::kClosed);
    inbox.Refill();
    while (!queue.empty()) TakeOne();
}

TEST_F(InboxTest, TakesRecordsThatOthersPosted) {
    queue.push_back(reinterpret_cast<LPARAM>(new Record));
    EXPECT_NE(inbox.Take(queue.front()), nullptr);
    queue.clear();
    EXPECT_EQ(inbox.Take(0), nullptr);
    EXPECT_EQ(Post(), CRecordInbox::Posted::kPosted);
    TakeAll();
}

TEST(PageLibraryName, StaysBelowTheHostFolder) {
    for (const char* name :
         {"/page.dll", "page.dll", "\\pages\\page.dll", "a..b.dll", "/..page/x.dll", "...", "/"})
        EXPECT_TRUE(StaysBelowFolder(name)) << name;
    for (const char* name : {"..", "../page.dll", "/a/../page.dll", "\\..\\page.dll", "a/..", "c:page.dll",
                             "c:\\p.dll", "page.dll:stream"})
        EXPECT_FALSE(StaysBelowFolder(name)) << name;
    EXPECT_FALSE(StaysBelowFolder(std::string("page\0.dll", 9)));
}

}  // namespace
}  // namespace luadui
