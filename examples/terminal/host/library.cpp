#include "host/library.h"

#include "platform/win32.h"

namespace terminal {
namespace {

template <class Function>
bool FindFunction(HMODULE module, const char* name, Function& function, std::string& error) {
    function = reinterpret_cast<Function>(reinterpret_cast<void*>(GetProcAddress(module, name)));
    if (!function) error = std::string("the module luadui does not export ") + name;
    return function != nullptr;
}

}  // namespace

bool Library::Find(std::string& error) {
    const HMODULE module = GetModuleHandleW(L"luadui.dll");
    if (!module) {
        error = "the module luadui is not loaded";
        return false;
    }
    return FindFunction(module, "set_push_callback", setPushCallback, error) &&
           FindFunction(module, "set_req_sync_callback", setRequestSyncCallback, error) &&
           FindFunction(module, "set_login_callback", setLoginCallback, error) &&
           FindFunction(module, "start_dui_thread", startUiThread, error) &&
           FindFunction(module, "handle_response_callback", handleResponse, error) &&
           FindFunction(module, "create_dui_page", createPage, error) &&
           FindFunction(module, "get_securityname", getSecurityName, error) &&
           FindFunction(module, "get_marketbycodeandzqmc", getMarket, error) &&
           FindFunction(module, "init_keyfairy", initKeyFairy, error) &&
           FindFunction(module, "handle_keyboard_callback", handleKeyboard, error);
}

}  // namespace terminal
