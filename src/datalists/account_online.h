// Who is logged in, put into a table of accounts.
#pragma once

#include "base/data_table.h"

namespace luadui {

struct OnlineNews {
    CDataTable rows;
    bool isWhole = false;  // they are all that are logged in
    bool mayAddAccounts = true;
};

// Puts what the news say into `accounts`. Rows are known by their account key, by a fund token (that of a portfolio, too) or
// by id, broker and trade type, as far as both tables have them; columns by any of the names that servers use for them. A
// row that is there keeps what the news do not say, and its identity; others are appended if the news may add accounts.
// Accounts of the news are usable unless a column tells; usable ones that whole news do not name no longer are, without a message. A row that
// names no account is left out, counted as "account_online_row_refused". False, and nothing changed, when there is no
// column to know accounts by.
bool MergeOnline(const OnlineNews& news, CDataTable& accounts);

}  // namespace luadui
