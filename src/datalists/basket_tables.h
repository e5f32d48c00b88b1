// The tables that pages show of a basket's orders, made of what the server says in JSON.
#pragma once

#include <string_view>

#include "base/data_table.h"
#include "datalists/account_names.h"

namespace luadui {

// What the tables are is told in datalists/order_list.h.
struct BasketTables {
    // Both have their columns and no rows.
    BasketTables();

    // Appends the rows that the text has. False when it was broken: those that could be read are there. No text at
    // all is whole.
    bool Read(std::string_view json, const AccountNames& accounts);

    CDataTable deals, pending;
};

}  // namespace luadui
