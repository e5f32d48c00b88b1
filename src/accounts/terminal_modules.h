// Functions that modules of the terminal may bring along.
#pragma once

#include "platform/win32.h"

namespace luadui {

// The function `function` of the module `module` ("name.dll"), which then stays loaded; null when either is missing. Who
// calls it knows its type.
//
// Threads: any.
void* FindModuleFunction(LPCWSTR module, LPCSTR function) noexcept;

// What "Dll_Exefunc_Interface" of "exfunc.dll" answers: the terminal's interface of external functions, the terminal's own.
// Null when there is none, or when the function threw ("external_functions_threw").
void* FindExternalFunctions() noexcept;

}  // namespace luadui
