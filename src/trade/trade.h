// CTrade: the rules of trading that several parts of the system share.
#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>

#include "trade/decimal.h"
#include "trade/stock_type.h"

namespace luadui {

class CUIData;

enum TradeDirection { kTradeBuy = 1, kTradeSell = 2 };

// What an amount of money is to be turned into.
struct TRADE_INFO {
    StockType stockType = StockType::kUnknown;
    Decimal money;
    Decimal price;
    int direction = kTradeBuy;
    int64_t unit = 1;        // see RoundQuantity
    Decimal commissionRate;  // part of the turnover that goes to the broker; zero when it is not known
};

struct PriceRange {
    Decimal lowest;
    Decimal highest;
};

// The step of prices in the band [begin, end) of a Stock Connect market.
struct PriceSpread {
    std::string key;  // market letter + ":" + stock type
    Decimal begin;
    Decimal end;
    Decimal step;
};

// Codes and market ids are those of tables and pages ("600000", "17"); names are code page 936.
//
// Threads: any; the registrations are seen by all.
class CTrade {
  public:
    static StockType GetStockType(std::string_view code, std::string_view market);
    // The step of prices; that of Stock Connect depends on the price (see trade/price_spreads.h). Zero when it is not
    // known.
    static Decimal GetPriceStep(std::string_view code, std::string_view market, Decimal price = {});
    // With how many decimals a price is shown.
    static int GetPriceDecimals(std::string_view code, std::string_view market);

    // The prices between which a security may trade on a day, by its previous close; none for those without
    // limits.
    static std::optional<PriceRange> GetDailyLimits(std::string_view code, std::string_view market,
                                                    Decimal previousClose);
    // The limit up for a buy, the limit down for a sell; zero when there is none.
    static Decimal CalcLimitPrice(std::string_view code, std::string_view market, Decimal previousClose,
                                  int direction);
    // Between which prices an order may be declared in continuous trading: a buy has a highest, a sell a lowest
    // price; the other end, and both where there is no band, is the daily limit, else the first step or
    // Decimal::Largest(). None when there is neither band nor limit.
    static std::optional<PriceRange> GetDeclarationRange(std::string_view code, std::string_view market,
                                                         Decimal referencePrice, Decimal previousClose,
                                                         int direction);

    // What the quantity is worth at that price; a repo's worth is its face value, whatever the price.
    static Decimal CalcTurnover(StockType type, Decimal price, int64_t quantity);
    // The largest quantity that may be declared and costs, commission included, no more than the money. 0 when price
    // or money are not above zero.
    static int64_t CountAmountByMoney(const TRADE_INFO& info);
    // The largest quantity up to `quantity` that may be declared, in one order or several: a multiple of the type's
    // lots and of the unit (below 1: 1), which for Stock Connect is the board lot. With `held`, what the account
    // has of it, a sell is for no more than that; the odd lot in it may go, too, when the unit is 1, and so may all
    // that is held.
    static int64_t RoundQuantity(StockType type, int64_t quantity, int direction, int64_t unit = 1,
                                 int64_t held = 0);

    // Whether the position row (`securityId`, `positionMarket`) is of the security that is asked for: the same code at
    // the same venue (see trade/venue.h). Empty markets match all.
    static bool IsMatchPositionCode(std::string_view securityId, std::string_view positionMarket,
                                    std::string_view code, std::string_view market);

    // What the code list knows, instead of what it knew: the name tells risk-warned shares, the board lot is Stock
    // Connect's (0: not known). What can be no code of the market is counted as "code_data_refused".
    static void AddCodeData(std::string_view code, std::string_view market, std::string_view name,
                            int64_t boardLot = 0);
    // Becomes another number whenever AddCodeData changed what is known, for those who keep what followed from it.
    static uint64_t CodeDataVersion();
    // The board lot; 0 when it is not known.
    static int64_t GetBoardLot(std::string_view code, std::string_view market);
    static bool IsRiskWarned(std::string_view code, std::string_view market);
    // Replaces all bands of Stock Connect prices. Those without an extent or a step are dropped and counted as
    // "price_spread_unusable"; others than those of key "E:0", its shares, are not asked for.
    static void SetPriceSpreads(std::span<const PriceSpread> spreads);

    // Whether a response says that the server failed (see trade/server_result.h). `errorText` then becomes
    // what the user reads: the server's message, or, when it sent none, one with the code; otherwise it is
    // unchanged.
    static bool HandleResponseError(const CUIData& response, std::string& errorText);
};

}  // namespace luadui
