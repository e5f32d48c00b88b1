// The three callbacks that the library calls the host by.
#pragma once

#include "broker/broker.h"
#include "host/library.h"
#include "host/lua_interface.h"
#include "host/news.h"
#include "settings/settings_store.h"

namespace terminal {

// What the callbacks need. They run on the library's threads.
struct CallbackTargets {
    Broker* broker;
    SettingsStore* settings;
    LuaInterface* luaInterface;
    News* news = nullptr;
};

// Registers the callbacks. `targets` is used until ClearCallbackTargets returns: it waits for callbacks that run, as the
// library loads its code list in a thread that nobody else can wait for. Later ones do nothing.
bool SetCallbacks(const Library& library, const CallbackTargets& targets);
void ClearCallbackTargets();

// Answers one synchronous request; what the callback does, for tests. Fields are read from "Params", else from the
// record itself. Answers, all text:
//   0x80001 read      "result": the value
//   0x80002 write     nothing
//   0x80003 read all  the pairs, in "Params" and as the record "result"
//   0x80004 erase     "result": "true" when the key is not there any more
//   1502 Lua call     "result": what the method of the Lua interface returned
void AnswerRequest(const CallbackTargets& targets, luadui::CUIData& request);

}  // namespace terminal
