// AccountEvents: what the account manager asks of the floors above.
#pragma once

#include <cstdint>
#include <string>

#include "accounts/account_user.h"
#include "messaging/queue_data.h"

namespace luadui {

// Who gets the answer to a command, and under which name. Nobody does when the command came without all of this.
struct AccountAsker {
    int type = 0;             // of a request record, whose answer is a response of that type; 0: a message
    std::string uuid = {};    // of the request or message, as its sender gave it
    std::string from = {};    // the sender of a request record
    std::string handle = {};  // its window
    std::string key = {};     // the subscription key under which a message is answered
    bool wants = false;       // an answer at all
};

// Threads: the UI thread. Every call may end pages; all but User() may also destroy the account manager itself.
class AccountEvents {
  public:
    // Who is signed in.
    virtual AccountUser User() const = 0;
    // Subscribes the object with that handle to a topic of pushes.
    virtual void Subscribe(const std::string& topic, int32_t handle) = 0;
    // Delivers the answer to a request record (`asker.type` is not 0): a response that holds "DATATYPE", "JsonData" and,
    // where it has rows, "Table". False when nobody could get it.
    virtual bool AnswerPage(const AccountAsker& asker, CQueueRespData& response) = 0;
    // Sends a notification (a record of type 65537) to the host, which hands it to all that subscribed. False when it
    // was not sent.
    virtual bool Publish(CQueueReqItem& notification) = 0;
    // Hands over a push that did not come from outside, such as "AccountOnline".
    virtual void HandlePush(const CQueueRespData& push) = 0;
    // The timers of datalists/data_timer_wnd.h by their numbers there; a running one starts anew. False when that failed.
    virtual bool StartTimer(uint32_t id, uint32_t milliseconds) = 0;
    virtual bool StopTimer(uint32_t id) = 0;

  protected:
    ~AccountEvents() = default;
};

}  // namespace luadui
