// CMessageCenterList: what the message center of the terminal shows.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

#include "base/base_object.h"
#include "base/data_table.h"
#include "base/text_map.h"
#include "base/ui_data.h"
#include "datalists/list_owner.h"

namespace luadui {

// Turns pushes and failed answers into messages for the user: tables with a row for each, published as records
// of the kind "messagecenter" with the table under that name. The list's own record keeps the last kMaxHistory
// rows under "messagecenter", with the columns of all of them; a message with the LocalID of an earlier one takes
// its place there, as it does in pages.
//
// Columns: "LocalID", "MsgTime" (local, "2024/01/31 09:30"), "MsgType", "Text", "OrderMessage",
//          "MsgTypeContents", "TextColor" (ARGB; empty: the page's own); those of orders: see
//          datalists/order_messages.h.
// Threads: the UI thread.
class CMessageCenterList : public CUIData, public CBaseObject {
  public:
    static constexpr int kMaxHistory = 1000;
    static constexpr int kMaxHistoryColumns = 256;  // further ones are counted as "message_column_dropped"
    static constexpr size_t kMaxText = 512;         // bytes of a server's words that a message repeats

    // Registers with the owner (which may be null) for pushes of risks and orders.
    explicit CMessageCenterList(ListOwner* owner);
    ~CMessageCenterList() override;
    CMessageCenterList(const CMessageCenterList&) = delete;
    CMessageCenterList& operator=(const CMessageCenterList&) = delete;
    const char* ClassName() const override;

    // Whether a "messagecenter" record is about orders or risks, and not about a request that failed.
    static bool IsOfOrders(const CUIData& record);

    // Tells the user that a request failed. `response` is the answer with its "Request"; `accounts` and
    // `creditAccounts` are the "account" and "account_xy" records, in which the account's name is looked up
    // (in "PB_MODE" with that of the portfolio); `user` goes into the record as "user". Neither tokens nor
    // passwords get into the message. The owner's page may close during the call, and this list go with it.
    void AddErrorMessage(const CUIData& response, const CUIData& accounts, const CUIData& creditAccounts,
                         const std::string& user);

    // Tells the user how orders stand. `push` is what is known of a push of orders: "Table" with the order rows,
    // and, as far as it has them, "InstanceID", "TaskID", "LocalID", "from" (the topic), "account", "action",
    // "inst_type", "msg" and "data" (a JSON object or its text). Rows that are worth a message go out as one table,
    // with handle GetHandle(); a row that comes again with the same status has the same "LocalID". The owner's page
    // may close during the call, and this list go with it.
    void AddOrderMessages(const CUIData& push);

    // News that the list registered for: `data` is a record of type "str_subkey_risk_push", or of one of the kinds of
    // order pushes, with rows under its type or "Table". Anything else is passed over.
    void OnNotify(void* data) override;

  private:
    void _addRisk(const CDataTable& push);
    void _publish(const CDataTable& messages, std::string_view user, int handle);
    void _remember(const CDataTable& messages);
    void _forgetOldest(CDataTable& history);

    ListOwner* const m_owner;  // not owned; null: messages are only kept

    // Where in the history a LocalID is: the number of its row, counted from the first message that there ever was.
    TextMap<int64_t> m_places;
    int64_t m_forgotten = 0;  // rows before those of the history
};

}  // namespace luadui
