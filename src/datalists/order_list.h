// COrderList: the orders behind basket instructions.
#pragma once

#include <cstddef>
#include <cstdint>
#include <list>
#include <string>
#include <string_view>

#include "base/data_table.h"
#include "base/ui_data.h"
#include "datalists/basket_tables.h"

namespace luadui {

// A record with one table of orders for each key: instance, task and snapshot, one behind the other. Every snapshot
// has its own, so only those of the last kMaxTables keys that were answered are kept, with kMaxRows rows in all; what
// goes is counted as "basket_table_dropped".
//
// Threads: the UI thread.
class COrderList : public CUIData {
  public:
    static constexpr size_t kMaxTables = 200;
    static constexpr int kMaxRows = 1'000'000;  // further ones of a key are counted as "basket_row_dropped"
    // Pushes and answers widen no table beyond that.
    static constexpr int kMaxColumns = 4096;

    // Colours of "OrderStatusMsg", which read well on dark ground: done with; taken back; still at work.
    static constexpr std::string_view kFinishedColor = "0xFF9A9A9A";
    static constexpr std::string_view kCancelledColor = "0xFF5BA7E5";
    static constexpr std::string_view kActiveColor = "0xFFFF8C5A";

    COrderList();
    ~COrderList() override;
    COrderList(const COrderList&) = delete;
    COrderList& operator=(const COrderList&) = delete;
    const char* ClassName() const override;

    // Takes the answer to a query for the details of a basket. The key comes from "InstanceID", "TaskID" and
    // "SnapshotID" in the "Params" of the answer's "Request".
    //
    // Rows of "Table" are appended to those held under the key when these came with the same "UUID", since an
    // answer may come in parts, which add up. The answer to another query takes the place of all that is held:
    // who asks again wants to see how his orders stand now, not each order once more, nor orders that have
    // gone. Answers without "UUID" cannot be told apart, and count as parts. A row that is there already, also
    // one that the part itself has twice, takes the place of the earlier one. It is known by account
    // ("fund_token"), "PendingOrderID", "OrderID" and "ExecID"; one without any of these three ids is always
    // appended, as two orders may look the same.
    //
    // The JSON text "RawData" (or a JSON object there, or a list of these, of several parts) has two arrays, which
    // become tables of this answer alone: "DealOrderArray" "basket_deal_table", "PendingOrderArray" "basket_pending_table". Both tables are
    // always made. Their columns are those of the account, of the order, and, of pending orders, "TradeProgress",
    // "SecurityMarket", "ChangeRate" and "LastPrice"; other members are passed over.
    //   Accounts  are named as `accounts` knows them (the shared "account" record; may be null): "accountname",
    //             "accountid", "accountmark", "portfoliomsg" (the portfolio's name), "accountname_ex" (name and mark) and
    //             "portforlioname_ex" (names of portfolio and product). Of others the first two say that the
    //             account is not logged in, the rest is what the row says.
    //   Progress  is the dealt part of the quantity in percent with two decimals, "33.33%"; empty when the
    //             quantity is not above 0.0001. Numbers that cannot be read count as 0 and are counted
    //             ("basket_pending_order_qty_unreadable", "basket_pending_deal_volume_unreadable").
    // Broken text loses no more than the rows that are broken, and, where the text itself ends in the middle,
    // what would come after; it is counted (see base/json_rows.h) and both records get "incomplete" = true.
    //
    // Afterwards `response` has type "order", under the key all rows that are held now, and both basket tables;
    // `out` is the record to publish: the same, and the three ids. False, and nothing changed, when there is
    // no request or all three ids are empty, counted as "basket_answer_without_key".
    //
    // `age` orders answers (see CTokenTableList); 0: the newest. An answer that is older than what is held changes
    // nothing, its records then have what is held: counted as "older_answer_ignored".
    bool SetBasketDetail(CUIData& response, const CUIData* accounts, CUIData& out, uint64_t age = 0);
    // The key of an answer; empty when it has none.
    static std::string KeyOf(const CUIData& response);

  private:
    struct Held {
        std::string key;
        std::string query;  // the UUID of the request
        uint64_t age = 0;
        BasketTables tables = {};
        bool isWhole = true;  // the text of `tables`
        int rows = 0;         // of all three tables
    };
    // What is known of the key, now the newest one.
    Held& _held(const std::string& key);
    const Held& _take(const std::string& key, const CUIData& response, const CUIData* accounts, uint64_t age);
    void _makeRoom();

    std::list<Held> m_held;  // by the time of their last answer
};

}  // namespace luadui
