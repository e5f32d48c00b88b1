// Passwords that the host remembers between sessions.
#pragma once

#include <map>
#include <optional>
#include <string>
#include <string_view>

#include "accounts/secret.h"

namespace luadui {

class CRequestBase;
struct AccountUser;

struct PassInfo {
    Secret password, txPassword, dynamicPassword;
};
using PassInfos = std::map<std::string, PassInfo, std::less<>>;  // by account key

// Asks the host ("get_passInfo") for the passwords of the user's accounts. Nothing when its answer is no JSON object, which
// is logged. `asker` is whom the host calls back; the call may destroy it.
//
// Threads: the UI thread, as for all here.
std::optional<PassInfos> GetPassInfo(CRequestBase& asker, const AccountUser& user);

// What becomes of the texts that the host remembers of the account itself.
enum class Remembered { kReplaced, kKeptWhereEmpty };
// Has the host remember ("save_passInfo") `info` for `key`, empty texts for an account that is to be forgotten. What it
// remembers for other accounts goes out again with it, so that a host which replaces all loses none.
void SavePassInfo(CRequestBase& asker, const AccountUser& user, const std::string& key, PassInfo info,
                  Remembered before = Remembered::kReplaced);

}  // namespace luadui
