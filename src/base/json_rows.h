// The rows in JSON text: objects in arrays, read one after the other, for those who make tables of them. One object at
// a time is taken apart, so that neither the memory nor a fault in the text spreads beyond it.
#pragma once

#include <cstddef>
#include <functional>
#include <span>
#include <string_view>

#include "platform/export.h"

namespace luadui {

// A member of a row in code page 936. Texts are without quotes and escapes; numbers, booleans, objects and arrays
// are as the server wrote them, null is empty. Valid during the call.
struct JsonCell {
    std::string_view name;
    std::string_view text;
};

// Gets the number of the array in the list of those asked for, and the members ordered by name.
using JsonRowSink = std::function<void(size_t array, std::span<const JsonCell> row)>;

// Reads `text` (code page 936), one JSON object without comments, and gives every object in its members `arrays` to
// `take`; other members are passed over. False when anything was left out: rows that are no (readable) object, each
// counted as "json_row_refused", or what follows a place where the text is no JSON, counted as "json_text_refused".
// Bad text never throws; `take` may.
//
// Threads: any.
TESSEL_API bool ReadJsonRows(std::string_view text, std::span<const std::string_view> arrays,
                             const JsonRowSink& take);

}  // namespace luadui
