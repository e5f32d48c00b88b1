// CPriceSpreadGGT and CRateGGT: what the server tells about Stock Connect as a whole.
#pragma once

#include <map>
#include <string>
#include <string_view>

#include "base/data_table.h"
#include "base/ui_data.h"
#include "trade/decimal.h"

namespace luadui {

// A record with one table, which belongs to no account, under the list's own kind.
//
// Threads: the UI thread.
class ReferenceListGGT : public CUIData {
  public:
    ReferenceListGGT(const ReferenceListGGT&) = delete;
    ReferenceListGGT& operator=(const ReferenceListGGT&) = delete;

    // Stores the table of the answer, which is under "Table", in the place of the one held. False, and nothing
    // changed, when it has none.
    bool SetResponse(const CUIData& response);

  protected:
    explicit ReferenceListGGT(std::string_view kind) : CUIData(kind) {}
    // After the table was replaced.
    virtual void _changed(const CDataTable& /*table*/) {}
};

// The rates between the currencies of Stock Connect.
class CRateGGT : public ReferenceListGGT {
  public:
    CRateGGT() : ReferenceListGGT("rate_ggt") {}
    const char* ClassName() const override { return "CRateGGT"; }
};

// The steps of Stock Connect prices: bands of prices ("GGT_QDJG" to "GGT_ZDJG") with the step "GGT_JCZ", by
// "Market" and "StockType".
//
// A band holds its first price and not its last, which belongs to the next one; the highest band of a key holds
// its last price, too. Bands are dropped and counted when a number in them is unreadable
// ("tb_price_spred_ggt_..._unreadable", by column), when they are empty or reversed or have no step above zero
// ("price_spread_band_refused"), or when they overlap one from an earlier row ("price_spread_band_overlaps").
// After every change CTrade gets all bands.
class CPriceSpreadGGT : public ReferenceListGGT {
  public:
    CPriceSpreadGGT() : ReferenceListGGT("tb_price_spred_ggt") {}
    const char* ClassName() const override { return "CPriceSpreadGGT"; }

    // Answers "price_spread", the step as text, for "stock_price" in "Market" (or "MarketID") and "StockType"
    // (empty or absent: "0"). The markets 76 and 156, and their sisters 73 and 153 on the other exchange, have
    // the bands of the letter "E": it is the same market abroad, whose steps do not depend on the way there.
    // "0" when no band holds the price: the page then takes any price. False, and `request` unchanged, when
    // it names no market or no readable price.
    bool GetPriceSpread(CUIData& request) const;

  private:
    struct Band {
        Decimal end;
        Decimal step;
    };
    using Bands = std::map<Decimal, Band>;  // by the first price

    void _changed(const CDataTable& table) override;
    void _register() const;

    std::map<std::string, Bands, std::less<>> m_bands;  // by "Market:StockType"
};

}  // namespace luadui
