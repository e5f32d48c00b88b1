#include "accounts/account_requester.h"

#include <utility>

#include "accounts/account_log.h"
#include "base/counters.h"
#include "messaging/request_types.h"

namespace luadui {
namespace {

void Append(CDataTable& rows, const CDataTable& part) {
    if (rows.GetColumnNumber() == 0) {
        rows = part;
    } else {
        rows.InsertTable(part);
    }
}

}  // namespace

CAccountRequester::CAccountRequester(ResultEventSink& sink, std::string_view module)
    : m_sink(sink), m_module(module) {
    SetRequestSource(std::string(kModuleAccountManager));
}

bool CAccountRequester::_send(const AccountOperation& operation, CQueueReqItem& request,
                              const std::string& subject) {
    const std::string uuid = request.GetDataString("UUID");
    CUIData params;
    request.GetData("Params", params);
    if (!m_pending.try_emplace(uuid, Pending{&operation, params, CDataTable()}).second) {
        // Its answer could not be told from that of the other request.
        CCounters::Add("account_request_uuid_repeated");
        _fail(operation, uuid, LocalFailure(operation.unsent));
        return false;
    }
    const int32_t handle = GetHandle();
    const bool isSent = Request(request);
    if (isSent) {
        LogAbout(subject, operation.sent);
    } else if (IsAlive(handle) && m_pending.erase(uuid) > 0) {
        _forget(uuid);
        _fail(operation, uuid, LocalFailure(operation.unsent));
    }
    return isSent;
}

bool CAccountRequester::_sendIf(bool usable, const AccountOperation& operation, CQueueReqItem& request,
                                const std::string& subject) {
    if (usable) return _send(operation, request, subject);
    _fail(operation, request.GetDataString("UUID"), LocalFailure(operation.unsent));
    return false;
}

void CAccountRequester::_forget(const std::string&) {}

void CAccountRequester::OnResponse(const CQueueRespData* response) {
    if (!response) return;
    const std::string uuid = RequestUuid(*response);
    const auto found = m_pending.find(uuid);
    if (found == m_pending.end() || found->second.operation->type != RequestTypeOf(*response)) {
        CCounters::Add("account_answer_repeated");
        return;
    }
    CDataTable rows;
    const bool hasRows = TableOf(*response, rows);
    if (response->IsPart() && !HasFailed(*response)) {
        if (hasRows) Append(found->second.rows, rows);
        return;
    }
    const auto node = m_pending.extract(found);  // a second answer finds nothing, also inside the sink
    Pending& pending = node.mapped();
    CQueueRespData whole = *response;
    if (pending.rows.GetColumnNumber() > 0) {
        if (hasRows) Append(pending.rows, rows);
        whole.SetData("Table", pending.rows);
    }
    _onAnswer({*pending.operation, whole, uuid, _asked(whole, pending)});
}

CUIData CAccountRequester::_asked(const CQueueRespData& response, const Pending& pending) const {
    CUIData asked = pending.params;
    for (const auto [key, value] : RequestParams(response)) asked.SetData(std::string_view(key), value);
    return asked;
}

void CAccountRequester::_succeed(const AccountOperation& operation, const std::string& uuid,
                                 CJsonObject payload) {
    _event(operation.success, uuid, std::move(payload), {});
}

void CAccountRequester::_report(std::string_view name, const std::string& uuid, CJsonObject payload) {
    _event(name, uuid, std::move(payload), {});
}

void CAccountRequester::_fail(const AccountOperation& operation, const std::string& uuid,
                              const AccountFailure& failure) {
    _event(operation.failure, uuid, failure.ToJson(), failure);
}

void CAccountRequester::_failAsAnswered(const Answer& answer) {
    CJsonObject reason;
    if (!answer.response.GetData("JsonData", reason) || reason.IsEmpty())
        return _fail(answer.operation, answer.uuid, LocalFailure(answer.operation.failed));
    _event(answer.operation.failure, answer.uuid, reason, FailureOf(reason));
}

void CAccountRequester::_event(std::string_view name, const std::string& uuid, CJsonObject payload,
                               const AccountFailure& failure) {
    if (name.empty()) return;
    m_sink.OnResultEvent(
        {name, uuid, _eventKey(), std::move(payload), failure.code, failure.message, m_module});
}

}  // namespace luadui
