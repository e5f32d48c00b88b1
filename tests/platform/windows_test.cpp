#include <gmock/gmock.h>
#include <array>
#include <set>
#include <string>

#include "tests/platform/probe.h"

namespace luadui::platform_test {
namespace {

using ::testing::ElementsAre;

struct LifeEvent {
    HWND window;
    UINT message;
};

TEST(Windows, LifeOfParentAndChild) {
    std::vector<LifeEvent> events;
    const Probe::Handler note = [&](HWND window, UINT message, WPARAM, LPARAM) -> std::optional<LRESULT> {
        const bool isLife = message == WM_DESTROY || message == WM_NCDESTROY;
        if (isLife) {
            events.push_back({window, message});
            EXPECT_TRUE(IsWindow(window));
        }
        return {};
    };
    Probe parent(nullptr, WS_POPUP, note), child(parent, WS_CHILD, note), owned(parent, WS_POPUP, note);
    EXPECT_THAT(parent.Seen(), ElementsAre(WM_NCCREATE, WM_CREATE));
    EXPECT_TRUE(IsChild(parent, child));
    EXPECT_FALSE(IsChild(parent, owned));
    EXPECT_EQ(GetParent(child), parent);
    EXPECT_EQ(GetParent(owned), parent);

    EXPECT_TRUE(DestroyWindow(parent));
    const std::array<LifeEvent, 6> expected{{{owned, WM_DESTROY},
                                             {owned, WM_NCDESTROY},
                                             {parent, WM_DESTROY},
                                             {child, WM_DESTROY},
                                             {child, WM_NCDESTROY},
                                             {parent, WM_NCDESTROY}}};
    ASSERT_EQ(events.size(), expected.size());
    for (size_t i = 0; i < expected.size(); ++i) {
        EXPECT_EQ(events[i].window, expected[i].window) << i;
        EXPECT_EQ(events[i].message, expected[i].message) << i;
    }
    for (HWND window : {HWND(parent), HWND(child), HWND(owned)}) EXPECT_FALSE(IsWindow(window));
    EXPECT_FALSE(DestroyWindow(parent));
}

TEST(Windows, CanRefuseToBeMade) {
    const auto answering = [](UINT refused, LRESULT answer) {
        return [=](HWND, UINT message, WPARAM, LPARAM) {
            return message == refused ? std::optional<LRESULT>(answer) : std::nullopt;
        };
    };
    Probe early(answering(WM_NCCREATE, 0)), late(answering(WM_CREATE, -1));
    EXPECT_EQ(HWND(early), nullptr);
    EXPECT_THAT(early.Seen(), ElementsAre(WM_NCCREATE, WM_NCDESTROY));
    EXPECT_EQ(HWND(late), nullptr);
    EXPECT_EQ(late.Seen().back(), UINT{WM_NCDESTROY});  // Wine leaves out WM_DESTROY
    Probe suicidal([](HWND window, UINT message, WPARAM, LPARAM) -> std::optional<LRESULT> {
        if (message == WM_CREATE) DestroyWindow(window);
        return {};
    });
    EXPECT_EQ(HWND(suicidal), nullptr);
}

TEST(Windows, BelongToTheirThread) {
    ProbeThread other;
    EXPECT_EQ(GetWindowThreadProcessId(other.Window(), nullptr), other.Id());
    EXPECT_FALSE(DestroyWindow(other.Window()));
    EXPECT_EQ(GetLastError(), DWORD{ERROR_ACCESS_DENIED});
    EXPECT_TRUE(IsWindow(other.Window()));
    // Closing is asking.
    EXPECT_EQ(SendMessageW(other.Window(), WM_CLOSE, 0, 0), 0);
    EXPECT_FALSE(IsWindow(other.Window()));
    EXPECT_THAT(other.End(), ElementsAre(WM_NCCREATE, WM_CREATE, WM_DESTROY, WM_NCDESTROY));
}

TEST(Windows, OfAnEndedThreadAreGoneWithoutAWord) {
    HWND window = nullptr, child = nullptr;
    int told = 0;
    Probe probe([&](HWND, UINT, WPARAM, LPARAM) -> std::optional<LRESULT> { return ++told, std::nullopt; });
    OnThread([&] {
        window = MakeBareWindow();
        SetWindowLongPtrW(window, GWLP_USERDATA, reinterpret_cast<LONG_PTR>(&probe));
        child = CreateWindowExW(0, L"Probe", L"child", WS_CHILD, 0, 0, 0, 0, window, nullptr,
                                GetModuleHandleW(nullptr), nullptr);
        told = 0;
    }).get();
    EXPECT_EQ(told, 0);
    EXPECT_FALSE(IsWindow(window));
    EXPECT_FALSE(IsWindow(child));
}

TEST(Windows, ChildOfAnotherThreadGoesWithItsParent) {
    Probe parent(nullptr, WS_POPUP);
    std::optional<ProbeThread> other;
    auto made = OnThread([&] { other.emplace(Probe::Handler{}, parent); });
    // Windows tells the parent of its new child.
    ASSERT_TRUE(
        PumpUntil([&] { return made.wait_for(std::chrono::seconds(0)) == std::future_status::ready; }));
    EXPECT_EQ(GetParent(other->Window()), parent);
    DestroyWindow(parent);
    EXPECT_TRUE(PumpUntil([&] { return !IsWindow(other->Window()); }));
    EXPECT_EQ(other->End().back(), UINT{WM_NCDESTROY});
}

TEST(Windows, KeepTheirAttributes) {
    Probe parent(nullptr, WS_POPUP), probe(parent, WS_CHILD);
    const HWND window = probe;
    EXPECT_EQ(SetWindowLongPtrW(window, GWLP_ID, 12), 0);
    EXPECT_EQ(GetWindowLongPtrW(window, GWLP_ID), 12);
    EXPECT_EQ(GetWindowLongPtrW(window, GWLP_HINSTANCE),
              reinterpret_cast<LONG_PTR>(GetModuleHandleW(nullptr)));
    EXPECT_NE(GetWindowLongPtrW(window, GWL_STYLE) & LONG_PTR{WS_CHILD}, 0);
    SetLastError(0);
    EXPECT_EQ(GetWindowLongPtrW(window, 4000), 0);
    EXPECT_EQ(GetLastError(), DWORD{ERROR_INVALID_INDEX});

    std::array<wchar_t, 8> text{};
    EXPECT_TRUE(SetWindowTextW(window, L"标题 title"));
    EXPECT_EQ(GetWindowTextLengthW(window), 8);
    EXPECT_EQ(GetWindowTextW(window, text.data(), 5), 4);
    EXPECT_EQ(std::wstring(text.data()), L"标题 t");
    EXPECT_GT(GetClassNameW(window, text.data(), 8), 0);
    EXPECT_EQ(std::wstring(text.data()), L"Probe");

    EXPECT_TRUE(MoveWindow(window, 5, 6, 70, 80, FALSE));
    RECT rect{};
    EXPECT_TRUE(GetClientRect(window, &rect));
    EXPECT_EQ(rect.right, 70);
    EXPECT_EQ(rect.bottom, 80);

    EXPECT_FALSE(IsWindowVisible(window));
    EXPECT_FALSE(ShowWindow(window, SW_SHOW));
    EXPECT_FALSE(IsWindowVisible(window));  // its parent is hidden
    ShowWindow(parent, SW_SHOWNOACTIVATE);
    EXPECT_TRUE(IsWindowVisible(window));
    EXPECT_TRUE(ShowWindow(window, SW_HIDE));

    EXPECT_EQ(SetParent(window, nullptr), parent);
    DestroyWindow(parent);
    EXPECT_TRUE(IsWindow(window));
}

TEST(Windows, TellTheirSize) {
    std::vector<LPARAM> sizes;
    Probe parent(nullptr, WS_POPUP);
    Probe probe(parent, WS_CHILD, [&](HWND, UINT message, WPARAM, LPARAM size) -> std::optional<LRESULT> {
        if (message == WM_SIZE) sizes.push_back(size);
        return {};
    });
    MoveWindow(probe, 0, 0, 50, 60, FALSE);
    MoveWindow(probe, 9, 9, 50, 60, FALSE);
    SetWindowPos(probe, nullptr, 0, 0, 1, 1, SWP_NOSIZE | SWP_NOZORDER);
    EXPECT_THAT(sizes, ElementsAre(MAKELPARAM(40, 30), MAKELPARAM(50, 60)));
}

LRESULT CALLBACK AnswerEleven(HWND window, UINT message, WPARAM wParam, LPARAM lParam) {
    const auto previous = reinterpret_cast<WNDPROC>(GetWindowLongPtrW(window, GWLP_ID));
    if (message == kFirst) return 11;
    return CallWindowProcW(previous, window, message, wParam, lParam);
}

TEST(Windows, ProcedureCanBeReplaced) {
    Probe parent(nullptr, WS_POPUP);
    Probe probe(parent, WS_CHILD);
    const LONG_PTR previous =
        SetWindowLongPtrW(probe, GWLP_WNDPROC, reinterpret_cast<LONG_PTR>(AnswerEleven));
    SetWindowLongPtrW(probe, GWLP_ID, previous);
    EXPECT_EQ(SendMessageW(probe, kFirst, 0, 0), 11);
    SendMessageW(probe, kSecond, 0, 0);
    EXPECT_EQ(probe.Seen().back(), kSecond);
    SetWindowLongPtrW(probe, GWLP_WNDPROC, previous);
    EXPECT_EQ(SendMessageW(probe, kFirst, 0, 0), 0);
}

TEST(Windows, ClassesAreKnownByNameWithoutCase) {
    WNDCLASSW info{};
    info.lpfnWndProc = DefWindowProcW;
    info.lpszClassName = L"SomeClass";
    const HINSTANCE host = GetModuleHandleW(nullptr);
    const auto create = [&](LPCWSTR name) {
        return CreateWindowExW(0, name, L"Find me", 0, 0, 0, 0, 0, HWND_MESSAGE, nullptr, host, nullptr);
    };
    EXPECT_EQ(create(L"SomeClass"), nullptr);
    info.hInstance = host;
    const ATOM atom = RegisterClassW(&info);
    ASSERT_NE(atom, 0);
    info.lpszClassName = L"SOMECLASS";
    EXPECT_EQ(RegisterClassW(&info), 0);
    EXPECT_EQ(GetLastError(), DWORD{ERROR_CLASS_ALREADY_EXISTS});

    const HWND window = create(MAKEINTATOM(atom));
    ASSERT_NE(window, nullptr);
    EXPECT_EQ(FindWindowExW(HWND_MESSAGE, nullptr, L"someclass", L"find ME"), window);
    EXPECT_EQ(FindWindowExW(HWND_MESSAGE, window, L"SomeClass", nullptr), nullptr);
    EXPECT_FALSE(UnregisterClassW(L"SomeClass", host));
    EXPECT_EQ(GetLastError(), DWORD{ERROR_CLASS_HAS_WINDOWS});
    DestroyWindow(window);
    EXPECT_TRUE(UnregisterClassW(L"SomeClass", host));
    EXPECT_EQ(create(L"SomeClass"), nullptr);
}

TEST(Windows, HandlesFit32BitsAndAreNotUsedAgain) {
    std::set<HWND> handles;
    size_t made = 0;
    for (; made < 500; ++made) {
        Probe probe;
        handles.insert(probe);
        EXPECT_LE(reinterpret_cast<uintptr_t>(HWND(probe)), 0x7FFFFFFFu);
    }
#ifndef _WIN32  // where the system may use them again
    EXPECT_EQ(handles.size(), made);
#endif
    for (HWND none : {HWND(nullptr), HWND(HWND_MESSAGE), reinterpret_cast<HWND>(uintptr_t{0x7FFFFFF1}),
                      *handles.begin()}) {
        EXPECT_FALSE(IsWindow(none));
        EXPECT_EQ(GetWindowThreadProcessId(none, nullptr), 0u);
    }
}

}  // namespace
}  // namespace luadui::platform_test
