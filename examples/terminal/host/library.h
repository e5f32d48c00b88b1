// The library as a terminal uses it: loaded at run time, its exported functions found by name.
#pragma once

#include <string>

#include "host/login_types.h"
#include "luadui/luadui.h"

namespace terminal {

struct Library {
    // Finds the functions in the module that the Lua host loaded with require "luadui". False, and `error` says what is
    // missing, when it is not there.
    bool Find(std::string& error);

    decltype(&::set_push_callback) setPushCallback = nullptr;
    decltype(&::set_req_sync_callback) setRequestSyncCallback = nullptr;
    decltype(&::set_login_callback) setLoginCallback = nullptr;
    decltype(&::start_dui_thread) startUiThread = nullptr;
    decltype(&::handle_response_callback) handleResponse = nullptr;
    decltype(&::create_dui_page) createPage = nullptr;
    decltype(&::get_securityname) getSecurityName = nullptr;
    decltype(&::get_marketbycodeandzqmc) getMarket = nullptr;
    decltype(&::init_keyfairy) initKeyFairy = nullptr;
    decltype(&::handle_keyboard_callback) handleKeyboard = nullptr;
};

}  // namespace terminal
