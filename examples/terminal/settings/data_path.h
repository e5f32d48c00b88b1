// Names of files as the library gives them, such as "\\qsclient\\users\\user.cfg": always below the data folder.
#pragma once

#include <filesystem>
#include <optional>
#include <string_view>

namespace terminal {

// The file `name` (code page 936; '\' and '/' separate) below `folder`. Nothing when the name could lead out of the
// folder or means something else on one of the systems: "..", a drive, a device, a control character, a blank or point
// at the end of a part, text that is not of the code page, or too long.
std::optional<std::filesystem::path> DataPath(const std::filesystem::path& folder, std::string_view name);

// A path made of UTF-8 text, and its text.
std::filesystem::path PathFromUtf8(std::string_view text);
std::string PathToUtf8(const std::filesystem::path& path);

}  // namespace terminal
