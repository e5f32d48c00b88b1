#include "messaging/request_object.h"

#include "messaging/host_link.h"

namespace luadui {

bool CRequestObject::Request(CQueueReqItem& request) {
    return _complete(request) && CHostLink::Instance().Send(request);
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
