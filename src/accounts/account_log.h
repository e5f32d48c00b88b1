// The accounts' lines in the central log.
#pragma once

#include <string_view>

namespace luadui {

// Queue one line under the source "client@_account", or "client@_error" for errors, with the module
// "MODULE_ACCOUNTMANAGER". `text` goes into the field "message"; a `detail` that is not empty into "detail". Both are code
// page 936 and must not contain passwords. Nothing throws; what the queue cannot take is counted there.
//
// Threads: any.
void LogAccount(std::string_view text, std::string_view detail = {}) noexcept;
void LogAccountError(std::string_view text, std::string_view detail = {}) noexcept;

}  // namespace luadui
