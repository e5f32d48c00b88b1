// What the message center says about orders.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "base/data_table.h"
#include "base/ui_data.h"

namespace luadui {

// Local time as messages show it: "2024/01/31 09:30".
std::string MessageTimeText();

// A number for a message about what has no id of its own. Process-wide: pages replace rows by their ids, whichever
// list made them. The UI thread.
int64_t NextMessageNumber();

// What an order is about; texts as tables have them.
struct OrderWords {
    std::string_view code, market, price, account, side, quantity;
    std::string_view name;  // empty: the code list's
};
// "name（code），price元，account买入100股".
std::string OrderText(const OrderWords& order);

// The rows of a push of orders (see CMessageCenterList::AddOrderMessages) that are worth a message, widened by "InstrctionType"
// (sic), "OrderMessage", "NoteMessage", "MsgTime", "MsgType", "MsgTypeContents" and, where they lack them,
// "LocalID" and "Text". Empty when there is no such row. Only the last kMaxMessages of them count, nobody reads more at
// once: the others are counted as "order_message_dropped".
//
// "LocalID" is what a page replaces a message by: the local id of the push and, but for rejected orders, the
// status. Where a push has several rows, a row's own "LocalID" counts, or, without one, its "fund_token" and its
// "OrderID", which is one within the account only, are put behind that of the push. Where the push has none, the
// account stands for it; where there is no "OrderID", a number.
constexpr size_t kMaxMessages = 1000;
CDataTable OrderMessages(const CUIData& push);

}  // namespace luadui
