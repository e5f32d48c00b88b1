// What accounts have in common with the JSON of notifications and host calls.
#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "accounts/account_list.h"
#include "base/data_list.h"
#include "base/data_value.h"

namespace luadui {

// A list, or the one that a JSON array text is. Nothing for anything else.
std::optional<CDataList> ListOf(const ValueView& value);
// The text of a list as JSON array.
std::string ArrayText(const CDataList& list);

// The number of the account in the order of display, as text.
std::string OrderOf(const CAccountList& accounts, const CAccount& account);
// "login" or "logout", by the account's can-use flag.
std::string_view LoginState(std::string_view canUse);

}  // namespace luadui
