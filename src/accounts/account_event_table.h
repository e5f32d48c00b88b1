// The events of accounts and groups, and who is told of them: one row each.
#pragma once

#include <cstdint>
#include <string_view>

#include "accounts/account_manager.h"
#include "accounts/account_operations.h"

namespace luadui {

struct CAccountManager::Event {
    // Who is told, in this order.
    enum Telling : uint32_t {
        kPage = 1,           // who asked
        kAccounts = 2,       // "ClientAccountChanged"
        kGroups = 4,         // "CLIENT_ACCOUNTGROUP_CHANGED", and the topic "AccountGroup"
        kStatus = 8,         // "CLIENT_MODIFY_ACCOUNT_STATUS"
        kOrder = 16,         // "ClientAccountOrderChanged", and the settings file
        kHostAccounts = 32,  // the host's "OnAccountChanged"
        kHostGroups = 64,    // the host's "OnAccountGroupChanged"
        kOnline = 128,       // "AccountOnline", if it changed who is logged in
        kSaveOrder = 256,    // the account service, soon
    };

    std::string_view name;
    uint32_t tells = 0;
    std::string_view title = {};   // of the operation that failed; empty for a success
    std::string_view action = {};  // of the call into the host
    std::string_view code = "0";   // of the answer to a success

    // Null when there is none of that name.
    static const Event* Find(std::string_view name);
    // The title under which an operation's failure is told.
    static std::string_view TitleOf(const AccountOperation& operation);
};

}  // namespace luadui
