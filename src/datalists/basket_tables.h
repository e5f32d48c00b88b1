// The tables that pages show of a basket's orders, made of what the server says in JSON.
#pragma once

#include <string_view>

#include "base/data_table.h"
#include "datalists/account_names.h"

namespace luadui {

// What the tables are is told in datalists/order_list.h.
struct BasketTables {
    // False when the text was broken: the tables have the rows that could be read. No text at all is whole.
    bool Read(std::string_view json, const AccountNames& accounts);

    CDataTable deals, pending;
};

}  // namespace luadui
