#include "accounts/account_requester.h"

#include <deque>
#include <utility>

#include "accounts/account_log.h"
#include "base/counters.h"
#include "messaging/request_types.h"
#include "platform/win32.h"

namespace luadui {
namespace {

constexpr std::string_view kUnanswered = "没有收到应答！";

struct Sent {
    int32_t handle;
    std::string uuid;
    uint64_t at;
};

// Requests of all objects in the order in which they were sent, answered ones too until their time has come.
std::deque<Sent>& SentRequests() {
    static auto* const sent = new std::deque<Sent>;
    return *sent;
}

uint64_t SystemTime() { return ::GetTickCount64(); }
uint64_t (*g_clock)() = SystemTime;

void Append(CDataTable& rows, const CDataTable& part) {
    if (rows.GetColumnNumber() == 0) {
        rows = part;
    } else if (rows.GetRowNumber() > CAccountRequester::kMaxRows - part.GetRowNumber()) {
        CCounters::Add("account_answer_part_refused");
    } else {
        rows.InsertTable(part);
    }
}

}  // namespace

CAccountRequester::CAccountRequester(ResultEventSink& sink, std::string_view module)
    : m_sink(sink), m_module(module) {
    SetRequestSource(std::string(kModuleAccountManager));
}

void CAccountRequester::SetClock(uint64_t (*clock)()) { g_clock = clock ? clock : SystemTime; }

bool CAccountRequester::_send(const AccountOperation& operation, CQueueReqItem& request,
                              const std::string& subject, const std::string& key) {
    const std::string uuid = request.GetDataString("UUID");
    CUIData params;
    request.GetData("Params", params);
    if (!m_pending.try_emplace(uuid, Pending{&operation, params, key, CDataTable()}).second) {
        // Its answer could not be told from that of the other request.
        CCounters::Add("account_request_uuid_repeated");
        _fail(operation, uuid, LocalFailure(operation.unsent), key);
        return false;
    }
    const int32_t handle = GetHandle();
    SentRequests().push_back({handle, uuid, g_clock()});
    const bool isSent = Request(request);
    if (isSent) {
        LogAbout(subject, operation.sent);
    } else if (IsAlive(handle)) {
        _answerHere(uuid, operation.unsent);
    }
    _giveUpOld();
    return isSent;
}

bool CAccountRequester::_sendIf(bool usable, const AccountOperation& operation, CQueueReqItem& request,
                                const std::string& subject) {
    if (usable) return _send(operation, request, subject);
    _fail(operation, request.GetDataString("UUID"), LocalFailure(operation.unsent));
    return false;
}

void CAccountRequester::OnResponse(const CQueueRespData* response) {
    if (!response) return;
    const std::string uuid = RequestUuid(*response);
    const auto found = m_pending.find(uuid);
    if (found == m_pending.end() || found->second.operation->type != RequestTypeOf(*response)) {
        CCounters::Add("account_answer_repeated");
        return;
    }
    if (_takePart(*response, found->second)) return;
    const auto node = m_pending.extract(found);  // a second answer finds nothing, also inside the sink
    const Pending& pending = node.mapped();
    CQueueRespData whole = *response;
    if (pending.rows.GetColumnNumber() > 0) whole.SetData("Table", pending.rows);
    _onAnswer({*pending.operation, whole, uuid, pending.key, _asked(whole, pending)});
    _giveUpOld();
}

// Keeps the rows of an answer in parts. True while further ones are to come.
bool CAccountRequester::_takePart(const CQueueRespData& response, Pending& pending) {
    const bool isPart = response.IsPart() && !HasFailed(response);
    CDataTable rows;
    if ((isPart || pending.rows.GetColumnNumber() > 0) && TableOf(response, rows)) Append(pending.rows, rows);
    return isPart;
}

CUIData CAccountRequester::_asked(const CQueueRespData& response, const Pending& pending) const {
    CUIData asked = pending.params;
    for (const auto [key, value] : RequestParams(response)) asked.SetData(std::string_view(key), value);
    return asked;
}

void CAccountRequester::_answerHere(const std::string& uuid, std::string_view message) {
    const auto node = m_pending.extract(uuid);
    if (!node) return;
    const Pending& pending = node.mapped();
    CQueueRespData response;
    response.SetData("DATATYPE", -1);
    response.SetData("JsonData", LocalFailure(message).ToJson());
    _onAnswer({*pending.operation, response, node.key(), pending.key, pending.params});
}

void CAccountRequester::_giveUpOld() {
    std::deque<Sent>& all = SentRequests();
    while (!all.empty() && (all.size() > kMaxUnanswered || g_clock() - all.front().at >= kPatience)) {
        const Sent sent = std::move(all.front());
        all.pop_front();
        auto* const sender = dynamic_cast<CAccountRequester*>(CBaseObject::Find(sent.handle));
        if (!sender || !sender->m_pending.contains(sent.uuid)) continue;
        CCounters::Add("account_request_unanswered");
        sender->_answerHere(sent.uuid, kUnanswered);
    }
}

std::vector<ResultEvent> CAccountRequester::Abandon(std::string_view message) {
    const AccountFailure failure = LocalFailure(message);
    std::vector<ResultEvent> events;
    for (const auto& [uuid, pending] : std::exchange(m_pending, {})) {
        if (!pending.operation->failure.empty())
            events.push_back({pending.operation->failure, uuid, pending.key, failure.ToJson(), failure.code,
                              failure.message, m_module});
    }
    return events;
}

void CAccountRequester::_report(std::string_view name, const std::string& uuid, CJsonObject payload,
                                const std::string& key) {
    if (!name.empty()) m_sink.OnResultEvent({name, uuid, key, std::move(payload), {}, {}, m_module});
}

void CAccountRequester::_fail(const AccountOperation& operation, const std::string& uuid,
                              const AccountFailure& failure, const std::string& key) {
    if (operation.failure.empty()) return;
    m_sink.OnResultEvent(
        {operation.failure, uuid, key, failure.ToJson(), failure.code, failure.message, m_module});
}

void CAccountRequester::_succeed(const Answer& answer, CJsonObject payload) {
    _report(answer.operation.success, answer.uuid, std::move(payload), answer.key);
}

void CAccountRequester::_fail(const Answer& answer, const AccountFailure& failure) {
    _fail(answer.operation, answer.uuid, failure, answer.key);
}

void CAccountRequester::_failAsAnswered(const Answer& answer) {
    CJsonObject reason;
    if (!ReadReason(answer.response, reason)) return _fail(answer, LocalFailure(answer.operation.failed));
    if (answer.operation.failure.empty()) return;
    const AccountFailure failure = FailureOf(reason);
    m_sink.OnResultEvent(
        {answer.operation.failure, answer.uuid, answer.key, reason, failure.code, failure.message, m_module});
}

}  // namespace luadui
