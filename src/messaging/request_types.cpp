#include "messaging/request_types.h"

#include <algorithm>
#include <initializer_list>

#include "base/ui_data.h"

namespace luadui {
namespace {

bool IsOneOf(int type, std::initializer_list<int> set) {
    return std::find(set.begin(), set.end(), type) != set.end();
}

}  // namespace

int RequestTypeOf(const CUIData& request) {
    int type = 0;
    request.GetData("REQTYPE", type);
    return type;
}

bool IsCodeKeyedRequest(int type) { return IsOneOf(type, {1051, 1052, 1053, 1702, 1602}); }
bool IsSubscription(int type) { return IsOneOf(type, {1601, 1602, kReqPageEventSubscribe}); }
bool IsInstructionSubscription(int type) { return IsOneOf(type, {1701, 1702}); }
bool IsPageRegistration(int type) { return IsOneOf(type, {kReqLuaCall, kReqPageRegister}); }

}  // namespace luadui
