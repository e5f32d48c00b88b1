// What the whole user interface shares: skin, settings file of the scripts, the host's main window.
#pragma once

#include <cstdint>
#include <string>

#include "platform/duilib.h"

namespace luadui {

// The skin name: empty is the default skin.
CDuiString SkinName();
// Reads the user's setting "skin" through the host; "blue" is the one other skin there is.
void LoadSkin();

// The path of the settings file that get_config and set_config use.
void SetScriptConfigPath(std::string path);
std::string ScriptConfigPath();

// The host's main window as a number; 0 while not set.
int32_t HostMainWindow();
// Stores the handle; false, and nothing changed, when one is set already.
bool SetHostMainWindow(int32_t window);

}  // namespace luadui
