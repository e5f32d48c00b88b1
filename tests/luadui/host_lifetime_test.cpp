// Every exported function before the start, during and after the end; the ends themselves; the module's stay in memory.
#include <gtest/gtest.h>

#include <atomic>
#include <thread>

#include "tests/luadui/allocation_ledger.h"
#include "tests/luadui/process_usage.h"
#include "tests/luadui/terminal.h"

namespace luadui {
namespace {

// What answers the same in every phase, pages or not.
void ExpectUnchangingAnswers(const Terminal& terminal) {
    const Module& module = terminal.module;
    EXPECT_FALSE(module.set_push_callback(nullptr));
    EXPECT_FALSE(module.set_req_sync_callback(nullptr));
    EXPECT_FALSE(module.set_login_callback(nullptr));
    EXPECT_EQ(module.handle_response_callback(nullptr), 0);
    EXPECT_EQ(module.handle_keyboard_callback(0xFFFF, 0xFFFFFFFF, 0, 1), 0);
    char name[] = "xxxxxxxx";
    EXPECT_EQ(module.get_securityname("600000", name, "SH", 3), 3U);
    EXPECT_STREQ(name, ":SHxxxxx") << "no terminating zero";
    EXPECT_EQ(module.get_securityname("600000", name, "SZ", 2), 3U);
    EXPECT_STREQ(name, ":SHxxxxx") << "too small a buffer stays as it is";
    EXPECT_EQ(module.get_securityname(nullptr, nullptr, nullptr, 0), 1U);
    EXPECT_EQ(module.get_marketbycodeandzqmc("600000", name, "\xC6\xD6", sizeof name), 0U);
    EXPECT_EQ(module.get_marketbycodeandzqmc(nullptr, nullptr, nullptr, 0xFFFFFFFF), 0U);
}

// What Lua and C functions answer while there are no pages and none can be made.
void ExpectNoPages(Terminal& terminal) {
    terminal.module.init_keyfairy(nullptr);
    ExpectUnchangingAnswers(terminal);
    const uint64_t dropped = Count("response_without_ui_thread");
    CUIData response = Response("1", 1);
    EXPECT_EQ(terminal.module.handle_response_callback(&response), 0);
    EXPECT_EQ(Count("response_without_ui_thread"), dropped + 1);
    EXPECT_EQ(terminal.Lua("luadui.on_switchtab('p', 1) luadui.on_setfocus('info') "
                           "return luadui.get_login_info('p')"),
              "nil Can't find page");
    EXPECT_EQ(terminal.Lua("return luadui.on_error('s', '{}')"), "nil FAIL");
}

TEST(HostLifetime, BeforeTheStart) {
    const Watchdog watchdog;
    Terminal terminal;
    const ProcessUsage before = ProcessUsage::Now();
    ExpectNoPages(terminal);
    EXPECT_EQ(terminal.module.create("/test_page.dll", "p", "i", 0), -1);
    EXPECT_EQ(terminal.module.init(nullptr, nullptr), 0);
    EXPECT_TRUE(WaitFor([&] { return ProcessUsage::Now().threads == before.threads; }))
        << "nothing is left running";
    EXPECT_EQ(Terminal::ManagerWindow(), nullptr);

    // Creation waits, however long, for the UI thread.
    std::atomic<unsigned int> created = 0;
    std::thread waiting([&] { created = terminal.CreatePage("p"); });
    std::this_thread::sleep_for(std::chrono::milliseconds(100));
    EXPECT_EQ(created, 0U);
    ASSERT_TRUE(terminal.Start());
    waiting.join();
    EXPECT_TRUE(IsWindow(ToWindow(created)));
    EXPECT_EQ(terminal.module.start_dui_thread(), terminal.UiThreadId()) << "it is started once";
}

TEST(HostLifetime, ConcurrentStartsStartOnce) {
    const Watchdog watchdog;
    Terminal terminal;
    std::atomic<unsigned int> ids[8] = {};
    std::vector<std::thread> threads;
    for (auto& id : ids) threads.emplace_back([&] { id = terminal.module.start_dui_thread(); });
    for (auto& thread : threads) thread.join();
    ASSERT_TRUE(terminal.Start());
    for (const auto& id : ids) EXPECT_EQ(id, terminal.UiThreadId());
}

enum class End { kQuit, kClose, kDestroyOnUiThread };
class HostEnd : public testing::TestWithParam<End> {};
std::string NameOf(const testing::TestParamInfo<End>& way) {
    return way.param == End::kQuit ? "ByQuit" : way.param == End::kClose ? "ByClose" : "ByDestroy";
}
INSTANTIATE_TEST_SUITE_P(, HostEnd, testing::Values(End::kQuit, End::kClose, End::kDestroyOnUiThread),
                         NameOf);

// The page is kept busy while its queue fills; then the thread is told to end.
TEST_P(HostEnd, FreesWhatIsUnderWay) {
    const Watchdog watchdog;
    Terminal terminal;
    PageProbe& probe = terminal.Probe();
    terminal.module.init(nullptr, nullptr);
    const ProcessUsage before = ProcessUsage::Now();
    ASSERT_TRUE(terminal.Start());
    terminal.CreatePage("p");
    terminal.CreatePage("q", "/plain_page.dll");
    const std::string handle = terminal.HandleOf("p");
    std::atomic<int> received = 0;
    std::atomic<bool> isHeld = true;
    probe.onResponse = [&](TestPage&, const CQueueRespData&) {
        ++received;
        WaitFor([&] { return !isHeld; });
        if (GetParam() == End::kDestroyOnUiThread && received == 1) DestroyWindow(Terminal::ManagerWindow());
    };
    const auto dropped = [] {
        return Count("records_dropped_at_shutdown") + Count("response_without_ui_thread") +
               Count("response_without_receiver") + Count("export_without_writer") +
               Count("export_without_worker");
    };
    const uint64_t droppedBefore = dropped();
    const int64_t liveBefore = LiveAllocations();
    CUIData response = Response(handle, 1);
    for (int i = 0; i < 50; ++i) {
        const std::string name = "later " + std::to_string(i);
        EXPECT_EQ(
            terminal.module.create_dui_page(0, 0, name, "", "/test_page.dll", nullptr, nullptr, 0, true), 1U);
        EXPECT_EQ(terminal.module.create("test_page.dll", "component", nullptr, 0), 0);
        PostMessageW(Terminal::ManagerWindow(), 2032, 0, reinterpret_cast<LPARAM>(new CQueueReqItem));
        terminal.module.handle_response_callback(&response);
    }
    for (int i = 0; i < 19950; ++i) terminal.module.handle_response_callback(&response);
    ASSERT_TRUE(WaitFor([&] { return received == 1; }));

    std::thread end([&] {
        if (GetParam() == End::kQuit) {
            EXPECT_TRUE(terminal.Stop());
        } else if (GetParam() == End::kClose) {
            SendMessageW(Terminal::ManagerWindow(), WM_CLOSE, 0, 0);
        }
    });
    std::this_thread::sleep_for(std::chrono::milliseconds(20));
    isHeld = false;
    end.join();
    EXPECT_TRUE(terminal.HasEnded());
    EXPECT_EQ(static_cast<uint64_t>(received) + dropped() - droppedBefore, 20000U + 50U)
        << "each was routed or is counted; received " << received;
    EXPECT_TRUE(probe.pages.empty());
    EXPECT_FALSE(IsWindow(Terminal::ManagerWindow()));
    EXPECT_LT(LiveAllocations() - liveBefore, 70);
    EXPECT_TRUE(WaitFor([&] { return ProcessUsage::Now().threads <= before.threads; }))
        << "threads still run";

    ExpectNoPages(terminal);
    EXPECT_EQ(terminal.CreatePage("after"), 0U) << "at once: the ready flag stays";
    EXPECT_EQ(terminal.module.create_dui_page(0, 0, "p", "", "/test_page.dll", nullptr, nullptr, 0, true),
              0U);
    EXPECT_EQ(terminal.module.create_com_page("test_page.dll", "p", "", 0), 0);
    EXPECT_EQ(terminal.module.create("test_page.dll", "p", "", 0), 0);
    EXPECT_EQ(terminal.module.start_dui_thread(), terminal.UiThreadId());
    EXPECT_EQ(terminal.Lua("return luadui.on_init('p', '/test_page.dll', 'i')"), "false");
    EXPECT_EQ(terminal.Lua("return luadui.start_VD_hwnd('p', '/vandrel.dll', 'i')"), "false");
}

TEST(HostLifetime, EverythingIsCalledWhileItEnds) {
    const Watchdog watchdog;
    Terminal terminal;
    PageProbe& probe = terminal.Probe();
    probe.onResponse = [](TestPage& page, const CQueueRespData&) { page.Query(1); };
    terminal.module.init(nullptr, nullptr);
    ASSERT_TRUE(terminal.Start());
    terminal.CreatePage("p");
    const std::string handle = terminal.HandleOf("p");
    std::atomic<bool> isOver = false;
    const std::function<void(LuaScripts&)> calls[] = {
        [&](LuaScripts&) {
            CUIData response = Response(handle, 1);
            terminal.module.handle_response_callback(&response);
        },
        [&](LuaScripts&) {
            terminal.CreatePage("new");
            terminal.module.create_dui_page(0, 0, "later", "", "/test_page.dll", nullptr, nullptr, 0, true);
            terminal.module.create_com_page("test_page.dll", "component", "", 0);
            terminal.module.create("test_page.dll", "component 2", "", 0);
        },
        [&](LuaScripts& scripts) {
            scripts.Run(
                "luadui.on_switchtab('p', 1) luadui.on_switchtab('p', 0) luadui.on_setfocus('info') "
                "luadui.on_init('p2', '/vandrel.dll', 'i') luadui.get_login_info('p') "
                "luadui.on_error('s', '{}') luadui.start_VD_hwnd('p3', '/vandrel.dll', 'i')");
        },
        [&](LuaScripts&) {
            terminal.module.start_dui_thread();
            terminal.module.init_keyfairy(nullptr);
            ExpectUnchangingAnswers(terminal);
        }};
    std::vector<std::thread> threads;
    for (const auto& call : calls) {
        threads.emplace_back([&] {
            LuaScripts scripts(terminal.module.luaopen_luadui);
            while (!isOver) call(scripts);
        });
    }
    std::this_thread::sleep_for(std::chrono::milliseconds(50));
    EXPECT_TRUE(terminal.Stop());
    std::this_thread::sleep_for(std::chrono::milliseconds(50));
    isOver = true;
    for (auto& thread : threads) thread.join();
    EXPECT_TRUE(probe.pages.empty());
}

TEST(HostLifetime, TheModuleLeavesUnlessItsThreadRuns) {
    const Watchdog watchdog;
    for (const bool isStarted : {false, false, true}) {
        CUIData response = Response("2147483647", 1);
        auto* const terminal = new Terminal;
        ASSERT_TRUE(IsModuleMapped());
        ExpectUnchangingAnswers(*terminal);
        terminal->Lua("luadui.on_get_hWnd() luadui.get_login_info('p') luadui.on_setfocus('info')");
        if (isStarted) {
            ASSERT_TRUE(terminal->Start(false));
        }
        const Module module = terminal->module;
        terminal->CloseLua();
        EXPECT_TRUE(FreeLibrary(module.handle));
        EXPECT_EQ(IsModuleMapped(), isStarted);
        if (isStarted) {
            const uint64_t before = Count("response_without_receiver");
            FreeLibrary(module.handle);  // once too often
            ASSERT_TRUE(IsModuleMapped());
            // What comes while the thread is still starting finds nobody.
            EXPECT_TRUE(WaitFor([&] {
                module.handle_response_callback(&response);
                return Count("response_without_receiver") > before;
            })) << "it goes on";
        }
        delete terminal;
    }
}

}  // namespace
}  // namespace luadui
