#include "messaging/request_object.h"

#include "messaging/guid.h"
#include "messaging/host_link.h"

namespace luadui {

bool CRequestObject::Request(CQueueReqItem& request) {
    return _complete(request) && CHostLink::Instance().Send(request);
}

bool CRequestObject::_complete(CQueueReqItem& request) const {
    if (request.GetDataText("UUID").empty()) request.SetData("UUID", NewGuid());
    CUIData
        params;  // gone before the record is sent: while it is attached, copies of the record are not cheap
    if (!request.GetDataShared("Params", params)) return false;
    if (request.GetDataText("FundToken").empty())
        request.SetData("FundToken", params.GetDataText("fund_token"));
    request.SetData("From", std::to_string(GetHandle()));
    params.SetData("log_source", _requestSource());
    if (request.GetDataBool("Refresh")) params.SetData("bNeedRefresh", "true");
    params.SetData("routeType", request.GetDataText("RouteType"));
    params.SetData("destServer", request.GetDataText("DestServer"));
    return true;
}

bool CRequestObject::RequestSync(unsigned int type, const std::string& key, std::string& value,
                                 const std::string& file) {
    StringMap params{{"FileName", file}, {"Key", key}, {"Value", value}};
    return CHostLink::Instance().RequestSync(type, params, &value);
}

bool CRequestObject::SendLogin(unsigned int kind, const std::string& user, const std::string& secret,
                               const ServerMap& servers, const tag_login_user* detail, unsigned int flags) {
    CHostLink::Instance().Login(kind, user, secret, servers, detail, flags);
    return true;
}

}  // namespace luadui
