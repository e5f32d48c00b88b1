#include "datamgr/account_bridge.h"

#include "datalists/data_timer_wnd.h"
#include "datamgr/ui_stock_data_manager.h"
#include "messaging/host_link.h"

namespace luadui {
namespace {

static_assert(CAccountManager::kOrderTimer == CDataTimerWnd::kOrderTimer &&
              CAccountManager::kOnlineTimer == CDataTimerWnd::kOnlineTimer);

constexpr int kReqSubscribe = 1601;

CUIStockDataManager& Router() { return CUIStockDataManager::get_mutable_instance(); }

}  // namespace

AccountBridge::AccountBridge() {
    Router().SetAccountCommands(&m_manager);
    m_manager.OnUser();
}

AccountBridge::~AccountBridge() { Router().SetAccountCommands(nullptr); }

AccountUser AccountBridge::User() const {
    const UserInfo& info = Router().GetUserInfo();
    return {.name = info.username,
            .id = info.userid,
            .institutionId = info.institutionid,
            .token = info.token,
            .version = info.version,
            .folder = info.userfolder,
            .isPbMode = info.runMode == "PB_MODE"};
}

void AccountBridge::Subscribe(const std::string& topic, int32_t handle) {
    CQueueReqItem request;
    CUIData params;
    params.SetData("key", topic);
    request.SetData("REQTYPE", kReqSubscribe);
    request.SetData("From", std::to_string(handle));
    request.SetData("Params", params);
    Router().Request(request);
}

// The answer takes the way of those from the server: to the sender of the request with that UUID, which knows its window by
// what it asked.
bool AccountBridge::AnswerPage(const AccountAsker& asker, CQueueRespData& response) {
    CUIData request, params;
    params.SetData("handle", asker.handle);
    request.SetData("REQTYPE", asker.type);
    request.SetData("UUID", asker.uuid);
    request.SetData("Params", params);
    response.SetData("Request", request);
    response.SetData("To", asker.from);
    if (asker.uuid.empty()) return false;
    Router().OnResponse(&response);
    return true;
}

// Past the router, which would take what the host hands back for the answer to a question.
bool AccountBridge::Publish(CQueueReqItem& notification) { return CHostLink::Instance().Send(notification); }

void AccountBridge::HandlePush(const CQueueRespData& push) { Router().OnResponse(&push); }

bool AccountBridge::StartTimer(uint32_t id, uint32_t milliseconds) {
    return Router().CommonData().StartTimer(id, milliseconds);
}

bool AccountBridge::StopTimer(uint32_t id) { return Router().CommonData().StopTimer(id); }

}  // namespace luadui
