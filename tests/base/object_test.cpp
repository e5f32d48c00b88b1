// Objects found by handle, the window that receives records, counters, sets and lists.
#include <gmock/gmock.h>

#include <cstdint>
#include <stdexcept>
#include <string>

#include "base/base_object.h"
#include "base/counters.h"
#include "base/data_list.h"
#include "base/data_set.h"
#include "base/dui_base_wnd.h"
#include "base/ui_data.h"

namespace luadui {
namespace {

using ::testing::ElementsAre;

struct Listener : CBaseObject {
    void OnNotify(void* data) override { seen = static_cast<CUIData*>(data)->GetDataLong("n"); }
    int64_t seen = 0;
};

TEST(BaseObjectTest, IsFoundByItsHandleWhileItLives) {
    int32_t handle = 0;
    CUIData record;
    record.SetData("n", 5);
    {
        Listener listener;
        handle = listener.GetHandle();
        EXPECT_GT(handle, 0);
        EXPECT_EQ(CBaseObject::Find(handle, 1), &listener);
        EXPECT_EQ(CBaseObject::Find(handle, 2), nullptr);
        EXPECT_TRUE(CBaseObject::Notify(handle, &record));
        EXPECT_EQ(listener.seen, 5);
        const Listener second;
        EXPECT_NE(second.GetHandle(), handle);
    }
    EXPECT_FALSE(CBaseObject::Notify(handle, &record));
    const Listener later;
    EXPECT_NE(later.GetHandle(), handle);
    for (const int64_t bad :
         {int64_t{0}, int64_t{-1}, int64_t{handle} + (int64_t{1} << 32), INT64_MAX, INT64_MIN}) {
        EXPECT_EQ(CBaseObject::Find(bad), nullptr) << bad;
    }
}

class Page : public CDuiBaseWnd {
  public:
    Page() { Create(HWND_MESSAGE, L"page", 0, 0, 0, 0, 0, 0); }
    ~Page() override {
        if (m_hWnd) DestroyWindow(m_hWnd);
    }
    void OnNotify(void* data) override {
        if (static_cast<CUIData*>(data)->Has("throw")) throw std::runtime_error("page");
        type = static_cast<CUIData*>(data)->GetType();
    }
    std::string type;

  protected:
    LPCWSTR GetWindowClassName() const override { return L"LuaduiTestPage"; }
};

TEST(DuiBaseWndTest, ReceivesRecordsAsMessages) {
    Page page;
    ASSERT_NE(page.GetHWND(), nullptr);
    CUIData record("fund");
    EXPECT_TRUE(CDuiBaseWnd::SendRecord(page.GetHWND(), record));
    EXPECT_EQ(page.type, "fund");
    EXPECT_EQ(CBaseObject::Find(page.GetHandle()), static_cast<CBaseObject*>(&page));

    const uint64_t failed = CCounters::Get("page_notify_failed");
    record.SetData("throw", 1);
    EXPECT_FALSE(CDuiBaseWnd::SendRecord(page.GetHWND(), record));
    EXPECT_EQ(CCounters::Get("page_notify_failed"), failed + 1);
    EXPECT_EQ(::SendMessageW(page.GetHWND(), CDuiBaseWnd::kRecordMessage, 0, 0), 0);
    const HWND gone = page.GetHWND();
    DestroyWindow(gone);
    EXPECT_FALSE(CDuiBaseWnd::SendRecord(gone, record));
}

TEST(CountersTest, CountsByNameWhereverTheNameLies) {
    const std::string copy = "test_counter_b";
    CCounters::Add("test_counter_b", 2);
    CCounters::Add(copy.c_str());
    CCounters::Add("test_counter_a");
    CCounters::Add(nullptr);
    EXPECT_EQ(CCounters::Get(copy), 3u);
    EXPECT_EQ(CCounters::Get("test_counter_absent"), 0u);
    const auto all = CCounters::All();
    EXPECT_TRUE(std::is_sorted(all.begin(), all.end()));
    EXPECT_THAT(all, ::testing::IsSupersetOf({std::pair<std::string, uint64_t>("test_counter_a", 1),
                                              std::pair<std::string, uint64_t>("test_counter_b", 3)}));
}

TEST(DataSetTest, IsAscendingUniqueAndCopiedOnWrite) {
    CDataSet set;
    for (const char* text : {"b", "a", "\xB9\xC9", "b", ""}) set.Insert(text);
    CDataSet copy = set;
    EXPECT_FALSE(copy.Insert("a"));
    EXPECT_TRUE(copy.SharesWith(set)) << "nothing was written";
    EXPECT_TRUE(copy.Remove(*copy.begin()));
    EXPECT_FALSE(copy.Remove("x"));
    EXPECT_THAT(set, ElementsAre("", "a", "b", "\xB9\xC9"));
    EXPECT_THAT(copy, ElementsAre("a", "b", "\xB9\xC9"));
    copy.Clear();
    EXPECT_TRUE(copy.IsEmpty());
    EXPECT_EQ(set.Size(), 4u);
}

TEST(DataListTest, HoldsValuesOfEveryKindInOrder) {
    CDataList list;
    list.Append(1);
    list.Append("two");
    list.Append(list);
    list.Append(DataValue::Null());
    list.Append(std::string(1000, 'x'));
    CDataList copy = list;
    EXPECT_TRUE(list.Remove(1));
    EXPECT_TRUE(list.Set(0, std::string(300, 'y')));
    EXPECT_FALSE(list.Remove(4));
    EXPECT_FALSE(list.Set(4, 1));
    EXPECT_EQ(list.At(4).Kind(), kDataAbsent);
    CDataList inner;
    ASSERT_TRUE(list.Get(1, inner));
    EXPECT_EQ(inner.Size(), 2u);
    EXPECT_EQ(list[2].Kind(), kDataNull);
    EXPECT_EQ(list[3].AsText().size(), 1000u);
    EXPECT_EQ(copy.Size(), 5u);
    EXPECT_EQ(copy[0].AsLong(), 1);
    size_t count = 0;
    for (const auto [key, value] : copy) count += key.empty() && value ? 1 : 0;
    EXPECT_EQ(count, 5u);
    for (int i = 0; i < 10000; ++i) list.Append(i);
    while (list.Size() > 4) list.Remove(list.Size() - 1);
    EXPECT_EQ(list[0].AsText(), std::string(300, 'y'));
    list.Clear();
    EXPECT_TRUE(list.IsEmpty());
}

}  // namespace
}  // namespace luadui
