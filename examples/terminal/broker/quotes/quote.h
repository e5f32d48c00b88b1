// What the simulated market says of a security.
#pragma once

#include <array>
#include <string>

#include "broker/money.h"

namespace terminal {

struct ListedSecurity {
    std::string code;
    std::string market;  // its number, in decimal
    std::string name;    // code page 936
};

struct QuoteLevel {
    Mills price = 0;  // 0: nobody offers
    Shares volume = 0;
};

struct Quote {
    static constexpr size_t kLevels = 5;
    using Side = std::array<QuoteLevel, kLevels>;  // the best first

    ListedSecurity security;
    Mills step = 0;
    Mills previousClose = 0;
    Mills limitUp = 0;
    Mills limitDown = 0;
    Mills open = 0;
    Mills high = 0;
    Mills low = 0;
    Mills last = 0;
    Shares volume = 0;
    Shares atAsk = 0;  // the part of it that buyers took
    Shares lastTrade = 0;
    Cents turnover = 0;
    Side buy = {};
    Side sell = {};
    bool isSuspended = false;
    int seconds = 0;  // of the last change, since midnight
};

}  // namespace terminal
