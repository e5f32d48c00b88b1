// What accounts are worth: their funds by currency, joined with the values of their positions.
#pragma once

#include <algorithm>
#include <array>
#include <deque>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "base/data_table.h"
#include "base/text_map.h"
#include "trade/decimal.h"

namespace luadui {

// The money of an account in one currency as a row shows it; an empty text is not known.
struct MoneyCells {
    enum Column { kCurrency, kTotalAssets, kAvailable, kMarketValue, kFrozen, kDayProfit, kColumns };

    std::array<std::string, kColumns> texts;
    friend bool operator==(const MoneyCells&, const MoneyCells&) = default;
};

// The money of one account or portfolio.
//
// Funds are shown as the server wrote them. Market value and profit of the day are the fund's own or else the exact
// sum over the positions in that currency; positions that name none are in the account's first currency. A sum that
// lacks a position's value would be a wrong one, so it is left empty.
//
// Bad input: what is no number is left empty and counted by table and column ("account_fund_frozen_unreadable",
//            "account_position_day_profit_unreadable"); of funds in the same currency the first counts, and
//            currencies beyond 64 are left out, both counted.
class AccountMoney {
  public:
    // Rows with "Currency", "TotalAssets", "AvailableValue", "Inst_AvailableValue", "MarketValue", "FrozenValue" and
    // "DayProfit", any of which may be absent.
    void SetFunds(const CDataTable& funds);
    // Rows with "Currency", "MarketValue" and "DayProfit"; the same.
    void SetPositions(const CDataTable& positions);
    // One line for each currency, never none: those of the funds in their order, then others of the positions.
    // `ofPortfolio`: available is the money that instructions may use, where the fund tells it.
    std::vector<MoneyCells> Lines(bool ofPortfolio) const;

  private:
    struct Fund {
        MoneyCells cells;
        std::string instAvailable;
    };
    // Of the positions in one currency; none when it is not known.
    struct Sum {
        std::string currency;
        std::optional<Decimal> marketValue, dayProfit;
    };

    std::string _total(const MoneyCells& line, bool isFirst, std::optional<Decimal> Sum::*value) const;
    bool _isIn(const Sum& sum, const MoneyCells& line, bool isFirst) const;

    std::vector<Fund> m_funds;
    std::vector<Sum> m_sums;
};

// The money of all accounts of a family, by token. Money of tokens that no account has (yet) is kept, too: that of
// the last 4,096 of them; what goes is counted as "account_money_dropped".
class AccountMoneyBook {
  public:
    static constexpr size_t kMaxStrangers = 4'096;

    // Null when nothing is known.
    const AccountMoney* Find(std::string_view token) const;
    // For one who changes it; made when absent. `isKnown`: an account has the token.
    AccountMoney& Of(std::string_view token, bool isKnown);
    // The accounts changed: sorts out anew whose money is that of no account. Those that were unknown before stay older
    // than those that become it now.
    template <class IsKnown>
    void Sort(const IsKnown& isKnown) {
        std::erase_if(m_strangers, isKnown);
        std::vector<std::string> gone;
        for (auto& [token, entry] : m_money) {
            const bool isStranger = !isKnown(token);
            if (isStranger && !entry.isStranger) gone.push_back(token);
            entry.isStranger = isStranger;
        }
        std::ranges::sort(gone);
        m_strangers.insert(m_strangers.end(), gone.begin(), gone.end());
        _dropStrangers();
    }

  private:
    struct Entry {
        AccountMoney money;
        bool isStranger = false;
    };

    void _dropStrangers();

    TextMap<Entry> m_money;
    std::deque<std::string> m_strangers;  // the longest unknown first
};

}  // namespace luadui
