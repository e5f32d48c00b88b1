#include "datalists/stock_available.h"

#include <algorithm>

#include "base/counters.h"
#include "datalists/number_cell.h"

namespace luadui {
namespace {

// Pages send prices as numbers or as text.
Decimal ReadNumber(const CUIData& request, std::string_view key, const char* unreadable) {
    double number = 0;
    const ValueView value = request.GetDataView(key);
    if (value.Kind() == kDataString) return ReadNumber(value.AsText(), unreadable);
    const auto decimal = value.Get(number) ? Decimal::FromDouble(number) : std::nullopt;
    if (!decimal) CCounters::Add(unreadable);
    return decimal.value_or(Decimal());
}

}  // namespace

void StockAvailable::Add(const std::string& token, Decimal quantity) {
    m_total += quantity;
    m_amounts.SetData(token, m_amounts.GetDataDouble(token) + quantity.ToDouble());
}

void StockAvailable::Write(CUIData& request) const {
    request.SetData("stock_available", m_total.Text(0));
    request.SetData("multi_account_amount", m_amounts);
}

bool FindAccount(const CTokenTableList& list, std::string_view token, CDataTable& out) {
    if (list.GetTable(token, out)) return true;
    CCounters::Add("stock_available_account_unknown");
    return false;
}

int64_t ReadUnit(const CUIData& request, std::string_view code, std::string_view market) {
    int64_t unit = request.GetDataLong("stock_unit");
    if (unit < 1 && CTrade::GetStockType(code, market) == StockType::kStockConnect)
        unit = CTrade::GetBoardLot(code, market);
    return std::max<int64_t>(1, unit);
}

TRADE_INFO ReadTradeInfo(const CUIData& request) {
    const TextView code = request.GetDataText("stock_code"), market = request.GetDataText("stock_marketid");
    TRADE_INFO info;
    info.stockType = CTrade::GetStockType(code, market);
    info.price = ReadNumber(request, "stock_price", "request_stock_price_unreadable");
    info.direction = DirectionOf(request);
    info.unit = ReadUnit(request, code, market);
    if (request.Has("commission_rate"))
        info.commissionRate = ReadNumber(request, "commission_rate", "request_commission_rate_unreadable");
    return info;
}

}  // namespace luadui
