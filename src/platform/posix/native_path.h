// File paths between wide text and the bytes that the system takes.
#pragma once

#include <string>
#include <string_view>

namespace luadui::posix {

// UTF-8 with '/' for both kinds of slash. Bytes that are no UTF-8 come and go as U+DC80..U+DCFF, so every path that
// the system reports leads back to its file.
std::string ToNativePath(std::wstring_view path);
std::wstring FromNativePath(std::string_view path);

// The folder of the host executable, with a '/' at its end.
const std::string& HostFolder();
// Full path of the host executable; empty when the system does not tell.
const std::string& HostPath();

}  // namespace luadui::posix
