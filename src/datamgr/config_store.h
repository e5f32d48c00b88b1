// The user's settings, as pages read and write them. The files are the host's: each operation here is one or
// more synchronous calls into it. What the host does not have reads as the empty text; without a host reads
// are empty and writes are dropped.
//
// Threads: any, a record being used by one at a time; the host answers on the calling thread and may call
//          back.
#pragma once

#include <string>
#include <string_view>

#include "base/ui_data.h"
#include "messaging/host_types.h"

namespace luadui {

// All settings of a file.
StringMap ReadAllConfig(const std::string& file);
// True when the host says that it removed the setting.
bool EraseConfigKey(const std::string& file, const std::string& key);

// The three below work on the file "config_path", or the user's settings file when there is none.

// Reads "config_key": of one key (text) the value becomes the text "config_value", of several (a set) a
// shared record "config_value" with a text per key. False, and nothing changed, for an empty set; true
// otherwise, also when "config_key" is of another kind and nothing was read.
bool GetConfig(CUIData& data);
// Replaces all entries of `data` with the settings of the file. True.
bool GetAllConfig(CUIData& data);
// Erases "config_key", one key or a set of them. False for an empty set, true otherwise.
bool EraseConfig(const CUIData& data);

// The two below work on the file "setting_path", or the user's settings file.

// Reads the settings that the entry `key` names (a text or a set of them) into entries of their own names.
// True.
bool GetSettingConfig(CUIData& data, std::string_view key);
// Writes every text of `data` under its own name, but for "setting_path", "config_save_type" and
// "setting_config_type", which say how to save.
void SaveSettingConfig(const CUIData& data);

}  // namespace luadui
