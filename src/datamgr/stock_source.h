// Which list knows how much of a security accounts can buy or sell.
#pragma once

#include "base/data_set.h"
#include "base/ui_data.h"
#include "datalists/token_table_list.h"

namespace luadui {

class CUIDataManager;

struct StockSource {
    CTokenTableList* list = nullptr;  // never null
    // The list's CalcStockAvailable.
    bool (*calc)(CTokenTableList& list, CUIData& request) = nullptr;
    bool isCredit = false;     // of credit accounts
    bool isPositions = false;  // else of funds
};

// The list for the order that `request` describes (see ComputeStockAvailable for the choice); made if need be.
StockSource StockSourceOf(CUIDataManager& manager, const CUIData& request, const CDataSet& tokens);

}  // namespace luadui
