// What the broker answers: one row per request type.
#pragma once

#include <span>
#include <string>

#include "base/ui_data.h"
#include "broker/exchange.h"

namespace terminal {

// Fills the answer to `request`. False when that is refused; `error` (UTF-8) then says why. `account` is null where
// the service needs none.
using Serve = bool (*)(const luadui::CUIData& request, Exchange& exchange, const Account* account,
                       luadui::CUIData& answer, std::string& error);

struct Service {
    int type;           // request type
    int dataType;       // "DATATYPE" of the answers: data that all pages share, or (2001) a page's own
    bool ofAccount;     // whether the request names an account
    bool isTradedWith;  // whether a trade changes what it answers, so that it can be subscribed to
    Serve serve;        // null: the request is taken and not answered
};

// Null for a type that the broker does not know.
const Service* FindService(int type);
std::span<const Service> Services();

}  // namespace terminal
