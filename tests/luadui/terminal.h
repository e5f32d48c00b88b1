// A terminal as the module sees it: it loads the module at run time and finds every function by name.
#pragma once

#include <functional>
#include <mutex>
#include <string>
#include <vector>

#include "base/counters.h"
#include "luadui/luadui.h"
#include "tests/luadui/lua_scripts.h"
#include "tests/luadui/plugins/page_probe.h"
#include "tests/luadui/watchdog.h"

namespace luadui {

// The exported functions.
struct Module {
    const HMODULE handle = LoadLibraryW(L"luadui.dll");
#define MODULE_FUNCTION(name) \
    decltype(&::name) name =  \
        reinterpret_cast<decltype(&::name)>(reinterpret_cast<void*>(GetProcAddress(handle, #name)))
    MODULE_FUNCTION(luaopen_luadui);
    MODULE_FUNCTION(start_dui_thread);
    MODULE_FUNCTION(handle_keyboard_callback);
    MODULE_FUNCTION(init_keyfairy);
    MODULE_FUNCTION(get_securityname);
    MODULE_FUNCTION(get_marketbycodeandzqmc);
    MODULE_FUNCTION(init);
    MODULE_FUNCTION(create);
    MODULE_FUNCTION(create_com_page);
    MODULE_FUNCTION(set_push_callback);
    MODULE_FUNCTION(set_req_sync_callback);
    MODULE_FUNCTION(set_login_callback);
    MODULE_FUNCTION(handle_response_callback);
    MODULE_FUNCTION(create_dui_page);
#undef MODULE_FUNCTION
};

inline HWND ToWindow(unsigned int handle) {
    return reinterpret_cast<HWND>(static_cast<intptr_t>(static_cast<int32_t>(handle)));
}
inline unsigned int ToNumber(HWND window) {
    return static_cast<unsigned int>(reinterpret_cast<uintptr_t>(window));
}
inline uint64_t Count(const char* counter) { return CCounters::Get(counter); }

// One per process: the module's UI thread runs once.
class Terminal {
  public:
    using Callback = std::function<void(CQueueReqItem&)>;

    Terminal() { s_terminal = this; }
    ~Terminal() {
        Stop();
        if (m_thread) CloseHandle(m_thread);
        s_terminal = nullptr;
    }

    Module module;
    // Set while nothing is under way; called on whatever thread the module sends, but not for the code list, which may be
    // asked for at any time and is empty here.
    Callback onPush;
    Callback onAsk;

    // Sets the callbacks and starts the UI thread; true when its window is there.
    // With `keepsPages` the page libraries, and what they are linked to, stay loaded.
    bool Start(bool keepsPages = true) {
        SetCallbacks();
        if (keepsPages) Probe(L"test_page.dll"), Probe(L"vandrel.dll");
        m_uiThreadId = module.start_dui_thread();
        m_thread = OpenThread(SYNCHRONIZE, FALSE, m_uiThreadId);
        return m_thread && WaitFor([] { return ManagerWindow() != nullptr; });
    }
    void SetCallbacks() {
        module.set_push_callback(
            [](CQueueReqItem* request) { return _called(s_terminal->onPush, *request); });
        module.set_req_sync_callback(
            [](CQueueReqItem* request) { return _called(s_terminal->onAsk, *request); });
    }
    // Sends the quit message, as soon as the queue has room for it, and waits for the thread's end; false when it does
    // not end.
    bool Stop() {
        return WaitFor([this] { return HasEnded(0) || PostThreadMessageW(m_uiThreadId, WM_QUIT, 0, 0); }) &&
               HasEnded(15000);
    }
    bool HasEnded(DWORD waitMs = 15000) {
        return !m_thread || WaitForSingleObject(m_thread, waitMs) == WAIT_OBJECT_0;
    }
    DWORD UiThreadId() const { return m_uiThreadId; }
    // The page manager window of this process, found by its class as a host would; other terminals may run.
    static HWND ManagerWindow() {
        DWORD process = 0;
        HWND window = nullptr;
        do {
            window = FindWindowExW(nullptr, window, L"PageManagerWnd", nullptr);
            GetWindowThreadProcessId(window, &process);
        } while (window && process != GetCurrentProcessId());
        return window;
    }

    static constexpr char kPageLibrary[] = "/test_page.dll";
    PageProbe& Probe(const wchar_t* library = L"test_page.dll") {
        const HMODULE loaded = LoadLibraryW(library);
        return *reinterpret_cast<PageProbeFunction*>(
            reinterpret_cast<void*>(GetProcAddress(loaded, "page_probe")))();
    }
    unsigned int CreatePage(const std::string& name, const std::string& library = kPageLibrary,
                            const std::string& info = "info") {
        return module.create_dui_page(0, 0, name, info, library, nullptr, nullptr, 0, false);
    }
    // Runs `call` on the UI thread, as a page would, and waits for it.
    void OnUiThread(const std::function<void()>& call) {
        const std::string address = std::to_string(reinterpret_cast<uintptr_t>(&call));
        CreatePage(kRunFunction + address, kPageLibrary, address);
    }
    // The handle of a page's request object.
    std::string HandleOf(const std::string& page) {
        std::string handle;
        OnUiThread([&] { handle = Probe().pages.at(page)->Handle(); });
        return handle;
    }
    std::string Lua(const std::string& chunk) { return m_scripts.Run(chunk); }
    void CloseLua() { m_scripts.Close(); }
    lua_State* LuaState() const { return m_scripts.State(); }

  private:
    static int _called(const Callback& callback, CQueueReqItem& request) {
        CUIData params;
        request.GetData("Params", params);
        if (params.GetDataString("method") == "GetCodeList") return 0;
        if (callback) callback(request);
        return 0;
    }

    static inline Terminal* s_terminal = nullptr;
    DWORD m_uiThreadId = 0;
    HANDLE m_thread = nullptr;
    LuaScripts m_scripts{module.luaopen_luadui};
};

// A response as a host fills it.
inline CUIData Response(const std::string& to, int type, const std::string& topic = {}) {
    CUIData response;
    response.SetData("DATATYPE", 2001);
    response.SetData("REQTYPE", type);
    response.SetData("To", to);
    response.SetData("Topic", topic);
    return response;
}

}  // namespace luadui
