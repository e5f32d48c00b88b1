// CAccountRequester: what accounts, groups and their lists have in common as askers of the account service.
#pragma once

#include <cstdint>
#include <map>
#include <string>
#include <string_view>
#include <vector>

#include "accounts/account_request.h"
#include "accounts/result_event.h"
#include "messaging/request_object.h"

namespace luadui {

// Sends requests of the operation table, takes the first answer to each of them and reports events.
//
// Answers:   only those to a request that this object sent, of that request's type, and each request once. Others
//            count as "account_answer_repeated" and go no further: the state follows the first answer. An answer that
//            comes in parts is handed on as one, with the rows of all (up to kMaxRows, others count as
//            "account_answer_part_refused"). A request that could not be sent, and one that was given up, is answered
//            here, as one that failed: so there is one answer to each, and nothing about it is kept afterwards.
// Giving up: a request that waited kPatience is given up when another is sent or answered; so is the oldest of all objects'
//            when more than kMaxUnanswered were sent since it. Counted as "account_request_unanswered".
// Threads:   the UI thread.
// Lifetime:  host callbacks and the sink may destroy the object inside a call here.
class CAccountRequester : public CRequestObject {
  public:
    static constexpr uint64_t kPatience = 10 * 60 * 1000;  // ms
    static constexpr size_t kMaxUnanswered = 20'000;
    static constexpr int kMaxRows = 500'000;

    void OnResponse(const CQueueRespData* response) override;
    // Requests that wait for their answer.
    size_t PendingRequests() const { return m_pending.size(); }
    // Ends all requests under way, for an object that is about to go. What their askers are to hear: a failure each, with
    // `message` (a UTF-8 literal).
    std::vector<ResultEvent> Abandon(std::string_view message);

    // Where the time comes from, in ms; null is the system's. For tests.
    static void SetClock(uint64_t (*clock)());

  protected:
    // `sink` gets the events and outlives the object; `module` (a literal) is their origin.
    CAccountRequester(ResultEventSink& sink, std::string_view module);

    // An answer on its way to the state: valid during the call.
    struct Answer {
        const AccountOperation& operation;
        const CQueueRespData& response;
        const std::string& uuid;
        const std::string& key;  // of the account that the request was about; may be empty
        // What was asked: the answer's "Request"."Params", completed from the request itself.
        const CUIData& params;
    };
    virtual void _onAnswer(const Answer& answer) = 0;

    // Sends the request and logs that, if the operation has a line for it, about `subject`. `key` is the account's that it is
    // about. When it cannot be sent its failure is reported and the answer is false. Nothing of this object may be used
    // afterwards unless IsAlive() says that it is still there.
    bool _send(const AccountOperation& operation, CQueueReqItem& request, const std::string& subject = {},
               const std::string& key = {});
    // The same for a request that lacks what it is about when it is not `usable`: that one is not sent.
    bool _sendIf(bool usable, const AccountOperation& operation, CQueueReqItem& request,
                 const std::string& subject);
    // Whether the object with this handle is still there.
    static bool IsAlive(int32_t handle) { return CBaseObject::Find(handle) != nullptr; }

    // Report an event. The last thing that a member function does: the sink may destroy the object.
    void _report(std::string_view name, const std::string& uuid, CJsonObject payload,
                 const std::string& key = {});
    void _fail(const AccountOperation& operation, const std::string& uuid, const AccountFailure& failure,
               const std::string& key = {});
    void _succeed(const Answer& answer, CJsonObject payload);
    void _fail(const Answer& answer, const AccountFailure& failure);
    // The failure that the server reports, or the operation's own text when it gives no reason.
    void _failAsAnswered(const Answer& answer);

    ResultEventSink& _sink() const { return m_sink; }

  private:
    struct Pending {
        const AccountOperation* operation;  // a row of the table
        CUIData params;
        std::string key;
        CDataTable rows;  // of the parts that came
    };
    using PendingMap = std::map<std::string, Pending, std::less<>>;  // by UUID

    CUIData _asked(const CQueueRespData& response, const Pending& pending) const;
    bool _takePart(const CQueueRespData& response, Pending& pending);
    void _answerHere(const std::string& uuid, std::string_view message);
    static void _giveUpOld();

    ResultEventSink& m_sink;
    const std::string_view m_module;
    PendingMap m_pending;
};

}  // namespace luadui
