#include "platform/duilib.h"

#include <gmock/gmock.h>
#include <map>
#include <stdexcept>

namespace luadui::platform_test {
namespace {

using ::testing::ElementsAre;

TEST(DuiString, CutsAndFinds) {
    const CDuiString text(L"600000:上证");
    EXPECT_EQ(text.GetLength(), 9);
    EXPECT_TRUE(text.Left(6) == L"600000");
    EXPECT_TRUE(text.Mid(7) == L"上证");
    EXPECT_TRUE(text.Mid(5, 2) == L"0:");
    EXPECT_TRUE(text.Mid(9).IsEmpty() && text.Mid(-1).IsEmpty() && text.Left(-3).IsEmpty());
    EXPECT_TRUE(text.Left(99) == text && text.Right(99) == text);
    EXPECT_TRUE(text.Right(1) == L"证");
    EXPECT_EQ(text.Find(L':'), 6);
    EXPECT_EQ(text.Find(L"00", 3), 3);
    EXPECT_EQ(text.Find(L"没有"), -1);
    EXPECT_EQ(text.Find(L'6', 99), -1);
    EXPECT_EQ(text.ReverseFind(L'0'), 5);
    EXPECT_EQ(text[8], L'证');
    EXPECT_EQ(text.GetAt(9), L'\0');
    EXPECT_EQ(CDuiString(nullptr).GetLength(), 0);
    EXPECT_TRUE(CDuiString(L"abcdef", 3) == L"abc");
    EXPECT_TRUE(CDuiString(L"ab", 99) == L"ab");
}

TEST(DuiString, ChangesAndCompares) {
    CDuiString text(L"pfyh");
    text.MakeUpper();
    EXPECT_TRUE(text == L"PFYH");
    EXPECT_EQ(text.CompareNoCase(L"pfYH"), 0);
    EXPECT_NE(text.Compare(L"pfyh"), 0);
    text += L'+';
    text += CDuiString(L"x");
    EXPECT_TRUE(L"<" + text + L">" == L"<PFYH+x>");
    EXPECT_EQ(text.Replace(L"+", L"++"), 1);
    EXPECT_EQ(text.Replace(L"", L"!"), 0);
    EXPECT_TRUE(text == L"PFYH++x");
    text.SetAt(0, L'Q');
    text.SetAt(99, L'Q');
    EXPECT_TRUE(text != L"PFYH++x");
    text = text.GetData();
    EXPECT_TRUE(text == L"QFYH++x");
    text.Empty();
    EXPECT_TRUE(text.IsEmpty());
    const std::map<CDuiString, int> sorted{{L"b", 2}, {L"a", 1}, {L"ab", 3}};
    EXPECT_TRUE(sorted.begin()->first == L"a" && sorted.rbegin()->first == L"b");
}

TEST(DuiString, FormatsAlikeEverywhere) {
    CDuiString text(L"名称");
    EXPECT_EQ(text.Format(L"%s|%-4s|%5.2f|%d", text.GetData(), L"ab", 1.5, -7), 16);
    EXPECT_TRUE(text == L"名称|ab  | 1.50|-7");
    text.Format(L"%ls %hs %S %c%% %I64d %lld %08x", L"宽", "narrow", "too", L'字', INT64_MIN, INT64_MAX,
                0xBEEFu);
    EXPECT_TRUE(text == L"宽 narrow too 字% -9223372036854775808 9223372036854775807 0000beef");
    const std::wstring longText(5000, L'长');
    EXPECT_EQ(text.Format(L"<%s>", longText.c_str()), 5002);
    EXPECT_EQ(text.Format(L""), 0);
}

class Wnd : public CWindowWnd {
  public:
    std::vector<UINT> seen;
    HWND final = nullptr;
    bool deleteItself = false;

  protected:
    LPCWSTR GetWindowClassName() const override { return L"TestWnd"; }
    LRESULT HandleMessage(UINT message, WPARAM wParam, LPARAM lParam) override {
        if (message > WM_APP || message == WM_CREATE || message == WM_DESTROY) seen.push_back(message);
        if (message == WM_APP + 1) return static_cast<LRESULT>(wParam) + lParam;
        if (message == WM_APP + 2) throw std::runtime_error("thrown on purpose");
        if (message == WM_APP + 3) PostQuitMessage(0);
        return CWindowWnd::HandleMessage(message, wParam, lParam);
    }
    void OnFinalMessage(HWND window) override {
        final = window;
        EXPECT_EQ(GetHWND(), nullptr);
        if (deleteItself) delete this;
    }
};

TEST(WindowWnd, LivesWithItsWindow) {
    Wnd wnd;
    EXPECT_EQ(wnd.PostMessage(WM_APP + 1), 0);
    EXPECT_EQ(wnd.SendMessage(WM_APP + 1, 1, 2), 0);
    const HWND window = wnd.Create(HWND_MESSAGE, L"title", 0, 0, 0, 0, 0, 0);
    ASSERT_TRUE(IsWindow(window));
    EXPECT_EQ(wnd.GetHWND(), window);
    EXPECT_EQ(FindWindowExW(HWND_MESSAGE, nullptr, L"TestWnd", L"title"), window);
    EXPECT_EQ(wnd.SendMessage(WM_APP + 1, 20, 3), 23);
    EXPECT_NE(wnd.PostMessage(WM_APP + 3), 0);
    CPaintManagerUI::MessageLoop();  // until the quit that the post asked for
    wnd.Close();
    PostThreadMessageW(GetCurrentThreadId(), WM_QUIT, 0, 0);
    CPaintManagerUI::MessageLoop();
    EXPECT_EQ(wnd.final, window);
    EXPECT_FALSE(IsWindow(window));
    EXPECT_THAT(wnd.seen, ElementsAre(WM_CREATE, WM_APP + 1, WM_APP + 3, WM_DESTROY));

    EXPECT_NE(wnd.Create(HWND_MESSAGE, L"again", 0, 0), nullptr);
    DestroyWindow(wnd);

    auto* const selfish = new Wnd;
    selfish->deleteItself = true;
    DestroyWindow(selfish->Create(HWND_MESSAGE, L"", 0, 0));
}

TEST(WindowWnd, KeepsExceptionsIn) {
    Wnd wnd;
    wnd.Create(HWND_MESSAGE, L"", 0, 0);
    EXPECT_EQ(wnd.SendMessage(WM_APP + 2), 0);
    EXPECT_EQ(wnd.SendMessage(WM_APP + 1, 1, 1), 2);
    DestroyWindow(wnd);
}

TEST(WindowWnd, TakesOverAndGivesBack) {
    Wnd inner, outer;
    const HWND window = inner.Create(HWND_MESSAGE, L"", 0, 0);
    inner.seen.clear();
    WNDCLASSW info{};
    info.lpfnWndProc = DefWindowProcW;
    info.hInstance = GetModuleHandleW(nullptr);
    info.lpszClassName = L"Foreign";
    RegisterClassW(&info);
    const HWND foreign = CreateWindowExW(0, L"Foreign", L"text", 0, 0, 0, 0, 0, HWND_MESSAGE, nullptr,
                                         info.hInstance, nullptr);
    ASSERT_EQ(outer.Subclass(foreign), foreign);
    EXPECT_EQ(SendMessageW(foreign, WM_APP + 1, 1, 1), 2);
    EXPECT_EQ(GetWindowTextLengthW(foreign), 4);  // what the object does not handle
    outer.Unsubclass();
    EXPECT_EQ(SendMessageW(foreign, WM_APP + 1, 1, 1), 0);
    ASSERT_EQ(outer.Subclass(foreign), foreign);
    DestroyWindow(foreign);
    EXPECT_EQ(outer.final, foreign);
    EXPECT_EQ(outer.GetHWND(), nullptr);
    DestroyWindow(window);
}

TEST(PaintManager, KeepsWhatPagesShare) {
    EXPECT_TRUE(CPaintManagerUI::GetInstancePath().IsEmpty());
    CPaintManagerUI::SetInstance(GetModuleHandleW(nullptr));
    EXPECT_EQ(CPaintManagerUI::GetInstance(), GetModuleHandleW(nullptr));
    EXPECT_FALSE(CPaintManagerUI::GetInstancePath().IsEmpty());
    EXPECT_TRUE(CPaintManagerUI::GetResourcePath() == CPaintManagerUI::GetInstancePath());
    CPaintManagerUI::SetResourcePath(L"skin");
    EXPECT_TRUE(CPaintManagerUI::GetResourcePath() == L"skin/");
    const HWND window = reinterpret_cast<HWND>(uintptr_t{0x1234});
    CPaintManagerUI::SetPageManager(window);
    EXPECT_EQ(CPaintManagerUI::GetPageManager(), window);
    CPaintManagerUI::Term();
    EXPECT_EQ(CPaintManagerUI::GetInstance(), nullptr);
    EXPECT_EQ(CPaintManagerUI::GetPageManager(), nullptr);
}

}  // namespace
}  // namespace luadui::platform_test
