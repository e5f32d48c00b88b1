// The request object that pages use and derive from: it sends through the host's callbacks.
#pragma once

#include <string>

#include "messaging/request_base.h"

namespace luadui {

// Threads and lifetime: as CRequestBase.
class LUADUI_API CRequestObject : public CRequestBase {
  public:
    // Gives the request a "UUID" if it has none, its "FundToken" from "Params" "fund_token" if it has none,
    // this object's handle as "From", and in "Params" the source, "bNeedRefresh", "routeType" and
    // "destServer"; then sends it. False, and nothing sent, without a record "Params". The request stays the
    // caller's.
    bool Request(CQueueReqItem& request) override;

    bool RequestSync(unsigned int type, const std::string& key, std::string& value,
                     const std::string& file) override;

    // Hands a login to the host's login callback, untouched. Always true.
    bool SendLogin(unsigned int kind, const std::string& user, const std::string& secret,
                   const ServerMap& servers, const tag_login_user* detail, unsigned int flags);
};

}  // namespace luadui
