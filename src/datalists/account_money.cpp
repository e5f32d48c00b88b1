#include "datalists/account_money.h"

#include <algorithm>

#include "base/counters.h"
#include "datalists/number_cell.h"

namespace luadui {
namespace {

constexpr size_t kMaxCurrencies = 64;
constexpr char kCurrencyDropped[] = "account_currency_dropped";

struct MoneyColumn {
    std::string_view name;
    const char* unreadable;  // counter
};
// In the order of MoneyCells::Column.
constexpr std::array<MoneyColumn, MoneyCells::kColumns> kFundColumns = {{
    {"Currency", nullptr},
    {"TotalAssets", "account_fund_total_assets_unreadable"},
    {"AvailableValue", "account_fund_available_unreadable"},
    {"MarketValue", "account_fund_market_value_unreadable"},
    {"FrozenValue", "account_fund_frozen_unreadable"},
    {"DayProfit", "account_fund_day_profit_unreadable"},
}};
constexpr MoneyColumn kInstAvailable = {"Inst_AvailableValue", "account_fund_inst_available_unreadable"};
constexpr MoneyColumn kPositionValue = {"MarketValue", "account_position_market_value_unreadable"};
constexpr MoneyColumn kPositionProfit = {"DayProfit", "account_position_day_profit_unreadable"};

// The text of a number as it stands; empty for what is none.
std::string NumberText(std::string_view text, const MoneyColumn& column) {
    return std::string(text.empty() || FindNumber(text, column.unreadable) ? text : std::string_view());
}

void AddTo(std::optional<Decimal>& sum, std::string_view text, bool hasColumn, const MoneyColumn& column) {
    const auto number = hasColumn ? FindNumber(text, column.unreadable) : std::nullopt;
    sum = sum && number ? std::optional(*sum + *number) : std::nullopt;
}

// With the two decimals of money unless it has more.
std::string MoneyText(Decimal number) {
    std::string text = number.Text(2);
    return Decimal::Parse(text) == number ? text : number.Text();
}

}  // namespace

void AccountMoney::SetFunds(const CDataTable& funds) {
    std::array<int, MoneyCells::kColumns> columns;
    for (size_t i = 0; i < columns.size(); ++i) columns[i] = funds.FindColumn(kFundColumns[i].name);
    const int instAvailable = funds.FindColumn(kInstAvailable.name);
    m_funds.clear();
    for (int row = 0; row < funds.GetRowNumber(); ++row) {
        const TableRow cells = funds.GetRow(row);
        const std::string_view currency = cells[columns[MoneyCells::kCurrency]];
        if (std::ranges::any_of(m_funds, [&](const Fund& fund) {
                return fund.cells.texts[MoneyCells::kCurrency] == currency;
            })) {
            CCounters::Add("account_fund_row_repeated");
            continue;
        }
        if (m_funds.size() == kMaxCurrencies) {
            CCounters::Add(kCurrencyDropped);
            continue;
        }
        Fund fund;
        fund.cells.texts[MoneyCells::kCurrency] = currency;
        for (size_t i = MoneyCells::kTotalAssets; i < columns.size(); ++i)
            fund.cells.texts[i] = NumberText(cells[columns[i]], kFundColumns[i]);
        fund.instAvailable = NumberText(cells[instAvailable], kInstAvailable);
        m_funds.push_back(std::move(fund));
    }
}

void AccountMoney::SetPositions(const CDataTable& positions) {
    const int currencyColumn = positions.FindColumn(kFundColumns[MoneyCells::kCurrency].name);
    const int valueColumn = positions.FindColumn(kPositionValue.name);
    const int profitColumn = positions.FindColumn(kPositionProfit.name);
    m_sums.clear();
    for (int row = 0; row < positions.GetRowNumber(); ++row) {
        const TableRow cells = positions.GetRow(row);
        const std::string_view currency = cells[currencyColumn];
        auto sum = std::ranges::find(m_sums, currency, &Sum::currency);
        if (sum == m_sums.end()) {
            if (m_sums.size() == kMaxCurrencies) {
                CCounters::Add(kCurrencyDropped);
                continue;
            }
            sum = m_sums.insert(sum, Sum{std::string(currency), Decimal(0), Decimal(0)});
        }
        AddTo(sum->marketValue, cells[valueColumn], valueColumn >= 0, kPositionValue);
        AddTo(sum->dayProfit, cells[profitColumn], profitColumn >= 0, kPositionProfit);
    }
}

std::vector<MoneyCells> AccountMoney::Lines(bool ofPortfolio) const {
    std::vector<MoneyCells> lines;
    for (const Fund& fund : m_funds) {
        lines.push_back(fund.cells);
        if (ofPortfolio && !fund.instAvailable.empty())
            lines.back().texts[MoneyCells::kAvailable] = fund.instAvailable;
    }
    for (const Sum& sum : m_sums) {
        const bool hasLine = std::ranges::any_of(
            lines, [&](const MoneyCells& line) { return _isIn(sum, line, &line == lines.data()); });
        if (!hasLine) lines.emplace_back().texts[MoneyCells::kCurrency] = sum.currency;
    }
    if (lines.empty()) lines.emplace_back();
    for (MoneyCells& line : lines) {
        const bool isFirst = &line == lines.data();
        std::string &value = line.texts[MoneyCells::kMarketValue],
                    &profit = line.texts[MoneyCells::kDayProfit];
        if (value.empty()) value = _total(line, isFirst, &Sum::marketValue);
        if (profit.empty()) profit = _total(line, isFirst, &Sum::dayProfit);
    }
    return lines;
}

// Empty when there are no such positions, or one of them is not known.
std::string AccountMoney::_total(const MoneyCells& line, bool isFirst,
                                 std::optional<Decimal> Sum::*value) const {
    std::optional<Decimal> total;
    for (const Sum& sum : m_sums) {
        if (!_isIn(sum, line, isFirst)) continue;
        if (!(sum.*value)) return {};
        total = total.value_or(0) + *(sum.*value);
    }
    return total ? MoneyText(*total) : std::string();
}

bool AccountMoney::_isIn(const Sum& sum, const MoneyCells& line, bool isFirst) const {
    return sum.currency == line.texts[MoneyCells::kCurrency] ||
           (isFirst && sum.currency.empty() && !m_funds.empty());
}

const AccountMoney* AccountMoneyBook::Find(std::string_view token) const {
    const auto found = m_money.find(token);
    return found == m_money.end() ? nullptr : &found->second.money;
}

AccountMoney& AccountMoneyBook::Of(std::string_view token, bool isKnown) {
    const auto found = m_money.find(token);
    if (found != m_money.end()) return found->second.money;
    if (!isKnown) m_strangers.emplace_back(token);
    Entry& entry = m_money[std::string(token)];
    entry.isStranger = !isKnown;
    _dropStrangers();
    return entry.money;
}

void AccountMoneyBook::_dropStrangers() {
    while (m_strangers.size() > kMaxStrangers) {
        CCounters::Add("account_money_dropped");
        m_money.erase(m_strangers.front());
        m_strangers.pop_front();
    }
}

}  // namespace luadui
