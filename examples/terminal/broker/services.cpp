#include "broker/services.h"

#include <algorithm>
#include <iterator>

#include "base/json_object.h"
#include "broker/account_tables.h"

namespace terminal {
namespace {

using luadui::CDataTable;
using luadui::CJsonObject;
using luadui::CUIData;

constexpr int kOfPage = 2001;
constexpr char kHolidays[] = "20260101-20260103;20261001-20261007;20270101";

CUIData ParamsOf(const CUIData& request) {
    CUIData params;
    request.GetData("Params", params);
    return params;
}

template <CDataTable (*kTable)(const Account&)>
bool ServeTable(const CUIData&, Exchange&, const Account* account, CUIData& answer, std::string&) {
    answer.SetData("Table", kTable(*account));
    return true;
}

template <CDataTable (*kTable)(const AccountBook&)>
bool ServeList(const CUIData&, Exchange& exchange, const Account*, CUIData& answer, std::string&) {
    answer.SetData("Table", kTable(exchange.Book()));
    return true;
}

bool ServeHolidays(const CUIData&, Exchange&, const Account*, CUIData& answer, std::string&) {
    CJsonObject holidays;
    holidays.Set("holidays", kHolidays);
    answer.SetData("JsonData", holidays);
    return true;
}

bool ServeBasketDetail(const CUIData& request, Exchange& exchange, const Account*, CUIData& answer,
                       std::string&) {
    const CUIData params = ParamsOf(request);
    const BasketDetail detail =
        BasketDetailOf(exchange.Book(), params.GetDataText("InstanceID"), params.GetDataText("TaskID"));
    answer.SetData("Table", detail.orders);
    answer.SetData("RawData", detail.json.ToText());
    return true;
}

void SetOrder(CUIData& answer, const std::string& id, const std::string& localId) {
    CJsonObject order;
    order.Set("retcode", 0);
    order.Set("OrderID", id);
    order.Set("LocalID", localId);
    answer.SetData("JsonData", order);
}

// "entrust_price" may be missing: the last price.
bool CreateOrder(const CUIData& request, Exchange& exchange, const Account* account, CUIData& answer,
                 std::string& error) {
    const CUIData params = ParamsOf(request);
    Ticket ticket{.code = params.GetDataString("stock_code"),
                  .volume = params.GetDataLong("entrust_amount"),
                  .isSale = params.GetDataText("entrust_type") == "sell",
                  .localId = params.GetDataString("LocalID"),
                  .instance = params.GetDataString("InstanceID"),
                  .task = params.GetDataString("TaskID")};
    if (const std::string price = params.GetDataString("entrust_price"); !price.empty()) {
        ticket.price = ParsePrice(price);
        if (!ticket.price) {
            error = "the price is no price";
            return false;
        }
    }
    const Order* const order = exchange.Accept(account->fundToken, ticket, error);
    if (order) SetOrder(answer, order->id, order->localId);
    return order != nullptr;
}

bool CancelOrder(const CUIData& request, Exchange& exchange, const Account* account, CUIData& answer,
                 std::string& error) {
    const std::string id = ParamsOf(request).GetDataString("OrderID");
    if (!exchange.Cancel(account->fundToken, id, error)) return false;
    SetOrder(answer, id, {});
    return true;
}

// A new service is a row here and a function.
constexpr Service kServices[] = {
    {1034, 2007, false, false, ServeList<AccountListTable>},
    {1035, 2008, false, false, ServeList<GroupListTable>},
    {1099, kOfPage, false, false, ServeHolidays},
    {1101, 2006, true, false, CreateOrder},
    {1151, kOfPage, true, false, CancelOrder},
    {1201, 2002, true, true, ServeTable<FundTable>},
    {1202, 2003, true, true, ServeTable<PositionTable>},
    {1203, 2004, true, true, ServeTable<DealTable>},
    {1204, 2005, true, true, ServeTable<OrderTable>},
    {1205, 2002, true, true, ServeTable<FundTable>},
    {1206, 2003, true, true, ServeTable<PositionTable>},
    {1207, 2004, true, true, ServeTable<DealTable>},
    {1208, 2005, true, true, ServeTable<OrderTable>},
    {1228, kOfPage, false, false, ServeBasketDetail},
    {1250, kOfPage, true, true, ServeTable<CashFlowTable>},
    {1466, kOfPage, false, false, nullptr},  // log records
    {1903, kOfPage, false, false, nullptr},  // accounts that came online, as the client sees it
    {131078, kOfPage, false, false, ServeList<RateTable>},
    {131087, kOfPage, false, false, ServeList<PriceSpreadTable>},
};

}  // namespace

const Service* FindService(int type) {
    const auto* const found = std::ranges::find(kServices, type, &Service::type);
    return found == std::end(kServices) ? nullptr : found;
}

std::span<const Service> Services() { return kServices; }

}  // namespace terminal
