// Columns for tables that are joined.
#pragma once

#include "base/data_table.h"

namespace luadui {

// Gives `table` the columns of `source` that it lacks by name, up to `most` columns in all; InsertTable counts what has
// no room.
inline void AddColumnsOf(const CDataTable& source, CDataTable& table, int most) {
    if (table.GetColumnNumber() == 0) return table.CopyHeader(source);
    if (table.HasSameColumns(source)) return;
    for (int col = 0; col < source.GetColumnNumber() && table.GetColumnNumber() < most; ++col) {
        const TextView name = source.GetColumnProperty(col, "name");
        if (table.FindColumn(name) < 0) table.AddColumn(name);
    }
}

}  // namespace luadui
