// AccountUser: who is signed in, as far as requests about accounts say it.
#pragma once

#include <string>

namespace luadui {

// Texts are code page 936.
struct AccountUser {
    std::string name;           // "useraccount"
    std::string id;             // "user_id"
    std::string institutionId;  // "institution_id"
    std::string token;          // "token" of login requests
    std::string version;        // of the client
    std::string folder;         // the user's folder, which the host keeps remembered passwords in
    bool isPbMode = false;      // the terminal runs in "PB_MODE"
};

}  // namespace luadui
