#include "datalists/fund_list.h"

#include <map>
#include <vector>

#include "base/counters.h"
#include "datalists/number_cell.h"
#include "datalists/portfolio_mode.h"
#include "datalists/stock_available.h"

namespace luadui {
namespace {

constexpr std::string_view kUpdateUser = "update_user";

// A column of money, and the counter of what is no number there.
struct MoneyColumn {
    std::string_view name;
    const char* unreadable;
};
constexpr MoneyColumn kAvailable = {"AvailableValue", "fund_available_value_unreadable"};
constexpr MoneyColumn kProductAvailable = {"Inst_AvailableValue", "fund_inst_available_value_unreadable"};
constexpr MoneyColumn kCreditAvailable = {"AvailableValue", "credit_fund_available_value_unreadable"};
constexpr MoneyColumn kSellQuota = {"WT_RZRQ_RQXYZYLL", "credit_fund_sell_quota_unreadable"};
constexpr MoneyColumn kFinancingQuota = {"FinEnableQuota", "credit_fund_financing_quota_unreadable"};

const MoneyColumn& OrdinaryMoney(const CUIData& request) {
    return IsPortfolioMode(request) ? kProductAvailable : kAvailable;
}

const MoneyColumn& CreditMoney(const CUIData& request) {
    const int64_t type = request.GetDataLong("usertoken_type");
    if (type == 3 && DirectionOf(request) == kTradeSell) return kSellQuota;
    return type == 2 ? kCreditAvailable : kFinancingQuota;
}

void CountBuyable(const CTokenTableList& list, CUIData& request, const MoneyColumn& money,
                  std::string_view currency) {
    TRADE_INFO info = ReadTradeInfo(request);
    CDataSet tokens;
    ReadAccounts(request, tokens);
    StockAvailable available;
    for (const std::string& token : tokens) {
        CDataTable funds;
        if (!FindAccount(list, token, funds)) continue;
        const int row = FindFundRow(funds, currency);
        info.money = ReadNumber(funds.GetItemText(row, money.name), money.unreadable);
        available.Add(token, CTrade::CountAmountByMoney(info));
    }
    available.Write(request);
}

// The rows of a push by currency, the last one of each.
using CurrencyRows = std::map<std::string_view, int>;

CurrencyRows RowsOfCurrencies(const CDataTable& push) {
    const int column = push.FindColumn("Currency");
    CurrencyRows rows;
    for (int row = 0; row < push.GetRowNumber(); ++row) {
        const TextView currency = push.GetItemText(row, column);
        if (currency.empty()) {
            CCounters::Add("fund_row_without_currency");
        } else {
            rows[currency] = row;
        }
    }
    return rows;
}

bool TakeOver(CDataTable& held, int row, const CDataTable& push, int pushed,
              const std::vector<int>& columns) {
    bool changed = false;
    for (size_t i = 0; i < columns.size(); ++i) {
        const auto col = static_cast<int>(i);
        const TextView text = push.GetItemText(pushed, columns[i]);
        if (held.GetItemText(row, col) == text) continue;
        changed = held.SetItemText(row, col, text) || changed;
    }
    return changed;
}

}  // namespace

int FindFundRow(const CDataTable& funds, std::string_view currency) {
    const int column = currency.empty() ? -1 : funds.FindColumn("Currency");
    for (int row = 0; row < funds.GetRowNumber(); ++row) {
        const TextView held = funds.GetItemText(row, column);
        if (held.empty() || held == currency) return row;
    }
    return -1;
}

std::string_view MoneyColumnOf(const CUIData& request, bool isCredit) {
    return (isCredit ? CreditMoney(request) : OrdinaryMoney(request)).name;
}

CFundList::CFundList() : CTokenTableList("fund", MergesPushes()) {}

void CFundList::UpdateFundTable(const std::string& token, const CDataTable& table) {
    if (Holds(token)) {
        TakePush(token, table, kNewest, false);
    } else {
        TakeAnswer(token, table, kNewest);
    }
}

bool CFundList::CalcStockAvailable(CUIData& request) const {
    const std::string currency = request.GetDataString("currency");
    CountBuyable(*this, request, OrdinaryMoney(request), currency);
    return true;
}

bool CFundList::_merge(std::string_view, CDataTable& held, const CDataTable& push) {
    const CurrencyRows pushed = RowsOfCurrencies(push);
    std::vector<int> columns;  // of the push, by column held
    columns.reserve(static_cast<size_t>(held.GetColumnNumber()));
    for (int col = 0; col < held.GetColumnNumber(); ++col)
        columns.push_back(push.FindColumn(held.GetColumnProperty(col, "name")));

    const int currency = held.FindColumn("Currency");
    size_t known = 0;
    bool changed = false;
    for (int row = 0; row < held.GetRowNumber(); ++row) {
        const auto found = pushed.find(held.GetItemText(row, currency));
        if (found == pushed.end()) continue;
        ++known;
        changed = TakeOver(held, row, push, found->second, columns) || changed;
    }
    if (known < pushed.size()) CCounters::Add("fund_row_of_new_currency", pushed.size() - known);
    return changed;
}

void CFundList::_updated(std::string_view token) { SetData(kUpdateUser, token); }

CFundListCredit::CFundListCredit() : CTokenTableList("credit_fund") {}

bool CFundListCredit::CalcStockAvailable(CUIData& request) const {
    CountBuyable(*this, request, CreditMoney(request), {});
    return true;
}

void CFundListCredit::_updated(std::string_view token) { SetData(kUpdateUser, token); }

}  // namespace luadui
