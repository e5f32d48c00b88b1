// The sixteen functions as scripts see them, with a host made of fakes and no module boundary; the same under both
// flavours of Lua. Functions that end in pages are tested here as far as one plain page shows them.
#include "luadui/lua_functions.h"

#include <gtest/gtest.h>

#include <cmath>

#include "luadui/frame_message.h"
#include "luadui/luadui.h"
#include "luadui/page_manager_wnd.h"
#include "tests/fakes/fake_host.h"
#include "tests/luadui/allocation_ledger.h"
#include "tests/luadui/lua_scripts.h"
#include "tests/luadui/watchdog.h"

namespace luadui {
namespace {

// The messages for scripts, byte by byte in code page 936.
constexpr char kAlreadySet[] =
    "\xD6\xF7\xB4\xB0\xBF\xDA\xBE\xE4\xB1\xFA\xD2\xD1\xB1\xBB\xC9\xE8\xD6\xC3\xA3\xAC\xC9\xE8\xD6\xC3\xCA\xA7"
    "\xB0\xDC"
    "\xA3\xA1";
constexpr char kSetDone[] =
    "\xD6\xF7\xB4\xB0\xBF\xDA\xBE\xE4\xB1\xFA\xC9\xE8\xD6\xC3\xB3\xC9\xB9\xA6\xA3\xA1";
constexpr char kNotSet[] = "\xD6\xF7\xB4\xB0\xBF\xDA\xBE\xE4\xB1\xFA\xCE\xAA\xBF\xD5\xA3\xA1";

class LuaFunctions : public testing::Test {
  protected:
    Watchdog watchdog{kIsSanitized ? 60 : 20};
    FakeHost host;
    LuaScripts scripts{luaopen_luadui};
};

HWND MakeHostWindow() {
    WNDCLASSW windowClass{};
    windowClass.lpfnWndProc = DefWindowProcW;
    windowClass.lpszClassName = L"LuaHost";
    RegisterClassW(&windowClass);
    return CreateWindowExW(0, L"LuaHost", L"", 0, 0, 0, 0, 0, HWND_MESSAGE, nullptr, nullptr, nullptr);
}

TEST_F(LuaFunctions, AreRegisteredInOrderUnderOneName) {
    const char* const names[] = {"send_frame",     "on_set_hWnd",  "on_get_hWnd",
                                 "on_error",       "on_loop",      "on_init_marketcodelist",
                                 "on_init",        "on_size",      "on_setfocus",
                                 "get_login_info", "on_switchtab", "get_version_list",
                                 "init_config",    "get_config",   "set_config",
                                 "start_VD_hwnd"};
    ASSERT_EQ(std::size(names), std::size(kLuaFunctions));
    for (size_t i = 0; i < std::size(names); ++i) {
        EXPECT_STREQ(kLuaFunctions[i].name, names[i]);
        EXPECT_EQ(scripts.Run(std::string("return type(luadui.") + names[i] + ")"), "function");
    }
    EXPECT_EQ(kLuaFunctions[3].run, kLuaFunctions[4].run) << "on_error and on_loop are one";
    EXPECT_EQ(scripts.Run("local n = 0 for _ in pairs(luadui) do n = n + 1 end "
                          "return n, package.loaded.luadui == luadui"),
              "16 true");
    lua_settop(scripts.State(), 0);
    EXPECT_EQ(luaopen_luadui(scripts.State()), 0) << "opening again is harmless";
}

TEST_F(LuaFunctions, AnswerWithoutPagesAndWindow) {
    const struct {
        const char* script;
        std::string expected;
    } cases[] = {
        {"return luadui.on_get_hWnd()", std::string("-1 ") + kNotSet},
        {"return luadui.send_frame(1, 'a', 'b', '{}')", "none"},
        {"return luadui.on_error('sign', '{}')", "nil FAIL"},
        {"return luadui.on_loop()", "nil FAIL"},
        {"return luadui.on_loop({}, print)", "nil FAIL"},
        {"return luadui.on_init_marketcodelist('x')", "none"},
        {"return luadui.on_init_marketcodelist()", "none"},
        {"return luadui.on_size(1, 2)", "2"},
        {"return luadui.on_size()", "nil"},
        {"return luadui.on_size(nil, 'x', {})", "table"},
        {"return luadui.on_size(unpack({}, 1, 7000))", "nil"},
        {"local t = {} for i = 1, 7000 do t[i] = i end return luadui.on_size(unpack(t))", "7000"},
        {"return luadui.on_setfocus('x')", "none"},
        {"return luadui.on_setfocus({})", "none"},
        {"return luadui.get_login_info('x')", "nil Can't find page"},
        {"return luadui.get_login_info()", "nil Can't find page"},
        {"return luadui.on_switchtab('x', 1)", "none"},
        {"return luadui.on_switchtab(nil, 0/0)", "none"},
        {"return luadui.get_version_list('no such file')", "||"},
        {"return luadui.get_version_list('no such file;nor this')", "||;||"},
        {"return luadui.get_version_list()", "||"},
        {"return luadui.get_version_list(string.rep('x', 70000))", "||"},
        {"return coroutine.wrap(function() return luadui.on_size(coroutine.running()) end)()", "thread"},
        {"return pcall(luadui.on_size, 5)", "true 5"},
        // The window is set once.
        {"return luadui.on_set_hWnd(0)", kSetDone},  // 0 counts as not set
        {"return luadui.on_get_hWnd()", std::string("-1 ") + kNotSet},
        {"return luadui.on_set_hWnd('12.9')", kSetDone},
        {"return luadui.on_get_hWnd()", "12"},
        {"return luadui.on_set_hWnd(13)", std::string("nil ") + kAlreadySet},
        {"return luadui.on_set_hWnd()", std::string("nil ") + kAlreadySet},
        {"return luadui.on_get_hWnd(1, 2)", "12"},
        {"return luadui.send_frame(1, 'a', 'b', '{}')", "none"},  // 12 is no window
    };
    for (const auto& row : cases) EXPECT_EQ(scripts.Run(row.script), row.expected) << row.script;
}

TEST_F(LuaFunctions, SettingsGoThroughTheHostAndToStandardOutput) {
    host.onAsk = [](CQueueReqItem& request) { request.SetData("result", "blue sky"); };
    testing::internal::CaptureStdout();
    EXPECT_EQ(scripts.Run("return luadui.init_config('\\\\a b.cfg')"), "none");
    EXPECT_EQ(scripts.Run("return luadui.get_config('key')"), "blue sky");
    EXPECT_EQ(scripts.Run("return luadui.set_config('key', 5)"), "none");
    EXPECT_EQ(scripts.Run("return luadui.get_config()"), "blue sky");
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "\\a b.cfg\nkey blue sky\nkey 5 blue sky\n");
    ASSERT_EQ(host.asked.size(), 3U);
    const std::string expected[] = {"FileName=\\a b.cfg Key=key", "FileName=\\a b.cfg Key=key Value=5",
                                    "FileName=\\a b.cfg Key="};
    for (size_t i = 0; i < 3; ++i) {
        EXPECT_EQ(host.asked[i].GetDataLong("REQTYPE"), i == 1 ? 0x80002 : 0x80001);
        EXPECT_EQ(Describe(FakeHost::Params(host.asked[i])), expected[i]);
    }
    host.onAsk = [](CQueueReqItem&) { throw 1; };
    EXPECT_EQ(scripts.Run("return luadui.get_config('key')"), "") << "a host that throws answers nothing";
}

TEST_F(LuaFunctions, ArgumentsReadByKind) {
    const HWND window = MakeHostWindow();
    ASSERT_NE(window, nullptr);
    const std::string number = std::to_string(reinterpret_cast<uintptr_t>(window));
    EXPECT_EQ(scripts.Run("return luadui.on_set_hWnd(" + number + ")"), kSetDone);
    const auto send = [&](const std::string& arguments) {
        EXPECT_EQ(scripts.Run("return luadui.send_frame(" + arguments + ")"), "none");
        MSG message{};
        if (!PeekMessageW(&message, window, 9529, 9529, PM_REMOVE)) return std::unique_ptr<FrameMessage>();
        EXPECT_EQ(message.lParam, 0);
        return std::unique_ptr<FrameMessage>(reinterpret_cast<FrameMessage*>(message.wParam));
    };
    const struct {
        const char* script;
        int32_t code;
    } numbers[] = {{"1.9", 1},           {"-1.9", -1},
                   {"'12'", 12},         {"' 0x10 '", 16},
                   {"'12x'", 0},         {"nil", 0},
                   {"true", 0},          {"{}", 0},
                   {"0/0", 0},           {"1/0", 0},
                   {"-1/0", 0},          {"1e300", 0},
                   {"-1e300", 0},        {"2^31-1", INT32_MAX},
                   {"2^31", INT32_MIN},  {"2^32-1", -1},
                   {"-2^31", INT32_MIN}, {"2^53+1", 0},
                   {"'nan'", 0},         {"", 0}};
    for (const auto& row : numbers) {
        const auto frame = send(row.script);
        ASSERT_TRUE(frame) << row.script;
        EXPECT_EQ(frame->code, row.code) << row.script;
        EXPECT_EQ(frame->target + frame->method + frame->body.ToText(), "{}")
            << "missing arguments read as empty";
    }
    const struct {
        const char* script;
        std::string text;
    } texts[] = {{"'text'", "text"}, {"'a\\0b'", std::string("a\0b", 3)},
                 {"1.5", "1.5"},     {"nil", ""},
                 {"true", ""},       {"{}", ""},
                 {"print", ""},      {"'\\\xD6\xF7'", "\xD6\xF7"},
                 {"io.stdout", ""}};
    for (const auto& row : texts) {
        const auto frame = send(std::string("1, ") + row.script + ", " + row.script);
        ASSERT_TRUE(frame) << row.script;
        EXPECT_EQ(frame->target, row.text) << row.script;
        EXPECT_EQ(frame->method, row.text) << row.script;
    }
    const std::pair<const char*, const char*> bodies[] = {{"'{\"a\":[1,\"x\"]}'", "{\"a\":[1,\"x\"]}"},
                                                          {"'{\"a\":'", "{}"},
                                                          {"'[1]'", "{}"},
                                                          {"12", "{}"},
                                                          {"string.rep('[', 100000)", "{}"},
                                                          {"string.rep('{\"a\":', 100000)", "{}"},
                                                          {"'{\"a\":\"\\206'", "{}"}};
    for (const auto& [script, body] : bodies)
        EXPECT_EQ(send(std::string("1, 'a', 'b', ") + script)->body.ToText(), body);
    DestroyWindow(window);
    EXPECT_FALSE(send("1, 'a'")) << "the window is gone";
}

// Calls of every function, a page among them.
constexpr const char* kAllCalls[] = {
    "return luadui.on_init('page', 'plain_page.dll', 'info', 1, 2, 3, 4, true)",
    "return luadui.start_VD_hwnd('page', 'plain_page.dll', 'info')",
    "return luadui.on_init('none', '/none.dll')",
    "return luadui.get_login_info('page')",
    "return luadui.on_switchtab('page', 1)",
    "return luadui.on_setfocus('in')",
    "return luadui.on_error('sign', '{}'), luadui.on_loop('sign', '{}')",
    "return luadui.on_size('x', 'y')",
    "return luadui.on_get_hWnd()",
    "return luadui.on_set_hWnd(7)",
    "return luadui.send_frame(1, 2, 3, '{}')",
    "return luadui.get_version_list('luadui.dll')",
    "return luadui.on_init_marketcodelist('x')",
    "luadui.init_config(12.5) luadui.set_config(1, 2) return luadui.get_config(123)",
};

TEST_F(LuaFunctions, SurviveTheLackOfLuaMemoryAtEveryPoint) {
    host.onAsk = [](CQueueReqItem& request) { request.SetData("result", std::string(1000, 'x')); };
    start_dui_thread();
    testing::internal::CaptureStdout();
    for (const char* call : kAllCalls) {
        int failures = 0;
        for (int count = 0;; ++count) {
            ASSERT_LT(count, 1000) << call;
            LuaScripts fresh(luaopen_luadui);
            ASSERT_EQ(luaL_loadstring(fresh.State(), call), 0);
            fresh.FailAfter(count);
            const std::string answer = fresh.Call();
            fresh.FailAfter(INT_MAX);
            fresh.Close();
            ASSERT_EQ(fresh.LiveBlocks(), 0) << call;
            if (answer.find("not enough memory") == std::string::npos) break;
            ++failures;
        }
        EXPECT_GT(failures, 0) << call;
    }
    testing::internal::GetCapturedStdout();
    EXPECT_EQ(scripts.Run("return luadui.get_login_info('page')"), "info");

    // Opening the module, too.
    bool isOpened = false;
    for (int count = 0; !isOpened && count < 1000; ++count) {
        LuaScripts bare([](lua_State*) { return 0; });
        bare.FailAfter(count);
        isOpened = lua_cpcall(bare.State(), luaopen_luadui, nullptr) == 0;
        bare.FailAfter(INT_MAX);
        bare.Close();
        ASSERT_EQ(bare.LiveBlocks(), 0);
    }
    EXPECT_TRUE(isOpened);
}

TEST_F(LuaFunctions, WrongArgumentsLeakNothing) {
    start_dui_thread();
    CPageManagerWnd::WaitUntilReady();
    const std::string round =
        "local wrong = {{}, print, true, 0/0, 1e300, 'x\\0y', io.stdout} "
        "for i = 1, N do for name, call in pairs(luadui) do "
        "if not name:find('config') and not (name == 'on_init' or name == 'start_VD_hwnd') then "
        "local a, b, c = wrong[i % 7 + 1], wrong[i % 5 + 1], wrong[i % 3 + 1] "
        "call() call(a) call(a, b) call(a, b, c, a, b, c, a, b, c, a, b, c) end end end";
    scripts.Run("N = 10 " + round);
    const int64_t before = LiveAllocations();
    EXPECT_EQ(scripts.Run("N = 2500 " + round), "none");
    EXPECT_LT(LiveAllocations() - before, 100);
    EXPECT_EQ(scripts.Run("for _, call in pairs({luadui.on_init, luadui.start_VD_hwnd}) do "
                          "call() call({}, print, true, 0/0, 1e300, 'x', {}, 1) end"),
              "none");
}

TEST_F(LuaFunctions, NumbersAsKeysStayNumbers) {
    EXPECT_EQ(scripts.Run(
                  "local t, n = {[1] = 'a', [2.5] = 'b', [-3] = 'c', x = 'd'}, 0 "
                  "for key, value in pairs(t) do luadui.get_login_info(key) luadui.send_frame(key, key, key) "
                  "n = n + 1 end return n, type(next(t))"),
              "4 number");
}

}  // namespace
}  // namespace luadui
