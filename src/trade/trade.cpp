#include "trade/trade.h"

#include <utility>

#include "base/text.h"
#include "trade/server_result.h"

namespace luadui {

bool CTrade::HandleResponseError(const CUIData& response, std::string& errorText) {
    ServerResult result = ReadServerResult(response);
    if (result.code == 0) return false;
    errorText = result.message.empty() ? Gbk("请求失败，错误码：") + LongText(result.code)
                                       : std::move(result.message);
    return true;
}

}  // namespace luadui
