#include "trade/trade.h"

#include <utility>

#include "base/text.h"
#include "trade/server_result.h"
#include "trade/venue.h"

namespace luadui {

StockType CTrade::GetStockType(std::string_view code, std::string_view market) {
    return ClassifyStock(code, market);
}

bool CTrade::IsMatchPositionCode(std::string_view securityId, std::string_view positionMarket,
                                 std::string_view code, std::string_view market) {
    if (code.empty() || securityId != code) return false;
    if (positionMarket.empty() || market.empty() || positionMarket == market) return true;
    const Venue venue = VenueOf(market);
    return venue != Venue::kUnknown && VenueOf(positionMarket) == venue;
}

bool CTrade::HandleResponseError(const CUIData& response, std::string& errorText) {
    ServerResult result = ReadServerResult(response);
    if (result.code == 0) return false;
    errorText = result.message.empty() ? Gbk("请求失败，错误码：") + LongText(result.code)
                                       : std::move(result.message);
    return true;
}

}  // namespace luadui
