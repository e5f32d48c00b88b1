// Pages of portfolio managers, where portfolios stand in the place of accounts.
#pragma once

#include "base/ui_data.h"

namespace luadui {

// Whether the record asks for portfolios, or tells of them, in the place of accounts: "PB_MODE" is "true" or
// "client_type" is "PB_MODE".
inline bool IsPortfolioMode(const CUIData& record) {
    return record.GetDataText("PB_MODE") == "true" || record.GetDataBool("PB_MODE") ||
           record.GetDataText("client_type") == "PB_MODE";
}

}  // namespace luadui
