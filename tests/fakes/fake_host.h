// A host made of three callbacks that remember what they were given.
#pragma once

#include <functional>
#include <string>
#include <vector>

#include "messaging/host_link.h"
#include "messaging/queue_data.h"
#include "tests/fakes/describe.h"

namespace luadui {

// Installed for its lifetime; one at a time. Records are copied, as a host must.
class FakeHost {
  public:
    FakeHost() {
        s_current = this;
        CHostLink::Instance().SetPushCallback(
            [](CQueueReqItem* request) { return s_current ? s_current->_pushed(*request) : 0; });
        CHostLink::Instance().SetRequestSyncCallback(
            [](CQueueReqItem* request) { return s_current ? s_current->_asked(*request) : 0; });
        CHostLink::Instance().SetLoginCallback([](unsigned kind, const std::string& user, const std::string&,
                                                  const ServerMap&, const tag_login_user*, unsigned flags) {
            if (s_current) s_current->logins.push_back(std::to_string(kind) + user + std::to_string(flags));
            return 0;
        });
    }
    ~FakeHost() { s_current = nullptr; }

    std::vector<CQueueReqItem> pushed;
    std::vector<CQueueReqItem> asked;
    std::vector<std::string> logins;
    std::function<void(CQueueReqItem&)> onPush = [](CQueueReqItem&) {};
    std::function<void(CQueueReqItem&)> onAsk = [](CQueueReqItem&) {};

    static CUIData Params(const CQueueReqItem& request) {
        CUIData params;
        request.GetData("Params", params);
        return params;
    }

  private:
    int _pushed(CQueueReqItem& request) {
        pushed.push_back(request);
        onPush(request);
        return 0;
    }
    int _asked(CQueueReqItem& request) {
        asked.push_back(request);
        onAsk(request);
        return 0;
    }

    static inline FakeHost* s_current = nullptr;
};

}  // namespace luadui
