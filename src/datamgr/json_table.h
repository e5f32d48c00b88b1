// Arrays of JSON objects as tables.
#pragma once

#include "base/data_list.h"
#include "base/data_table.h"

namespace luadui {

// Makes `table` the rows of `array`, an object each: a column for each member name, in the order in which the
// names come up; numbers, booleans, objects and arrays as JSON writes them, null as an empty cell. False, and
// `table` unchanged, when the array is empty or has an element that is no object. Columns beyond 256 are left
// out, each counted as "json_column_dropped".
bool TableFromArray(const CDataList& array, CDataTable& table);

}  // namespace luadui
