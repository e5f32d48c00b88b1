// What comes back: answers and pushes on their way through a handler to the pages.
#include <algorithm>
#include <utility>

#include "base/counters.h"
#include "base/dui_base_wnd.h"
#include "base/guard.h"
#include "base/json_object.h"
#include "datamgr/answer_routes.h"
#include "datamgr/local_sources.h"
#include "datamgr/push_routes.h"
#include "datamgr/request_log.h"
#include "datamgr/request_route.h"
#include "datamgr/ui_data_manager.h"
#include "datamgr/ui_registry.h"
#include "datamgr/ui_stock_data_manager.h"
#include "messaging/handle_text.h"
#include "messaging/request_types.h"
#include "platform/win32.h"
#include "trade/server_result.h"
#include "trade/trade.h"

namespace luadui {
namespace {

constexpr int kDataFailed = -1;

bool IsFailed(const CQueueRespData& response) {
    int type = 0;
    return response.GetData("DATATYPE", type) && type == kDataFailed;
}

CUIData ParamsOf(const CQueueRespData& response) {
    CUIData request, params;
    if (response.GetData("Request", request)) request.GetData("Params", params);
    return params;
}

// An answer brings its request along; one that lost it is still known by its UUID, unless it comes as a push.
// A message of the host to a page has neither request nor topic.
bool IsAnswer(const CQueueRespData& response) {
    return response.GetDataType("Request") == kDataRecord ||
           response.GetDataLong("DATATYPE") == kDataHostMessage ||
           (RequestLedger::Instance().Find(response.GetDataText("UUID")) &&
            !FindPushRoute(response.GetDataText("Topic")));
}

// The last request that lets go of the ask ends it. Subscriptions never do.
void TakeAsk(RequestLedger::Entry& entry, Answer& answer) {
    const auto ask = entry.isSub ? entry.ask : std::exchange(entry.ask, nullptr);
    if (!ask) return;
    answer.tokens = *ask;
    answer.isLastOfAsk = entry.isSub || ask.use_count() == 1;
}

// Completes the answer by what is known of its request. False when there is nothing to handle (yet).
bool OpenAnswer(Answer& answer) {
    auto& ledger = RequestLedger::Instance();
    RequestLedger::Entry* const entry = ledger.Find(answer.response.GetDataText("UUID"));
    if (!entry) {
        answer.age = ledger.NextAge();
        return true;
    }
    if (entry->isDone && !entry->isSub) {
        CCounters::Add("answer_repeated");
        return false;
    }
    // Further answers to a subscription are as new as a push.
    answer.age = entry->isDone ? ledger.NextAge() : entry->age;
    answer.handle = entry->handle;
    if (!entry->fundToken.empty()) answer.fundToken = entry->fundToken;
    if (RequestTypeOfKind(entry->kind) == answer.type) answer.kind = entry->kind;
    if (!entry->parts.Join(answer)) {
        CCounters::Add("answer_part_kept");
        return false;
    }
    TakeAsk(*entry, answer);
    return ledger.Finish(*entry);
}

// Creation, change and queries of instructions. Orders and deals have columns of the same names, for other
// numbers.
bool IsAboutInstructions(int type) {
    constexpr std::pair<int, int> kRanges[] = {{1113, 1131}, {1161, 1176}, {1211, 1247}, {1253, 1290}};
    return std::ranges::any_of(
        kRanges, [type](const auto& range) { return range.first <= type && type <= range.second; });
}

// Of an answer; more would only push out those learned before.
constexpr int kRowsLearned = 10'000;

// The server of an instruction is the one whose answer first names it.
void LearnServer(const Answer& answer) {
    if (!IsAboutInstructions(answer.type)) return;
    CJsonObject json;
    ReadJsonData(answer.response, json);
    std::string server = answer.response.GetDataString("SrcServer");
    if (server.empty()) server = json.GetString("session_flag");
    if (server.empty()) return;
    auto& servers = CUIDataManager::Servers();
    if (const std::string_view key = InstIDKeyOf(answer.type); !key.empty()) {
        servers.Remember(answer.params.GetDataText(key), server);
    }
    const int rows = std::min(answer.table.GetRowNumber(), kRowsLearned);
    if (rows < answer.table.GetRowNumber()) CCounters::Add("instruction_servers_cut");
    for (const char* name : {"instructionid", "InstanceID", "order_no"}) {
        servers.Remember(json.GetText(name), server);
        const int column = answer.table.FindColumn(name);
        for (int row = 0; column >= 0 && row < rows; ++row) {
            servers.Remember(answer.table.GetItemText(row, column), server);
        }
    }
}

}  // namespace

InstructionServers& CUIDataManager::Servers() {
    static auto* const servers = new InstructionServers;
    return *servers;
}

void CUIDataManager::OnResponse(const CQueueRespData* response) {
    if (!response) return;
    const CQueueRespData& resp = *response;
    const int32_t self = GetHandle();
    NoteFailure(resp);
    if (CBaseObject::Find(self) != this) return;
    if (m_runType == kTypeCommonData) HandleRecordReq(resp);
    const bool isIgnored = IngnoreData(resp);
    if (isIgnored && !IsFailed(resp)) return CCounters::Add("response_ignored");

    ResponseError(resp);
    if (CBaseObject::Find(self) != this) return;
    // What failed as no data in particular is no data of all pages either, yet this manager may have asked.
    if (IsAnswer(resp)) {
        _dealNormalResponse(resp);
    } else if (!isIgnored) {
        _dealSubResposnse(resp);
    }
}

void CUIDataManager::NoteFailure(const CQueueRespData& response) {
    CMessageCenterList* const messages = m_lists.MessageCenter();
    if (!messages || !IsFailed(response)) return;
    auto& router = CUIStockDataManager::get_mutable_instance();
    if (m_userName.empty()) m_userName = router.GetUserInfo().username;
    auto& common = router.CommonData();
    messages->AddErrorMessage(response, common.CUIDataManager::GetData("account"),
                              common.CUIDataManager::GetData("account_xy"), m_userName);
}

bool CUIDataManager::IngnoreData(const CQueueRespData& response) const {
    if (m_runType == kTypeCommonData) return !CUIStockDataManager::IsCommonData(&response);
    if (m_runType == kTypePageData) return CUIStockDataManager::IsCommonData(&response);
    return false;
}

bool CUIDataManager::_isSubReq(const CQueueRespData& response) { return ParamsOf(response).Has("isSub"); }

int CUIDataManager::_getResHandle(const CQueueRespData& response) {
    if (const auto* const entry = RequestLedger::Instance().Find(response.GetDataText("UUID")))
        return entry->handle;
    return HandleFromText(ParamsOf(response).GetDataText("handle"));
}

bool CUIDataManager::ResponseError(const CQueueRespData& response) {
    const auto* const entry = RequestLedger::Instance().Find(response.GetDataText("UUID"));
    if (entry && entry->isDone && !entry->isSub) return false;  // a repeated answer
    std::string text;
    if (!CTrade::HandleResponseError(response, text)) return false;
    CUIData record("error_msg");
    const int handle = _getResHandle(response);
    record.SetData("error_msg", text);
    record.SetData("handle", handle);
    ResponseNotify(&record, handle, true);
    return true;
}

void CUIDataManager::_dealNormalResponse(const CQueueRespData& response) {
    const int type = RequestTypeOf(response);
    const AnswerRoute* const route = FindAnswerRoute(type);
    const int32_t self = GetHandle();
    if (route) {
        Answer answer(response);
        answer.params = ParamsOf(response);
        answer.type = type;
        answer.kind = route->kind;
        answer.handle = _getResHandle(response);
        answer.isSub = _isSubReq(response);
        answer.fundToken = response.GetDataString("FundToken");
        answer.hasTable = response.GetData("Table", answer.table);
        ServerResult result = ReadServerResult(response);
        answer.code = result.code;
        answer.message = std::move(result.message);
        if (!OpenAnswer(answer)) return;
        _runHandlers(answer, *route);
    } else {
        CCounters::Add("answer_without_handler");
    }
    if (CBaseObject::Find(self) == this) _endTrace(response);
}

void CUIDataManager::_runHandlers(Answer& answer, const AnswerRoute& route) {
    const int32_t self = GetHandle();
    LearnServer(answer);
    route.first(*this, answer);
    if (route.second && CBaseObject::Find(self) == this) route.second(*this, answer);
    if (CBaseObject::Find(self) == this) _endRefresh(answer.response.GetDataString("UUID"), answer.handle);
}

void CUIDataManager::_endTrace(const CQueueRespData& response) {
    const std::string trace = response.GetDataString("TraceID");
    if (!trace.empty()) RecordTraceLog(trace, {}, {}, kTraceUser, "end", {});
}

void CUIDataManager::_endRefresh(const std::string& uuid, int32_t handle) {
    auto* const entry = RequestLedger::Instance().Find(uuid);
    if (!entry || !std::exchange(entry->wantsEndRecord, false)) return;
    CUIData record("record_req_end");
    record.SetData("UUID", uuid);
    record.SetData("handle", handle);
    ResponseNotify(&record, handle, true);
}

void CUIDataManager::_dealSubResposnse(const CQueueRespData& response) {
    const std::string topic = response.GetDataString("Topic");
    const PushRoute* const route = FindPushRoute(topic);
    if (!route) return CCounters::Add("push_topic_unknown");
    Push push{.response = response,
              .key = route->key,
              .fundToken = std::string_view(topic).substr(route->key.size()),
              .age = RequestLedger::Instance().NextAge(),
              .fields = {}};
    if (ReadPush(push)) route->handler(*this, push, route->kinds);
}

void CUIDataManager::ResponseNotify(CUIData* record, int handle, bool notifyOthers) {
    if (!record) return;
    const int32_t self = GetHandle();
    CUIData content = *record;
    size_t delivered = _deliver(content, handle) ? 1 : 0;
    if (CBaseObject::Find(self) != this) return;
    if (notifyOthers) delivered += _notify(content, handle, handle);
    if (delivered == 0) CCounters::Add("record_without_receiver");
}

size_t CUIDataManager::_notify(CUIData record, int64_t except, int64_t asker) {
    const int32_t self = GetHandle();
    const std::string kind = record.GetType();
    size_t delivered = 0;
    for (const uint32_t handle : m_notify.Handles(kind)) {
        // One told before may have removed this one meanwhile.
        if (handle == except || !m_notify.Has(handle, kind) || _isToldElsewhere(handle, record, asker))
            continue;
        // One told before may have let in newer content.
        if (delivered != 0) StoreOf(*this, kind).KeepNewest(record);
        const bool isTaken = _deliver(record, handle);
        if (isTaken) ++delivered;
        if (CBaseObject::Find(self) != this) break;
        const bool isGone = !isTaken && !CBaseObject::Find(handle);
        if (isGone && m_notify.RemoveAll(handle, kind)) _kindUnwanted(kind);
    }
    return delivered;
}

bool CUIDataManager::_deliver(const CUIData& record, int64_t handle) {
    if (handle <= 0 || handle == GetHandle()) return false;
    CBaseObject* const object = CBaseObject::Find(handle);
    if (!object) {
        CCounters::Add("record_receiver_gone");
        return false;
    }
    CUIData copy = record;  // what the receiver does with it stays its own
    if (auto* const window = dynamic_cast<CDuiBaseWnd*>(object)) {
        const HWND hwnd = window->GetHWND();
        if (CDuiBaseWnd::SendRecord(hwnd, copy) || ::IsWindow(hwnd))
            return true;  // or it failed at it, counted there
        CCounters::Add("record_receiver_gone");
        return false;
    }
    Guarded("page_notify_failed", [&] { object->OnNotify(&copy); });
    return true;
}

void CUIDataManager::ResponseError(const std::string& kind, int handle, int code,
                                   const std::string& message) {
    CUIData record(kind);
    record.SetData("handle", handle);
    record.SetData("ret_code", code);
    record.SetData("ret_message", message);
    ResponseNotify(&record, handle, true);
}

void CUIDataManager::HandleRecordReq(const CQueueRespData& response) {
    const int type = RequestTypeOf(response);
    if (type < 1201 || type > 1207 || type == 1204) return;
    RequestLogLine line;
    line.type = type;
    const auto* const entry = RequestLedger::Instance().Find(response.GetDataText("UUID"));
    const std::string account = response.GetDataString("FundToken");
    const ServerResult result = ReadServerResult(response);
    line.account = account;
    line.code = result.code;
    line.message = result.message;
    if (entry) line.kind = entry->kind;
    if (entry && entry->age != 0) line.durationMs = static_cast<uint32_t>(GetTickCount() - entry->sentAt);
    WriteRequestLog(line);
}

}  // namespace luadui
