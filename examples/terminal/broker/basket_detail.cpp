// What became of a basket: the answer lists the orders and the deals of one of its tasks.
#include <string>
#include <vector>

#include "broker/account_tables.h"

namespace terminal {
namespace {

using luadui::CDataTable;
using luadui::CJsonObject;

template <class Item>
std::vector<size_t> RowsOf(const std::vector<Item>& items, std::string_view instance, std::string_view task) {
    std::vector<size_t> rows;
    for (size_t row = 0; row < items.size(); ++row)
        if (items[row].instance == instance && items[row].task == task) rows.push_back(row);
    return rows;
}

// A table's rows as objects. Two columns have other names here.
void AppendRows(const CDataTable& table, const char* array, CJsonObject& json) {
    for (int row = 0; row < table.GetRowNumber(); ++row) {
        CJsonObject object;
        object.Set("PendingOrderID", table.GetItemText(row, "OrderID"));
        for (int col = 0; col < table.GetColumnNumber(); ++col) {
            std::string_view name = table.GetColumnProperty(col, "name");
            if (name == "Market") name = "MarketID";
            if (name == "TradePrice") name = "AvgPx";
            object.Set(name, table.GetItemText(row, col));
        }
        json.Append(array, object);
    }
}

}  // namespace

BasketDetail BasketDetailOf(const AccountBook& book, std::string_view instance, std::string_view task) {
    BasketDetail detail;
    if (instance.empty()) return detail;
    for (const Account& account : book.Accounts()) {
        const CDataTable orders = OrderTable(account, RowsOf(account.orders, instance, task));
        const CDataTable deals = DealTable(account, RowsOf(account.deals, instance, task));
        AppendRows(orders, "PendingOrderArray", detail.json);
        AppendRows(deals, "DealOrderArray", detail.json);
        if (detail.orders.GetColumnNumber() == 0) detail.orders.CopyHeader(orders);
        detail.orders.InsertTable(orders);
    }
    return detail;
}

}  // namespace terminal
