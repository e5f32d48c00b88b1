// A host made of three callbacks that remember what they were given.
#pragma once

#include <atomic>
#include <functional>
#include <string>
#include <thread>
#include <vector>

#include "messaging/host_link.h"
#include "messaging/queue_data.h"
#include "tests/fakes/describe.h"

namespace luadui {

// Installed for its lifetime; one at a time. Records are copied, as a host must. It belongs to the thread that made it:
// what others ask (the one that loads the code list may do so at any time) is left unanswered, unless AnswerOthers.
class FakeHost {
  public:
    FakeHost() {
        s_current = this;
        s_thread = std::this_thread::get_id();
        CHostLink::Instance().SetPushCallback(
            [](CQueueReqItem* request) { return s_current ? s_current->_pushed(*request) : 0; });
        CHostLink::Instance().SetRequestSyncCallback([](CQueueReqItem* request) {
            if (std::this_thread::get_id() == s_thread.load())
                return s_current ? s_current->_asked(*request) : 0;
            if (const auto answer = s_answerOthers.load()) answer(*request);
            return 0;
        });
        CHostLink::Instance().SetLoginCallback([](unsigned kind, const std::string& user, const std::string&,
                                                  const ServerMap&, const tag_login_user*, unsigned flags) {
            if (s_current) s_current->logins.push_back(std::to_string(kind) + user + std::to_string(flags));
            return 0;
        });
    }
    ~FakeHost() {
        s_current = nullptr;
        s_answerOthers = nullptr;
    }

    using Answer = void (*)(CQueueReqItem&);
    void AnswerOthers(Answer answer) { s_answerOthers = answer; }

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
    static inline std::atomic<std::thread::id> s_thread;
    static inline std::atomic<Answer> s_answerOthers = nullptr;
};

}  // namespace luadui
