// The rows in JSON text: objects in arrays, read one after the other, for those who make tables of them. No objects
// are made of plain rows, and a fault in one row does not spread to others.
#pragma once

#include <cstddef>
#include <functional>
#include <span>
#include <string_view>

#include "platform/export.h"

namespace luadui {

// A member of a row. Texts are without quotes and escapes, numbers and booleans as JSON writes them, objects and
// arrays are JSON text, null is empty. Valid during the call.
struct JsonCell {
    std::string_view name;
    std::string_view text;
};

// Gets the number of the array in the list of those asked for, and the members of the row. Of members of the same
// name the last counts.
using JsonRowSink = std::function<void(size_t array, std::span<const JsonCell> row)>;

// Reads `text` (code page 936), one JSON object, and gives every object in its members `arrays` to `take`; other
// members are passed over. False when anything was left out: rows that are no (readable) object, each counted as
// "json_row_refused", or what follows a place where the text is no JSON, counted as "json_text_refused". Bad text
// never throws; `take` may.
//
// Threads: any.
TESSEL_API bool ReadJsonRows(std::string_view text, std::span<const std::string_view> arrays,
                             const JsonRowSink& take);

}  // namespace luadui
