// CUIStockDataManager: the one router between pages, data managers and the host.
#pragma once

#include "messaging/request_object.h"
#include "platform/export.h"

namespace luadui {

// Created on the UI thread before any page, never destroyed.
//
// Threads: the UI thread.
class LUADUI_API CUIStockDataManager : public CRequestObject {
  public:
    static CUIStockDataManager& get_mutable_instance();

    // Completes subscriptions here (false: they are not sent as such); everything else leaves with this
    // object as its sender, so that answers come back here and go on to whoever asked or subscribed.
    bool Request(CQueueReqItem& request) override;
    // Hands a response to its receivers; those that have gone are skipped.
    void OnResponse(const CQueueRespData* response) override;

  private:
    CUIStockDataManager() = default;
    ~CUIStockDataManager() override = default;
    bool DispatchRequest(CQueueReqItem& request);
};

}  // namespace luadui
