#include "luadui/module_pin.h"

#include "base/counters.h"
#include "platform/module_pin.h"

namespace luadui {

void PinModule() {
    if (!PinModuleOf(reinterpret_cast<void*>(&PinModule))) CCounters::Add("module_not_pinned");
}

}  // namespace luadui
