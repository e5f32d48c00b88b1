// CAccountRequester: what accounts, groups and their lists have in common as askers of the account service.
#pragma once

#include <map>
#include <string>
#include <string_view>

#include "accounts/account_request.h"
#include "accounts/result_event.h"
#include "messaging/request_object.h"

namespace luadui {

// Sends requests of the operation table, takes the first answer to each of them and reports events.
//
// Answers:   only those to a request that this object sent, of that request's type, and each request once. Others
//            count as "account_answer_repeated" and go no further: the state follows the first answer. An answer that
//            comes in parts is handed on as one, with the rows of all.
// Threads:   the UI thread.
// Lifetime:  host callbacks and the sink may destroy the object inside a call here.
class CAccountRequester : public CRequestObject {
  public:
    void OnResponse(const CQueueRespData* response) override;
    // Requests that wait for their answer.
    size_t PendingRequests() const { return m_pending.size(); }

  protected:
    // `sink` gets the events and outlives the object; `module` (a literal) is their origin.
    CAccountRequester(ResultEventSink& sink, std::string_view module);

    // An answer on its way to the state: valid during the call.
    struct Answer {
        const AccountOperation& operation;
        const CQueueRespData& response;
        const std::string& uuid;
        const CUIData&
            params;  // what was asked: the answer's "Request"."Params", completed from the request itself
    };
    virtual void _onAnswer(const Answer& answer) = 0;
    // The account that events are about; empty here.
    virtual std::string _eventKey() const { return {}; }

    // The request with that UUID will have no answer: it was not sent. Does nothing here.
    virtual void _forget(const std::string& uuid);

    // Sends the request and logs that, if the operation has a line for it, about `subject`. When it cannot be sent its
    // failure event is reported and the answer is false. Nothing of this object may be used afterwards unless IsAlive()
    // says that it is still there.
    bool _send(const AccountOperation& operation, CQueueReqItem& request, const std::string& subject = {});
    // The same for a request that lacks what it is about when it is not `usable`: that one is not sent.
    bool _sendIf(bool usable, const AccountOperation& operation, CQueueReqItem& request,
                 const std::string& subject);
    // Whether the object with this handle is still there.
    static bool IsAlive(int32_t handle) { return CBaseObject::Find(handle) != nullptr; }

    // Report an event. The last thing that a member function does: the sink may destroy the object.
    void _succeed(const AccountOperation& operation, const std::string& uuid, CJsonObject payload);
    void _report(std::string_view name, const std::string& uuid, CJsonObject payload);
    void _fail(const AccountOperation& operation, const std::string& uuid, const AccountFailure& failure);
    // The failure that the server reports, or the operation's own text when it gives no reason.
    void _failAsAnswered(const Answer& answer);

    ResultEventSink& _sink() const { return m_sink; }

  private:
    struct Pending {
        const AccountOperation* operation;  // a row of the table
        CUIData params;
        CDataTable rows;  // of the parts that came
    };
    using PendingMap = std::map<std::string, Pending, std::less<>>;  // by UUID

    CUIData _asked(const CQueueRespData& response, const Pending& pending) const;
    void _event(std::string_view name, const std::string& uuid, CJsonObject payload,
                const AccountFailure& failure);

    ResultEventSink& m_sink;
    const std::string_view m_module;
    PendingMap m_pending;
};

}  // namespace luadui
