// Counts what is allocated with `new` and not yet deleted. A program that links allocation_ledger.cpp counts all its
// modules on Linux; on Windows, where modules do not share the operator, only its own code.
#pragma once

#include <cstdint>

namespace luadui {

int64_t LiveAllocations();

}  // namespace luadui
