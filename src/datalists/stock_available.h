// What the lists of funds and positions have in common when they tell how much may be bought or sold.
#pragma once

#include <string_view>

#include "base/ui_data.h"
#include "datalists/token_table_list.h"
#include "trade/trade.h"

namespace luadui {

// Quantities by account, and their sum.
class StockAvailable {
  public:
    void Add(const std::string& token, Decimal quantity);
    // Sets "stock_available", the sum as text without decimals, and "multi_account_amount", the record of
    // quantities.
    void Write(CUIData& request) const;

  private:
    CUIData m_amounts;
    Decimal m_total;
};

// The accounts of a request, "fund_token". False, and `out` unchanged, when there is no such set.
inline bool ReadAccounts(const CUIData& request, CDataSet& out) { return request.GetData("fund_token", out); }
// The account's table; false, counted as "stock_available_account_unknown", when the list has none.
bool FindAccount(const CTokenTableList& list, std::string_view token, CDataTable& out);

// "entrust_type": kTradeSell for "sell", else kTradeBuy.
inline int DirectionOf(const CUIData& request) {
    return request.GetDataText("entrust_type") == "sell" ? kTradeSell : kTradeBuy;
}

// "stock_unit" of a request, at least 1; without it Stock Connect's board lot of the security.
int64_t ReadUnit(const CUIData& request, std::string_view code, std::string_view market);
// What is asked for, but for the money.
TRADE_INFO ReadTradeInfo(const CUIData& request);

}  // namespace luadui
