// What travels between host and pages: queries, answers, change notices, host messages, frames, exports; hostile
// records; and bursts against a UI thread that is busy.
#include <gtest/gtest.h>

#include <array>
#include <atomic>
#include <memory>
#include <stdexcept>
#include <thread>

#include "base/base_object.h"
#include "base/data_list.h"
#include "base/data_set.h"
#include "base/data_table.h"
#include "luadui/frame_message.h"
#include "tests/luadui/terminal.h"

namespace luadui {
namespace {

class HostTraffic : public testing::Test {
  protected:
    // One page "p", whose answers are kept.
    void SetUp() override {
        terminal.onPush = [this](CQueueReqItem& request) { requests.push_back(request); };
        ASSERT_TRUE(terminal.Start());
        ASSERT_NE(terminal.CreatePage("p"), 0U);
        handle = terminal.HandleOf("p");
        probe.onResponse = [this](TestPage&, const CQueueRespData& response) {
            responses.push_back(response);
            ++received;
        };
        probe.Take();
    }
    void Send(CUIData response) { EXPECT_EQ(module.handle_response_callback(&response), 0); }
    // Sends a response that the page answers to; everything sent before has been routed then.
    void Settle() {
        const int before = received;
        Send(Response(handle, 1, "settled"));
        EXPECT_TRUE(WaitFor([&] { return received > before && LastTopic() == "settled"; }));
    }
    std::string LastTopic() {
        std::string topic;
        terminal.OnUiThread([&] { topic = responses.back().GetDataString("Topic"); });
        return topic;
    }

    Watchdog watchdog;
    Terminal terminal;
    Module& module = terminal.module;
    PageProbe& probe = terminal.Probe();
    std::string handle;
    std::atomic<int> received = 0;
    std::vector<CQueueReqItem> requests;    // UI thread, or settled
    std::vector<CQueueRespData> responses;  // the same
};

TEST_F(HostTraffic, AQueryIsAnsweredFromAnotherThread) {
    terminal.OnUiThread([&] { EXPECT_TRUE(probe.pages.at("p")->Query(1004)); });
    ASSERT_EQ(requests.size(), 1U);
    EXPECT_EQ(requests[0].GetDataString("From"), handle);
    CDataTable table;
    table.AddColumn("code");
    table.SetItemText(table.AppendRow(), "code", "600000");
    CUIData answer = Response(requests[0].GetDataString("From"), 1004, "t");
    answer.SetData("UUID", requests[0].GetDataString("UUID"));
    answer.SetDataShared("Table", table);
    std::thread([&] { Send(answer); }).join();
    ASSERT_TRUE(WaitFor([&] { return received == 1; }));
    EXPECT_EQ(responses[0].GetDataString("UUID"), requests[0].GetDataString("UUID"));
    CDataTable shown;
    EXPECT_TRUE(responses[0].GetData("Table", shown));
    EXPECT_EQ(shown.GetItemText(0, "code"), "600000");
}

TEST_F(HostTraffic, ChangeNoticesAskAgainAwakeAtOnceAsleepOnceOnWaking) {
    const auto notice = [&](int type, const char* token) {
        CUIData record = Response(handle, type, "dropped");
        record.SetData("DATATYPE", 2010);
        record.SetData("FundToken", token);
        Send(record);
    };
    notice(1005, "A");
    Settle();
    ASSERT_EQ(requests.size(), 1U);
    terminal.Lua("luadui.on_switchtab('p', 1)");
    notice(1005, "A");
    notice(1004, "X");
    notice(1005, "B");
    Settle();
    EXPECT_EQ(requests.size(), 1U) << "nothing is asked while asleep";
    terminal.Lua("luadui.on_switchtab('p', 0)");
    ASSERT_EQ(requests.size(), 3U);
    EXPECT_EQ(requests[1].GetDataLong("REQTYPE"), 1004);
    EXPECT_EQ(requests[2].GetDataString("FundToken"), "B");
    CUIData answer = Response(handle, 1005, "answer");
    answer.SetData("DATATYPE", 2010);
    answer.SetData("Request", CUIData());
    Send(answer);
    EXPECT_TRUE(WaitFor([&] { return received == 3; }))
        << "an answer reaches the page: only notices are taken";
}

TEST_F(HostTraffic, ScriptsReachThePageThatRegisteredTheSign) {
    terminal.OnUiThread([&] { probe.pages.at("p")->CallLua("page_register", "sign"); });
    const struct {
        std::string json;
        const char* delivered;
    } cases[] = {
        {R"({"UserToken":"UserToken1"})", R"({"fund_token":"fund_token1"})"},
        {"{\"name\":\"\xD6\xF7\x81\\x\"}",
         "{\"name\":\"\xD6\xF7\x81\\x\"}"},  // the second byte of a character is no backslash
        {"", "{}"},
        {"no json", "{}"},
        {R"({"a":)", "{}"},
        {"{\"a\":\"\x81", "{}"},
        {std::string(100000, '['), "{}"},
        {"{\"a\":" + std::string(100000, '[') + std::string(100000, ']') + "}", "{}"},
        {R"({"a":[1,null]})", R"({"a":[1,null]})"},
    };
    for (const char* function : {"on_error", "on_loop"}) {
        for (const auto& row : cases) {
            lua_pushlstring(terminal.LuaState(), row.json.data(), row.json.size());
            lua_setglobal(terminal.LuaState(), "json");
            const int before = received;
            EXPECT_EQ(terminal.Lua(std::string("return luadui.") + function + "('sign', json)"), "nil FAIL");
            ASSERT_TRUE(WaitFor([&] { return received == before + 1; }));
            CJsonObject json;
            EXPECT_TRUE(responses.back().GetData("JsonData", json));
            EXPECT_EQ(json.ToText(), row.delivered) << row.json.substr(0, 40);
            EXPECT_EQ(responses.back().GetDataLong("REQTYPE"), 1603);
            EXPECT_EQ(responses.back().GetDataLong("DATATYPE"), 2101);
        }
        const int before = received;
        EXPECT_EQ(terminal.Lua(std::string("return luadui.") + function + "('unknown', '{}')"), "nil FAIL");
        EXPECT_EQ(terminal.Lua(std::string("return luadui.") + function + "()"), "nil FAIL");
        Settle();
        EXPECT_EQ(received, before + 1);
    }
    terminal.OnUiThread([&] { probe.pages.at("p")->Close(); });
    const uint64_t dropped = Count("response_without_receiver");
    EXPECT_EQ(terminal.Lua("return luadui.on_error('sign', '{}')"), "nil FAIL");
    EXPECT_EQ(Count("response_without_receiver"), dropped) << "the sign has gone with its page";
}

TEST_F(HostTraffic, HostileRecordsAreDroppedOrDeliveredAndThePageGoesOn) {
    struct Case {
        std::string what;
        CUIData record;
        bool isDelivered;
    };
    std::vector<Case> cases;
    const CBaseObject noRequestObject;
    const std::string receivers[] = {"",
                                     "-1",
                                     "0",
                                     "x",
                                     handle + "x",
                                     " " + handle,
                                     "4294967297",
                                     "2147483648",
                                     "99999999999999999999",
                                     "1e3",
                                     std::to_string(noRequestObject.GetHandle()),
                                     handle + std::string(1, '\0')};
    for (const std::string& to : receivers) cases.push_back({"To " + to, Response(to, 1), false});
    cases.push_back({"empty record", CUIData(), false});
    const char* const keys[] = {"DATATYPE", "REQTYPE",  "IsLast", "UUID",    "RawData", "FundToken", "Topic",
                                "TraceID",  "JsonData", "Table",  "Request", "MapData", "TableIndex"};
    const CUIData record;
    const CDataTable table;
    const CJsonObject json;
    const CDataSet set;
    const CDataList list;
    const DataValue kinds[] = {7, 2.5, true, "text", record, table, json, set, list};
    for (const DataValue& kind : kinds) {
        CUIData mistyped;
        for (const char* key : keys) mistyped.SetData(key, kind);
        mistyped.SetData("To", kind);
        cases.push_back({"wrong kinds, To too", mistyped, false});
        mistyped.SetData("To", handle);
        cases.push_back({"wrong kinds", mistyped, true});
    }
    CUIData large = Response(handle, 1);
    for (int i = 0; i < 100000; ++i) large.SetData("key" + std::to_string(i), i);
    large.SetData("MapData", CUIData(large));
    cases.push_back({"100,000 keys", large, true});
    CUIData longText = Response(handle, 1);
    longText.SetData("RawData", std::string(64 << 20, 'x'));
    cases.push_back({"64 MB", longText, true});
    CUIData nested;
    for (int i = 0; i < 100000; ++i) {
        CUIData outer;
        outer.SetData("Request", nested);
        nested = outer;
    }
    nested.SetData("To", handle);
    cases.push_back({"100,000 levels", nested, true});

    for (const Case& row : cases) {
        const int before = received;
        const uint64_t dropped = Count("response_without_receiver");
        Send(row.record);
        ASSERT_TRUE(WaitFor([&] {
            return received + Count("response_without_receiver") == before + dropped + 1;
        })) << row.what;
        EXPECT_EQ(received - before, row.isDelivered ? 1 : 0) << row.what;
    }
    EXPECT_EQ(module.handle_response_callback(nullptr), 0);
    Settle();
}

TEST_F(HostTraffic, CallbacksMayThrowOrAnswerNothing) {
    const Terminal::Callback failures[] = {[](CQueueReqItem&) { throw std::runtime_error("host"); },
                                           [](CQueueReqItem&) { throw 1; },
                                           [](CQueueReqItem& request) { request.Clear(); },
                                           [](CQueueReqItem& request) { request.SetData("result", 5); }};
    probe.onResponse = [&](TestPage& page, const CQueueRespData&) {
        page.Query(1);
        ++received;
        throw std::runtime_error("page");
    };
    for (size_t i = 0; i < std::size(failures); ++i) {
        const bool throws = i < 2;
        terminal.OnUiThread([&] { terminal.onPush = terminal.onAsk = failures[i]; });
        terminal.OnUiThread([&] {
            EXPECT_EQ(probe.pages.at("p")->Query(1), !throws);
            EXPECT_EQ(probe.pages.at("p")->CallLua("m", ""), "");
        });
        EXPECT_EQ(terminal.Lua("return luadui.get_config('k')"), "");
        const int before = received;
        for (int k = 0; k < 3; ++k) Send(Response(handle, 1));
        EXPECT_TRUE(WaitFor([&] { return received == before + 3; })) << "the next response still arrives";
    }
}

TEST_F(HostTraffic, CallbacksMayCallEverything) {
    int depth = 0;  // UI thread
    const auto callEverything = [&](CQueueReqItem&) {
        if (++depth > 5) return;  // the calls below send requests of their own
        EXPECT_EQ(module.start_dui_thread(), terminal.UiThreadId());
        EXPECT_NE(terminal.CreatePage("inside " + std::to_string(depth)), 0U);
        EXPECT_EQ(module.create_dui_page(0, 0, "later", "", "/test_page.dll", nullptr, nullptr, 0, true), 1U);
        module.create_com_page("test_page.dll", "component", nullptr, 0);
        module.init(nullptr, nullptr);
        EXPECT_EQ(module.create("test_page.dll", "component 2", nullptr, 0), 0);
        Send(Response(handle, 1));
        terminal.SetCallbacks();
        char buffer[4];
        EXPECT_EQ(module.get_securityname("600000", buffer, "SH", sizeof buffer), 3U);
        EXPECT_EQ(module.get_marketbycodeandzqmc("600000", buffer, "x", sizeof buffer), 0U);
        module.handle_keyboard_callback(1, 2, 3, 4);
        module.init_keyfairy(nullptr);
        LuaScripts scripts(module.luaopen_luadui);
        EXPECT_EQ(
            scripts.Run(
                "luadui.on_switchtab('p', 0) luadui.on_setfocus('info') luadui.on_error('s', '{}') "
                "luadui.get_config('k') luadui.set_config('k', 'v') luadui.send_frame(1, 'a', 'b', '{}') "
                "luadui.on_init_marketcodelist('x') luadui.get_version_list('x') "
                "return luadui.on_init('p', '/test_page.dll', ''), (luadui.get_login_info('p'))"),
            "true info");
    };
    for (Terminal::Callback* callback : {&terminal.onPush, &terminal.onAsk}) {
        terminal.OnUiThread([&] {
            terminal.onPush = terminal.onAsk = nullptr;
            *callback = callEverything;
            depth = 0;
            probe.pages.at("p")->Query(1);
            probe.pages.at("p")->CallLua("m", "");
            EXPECT_GT(depth, 0);
            terminal.onPush = terminal.onAsk = nullptr;
        });
    }
    Settle();
}

TEST_F(HostTraffic, FramesBelongToTheHostWindow) {
    WNDCLASSW windowClass{};
    windowClass.lpfnWndProc = DefWindowProcW;
    windowClass.lpszClassName = L"HostWindow";
    RegisterClassW(&windowClass);
    const HWND window =
        CreateWindowExW(0, L"HostWindow", L"", 0, 0, 0, 0, 0, HWND_MESSAGE, nullptr, nullptr, nullptr);
    ASSERT_NE(window, nullptr);
    EXPECT_EQ(terminal.Lua("return luadui.send_frame(1, 'to', 'method', '{}')"), "none") << "no window yet";
    terminal.Lua("luadui.on_set_hWnd(" + std::to_string(ToNumber(window)) + ")");
    EXPECT_EQ(terminal.Lua("return luadui.send_frame(-7.9, 'to', 'method', '{\"a\":1}')"), "none");
    MSG message{};
    ASSERT_TRUE(PeekMessageW(&message, nullptr, 0, 0, PM_REMOVE));
    EXPECT_EQ(message.message, 9529U);
    const std::unique_ptr<FrameMessage> frame(reinterpret_cast<FrameMessage*>(message.wParam));
    EXPECT_EQ(frame->code, -7);
    EXPECT_EQ(frame->target + " " + frame->method + " " + frame->body.ToText(), "to method {\"a\":1}");

    int room = 0;  // systems without a limit take all that is tried here
    while (room < 20000 && PostMessageW(window, WM_APP, 0, 0)) ++room;
    EXPECT_EQ(terminal.Lua("return luadui.send_frame(1, 'to', 'method', '{}')"), "none");
    EXPECT_EQ(Count("frame_message_refused"), room < 20000 ? 1U : 0U);
    while (PeekMessageW(&message, nullptr, 0, 0, PM_REMOVE)) {
        if (message.message == 9529) delete reinterpret_cast<FrameMessage*>(message.wParam);
    }
    DestroyWindow(window);
    EXPECT_EQ(terminal.Lua("return luadui.send_frame(1, 'to', 'method', '{}')"), "none")
        << "no window any more";
}

// Tasks that tell when they are freed.
struct Task : CQueueTaskItem {
    Task() { ++s_living; }
    ~Task() override { --s_living; }
    static inline std::atomic<int> s_living{0};
};

TEST_F(HostTraffic, ExportTasksReachTheWorker) {
    for (int i = 0; i < 1000; ++i) {
        PostMessageW(Terminal::ManagerWindow(), 2032, 0, reinterpret_cast<LPARAM>(new Task));
    }
    EXPECT_TRUE(WaitFor([] { return Count("export_without_writer") == 1000; }));
    EXPECT_EQ(Task::s_living, 0);
    for (int i = 0; i < 100; ++i) {
        PostMessageW(Terminal::ManagerWindow(), 2032, 0, reinterpret_cast<LPARAM>(new Task));
    }
    EXPECT_TRUE(terminal.Stop());
    EXPECT_EQ(Task::s_living, 0) << "also those that the end overtook";
}

TEST_F(HostTraffic, ABurstAgainstABusyPageArrivesCompleteAndInOrder) {
    constexpr int kSenders = 2;
    constexpr int kEach = kIsSanitized ? 30000 : 100000;
    std::array<int, kSenders> next{};  // UI thread
    int outOfOrder = 0;
    probe.onResponse = [&](TestPage&, const CQueueRespData& response) {
        if (received == 0) Sleep(500);  // long enough for every queue to fill
        const auto sender = static_cast<size_t>(response.GetDataLong("REQTYPE"));
        outOfOrder += response.GetDataString("Topic") == std::to_string(next.at(sender)++) ? 0 : 1;
        ++received;
    };
    std::vector<std::thread> senders;
    for (int sender = 0; sender < kSenders; ++sender) {
        senders.emplace_back([&, sender] {
            for (int i = 0; i < kEach; ++i) Send(Response(handle, sender, std::to_string(i)));
        });
    }
    for (auto& sender : senders) sender.join();
    EXPECT_TRUE(WaitFor([&] { return received == kSenders * kEach; }, 15)) << received;
    EXPECT_EQ(outOfOrder, 0);
}

}  // namespace
}  // namespace luadui
