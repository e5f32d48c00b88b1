#include "host/host_functions.h"

#include "base/counters.h"
#include "base/data_table.h"
#include "base/text.h"
#include "host/function_steps.h"
#include "host/terminal.h"
#include "page/page_view.h"
#include "settings/data_path.h"

namespace terminal {
namespace {

using luadui::CUIData;

// --- start-up

int AttachLibrary(lua_State* L) {
    return Run(L, [](Terminal& terminal, LuaAnswer& answer) {
        std::string error;
        AddOutcome(answer, terminal.Attach(error), error);
    });
}

int StartUi(lua_State* L) {
    return Run(L, [](Terminal& terminal, LuaAnswer& answer) {
        std::string error;
        if (!terminal.StartUi(error)) return answer.Fail(error);
        answer.Add(static_cast<double>(terminal.UiThreadId()));
    });
}

int StopUi(lua_State* L) {
    return Run(L, [](Terminal& terminal, LuaAnswer& answer) {
        std::string error;
        AddOutcome(answer, terminal.StopUi(error), error);
    });
}

int GetOptions(lua_State* L) {
    return Run(L, [](Terminal& terminal, LuaAnswer& answer) {
        const Options& options = terminal.GetOptions();
        CUIData record;
        record.SetData("home", PathToUtf8(options.home));
        record.SetData("data", PathToUtf8(options.data));
        record.SetData("securities", options.securities);
        record.SetData("securities_count", options.securitiesCount);
        record.SetData("scenario", options.scenario);
        answer.Add(record);
    });
}

int GetWindow(lua_State* L) {
    return Run(L, [](Terminal& terminal, LuaAnswer& answer) {
        answer.Add(static_cast<double>(HandleNumber(terminal.Window().Handle())));
    });
}

// --- host thread

int Pump(lua_State* L) {
    const auto wait = static_cast<int>(luaL_checkinteger(L, 1));
    luaL_argcheck(L, wait >= 0 && wait <= kMaxWait, 1, "0 to 60000 milliseconds");
    return Run(L, [=](Terminal& terminal, LuaAnswer& answer) {
        answer.Add(terminal.Window().Pump(static_cast<DWORD>(wait)));
    });
}

int ReadLine(lua_State* L) {
    const char* prompt = luaL_checkstring(L, 1);
    const char* words = luaL_optstring(L, 2, "");
    LineInput& input = Context(L).Input();
    return Run(L, [&, prompt, words](Terminal& terminal, LuaAnswer& answer) {
        const auto line = input.Read(prompt, words, [&] { terminal.Window().Pump(0); });
        line ? answer.Add(*line) : answer.AddNil();
    });
}

int IsInteractive(lua_State* L) {
    LineInput& input = Context(L).Input();
    return Run(L, [&](Terminal&, LuaAnswer& answer) { answer.Add(input.IsInteractive()); });
}

int CatchOutput(lua_State* L) {
    OutputCapture& capture = Context(L).Capture();
    return Run(L, [&](Terminal&, LuaAnswer&) { capture.Begin(); });
}

int Caught(lua_State* L) {
    OutputCapture& capture = Context(L).Capture();
    return Run(L, [&](Terminal&, LuaAnswer& answer) { answer.Add(luadui::GbkToUtf8(capture.End())); });
}

int Milliseconds(lua_State* L) {
    return Run(L, [](Terminal&, LuaAnswer& answer) { answer.Add(static_cast<double>(GetTickCount64())); });
}

// --- pages and library

int PageView(lua_State* L) {
    const char* page = luaL_checkstring(L, 1);
    return Run(L, [=](Terminal& terminal, LuaAnswer& answer) {
        const CUIData* view = terminal.Window().View(page);
        view ? answer.Add(*view) : answer.AddNil();
    });
}

// The rows as records of texts.
std::vector<CUIData> RowsOf(const luadui::CDataTable& table) {
    std::vector<CUIData> rows;
    for (int row = 0; row < table.GetRowNumber(); ++row) {
        CUIData record;
        for (int col = 0; col < table.GetColumnNumber(); ++col)
            record.SetData(table.GetColumnProperty(col, "name"), table.GetItemText(row, col));
        rows.push_back(record);
    }
    return rows;
}

int PageTable(lua_State* L) {
    const char* page = luaL_checkstring(L, 1);
    const char* name = luaL_checkstring(L, 2);
    return Run(L, [=](Terminal& terminal, LuaAnswer& answer) {
        const CUIData* view = terminal.Window().View(page);
        CUIData tables;
        luadui::CDataTable table;
        const bool isThere = view && view->GetData("tables", tables) && tables.GetData(name, table);
        isThere ? answer.Add(RowsOf(table)) : answer.AddNil();
    });
}

int TakeFrame(lua_State* L) {
    return Run(L, [](Terminal& terminal, LuaAnswer& answer) {
        CUIData frame;
        terminal.Window().TakeFrame(frame) ? answer.Add(frame) : answer.AddNil();
    });
}

int TakeRecord(lua_State* L) {
    return Run(L, [](Terminal& terminal, LuaAnswer& answer) {
        CUIData record;
        terminal.Window().TakeRecord(record) ? answer.Add(record) : answer.AddNil();
    });
}

int CreatePage(lua_State* L) {
    const char* name = luaL_checkstring(L, 1);
    const char* library = luaL_checkstring(L, 2);
    const char* info = luaL_optstring(L, 3, "");
    const bool asynchronous = lua_toboolean(L, 4) != 0;
    return Run(L, [=](Terminal& terminal, LuaAnswer& answer) {
        if (terminal.UiThreadId() == 0) return answer.Fail("the UI thread does not run");
        const HWND window = terminal.Window().Handle();
        answer.Add(static_cast<double>(terminal.GetLibrary().createPage(
            HandleNumber(window), 0, name, info, library, window, nullptr, 0, asynchronous)));
    });
}

int Counters(lua_State* L) {
    return Run(L, [](Terminal&, LuaAnswer& answer) {
        CUIData record;
        for (const auto& [name, value] : luadui::CCounters::All()) record.SetData(name, value);
        answer.Add(record);
    });
}

constexpr luaL_Reg kFunctions[] = {
    // start-up
    {"attach", AttachLibrary},
    {"start_ui", StartUi},
    {"stop_ui", StopUi},
    {"options", GetOptions},
    {"window", GetWindow},
    // host thread
    {"pump", Pump},
    {"read_line", ReadLine},
    {"is_interactive", IsInteractive},
    {"ms", Milliseconds},
    {"catch_output", CatchOutput},
    {"caught", Caught},
    // pages and library
    {"page_view", PageView},
    {"page_table", PageTable},
    {"take_frame", TakeFrame},
    {"take_record", TakeRecord},
    {"create_page", CreatePage},
    {"counters", Counters},
};

}  // namespace

void HostFunctions::Register(LuaState& state) {
    for (const luaL_Reg& function : kFunctions) state.Register(function.name, function.func, this);
    for (const luaL_Reg& function : BrokerFunctions()) state.Register(function.name, function.func, this);
    for (const luaL_Reg& function : AccountFunctions()) state.Register(function.name, function.func, this);
    for (const luaL_Reg& function : QuoteFunctions()) state.Register(function.name, function.func, this);
}

}  // namespace terminal
