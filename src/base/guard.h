// No exception leaves an exported function, a Lua function, a window procedure or a thread routine, nor does
// one of a host or page come in: such calls run under this guard.
#pragma once

#include <cxxabi.h>

#include <utility>

#include "base/counters.h"

namespace luadui {

// Runs `call`. An exception is swallowed and added to `counter`; false then.
template <class Call>
bool Guarded(const char* counter, Call&& call) {
    try {
        std::forward<Call>(call)();
        return true;
    } catch (abi::__forced_unwind&) {
        throw;  // the thread is being ended; swallowing this would end the process
    } catch (...) {
        CCounters::Add(counter);
        return false;
    }
}

}  // namespace luadui
