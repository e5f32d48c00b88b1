#include "datamgr/ui_stock_data_manager.h"

#include "messaging/host_link.h"
#include "messaging/request_types.h"
#include "messaging/response_routing.h"
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
    const int type = RequestTypeOf(request);
    if (type == kReqPageEventSubscribe) return true;
    // A page registration names the page itself: host messages go to it directly.
    if (!IsPageRegistration(type)) request.SetData("From", std::to_string(GetHandle()));
    return CHostLink::Instance().Send(request);
}

void CUIStockDataManager::OnResponse(const CQueueRespData* response) {
    if (!response) return;
    for (const int32_t receiver : CSubscriptionDispatcher::Instance().Receivers(*response)) {
        if (receiver != GetHandle()) DeliverResponse(receiver, *response);
    }
}

}  // namespace luadui
