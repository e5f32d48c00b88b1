#include "datamgr/ui_stock_data_manager.h"

#include "messaging/handle_text.h"
#include "messaging/host_link.h"
#include "messaging/request_types.h"
#include "messaging/subscription_dispatcher.h"

namespace luadui {

CUIStockDataManager& CUIStockDataManager::get_mutable_instance() {
    static auto* const manager = new CUIStockDataManager;
    return *manager;
}

bool CUIStockDataManager::Request(CQueueReqItem& request) {
    if (CSubscriptionDispatcher::Instance().Offer(request)) return false;
    return DispatchRequest(request);
}

bool CUIStockDataManager::DispatchRequest(CQueueReqItem& request) {
    const int type = static_cast<int>(request.GetDataLong("REQTYPE"));
    if (type == kReqPageEventSubscribe) return true;
    // A page registration names the page itself: host messages go to it directly.
    if (!IsPageRegistration(type)) request.SetData("From", std::to_string(GetHandle()));
    return CHostLink::Instance().Send(request);
}

void CUIStockDataManager::OnResponse(const CQueueRespData* response) {
    if (!response) return;
    for (const std::string& receiver : CSubscriptionDispatcher::Instance().Receivers(*response)) {
        auto* const object = dynamic_cast<CRequestBase*>(CBaseObject::Find(HandleFromText(receiver)));
        if (object && !object->PreHandleResponse(response)) object->OnResponse(response);
    }
}

}  // namespace luadui
