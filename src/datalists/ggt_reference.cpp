#include "datalists/ggt_reference.h"

#include <algorithm>
#include <array>
#include <iterator>
#include <optional>
#include <utility>
#include <vector>

#include "base/counters.h"
#include "datalists/field_text.h"
#include "datalists/number_cell.h"
#include "trade/trade.h"

namespace luadui {
namespace {

struct NumberColumn {
    const char* name;
    const char* counter;  // of cells that are no number
};
constexpr std::array kNumberColumns = {NumberColumn{"GGT_QDJG", "tb_price_spred_ggt_qdjg_unreadable"},
                                       NumberColumn{"GGT_ZDJG", "tb_price_spred_ggt_zdjg_unreadable"},
                                       NumberColumn{"GGT_JCZ", "tb_price_spred_ggt_jcz_unreadable"}};

// The letter under which the server lists the bands of a market id; other ids, and letters, stand for themselves.
constexpr std::array<std::string_view, 4> kMarketsOfE = {"76", "156", "73", "153"};

std::string KeyOf(std::string_view market, std::string_view stockType) {
    const bool isE = std::ranges::find(kMarketsOfE, market) != kMarketsOfE.end();
    std::string key(isE ? "E" : market);
    return key.append(":").append(stockType.empty() ? "0" : stockType);
}

std::optional<Decimal> NumberIn(const CDataTable& table, int row, const NumberColumn& column) {
    return FindNumber(table.GetItemText(row, column.name), column.counter);
}

}  // namespace

bool ReferenceListGGT::SetResponse(const CUIData& response) {
    CDataTable table;
    if (!response.GetData("Table", table)) return false;
    SetData(GetTypeText(), table);
    _changed(table);
    return true;
}

void CPriceSpreadGGT::_changed(const CDataTable& table) {
    m_bands.clear();
    for (int row = 0; row < table.GetRowNumber(); ++row) {
        const auto begin = NumberIn(table, row, kNumberColumns[0]);
        const auto end = NumberIn(table, row, kNumberColumns[1]);
        const auto step = NumberIn(table, row, kNumberColumns[2]);
        if (!begin || !end || !step) continue;
        if (*begin < 0 || *begin >= *end || *step <= 0) {
            CCounters::Add("price_spread_band_refused");
            continue;
        }
        Bands& bands = m_bands[KeyOf(table.GetItemText(row, "Market"), table.GetItemText(row, "StockType"))];
        const auto next = bands.upper_bound(*begin);
        if ((next != bands.begin() && std::prev(next)->second.end > *begin) ||
            (next != bands.end() && next->first < *end)) {
            CCounters::Add("price_spread_band_overlaps");
            continue;
        }
        bands.emplace(*begin, Band{*end, *step});
    }
    _register();
}

void CPriceSpreadGGT::_register() const {
    std::vector<PriceSpread> spreads;
    for (const auto& [key, bands] : m_bands) {
        for (const auto& [begin, band] : bands) spreads.push_back({key, begin, band.end, band.step});
    }
    CTrade::SetPriceSpreads(spreads);
}

bool CPriceSpreadGGT::GetPriceSpread(CUIData& request) const {
    const std::string market = FirstText(request, {"Market", "MarketID"});
    const auto price = Decimal::Parse(FirstText(request, {"stock_price"}));
    if (market.empty() || !price) return false;
    Decimal spread;
    if (const auto found = m_bands.find(KeyOf(market, FirstText(request, {"StockType"})));
        found != m_bands.end()) {
        const Bands& bands = found->second;
        const auto next = bands.upper_bound(*price);
        if (next != bands.begin()) {
            const Band& band = std::prev(next)->second;
            if (*price < band.end || (*price == band.end && next == bands.end())) spread = band.step;
        }
    }
    request.SetData("price_spread", spread.Text());
    return true;
}

}  // namespace luadui
