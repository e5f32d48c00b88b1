// What the whole user interface shares: skin, settings file of the scripts, the host's main window.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "platform/duilib.h"

namespace luadui {

// The skin name: empty is the default skin.
CDuiString SkinName();
// "blue" is the one skin there is besides the default, which any other name stands for.
void SetSkin(std::string_view name);
// Sets the skin of the user's setting "skin", read through the host.
void LoadSkin();

// The path of the settings file that get_config and set_config use.
void SetScriptConfigPath(std::string path);
std::string ScriptConfigPath();

// The host's main window as a number; 0 while not set.
int32_t HostMainWindow();
// Stores the handle; false, and nothing changed, when one is set already.
bool SetHostMainWindow(int32_t window);

}  // namespace luadui
