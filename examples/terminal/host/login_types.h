// What the host means by the two types that the library passes on to its login callback untouched.
#pragma once

#include <cstdint>
#include <string>

struct tag_SrvAddr {
    std::string host;
    uint16_t port = 0;
};

struct tag_login_user {
    std::string fundToken;
    std::string branch;
};
