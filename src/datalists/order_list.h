// COrderList: the orders behind basket instructions.
#pragma once

#include <string>
#include <string_view>

#include "base/data_table.h"
#include "base/text_map.h"
#include "base/ui_data.h"

namespace luadui {

// A record with one table of orders for each key: instance, task and snapshot, one behind the other.
//
// Threads: the UI thread.
class COrderList : public CUIData {
  public:
    COrderList();
    ~COrderList() override;
    COrderList(const COrderList&) = delete;
    COrderList& operator=(const COrderList&) = delete;
    const char* ClassName() const override;

    // Takes the answer to a query for the details of a basket. The key comes from "InstanceID", "TaskID" and
    // "SnapshotID" in the "Params" of the answer's "Request".
    //
    // Rows of "Table" are appended to those held under the key, since an answer may come in parts. A row that
    // is there already takes the place of the earlier one: who asks again wants to see how his orders stand
    // now, not each order once more. A row is known by account ("fund_token"), "PendingOrderID", "OrderID" and
    // "ExecID"; one without any of these three is always appended.
    //
    // The JSON text "RawData" (or the JSON object under that name) has two arrays, which become tables of this
    // answer alone: "DealOrderArray" -> "basket_deal_table", "PendingOrderArray" -> "basket_pending_table".
    // Both tables are there even if empty and have the columns of kBasketColumns (see order_list.cpp); members
    // that are not among them are passed over. Text that is broken gives the rows before the break, is
    // counted as "basket_json_broken", and the answer gets the boolean "incomplete".
    //   accounts   the shared "account" record (table under "account" or "Table"), null when unknown: rows of
    //              accounts that it knows get their names, others keep the text for "not logged in".
    //   colours    of "OrderStatusMsg" of pending orders: see kFinishedColor and the like.
    //   progress   of pending orders: dealt part of the quantity with two decimals, "33.33%"; empty when the
    //              quantity is not above 0.0001.
    //
    // `response` then has type "order", the table held now under the key, and both basket tables; `out` is the
    // record to publish: the same three tables, "InstanceID", "TaskID", "SnapshotID". False, and nothing
    // changed, when there is no request or all three are empty; counted as "basket_answer_without_key". (Also when the
    // key is that of a control entry.)
    bool SetBasketDetail(CUIData& response, const CUIData* accounts, CUIData& out);

    // Colours of "OrderStatusMsg", which read well on dark ground: done with; taken back; still at work.
    static constexpr std::string_view kFinishedColor = "0xFF9A9A9A";
    static constexpr std::string_view kCancelledColor = "0xFF5BA7E5";
    static constexpr std::string_view kActiveColor = "0xFFFF8C5A";
};

}  // namespace luadui
