#include "datalists/order_messages.h"

#include <algorithm>
#include <array>
#include <cstdio>
#include <vector>

#include "base/counters.h"
#include "base/json_object.h"
#include "base/text.h"
#include "codedata/data_manager.h"
#include "datalists/field_text.h"
#include "platform/win32.h"

namespace luadui {
namespace {

enum Kind { kBasket, kMulti, kNormal, kAlgorithm, kConditional, kGrid };

struct OrderKind {
    std::string_view shown;
    const char* localId;  // the member of "data" with the local id; null: that of the push counts
};
// By Kind.
constexpr std::array kOrderKinds = std::to_array<OrderKind>({{"篮子交易", nullptr},
                                                             {"多户交易", nullptr},
                                                             {"单户交易", nullptr},
                                                             {"算法交易", "localid"},
                                                             {"条件交易", "localid"},
                                                             {"网格交易", "LocalID"}});
static_assert(kOrderKinds.size() == kGrid + 1);

constexpr char kServerWords[] = "OrderStatusMsg";  // the column with what the server says about the status

struct NamedKind {
    std::string_view name;
    Kind kind;
};
// Orders of a rebalanced basket (2) are shown like those of a new one.
constexpr NamedKind kInstructionTypes[] = {{"0", kBasket}, {"1", kMulti}, {"2", kBasket}};
constexpr NamedKind kActions[] = {{"grid_order", kGrid}, {"condition_order", kConditional}};

struct StatusMessage {
    std::string status;
    std::string type;
    std::string text;  // empty: what the server says
    bool hasStatusInId;
};

const StatusMessage* MessageOf(std::string_view status) {
    using Messages = std::array<StatusMessage, 4>;
    static const auto* const messages =
        new Messages{{{Gbk("废单"), Gbk("废单提示"), "", false},
                      {Gbk("未成交"), Gbk("委托回报"), Gbk("委托成功"), true},
                      {Gbk("部分成交"), Gbk("成交回报"), Gbk("部分成交"), true},
                      {Gbk("全部成交"), Gbk("成交回报"), Gbk("全部成交"), true}}};
    const auto found = std::ranges::find(*messages, status, &StatusMessage::status);
    return found == messages->end() ? nullptr : &*found;
}

template <size_t Size>
const NamedKind* Find(const NamedKind (&kinds)[Size], std::string_view name) {
    const auto found = std::ranges::find(kinds, name, &NamedKind::name);
    return found == std::end(kinds) ? nullptr : found;
}

// The type of the instruction tells baskets. Where it is not sent, the topic does, or a task of an instance, which
// single orders do not have; unless the action says that the instance is one of another kind.
Kind KindOf(const CUIData& push) {
    if (const NamedKind* type = Find(kInstructionTypes, FirstText(push, {"inst_type"}))) return type->kind;
    if (const NamedKind* action = Find(kActions, push.GetDataText("action"))) return action->kind;
    const TextView topic = push.GetDataText("from");
    const bool isTask = !FirstText(push, {"InstanceID"}).empty() && !FirstText(push, {"TaskID"}).empty();
    if (isTask || ContainsText(topic, "basket")) return kBasket;
    return topic == "topic.oms.order" ? kNormal : kAlgorithm;
}

CJsonObject DataOf(const CUIData& push) {
    CJsonObject data;
    const std::string_view text = push.GetDataText("data");
    if (!push.GetData("data", data) && !text.empty()) data.Parse(text);
    return data;
}

std::string LocalIdOf(const CUIData& push, const OrderKind& kind) {
    std::string id = kind.localId ? FirstText(DataOf(push), {kind.localId}) : std::string();
    return id.empty() ? FirstText(push, {"LocalID"}) : id;
}

std::string SideName(const CDataTable& table, int row) {
    const TextView name = table.GetItemText(row, "SideName"), side = table.GetItemText(row, "Side");
    if (!name.empty() || side.empty()) return name;
    return side == "0" ? GbkText<"买入">() : GbkText<"卖出">();
}

// Writes the messages into the cells of a table of pushed orders.
class Writer {
  public:
    Writer(const CUIData& push, bool isSingle, CDataTable& table)
        : m_push(push),
          m_table(table),
          m_kind(kOrderKinds[KindOf(push)]),
          m_shown(Gbk(m_kind.shown)),
          m_localId(LocalIdOf(push, m_kind)),
          m_account(FirstText(push, {"account"})),
          m_isSingle(isSingle) {
        for (const char* name : {"InstrctionType", "OrderMessage", "NoteMessage", "MsgTime", "MsgType",
                                 "MsgTypeContents", "LocalID", "Text"}) {
            if (m_table.FindColumn(name) < 0) m_table.AddColumn(name);
        }
    }

    void Write(int row, const StatusMessage& message) {
        _set(row, "InstrctionType", m_shown);
        _set(row, "OrderMessage", _orderText(row));
        _set(row, "NoteMessage", _note(row));
        _set(row, "MsgTime", m_time);
        _set(row, "MsgType", message.type);
        _set(row, "MsgTypeContents", message.type);
        _set(row, "LocalID", _localId(row) + (message.hasStatusInId ? "_" + message.status : ""));
        _set(row, "Text", message.text.empty() ? _serverText(row) : message.text);
    }

  private:
    std::string _cell(int row, const char* column) const { return m_table.GetItemText(row, column); }
    void _set(int row, const char* column, std::string_view text) { m_table.SetItemText(row, column, text); }

    std::string _orderText(int row) const {
        const std::string orderId = _cell(row, "OrderID"), side = SideName(m_table, row);
        std::string market = _cell(row, "MarketID");
        if (market.empty()) market = _cell(row, "Market");
        const std::string text =
            OrderText({_cell(row, "SecurityID"), market, _cell(row, "OrderPrice"), m_account, side,
                       _cell(row, "OrderQty"), _cell(row, "SecurityName")});
        return orderId.empty() ? text : text + GbkText<"，合同编号">() + orderId;
    }

    // Whose order it is, of which instruction, and what the server says about it.
    std::string _note(int row) const {
        std::string note = m_account;
        const std::string instance = FirstText(m_push, {"InstanceID"});
        const std::string status = _cell(row, kServerWords);
        for (const std::string& part : {instance.empty() ? "" : GbkText<"指令">() + instance,
                                        status.empty() ? _cell(row, "OrderStatus") : status}) {
            if (!note.empty() && !part.empty()) note += GbkText<"，">();
            note += part;
        }
        return note;
    }

    std::string _serverText(int row) const {
        const std::string said = m_push.GetDataString("msg");
        return said.empty() || &m_kind != &kOrderKinds[kNormal] ? _cell(row, kServerWords) : said;
    }

    std::string _localId(int row) const {
        if (m_isSingle && !m_localId.empty()) return m_localId;
        const std::string own = _cell(row, "LocalID"), token = _cell(row, "fund_token"),
                          orderId = _cell(row, "OrderID");
        if (!own.empty()) return own;
        std::string id = m_localId.empty() ? m_account : m_localId;
        if ((!m_isSingle || id.empty()) && !token.empty()) id += "_" + token;
        return id + "_" + (orderId.empty() ? LongText(NextMessageNumber()) : orderId);
    }

    const CUIData& m_push;
    CDataTable& m_table;
    const OrderKind& m_kind;
    const std::string m_shown, m_localId, m_account;
    const bool m_isSingle;
    const std::string m_time = MessageTimeText();
};

struct MessageRow {
    int row;
    const StatusMessage* message;
};

std::vector<MessageRow> RowsWorthAMessage(const CDataTable& orders) {
    const int statuses = orders.FindColumn("OrderStatus");
    std::vector<MessageRow> rows;
    for (int row = 0; row < orders.GetRowNumber(); ++row) {
        if (const StatusMessage* message = MessageOf(orders.GetItemText(row, statuses)))
            rows.push_back({row, message});
    }
    const size_t dropped = rows.size() - std::min(rows.size(), kMaxMessages);
    if (dropped != 0) CCounters::Add("order_message_dropped", dropped);
    rows.erase(rows.begin(), rows.begin() + static_cast<ptrdiff_t>(dropped));
    return rows;
}

}  // namespace

std::string MessageTimeText() {
    SYSTEMTIME now;
    GetLocalTime(&now);
    char text[32];
    std::snprintf(text, sizeof text, "%04d/%02d/%02d %02d:%02d", now.wYear, now.wMonth, now.wDay, now.wHour,
                  now.wMinute);
    return text;
}

int64_t NextMessageNumber() {
    static int64_t last = 0;
    return ++last;
}

std::string OrderText(const OrderWords& order) {
    std::string text(order.name);
    if (text.empty()) text = CDataManager::SecurityName(order.code, order.market);
    text.append(GbkText<"（">()).append(order.code).append(GbkText<"），">()).append(order.price);
    text.append(GbkText<"元，">()).append(order.account).append(order.side).append(order.quantity);
    return text.append(GbkText<"股">());
}

CDataTable OrderMessages(const CUIData& push) {
    CDataTable orders, messages;
    push.GetData("Table", orders);
    const std::vector<MessageRow> rows = RowsWorthAMessage(orders);
    if (rows.empty()) return messages;
    messages.CopyHeader(orders);
    Writer writer(push, orders.GetRowNumber() == 1, messages);
    for (const auto& [row, message] : rows) {
        messages.InsertRow(orders, row);
        writer.Write(messages.GetRowNumber() - 1, *message);
    }
    return messages;
}

}  // namespace luadui
