// Where the host lives.
#pragma once

#include <filesystem>
#include <string>

namespace luadui {

// The folder of the host's executable, without a separator at its end.
std::wstring HostFolder();
// The same for file operations, whatever the locale.
std::filesystem::path HostFolderPath();

}  // namespace luadui
