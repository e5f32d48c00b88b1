#include "luadui/ui_settings.h"

#include <atomic>
#include <mutex>

#include "messaging/host_link.h"

namespace luadui {
namespace {

// A value that threads exchange; never destroyed, since threads may outlive main().
template <class Value>
class Exchanged {
  public:
    Value Get() const {
        const std::lock_guard lock(m_mutex);
        return m_value;
    }
    void Set(Value value) {
        const std::lock_guard lock(m_mutex);
        m_value = std::move(value);
    }

  private:
    mutable std::mutex m_mutex;
    Value m_value;
};

auto& Skin() {
    static auto* const skin = new Exchanged<CDuiString>;
    return *skin;
}

auto& ConfigPath() {
    static auto* const path = new Exchanged<std::string>;
    return *path;
}

std::atomic<int32_t> g_hostMainWindow{0};

}  // namespace

CDuiString SkinName() { return Skin().Get(); }

void SetSkin(std::string_view name) { Skin().Set(CDuiString(name == "blue" ? L"blue" : L"")); }

void LoadSkin() { SetSkin(ReadConfig(kUserConfigFile, "skin")); }

void SetScriptConfigPath(std::string path) { ConfigPath().Set(std::move(path)); }
std::string ScriptConfigPath() { return ConfigPath().Get(); }

int32_t HostMainWindow() { return g_hostMainWindow.load(); }

bool SetHostMainWindow(int32_t window) {
    int32_t none = 0;
    return g_hostMainWindow.compare_exchange_strong(none, window);
}

}  // namespace luadui
