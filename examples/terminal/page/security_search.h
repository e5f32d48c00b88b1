// What the code list answers to what somebody typed, as tables.
#pragma once

#include <cstddef>
#include <string_view>

#include "base/data_table.h"

namespace terminal {

struct SearchResult {
    // A row for each query and candidate, the best first: query, code, name, market, phonetic, match ("code", "code...",
    // "initials...", "name..." or "inside") and matched, the characters that the query matches.
    luadui::CDataTable candidates;
    // A row for each query: query, found ("1" or "0"), market and name of the first security in key order, code_name and
    // code_market of the one with just this code, microseconds that the candidates took.
    luadui::CDataTable lookups;
};

// Queries separated by '|', code page 936; up to `max` candidates for each. Takes the lookups of CDataManager, which wait
// while a code list is loaded. Threads: any.
SearchResult SearchSecurities(std::string_view queries, size_t max);

}  // namespace terminal
