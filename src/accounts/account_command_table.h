// The commands of the account manager: one row each.
#pragma once

#include <algorithm>
#include <span>
#include <string_view>

#include "accounts/account_manager.h"
#include "accounts/account_operations.h"

namespace luadui {

struct CAccountManager::Command {
    std::string_view name;
    void (CAccountManager::*run)(const Call&);
    // Whose event answers; null for what is answered at once.
    const AccountOperation* operation = nullptr;
    // Arguments without which nothing happens, and those that are taken beside them: texts or numbers. Where nothing is said,
    // the command gets all arguments as they are.
    std::span<const std::string_view> needed = {}, passed = {};

    // Null when there is none of that name.
    static const Command* Find(std::string_view name);
};

}  // namespace luadui
