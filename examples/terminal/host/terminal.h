// The sample terminal: its parts and the order in which they start and end.
#pragma once

#include <string>

#include "broker/broker.h"
#include "host/host_window.h"
#include "host/library.h"
#include "host/lua_interface.h"
#include "host/news.h"
#include "host/options.h"
#include "host/ui_probe.h"
#include "settings/settings_store.h"

namespace terminal {

// Threads: the host thread, which runs the scripts and serves the host window. The broker and the library bring their
// own threads; what they call is in callbacks.h.
class Terminal {
  public:
    explicit Terminal(const Options& options);
    ~Terminal();

    // Runs the host script to its end, then shuts down. Returns the exit code of the program: what the script returned,
    // 2 when it failed, 3 when the UI thread did not end.
    int Run();

    // The steps of a start, in this order, each false with a reason in `error`. The library must be loaded (by Lua).
    bool Attach(std::string& error);   // finds its functions and registers the callbacks
    bool StartUi(std::string& error);  // starts the UI thread
    // Asks the UI thread to end and waits until it has. False after 10 seconds.
    bool StopUi(std::string& error);

    const Options& GetOptions() const { return m_options; }
    HostWindow& Window() { return m_window; }
    Broker& GetBroker() { return m_broker; }
    News& GetNews() { return m_news; }
    LuaInterface& GetInterface() { return m_interface; }
    UiProbe& Probe() { return m_probe; }
    const Library& GetLibrary() const { return m_library; }
    DWORD UiThreadId() const { return m_uiThread; }

  private:
    int _runScript();

    const Options m_options;
    HostWindow m_window;
    SettingsStore m_settings;
    LuaInterface m_interface;
    Library m_library;
    News m_news;
    Broker m_broker;
    UiProbe m_probe;
    DWORD m_uiThread = 0;
};

}  // namespace terminal
