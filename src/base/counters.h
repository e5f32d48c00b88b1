// Named counters: everything that is dropped, refused or truncated anywhere adds one to the counter named
// after the reason, so that a user can see what went missing and why.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "platform/export.h"

namespace luadui {

// Threads: any. Counters live as long as the process and only grow.
class TESSEL_API CCounters {
  public:
    // Adds `n` to the counter `name`, a string literal in snake_case (at most some hundred different ones:
    // beyond the table's size further names are summed under "counters_overflow"). Never fails, takes no
    // lock.
    static void Add(const char* name, uint64_t n = 1) noexcept;
    // The value of the counter `name`; 0 when nothing was added yet.
    static uint64_t Get(std::string_view name) noexcept;
    // All counters that were added to, sorted by name.
    static std::vector<std::pair<std::string, uint64_t>> All();
};

}  // namespace luadui
