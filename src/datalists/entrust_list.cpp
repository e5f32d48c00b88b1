#include "datalists/entrust_list.h"

#include <algorithm>
#include <optional>

#include "base/counters.h"
#include "datalists/order_status.h"
#include "trade/decimal.h"

namespace luadui {
namespace {

// What an order never changes.
constexpr std::string_view kIdentity[] = {"SecurityID", "OrderDate"};

// Older servers call it otherwise.
int FindVolume(const CDataTable& table) {
    const int column = table.FindColumn("DealVolume");
    return column >= 0 ? column : table.FindColumn("TradeVolume");
}

}  // namespace

EntrustTables::EntrustTables(std::string_view kind, std::string_view mergedKind, const char* volumeUnreadable)
    : CTokenTableList(kind, mergedKind, "OrderID"), m_volumeUnreadable(volumeUnreadable) {}

bool EntrustTables::_acceptsRow(RowChange& change) const {
    const auto& [held, row, push, pushed, keeps] = change;
    const int pushedStatus = push.FindColumn("OrderStatus");
    if (pushedStatus >= 0 && OrderStateOf(held.GetItemText(row, "OrderStatus")) == OrderState::kFinal &&
        OrderStateOf(push.GetItemText(pushed, pushedStatus)) != OrderState::kFinal)
        return false;

    const int pushedVolume = FindVolume(push), heldVolume = FindVolume(held);
    if (pushedVolume < 0 || heldVolume < 0) return true;
    const TextView after = push.GetItemText(pushed, pushedVolume), before = held.GetItemText(row, heldVolume);
    if (after == before) return true;
    const std::optional<Decimal> volume = Decimal::Parse(after);
    if (!volume) {
        CCounters::Add(m_volumeUnreadable);
        change.keeps = heldVolume;
        return true;
    }
    return *volume >= Decimal::Parse(before).value_or(Decimal());
}

bool EntrustTables::_isOther(const RowChange& change) const {
    return std::ranges::any_of(kIdentity, [&](std::string_view column) {
        const TextView before = change.held.GetItemText(change.row, column),
                       after = change.push.GetItemText(change.pushed, column);
        return !before.empty() && !after.empty() && before != after;
    });
}

CEntrustList::CEntrustList() : EntrustTables("entrust", "entrustmulti", "entrust_deal_volume_unreadable") {}

CEntrustListCredit::CEntrustListCredit()
    : EntrustTables("entrustcredit", "entrustmulticredit", "entrustcredit_deal_volume_unreadable") {}

CEntrustListGGT::CEntrustListGGT()
    : EntrustTables("entrust_ggt", "entrust_ggt", "entrust_ggt_deal_volume_unreadable") {}

}  // namespace luadui
