#include "datalists/basket_tables.h"

#include <algorithm>
#include <array>
#include <span>
#include <string>
#include <vector>

#include "base/json_rows.h"
#include "base/text.h"
#include "datalists/number_cell.h"
#include "datalists/order_list.h"
#include "trade/decimal.h"

namespace luadui {
namespace {

enum Column {
    kToken,
    kName,
    kId,
    kMark,
    kPortfolio,
    kNameEx,
    kPortfolioEx,
    kOrderQty = 11,
    kDealVolume,
    kStatusMsg = 15,
    kTradeVolume = 19,
    kDealColumns = 25,
    kTradeProgress = kDealColumns,
    kSecurityMarket,
    kChangeRate,
    kLastPrice,
    kColumns,
};

constexpr std::array<std::string_view, kColumns> kNames = {
    "fund_token", "accountname", "accountid", "accountmark", "portfoliomsg", "accountname_ex",
    "portforlioname_ex",
    // of the order
    "SecurityID", "MarketID", "Side", "SideName", "OrderQty", "DealVolume", "OrderPrice", "OrderStatus",
    "OrderStatusMsg", "CreateTime", "OrderTime", "PendingOrderID", "TradeVolume", "AvgPx", "ExecID",
    "OrderID", "TransactTime", "BusinessAmount",
    // of a pending order, which no server sends
    "TradeProgress", "SecurityMarket", "ChangeRate", "LastPrice"};
static_assert(kNames[kOrderQty] == "OrderQty" && kNames[kDealVolume] == "DealVolume" &&
              kNames[kStatusMsg] == "OrderStatusMsg" && kNames[kTradeVolume] == "TradeVolume" &&
              kNames[kTradeProgress] == "TradeProgress");

constexpr std::string_view kUnknown = "--";
constexpr std::array<std::string_view, 2> kArrays = {"DealOrderArray", "PendingOrderArray"};

using Row = std::array<std::string_view, kColumns>;

CDataTable WithColumns(int count) {
    CDataTable table;
    for (int col = 0; col < count; ++col) table.AddColumn(kNames[static_cast<size_t>(col)]);
    return table;
}

// Puts the members of rows under their columns. Rows of one answer have the same members, so each is looked for
// only where the row before had another one.
class ColumnFinder {
  public:
    Row Sorted(std::span<const JsonCell> cells) {
        Row row;
        m_members.resize(std::max(m_members.size(), cells.size()));
        for (size_t i = 0; i < cells.size(); ++i) {
            Member& member = m_members[i];
            if (member.name != cells[i].name) member = {std::string(cells[i].name), ColumnOf(cells[i].name)};
            if (member.column < kDealColumns) row[member.column] = cells[i].text;
        }
        return row;
    }

  private:
    struct Member {
        std::string name;
        size_t column = kColumns;
    };
    static size_t ColumnOf(std::string_view name) {
        return static_cast<size_t>(std::ranges::find(kNames, name) - kNames.begin());
    }

    std::vector<Member> m_members;
};

// In percent; empty without a quantity.
std::string Progress(const Row& row) {
    const Decimal quantity = ReadNumber(row[kOrderQty], "basket_pending_order_qty_unreadable");
    if (quantity <= Decimal::Of(1, 4)) return {};
    const std::string_view dealt = row[kDealVolume].empty() ? row[kTradeVolume] : row[kDealVolume];
    const Decimal volume = ReadNumber(dealt, "basket_pending_deal_volume_unreadable");
    return (volume * 100 / quantity).Text(2) + "%";
}

// Makes the rows of both tables.
class RowWriter {
  public:
    RowWriter(BasketTables& tables, const AccountNames& accounts) : m_tables(tables), m_accounts(accounts) {}

    void Write(size_t array, std::span<const JsonCell> cells) {
        Row row = m_columns[array].Sorted(cells);
        _nameAccount(row);
        if (array == 0) return _append(m_tables.deals, row, kDealColumns);
        const std::string progress = Progress(row);
        row[kTradeProgress] = progress;
        row[kSecurityMarket] = row[kChangeRate] = row[kLastPrice] = kUnknown;
        _append(m_tables.pending, row, kColumns);
        const int last = m_tables.pending.GetRowNumber() - 1;
        m_tables.pending.SetItemTextColor(last, kStatusMsg, _colorOf(row[kStatusMsg]));
    }

  private:
    void _nameAccount(Row& row) {
        const AccountName* account = row[kToken].empty() ? nullptr : m_accounts.Find(row[kToken]);
        if (!account) {
            row[kName] = row[kId] = m_notLoggedIn;
            return;
        }
        m_nameEx = account->mark.empty() ? account->name : account->name + " " + account->mark;
        m_portfolioEx = account->portfolio;
        if (!account->product.empty() && !m_portfolioEx.empty()) m_portfolioEx += " " + account->product;
        row[kName] = account->name;
        row[kId] = account->id;
        row[kMark] = account->mark;
        row[kPortfolio] = account->portfolio;
        row[kNameEx] = m_nameEx;
        row[kPortfolioEx] = m_portfolioEx;
    }

    std::string_view _colorOf(std::string_view status) const {
        if (ContainsText(status, m_finished)) return COrderList::kFinishedColor;
        if (ContainsText(status, m_cancelled)) return COrderList::kCancelledColor;
        return COrderList::kActiveColor;
    }

    static void _append(CDataTable& table, const Row& row, int columns) {
        const int at = table.AppendRow();
        for (int col = 0; col < columns; ++col) {
            const std::string_view text = row[static_cast<size_t>(col)];
            if (!text.empty()) table.SetItemText(at, col, text);
        }
    }

    BasketTables& m_tables;
    const AccountNames& m_accounts;
    ColumnFinder m_columns[kArrays.size()];
    std::string m_nameEx, m_portfolioEx;  // of the row that is written
    const std::string m_notLoggedIn = Gbk("未登录"), m_finished = Gbk("结束"), m_cancelled = Gbk("撤单");
};

}  // namespace

BasketTables::BasketTables() {
    static const auto* const emptyDeals = new CDataTable(WithColumns(kDealColumns));
    static const auto* const emptyPending = new CDataTable(WithColumns(kColumns));
    deals = *emptyDeals;
    pending = *emptyPending;
}

bool BasketTables::Read(std::string_view json, const AccountNames& accounts) {
    if (TrimText(json).empty()) return true;
    RowWriter writer(*this, accounts);
    return ReadJsonRows(json, kArrays,
                        [&writer](size_t array, std::span<const JsonCell> row) { writer.Write(array, row); });
}

}  // namespace luadui
