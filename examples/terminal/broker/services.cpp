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

template <CDataTable (*kTable)(const Account&)>
bool ServeTable(const CUIData&, AccountBook&, const Account* account, CUIData& answer, std::string&) {
    answer.SetData("Table", kTable(*account));
    return true;
}

template <CDataTable (*kTable)(const AccountBook&)>
bool ServeList(const CUIData&, AccountBook& book, const Account*, CUIData& answer, std::string&) {
    answer.SetData("Table", kTable(book));
    return true;
}

bool ServeHolidays(const CUIData&, AccountBook&, const Account*, CUIData& answer, std::string&) {
    CJsonObject holidays;
    holidays.Set("holidays", kHolidays);
    answer.SetData("JsonData", holidays);
    return true;
}

bool CreateOrder(const CUIData& request, AccountBook& book, const Account* account, CUIData& answer,
                 std::string& error) {
    CUIData params;
    request.GetData("Params", params);
    const Shares volume = params.GetDataLong("entrust_amount");
    const bool isSale = params.GetDataText("entrust_type") == "sell";
    if (volume <= 0) {
        error = "the volume is out of range";
        return false;
    }
    const std::string code = params.GetDataString("stock_code");
    if (!book.Trade(account->fundToken, code, isSale ? -volume : volume, error)) return false;
    CJsonObject created;
    created.Set("retcode", 0);
    created.Set("OrderID", account->orders.back().id);
    answer.SetData("JsonData", created);
    return true;
}

// A new service is a row here and a function.
constexpr Service kServices[] = {
    {1034, 2007, false, false, ServeList<AccountListTable>},
    {1035, 2008, false, false, ServeList<GroupListTable>},
    {1099, kOfPage, false, false, ServeHolidays},
    {1101, 2006, true, false, CreateOrder},
    {1201, 2002, true, true, ServeTable<FundTable>},
    {1202, 2003, true, true, ServeTable<PositionTable>},
    {1203, 2004, true, true, ServeTable<DealTable>},
    {1204, 2005, true, true, ServeTable<OrderTable>},
    {1250, kOfPage, true, true, ServeTable<CashFlowTable>},
    {1466, kOfPage, false, false, nullptr},  // log records
    {1903, kOfPage, false, false, nullptr},  // accounts that came online, as the client sees it
};

constexpr News kTradeNews[] = {
    {"Entrust|", LastOrderTable},
    {"Trade|", LastDealTable},
    {"Fund|", FundTable},
    {"Position|", PositionTable},
};

}  // namespace

const Service* FindService(int type) {
    const auto* const found = std::ranges::find(kServices, type, &Service::type);
    return found == std::end(kServices) ? nullptr : found;
}

std::span<const Service> Services() { return kServices; }
std::span<const News> TradeNews() { return kTradeNews; }

}  // namespace terminal
