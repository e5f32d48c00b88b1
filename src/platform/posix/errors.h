// Ways to fail as Win32 does.
#pragma once

#include <new>

#include "platform/posix/win32_types.h"

namespace luadui::posix {

// Sets the error and answers "nothing".
template <class Result>
Result Fail(DWORD error) {
    SetLastError(error);
    return Result{};
}

// Runs `body`; out of memory is an error code, too.
template <class Body>
auto OrNoMemory(Body&& body) -> decltype(body()) {
    try {
        return body();
    } catch (const std::bad_alloc&) {
        return Fail<decltype(body())>(ERROR_NOT_ENOUGH_MEMORY);
    }
}

}  // namespace luadui::posix
