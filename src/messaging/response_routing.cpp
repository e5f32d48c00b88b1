#include "messaging/response_routing.h"

#include "base/guard.h"
#include "messaging/handle_text.h"
#include "messaging/request_base.h"

namespace luadui {

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

int RouteResponse(std::unique_ptr<const CQueueRespData> response) {
    return response && DeliverResponse(HandleFromText(response->GetDataText("To")), *response) ? 1 : 0;
}

}  // namespace luadui
