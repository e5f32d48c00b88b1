#include "accounts/terminal_modules.h"

#include "base/counters.h"

namespace luadui {

void* FindModuleFunction(LPCWSTR module, LPCSTR function) noexcept {
    const HMODULE loaded = LoadLibraryW(module);
    return loaded ? reinterpret_cast<void*>(GetProcAddress(loaded, function)) : nullptr;
}

void* FindExternalFunctions() noexcept {
    using Function = void* (*)();
    const auto function =
        reinterpret_cast<Function>(FindModuleFunction(L"exfunc.dll", "Dll_Exefunc_Interface"));
    try {
        return function ? function() : nullptr;
    } catch (...) {
        CCounters::Add("external_functions_threw");
        return nullptr;
    }
}

}  // namespace luadui
