// Tables for tests, written out.
#pragma once

#include <string>
#include <vector>

#include "base/data_table.h"

namespace luadui {

using Rows = std::vector<std::vector<std::string>>;

// Cells that a row does not have stay empty.
inline CDataTable MakeTable(const std::vector<std::string>& columns, const Rows& rows) {
    CDataTable table;
    for (const std::string& column : columns) table.AddColumn(column);
    for (const auto& cells : rows) {
        const int row = table.AppendRow();
        for (size_t col = 0; col < cells.size(); ++col)
            table.SetItemText(row, static_cast<int>(col), cells[col]);
    }
    return table;
}

}  // namespace luadui
