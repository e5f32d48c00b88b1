// Pages of a real host: how they are made, found, put to sleep, closed, and what happens when they cannot be made.
#include <gmock/gmock.h>

#include <atomic>
#include <filesystem>
#include <fstream>
#include <stdexcept>

#include "tests/luadui/terminal.h"

namespace luadui {
namespace {

using testing::ElementsAre;

class HostPages : public testing::Test {
  protected:
    void SetUp() override { ASSERT_TRUE(terminal.Start()); }

    Watchdog watchdog;
    Terminal terminal;
    Module& module = terminal.module;
    PageProbe& probe = terminal.Probe();
};

// How many lines of the host's log say this.
size_t LinesLogged(const std::string& what) {
    size_t count = 0;
    for (const auto& entry : std::filesystem::directory_iterator("log")) {
        std::ifstream file(entry.path());
        for (std::string line; std::getline(file, line);)
            count += line.find(what) == std::string::npos ? 0 : 1;
    }
    return count;
}

TEST_F(HostPages, InitValuesReachThePage) {
    EXPECT_EQ(terminal.Lua("return luadui.on_init('p1', '/test_page.dll', 'y')"), "true");
    EXPECT_EQ(terminal.Lua("return luadui.on_init('p2', '/test_page.dll', 'z', 1.9, -2.9, 'x', 7, true)"),
              "true");
    EXPECT_EQ(terminal.Lua("return luadui.on_init('p3', '/test_page.dll', 'z', '3', nil, 'x', 7, 1)"),
              "true");
    EXPECT_THAT(probe.Take(),
                ElementsAre("create 0 0 p1 y /test_page.dll 0 0 0", "create 1 -2 p2 z /test_page.dll 1 0 0",
                            "create 3 0 p3 z /test_page.dll 0 0 0"));
    EXPECT_EQ(terminal.Lua("return luadui.get_login_info('p1')"), "y");
    EXPECT_EQ(terminal.Lua("return luadui.get_login_info('p')"), "nil Can't find page");
    EXPECT_EQ(terminal.Lua("return luadui.on_init('p9', '/none.dll', 'y')"), "false");

    // Parent windows stay for the pages that scripts make later.
    WNDCLASSW windowClass{};
    windowClass.lpfnWndProc = DefWindowProcW;
    windowClass.lpszClassName = L"Parent";
    RegisterClassW(&windowClass);
    const HWND parent =
        CreateWindowExW(0, L"Parent", L"", WS_POPUP, 0, 0, 300, 200, nullptr, nullptr, nullptr, nullptr);
    const std::string number = std::to_string(ToNumber(parent));
    const unsigned int page =
        module.create_dui_page(5, 6, "p4", "i", "/test_page.dll", parent, nullptr, 2, false);
    EXPECT_TRUE(IsWindow(ToWindow(page)));
    EXPECT_EQ(terminal.CreatePage("p4"), page) << "a page that lives is answered as it is";
    terminal.Lua("luadui.on_init('p5', '/test_page.dll', 'i')");
    EXPECT_THAT(probe.Take(),
                ElementsAre("create 5 6 p4 i /test_page.dll 2 " + number + " 0", "p4 resize 300x200",
                            "create 0 0 p5 i /test_page.dll 0 " + number + " 0", "p5 resize 300x200"));
    DestroyWindow(parent);

    EXPECT_EQ(module.create_dui_page(0, 0, "later", "soon", "/test_page.dll", nullptr, nullptr, 0, true), 1U);
    EXPECT_TRUE(WaitFor([&] { return terminal.Lua("return luadui.get_login_info('later')") == "soon"; }));
}

TEST_F(HostPages, SleepAndFocusReachThePagesMeant) {
    terminal.CreatePage("p1", "/test_page.dll", "account 1");
    terminal.CreatePage("p2", "/test_page.dll", "account 12");
    terminal.CreatePage("plain", "/plain_page.dll", "account 123");  // exports neither
    probe.Take();
    terminal.Lua(
        "luadui.on_switchtab('p1', 1.5) luadui.on_switchtab('p1') luadui.on_switchtab('none', 1) "
        "luadui.on_switchtab('plain', 1)");
    EXPECT_THAT(probe.Take(), ElementsAre("p1 sleep 1", "p1 sleep 0"));
    terminal.Lua(
        "luadui.on_setfocus('') luadui.on_setfocus() luadui.on_setfocus('nobody') luadui.on_setfocus('12')");
    EXPECT_THAT(probe.Take(), ElementsAre("p2 focus 0 account 12"));
    terminal.Lua("luadui.on_setfocus('account')");
    EXPECT_THAT(probe.Take(), ElementsAre("p1 focus 0 account 1", "p2 focus 0 account 12"));
}

TEST_F(HostPages, CompanionPageIsMadeOnceThenOnlyTold) {
    PageProbe& companion = terminal.Probe(L"vandrel.dll");
    const char* const start = "return luadui.start_VD_hwnd('vd', '/vandrel.dll', 'i', 1, 2, 3, 4, true)";
    EXPECT_EQ(terminal.Lua("return luadui.start_VD_hwnd('other', '/none.dll', 'i')"), "false");
    EXPECT_EQ(terminal.Lua(start), "true");
    EXPECT_THAT(companion.Take(), ElementsAre("create 1 2 vd i /vandrel.dll 1 0 0"));
    EXPECT_EQ(terminal.Lua(start), "true") << "its own last argument";
    EXPECT_EQ(terminal.Lua("return luadui.start_VD_hwnd(7)"), "7");
    EXPECT_EQ(terminal.Lua("return luadui.start_VD_hwnd()"), "nil");
    EXPECT_EQ(companion.Take(), std::vector<std::string>(3, "vd companion message"));
    terminal.OnUiThread([&] { companion.pages.at("vd")->Close(); });
    companion.Take();
    EXPECT_EQ(terminal.Lua(start), "true");
    EXPECT_THAT(companion.Take(), ElementsAre("create 1 2 vd i /vandrel.dll 1 0 0")) << "made again";
}

TEST_F(HostPages, WhatIsNoPageLibraryGivesResultZeroAndALogLine) {
    const struct {
        const char* library;
        const char* logged;
    } cases[] = {{"/none.dll", "none.dll: error"},
                 {"/no_page.dll", "no_page.dll: it does not export create_page"},
                 {"", "not a file below"},
                 {"/../test_page.dll", "not a file below"},
                 {"..\\test_page.dll", "not a file below"},
                 {"c:\\test_page.dll", "not a file below"},
                 {"\xD6\xF7\xB4", "error"}};
    for (const auto& row : cases) {
        const uint64_t before = Count("page_library_not_loaded");
        const size_t loggedBefore = LinesLogged(row.logged);
        EXPECT_EQ(terminal.CreatePage("p", row.library), 0U) << row.library;
        EXPECT_EQ(Count("page_library_not_loaded") - before, 1U) << row.library;
        EXPECT_GT(LinesLogged(row.logged), loggedBefore) << row.library;
    }
    EXPECT_NE(terminal.CreatePage("p", "plain_page.dll"), 0U) << "a name without a separator will do";
}

TEST_F(HostPages, FailingCreationsGiveResultZero) {
    const auto make = probe.onCreate;
    const struct {
        const char* what;
        std::function<unsigned int(const PageInit&)> create;
        bool succeeds;
    } cases[] = {
        {"throws", [](const PageInit&) -> unsigned int { throw std::runtime_error("page"); }, false},
        {"throws no exception class", [](const PageInit&) -> unsigned int { throw 1; }, false},
        {"answers 0", [](const PageInit&) { return 0U; }, false},
        {"answers no window", [](const PageInit&) { return 12345U; }, false},
        {"makes itself", [&](const PageInit& init) { return terminal.CreatePage(init.name); }, false},
        {"makes another page first",
         [&](const PageInit& init) {
             probe.onCreate = make;
             EXPECT_NE(terminal.CreatePage("inner"), 0U);
             return make(init);
         },
         true},
        {"is closed before it returns",
         [&](const PageInit& init) {
             const unsigned int window = make(init);
             probe.pages.at(init.name)->Close();
             return window;
         },
         false},
    };
    for (const auto& row : cases) {
        probe.onCreate = row.create;
        EXPECT_EQ(terminal.CreatePage("p") != 0, row.succeeds) << row.what;
        EXPECT_EQ(terminal.Lua("return luadui.get_login_info('p')"),
                  row.succeeds ? "info" : "nil Can't find page");
        terminal.OnUiThread([&] {
            if (row.succeeds) probe.pages.at("p")->Close();
        });
    }
    probe.onCreate = make;
    EXPECT_NE(terminal.CreatePage("p"), 0U) << "and works afterwards";
    EXPECT_EQ(terminal.Lua("return luadui.get_login_info('inner')"), "info");
}

TEST_F(HostPages, MayCloseMakeOthersAndCallBackInsideEveryCall) {
    terminal.Probe();
    const char* const calls[] = {"luadui.on_switchtab('p', 1)", "luadui.on_setfocus('info')", "answer"};
    for (const char* call : calls) {
        ASSERT_NE(terminal.CreatePage("p"), 0U);
        const std::string handle = terminal.HandleOf("p");
        std::atomic<bool> isDone = false;
        const auto closeInside = [&](TestPage& page) {
            EXPECT_NE(terminal.CreatePage("made inside"), 0U);
            const std::string name = page.Name();
            page.Close();
            EXPECT_EQ(probe.pages.count(name), 0U);
            EXPECT_NE(terminal.CreatePage(name), 0U) << "the name is free at once";
            isDone = true;
        };
        probe.onResponse = [&](TestPage& page, const CQueueRespData&) { closeInside(page); };
        probe.onCall = [&](TestPage& page, const std::string&) {
            probe.onCall = nullptr;
            closeInside(page);
        };
        if (std::string(call) == "answer") {
            CUIData response = Response(handle, 1);
            module.handle_response_callback(&response);
        } else {
            EXPECT_EQ(terminal.Lua(call), "none");
        }
        EXPECT_TRUE(WaitFor([&] { return isDone.load(); })) << call;
        EXPECT_EQ(terminal.Lua("return luadui.get_login_info('p')"), "info");
        terminal.OnUiThread([&] { probe.pages.at("p")->Close(); });
        EXPECT_EQ(terminal.Lua("return luadui.get_login_info('p')"), "nil Can't find page");
    }
}

TEST_F(HostPages, ComponentsComeFromTheFolderGivenToInit) {
    const std::string create = "create 0 0 c1 own /test_page.dll 3 0 0";
    EXPECT_EQ(module.create("/test_page.dll", "c0", "own", 0), -1) << "before init";
    EXPECT_NE(module.create_com_page("/test_page.dll", "c1", "own", 3), 0) << "works without init";
    EXPECT_THAT(probe.Take(), ElementsAre(create));
    EXPECT_EQ(module.init("plugins", "shared info"), 0);
    EXPECT_EQ(module.init(nullptr, "second call"), 0);
    EXPECT_EQ(module.create("vandrel.dll", "c2", nullptr, 0), 0) << "not there, but the order is taken";
    const int page = module.create_com_page("plain_page.dll", "c3", nullptr, 0);
    EXPECT_TRUE(IsWindow(ToWindow(static_cast<unsigned int>(page)))) << "lies in that folder";
    EXPECT_EQ(terminal.Lua("return luadui.get_login_info('c3')"), "shared info");
    EXPECT_EQ(module.create_com_page(nullptr, nullptr, nullptr, 0), 0);
    EXPECT_EQ(module.create("plain_page.dll", "c4", "own", 0), 0);
    EXPECT_TRUE(WaitFor([&] { return terminal.Lua("return luadui.get_login_info('c4')") == "own"; }));
    EXPECT_EQ(terminal.Lua("return luadui.get_login_info('c2')"), "nil Can't find page");
}

}  // namespace
}  // namespace luadui
