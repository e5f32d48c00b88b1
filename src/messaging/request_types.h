// The request types and response kinds that the messaging code itself treats specially.
#pragma once

namespace luadui {

class CUIData;

enum RequestType : int {
    kReqPageEventSubscribe = 1604,  // recorded as a subscription, yet goes on to the router
    kReqLuaCall = 1502,             // a call into the host's Lua interface, or a page registration
    kReqPageRegister = 1603,        // also the type of host messages to a page
    kReqConfigRead = 0x80001,
    kReqConfigWrite = 0x80002,
    kReqConfigReadAll = 0x80003,
    kReqConfigErase = 0x80004,
};

enum DataType : int {
    kDataChangeNotice = 2010,
    kDataHostMessage = 2101,
};

// The "REQTYPE" of a request; 0 when it has none that is a 32-bit number.
int RequestTypeOf(const CUIData& request);

// Types whose requests concern single securities ("Params" "code").
bool IsCodeKeyedRequest(int type);
// Types that subscribe to a topic; a type may be in this set and in the one above.
bool IsSubscription(int type);
bool IsInstructionSubscription(int type);
// Types that are answered inside the library or by the host's Lua interface, never by the push callback.
bool IsPageRegistration(int type);

}  // namespace luadui
