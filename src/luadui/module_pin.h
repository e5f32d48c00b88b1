// Keeps the module mapped: a host that closes its Lua state must not pull code away from under a running
// thread.
#pragma once

namespace luadui {

// Pins the module that holds this code until the process ends. Safe to call again.
void PinModule();

}  // namespace luadui
