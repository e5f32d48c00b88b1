#include "messaging/request_base.h"

#include "base/counters.h"
#include "messaging/guid.h"
#include "messaging/page_sign_registry.h"
#include "messaging/request_types.h"
#include "messaging/subscription_dispatcher.h"

namespace luadui {
namespace {

// Far more than there are request types; a server that invents some must not fill the memory.
constexpr size_t kMaxDeferred = 4096;

CUIData ToRecord(const StringMap& params) {
    CUIData record;
    for (const auto& [key, value] : params) record.SetData(key, value);
    return record;
}

}  // namespace

CRequestBase::~CRequestBase() {
    CPageSignRegistry::Instance().Forget(std::to_string(GetHandle()));
    CSubscriptionDispatcher::Instance().Forget(GetHandle());
}

void CRequestBase::OnResponse(const CQueueRespData*) {}

bool CRequestBase::SendQuery(const std::string& fundToken, unsigned int type, const StringMap& params,
                             bool refresh) {
    return _send(fundToken, type, params, refresh, nullptr);
}

bool CRequestBase::SendQuery(const std::string& fundToken, unsigned int type, bool refresh) {
    return _send(fundToken, type, {}, refresh, nullptr);
}

bool CRequestBase::SendSubcribe(const std::string& fundToken, unsigned int type, const std::string& key) {
    return _send(fundToken, type, {{"key", key}}, false, nullptr);
}

bool CRequestBase::SendSubcribe(const std::string& fundToken, unsigned int type, const StringMap& params) {
    return _send(fundToken, type, params, false, nullptr);
}

bool CRequestBase::SendOrder(const std::string& fundToken, unsigned int type, const StringMap& params,
                             const CDataTable* table) {
    return _send(fundToken, type, params, false, table);
}

std::string CRequestBase::SendLuaSync(const std::string& method, const std::string& params,
                                      const std::string& pageSign) {
    CQueueReqItem request;
    request.SetData("REQTYPE", static_cast<int>(kReqLuaCall));
    request.SetData(
        "Params",
        ToRecord({{"cmd", "sync"}, {"method", method}, {"params", params}, {"page_sign", pageSign}}));
    Request(request);
    CUIData answered;
    request.GetData("Params", answered);
    return answered.GetDataString("result");
}

void CRequestBase::Sleep(bool asleep) {
    m_asleep = asleep;
    if (asleep) return;
    // The sends leave the library: whatever they cause, also the end of this object, must not disturb the
    // walk.
    const auto deferred = std::exchange(m_deferred, {});
    const int handle = GetHandle();
    for (const auto& [type, fundToken] : deferred) {
        if (CBaseObject::Find(handle) != this) return;
        _queryAgain(fundToken, type);
    }
}

bool CRequestBase::PreHandleResponse(const CQueueRespData* response) {
    if (!response || !CQueueRespData::IsChangeNotice(*response)) return false;
    const int type = RequestTypeOf(*response);
    std::string fundToken = response->GetDataString("FundToken");
    if (!m_asleep) {
        _queryAgain(fundToken, type);
    } else if (m_deferred.size() < kMaxDeferred || m_deferred.contains(type)) {
        m_deferred[type] = std::move(fundToken);
    } else {
        CCounters::Add("deferred_query_refused");
    }
    return true;
}

bool CRequestBase::_complete(CQueueReqItem& request) const {
    if (request.GetDataText("UUID").empty()) request.SetData("UUID", NewGuid());
    CUIData
        params;  // gone before the record is sent: while it is attached, copies of the record are not cheap
    if (!request.GetDataShared("Params", params)) return false;
    if (request.GetDataText("FundToken").empty())
        request.SetData("FundToken", params.GetDataText("fund_token"));
    request.SetData("From", std::to_string(GetHandle()));
    params.SetData("log_source", m_source);
    if (request.GetDataBool("Refresh")) params.SetData("bNeedRefresh", "true");
    params.SetData("routeType", request.GetDataText("RouteType"));
    params.SetData("destServer", request.GetDataText("DestServer"));
    return true;
}

bool CRequestBase::_queryAgain(const std::string& fundToken, int type) {
    return SendQuery(fundToken, static_cast<unsigned int>(type), {{"isSub", "true"}}, false);
}

bool CRequestBase::_send(const std::string& fundToken, unsigned int type, const StringMap& params,
                         bool refresh, const CDataTable* table) {
    CQueueReqItem request;
    request.SetData("REQTYPE", type);
    request.SetData("FundToken", fundToken);
    if (refresh) request.SetData("Refresh", true);
    if (table) request.SetData("Table", *table);
    request.SetData("Params", ToRecord(params));
    return Request(request);
}

}  // namespace luadui
