#include "host/terminal.h"

#include <cstdio>
#include <cstdlib>

#include "host/callbacks.h"
#include "host/host_functions.h"
#include "host/lua_state.h"
#include "settings/data_path.h"

namespace terminal {
namespace {

constexpr DWORD kEndLimit = 10'000;  // milliseconds

}  // namespace

Terminal::Terminal(const Options& options)
    : m_options(options),
      m_settings(options.data),
      m_interface(m_options),
      m_news([this](luadui::CUIData& record) { m_library.handleResponse(&record); }),
      m_broker([this](luadui::CUIData& record) { m_library.handleResponse(&record); },
               {.passwordKey = options.home / "broker" / "account_password_key.pem",
                .traffic = options.data / "broker" / "traffic.log"}) {}

Terminal::~Terminal() { ClearCallbackTargets(); }

int Terminal::Run() {
    std::filesystem::create_directories(m_options.data);
    if (!m_window.Create()) {
        std::fprintf(stderr, "terminal: the main window cannot be created\n");
        return 2;
    }
    int code = _runScript();
    std::string error;
    if (!StopUi(error)) {
        // Its threads still use what would be destroyed now.
        std::fprintf(stderr, "terminal: %s\n", error.c_str());
        std::fflush(nullptr);
        std::_Exit(3);
    }
    // Answers that the broker still sends find no UI thread and are dropped by the library.
    m_broker.Stop();
    m_window.Destroy();
    return code;
}

int Terminal::_runScript() {
    LuaState state(m_options);
    HostFunctions functions(*this);
    functions.Register(state);
    std::string error;
    if (!state.RunFile(PathToUtf8(m_options.home / "scripts" / "host.lua"), error)) {
        std::fflush(stdout);
        std::fprintf(stderr, "terminal: %s\n", error.c_str());
        return 2;
    }
    const int code = static_cast<int>(lua_tointeger(state.Get(), -1));
    // The threads of the library may still call into the Lua interface, but not into this state.
    return code;
}

bool Terminal::Attach(std::string& error) {
    if (!m_library.Find(error)) return false;
    m_broker.Start();
    if (SetCallbacks(m_library, {&m_broker, &m_settings, &m_interface, &m_news})) return true;
    error = "the callbacks were refused";
    return false;
}

bool Terminal::StartUi(std::string& error) {
    m_uiThread = m_library.startUiThread ? m_library.startUiThread() : 0;
    if (m_uiThread == 0) error = "the UI thread could not be started";
    return m_uiThread != 0;
}

bool Terminal::StopUi(std::string& error) {
    if (m_uiThread == 0) return true;
    const HANDLE thread = OpenThread(SYNCHRONIZE, FALSE, m_uiThread);
    bool ended = thread == nullptr;  // gone already
    if (thread) {
        // A thread that has just started takes no messages yet: ask until it does.
        const ULONGLONG limit = GetTickCount64() + kEndLimit;
        while (!PostThreadMessageW(m_uiThread, WM_QUIT, 0, 0) && GetTickCount64() < limit)
            if (m_window.PumpUntilEnd(thread, 10)) break;
        ended = m_window.PumpUntilEnd(thread, kEndLimit);
        CloseHandle(thread);
    }
    if (ended) m_uiThread = 0;
    if (!ended) error = "the UI thread did not end";
    return ended;
}

}  // namespace terminal
