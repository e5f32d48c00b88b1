// The positions of several accounts as one.
#pragma once

#include "base/data_table.h"
#include "base/ui_data.h"

namespace luadui {

// One row for each security ("SecurityID" and "Market") of `positions`, in the order in which they come up.
// Quantities and money are added up, exactly as written in decimals; an empty cell adds nothing, one that is
// no number neither (counted as "position_cell_unreadable"). Of the other columns a cell keeps what all rows
// of the security agree on, and is empty where they do not. A row without "SecurityID" stays as it is.
CDataTable SumPositions(const CDataTable& positions);

// Makes "positionsum" of a view of several accounts' positions: the sum takes the place of the joined table,
// which stands under the type of the view.
void SumView(CUIData& view);

}  // namespace luadui
