#include "luadui/module_pin.h"

#include "base/counters.h"
#include "platform/win32.h"

namespace luadui {

void PinModule() {
    HMODULE module = nullptr;
    const auto here = reinterpret_cast<LPCWSTR>(reinterpret_cast<void*>(&PinModule));
    if (!GetModuleHandleExW(GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS | GET_MODULE_HANDLE_EX_FLAG_PIN, here,
                            &module)) {
        CCounters::Add("module_not_pinned");
    }
}

}  // namespace luadui
