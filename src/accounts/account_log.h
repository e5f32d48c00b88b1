// The accounts' lines in the central log.
#pragma once

#include <string>
#include <string_view>

namespace luadui {

// Queue one line under the source "client@_account", or "client@_error" for errors, with the module
// "MODULE_ACCOUNTMANAGER". `text` goes into the field "message"; a `detail` that is not empty into "detail". Both are code
// page 936 and must not contain passwords. Nothing throws; what the queue cannot take is counted there.
//
// Threads: any.
void LogAccount(std::string_view text, std::string_view detail = {}) noexcept;
void LogAccountError(std::string_view text, std::string_view detail = {}) noexcept;

// What lines are about: "账户ID:" or "账户组ID:" and the id (code page 936).
std::string AccountSubject(std::string_view accountId);
std::string GroupSubject(std::string_view groupId);
// Logs the subject with `end` (a UTF-8 literal of the operation table); nothing when `end` is empty.
void LogAbout(std::string_view subject, std::string_view end);

}  // namespace luadui
