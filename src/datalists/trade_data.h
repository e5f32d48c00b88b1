// CTradeData: what a page's trade panel keeps.
#pragma once

#include "base/ui_data.h"

namespace luadui {

// A record of type "trade", empty at first. Pages share it with their manager and keep in it what they
// please: the code, price and volume that are being entered.
class CTradeData : public CUIData {
  public:
    CTradeData() : CUIData("trade") {}
    const char* ClassName() const override { return "CTradeData"; }
};

}  // namespace luadui
