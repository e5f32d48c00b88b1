// What the broker answers: one row per request type, and one per topic of what it pushes.
#pragma once

#include <span>
#include <string>
#include <string_view>

#include "base/data_table.h"
#include "base/ui_data.h"
#include "broker/account_book.h"

namespace terminal {

// Fills the answer to `request`. False when that is refused; `error` (UTF-8) then says why. `account` is null where
// the service needs none.
using Serve = bool (*)(const luadui::CUIData& request, AccountBook& book, const Account* account,
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

// What is pushed after a trade: topic (the account's token follows) and table.
struct News {
    std::string_view topic;
    luadui::CDataTable (*table)(const Account& account);
};
std::span<const News> TradeNews();

}  // namespace terminal
