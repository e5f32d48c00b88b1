#include "messaging/response_routing.h"

#include <map>

#include "base/guard.h"
#include "messaging/handle_text.h"
#include "messaging/request_base.h"

namespace luadui {
namespace {

std::map<std::string, int32_t, std::less<>>& NamedReceivers() {
    static auto* const receivers = new std::map<std::string, int32_t, std::less<>>;
    return *receivers;
}

int32_t ReceiverOf(std::string_view to) {
    const int32_t handle = HandleFromText(to);
    if (handle != CBaseObject::kNoHandle) return handle;
    const auto named = NamedReceivers().find(to);
    return named == NamedReceivers().end() ? CBaseObject::kNoHandle : named->second;
}

}  // namespace

bool DeliverResponse(int32_t handle, const CQueueRespData& response) {
    auto* const receiver = dynamic_cast<CRequestBase*>(CBaseObject::Find(handle, 1));
    if (!receiver) {
        CCounters::Add("response_without_receiver");
        return false;
    }
    Guarded("response_handler_threw", [&] {
        if (!receiver->PreHandleResponse(&response)) receiver->OnResponse(&response);
    });
    return true;
}

void NameReceiver(const std::string& name, int32_t handle) { NamedReceivers()[name] = handle; }

int RouteResponse(std::unique_ptr<const CQueueRespData> response) {
    return response && DeliverResponse(ReceiverOf(response->GetDataText("To")), *response) ? 1 : 0;
}

}  // namespace luadui
