#include "messaging/response_routing.h"

#include "base/guard.h"
#include "messaging/handle_text.h"
#include "messaging/request_base.h"

namespace luadui {

int RouteResponse(std::unique_ptr<const CQueueRespData> response) {
    const int32_t handle = response ? HandleFromText(response->GetDataText("To")) : CBaseObject::kNoHandle;
    auto* const receiver = dynamic_cast<CRequestBase*>(CBaseObject::Find(handle, 1));
    if (!receiver) {
        CCounters::Add("response_without_receiver");
        return 0;
    }
    Guarded("response_handler_threw", [&] {
        if (!receiver->PreHandleResponse(response.get())) receiver->OnResponse(response.get());
    });
    return 1;
}

}  // namespace luadui
