// Asking: from a page's record to local data or to a request on its way to the server.
#include <ctime>
#include <iterator>

#include "base/counters.h"
#include "datamgr/quote_fields.h"
#include "datamgr/quote_names.h"
#include "datamgr/request_route.h"
#include "datamgr/ui_data_manager.h"
#include "datamgr/ui_registry.h"
#include "datamgr/ui_stock_data_manager.h"
#include "messaging/guid.h"
#include "messaging/request_types.h"

namespace luadui {
namespace {

constexpr int kReqHq = 1051;
constexpr int kReqHqZq = 1058;
constexpr int kReqBasketOrder = 1122;

constexpr std::string_view kTick = "update_push_hq";  // the timer window's word

int32_t HandleOf(const CUIData& record) {
    int32_t handle = 0;
    record.GetData("handle", handle);
    return handle;
}

// What the server sees of a page's record: its texts and records.
CUIData MakeParams(const CUIData& record) {
    CUIData params;
    for (const auto [key, value] : record) {
        if (value.Kind() == kDataString) {
            params.SetData(key, value.AsText());
        } else if (CUIData nested; value.Kind() == kDataRecord && value.Get(nested)) {
            params.SetData(key, nested);
        }
    }
    if (const int32_t handle = HandleOf(record)) params.SetData("handle", std::to_string(handle));
    return params;
}

// Puts the tables of several accounts side by side, as the list holds them.
void TakeTables(const CTokenTableList& list, const CDataSet& tokens, CUIData& request) {
    for (const std::string& token : tokens) {
        CDataTable table;
        list.GetTable(token, table);
        const bool isTaken = request.Has(token) && request.GetDataType(token) != kDataTable;
        if (isTaken) {
            CCounters::Add("account_named_like_a_parameter");
        } else {
            request.SetData(token, table);
        }
    }
}

}  // namespace

bool CUIDataManager::GetData(CUIData& request, bool cacheOnly, bool flag) {
    if (request.GetTypeText() == kTick) {
        _onTick();
        return false;
    }
    const int32_t handle = HandleOf(request), self = GetHandle();
    const bool isComputed = _isComputed(request.GetTypeText());
    const bool isFound = _GetData(request);
    // A factory asks the host, who may close the page.
    if (cacheOnly || CBaseObject::Find(self) != this) return isFound;
    if (isFound) {
        _completeAnswer(request, handle);
        ResponseNotify(&request, handle, flag);
    } else if (isComputed) {
        ResponseNotify(&request, handle, false);
    } else if (_isNeedRequset(request.GetTypeText()) && !_handleComplexRequest(request, flag)) {
        _handleRequest(request);
    }
    return isFound;
}

CUIData CUIDataManager::GetData(const std::string& kind) {
    CUIData data;
    GetData(kind, data);
    return data;
}

bool CUIDataManager::GetData(const std::string& kind, CUIData& out) {
    return m_lists.Shared().GetData(kind, out);
}

bool CUIDataManager::GetDataShared(const std::string& kind, CUIData& out) {
    return m_lists.Shared().GetDataShared(kind, out);
}

bool CUIDataManager::GetData(unsigned int handle, std::string kind, CDataSet& tokens, CUIData& out) {
    CUIData request(kind);
    request.SetData("handle", static_cast<int32_t>(handle));
    request.SetData("fund_token", tokens);
    const bool isFound = GetData(request, true, false);
    if (isFound) {
        out = request;
    } else {
        GetData(request, false, false);
    }
    return isFound;
}

bool CUIDataManager::GetData(unsigned int handle, std::string kind, std::string fundToken, CUIData& out) {
    CDataSet tokens;
    tokens.Insert(fundToken);
    return GetData(handle, std::move(kind), tokens, out);
}

bool CUIDataManager::GetData(unsigned int, std::string kind, std::string fundToken, CDataTable& out) {
    const CTokenTableList* const list = m_lists.Find(kind);
    return list && list->GetTable(fundToken, out);
}

bool CUIDataManager::_GetData(CUIData& request) {
    if (_isComputed(request.GetTypeText())) return _handleFactoryData(request);
    if (request.GetDataLong("refresh") != 0) return false;
    if (_handleFactoryData(request)) return true;
    const std::string_view kind = request.GetTypeText();
    if (IsQuoteKind(kind)) return _findQuotes(request);
    if (const auto family = ListStore::FamilyOf(kind); family != ListStore::kFamilies) {
        const AccountDataList* const list = m_lists.Accounts(family);
        return list && list->GetData(request);
    }
    if (const CTokenTableList* const list = m_lists.Find(kind)) return _findTables(*list, request);
    CUIData shared;
    if (!m_lists.Shared().GetData(kind, shared)) return false;
    for (const auto [key, value] : shared) {
        if (key != "handle" && key != "pageName") request.SetData(key, value);
    }
    return true;
}

bool CUIDataManager::_findTables(const CTokenTableList& list, CUIData& request) {
    CDataSet tokens;
    const std::string kind = request.GetType();
    std::string token = request.GetDataString("fund_token");
    if (request.GetData("fund_token", tokens)) {
        if (!list.Holds(tokens)) return false;
        if (tokens.Size() > 1) {
            TakeTables(list, tokens, request);
            return true;
        }
        token = *tokens.begin();
        request.SetData("fund_token", token);
    }
    CDataTable table;
    if (!list.GetTable(token, table)) return false;
    request.SetData(kind, table);
    return true;
}

bool CUIDataManager::_isNeedRequset(std::string_view kind) {
    return kind != "allocate" && kind != "accountgroup" && kind != "accountgroupcredit";
}

bool CUIDataManager::_handleComplexRequest(CUIData& request, bool flag) {
    const auto family = ListStore::FamilyOf(request.GetTypeText());
    const AccountDataList* const list = family == ListStore::kFamilies ? nullptr : m_lists.Accounts(family);
    if (!list || !list->GetData(request)) return false;
    ResponseNotify(&request, HandleOf(request), flag);
    return true;
}

bool CUIDataManager::_handleRequest(CUIData& record) {
    int level = 1;
    record.GetData("req_level", level);
    if (level == 1) return _handleUserTokenReq(record);
    if (level != 2) {
        CCounters::Add("request_level_unknown");
        return false;
    }
    bool isSent = false;
    const int32_t self = GetHandle();
    const CUIData bundle = record;  // whoever is called meanwhile may change the record
    for (const auto [key, value] : bundle) {
        CUIData request;
        if (key == "req_level" || key == "handle" || !value.Get(request)) continue;
        for (const char* common : {"handle", "pageName"}) {
            if (!request.Has(common) && bundle.Has(common))
                request.SetData(common, bundle.GetDataView(common));
        }
        isSent = _handleUserTokenReq(request) || isSent;
        if (CBaseObject::Find(self) != this) break;
    }
    return isSent;
}

bool CUIDataManager::_handleUserTokenReq(CUIData record) {
    CDataSet tokens;
    if (!record.GetData("fund_token", tokens)) return _handleSingleReq(record, nullptr);
    if (tokens.IsEmpty()) CCounters::Add("request_without_account");
    bool isSent = false;
    const int32_t self = GetHandle();
    auto ask = std::make_shared<const CDataSet>(tokens);
    for (const std::string& token : tokens) {
        const bool isLast = token == *std::prev(tokens.end());
        record.SetData("fund_token", token);
        isSent = _handleSingleReq(record, isLast ? std::move(ask) : ask) || isSent;
        record.Remove("TraceID");
        if (CBaseObject::Find(self) != this) break;
    }
    return isSent;
}

bool CUIDataManager::_handleSingleReq(const CUIData& record, std::shared_ptr<const CDataSet> ask) {
    const std::string kind = record.GetType();
    const int type = static_cast<int>(m_typeCodes.GetDataLong(kind));
    if (type == 0) {
        CCounters::Add("request_kind_unknown");
        return false;
    }
    CQueueReqItem item;
    _fillItem(item, record, type);
    const int32_t self = GetHandle();
    _saveMultiServerInstRecord(item);
    if (CBaseObject::Find(self) != this) return false;  // the host was told meanwhile
    _getDestServer(item);
    _getReqMsgRouteType(item);
    const std::string uuid = NewGuid();
    item.SetData("UUID", uuid);

    RequestLedger::Entry entry;
    entry.kind = kind;
    entry.handle = HandleOf(record);
    entry.fundToken = record.GetDataString("fund_token");
    entry.ask = std::move(ask);
    entry.wantsEndRecord = record.GetDataLong("refresh_record") != 0;
    RequestLedger::Instance().Describe(uuid, std::move(entry));
    _beginTrace(item, kind);
    const bool isSent = Request(item);
    if (!isSent || IsPageRegistration(type)) RequestLedger::Instance().Drop(uuid);
    if (isSent && type == kReqLuaCall && CBaseObject::Find(self) == this) _passHostAnswer(item, record);
    return isSent;
}

void CUIDataManager::_beginTrace(const CQueueReqItem& item, const std::string& kind) {
    const std::string trace = item.GetDataString("TraceID");
    if (trace.empty()) return;
    RecordTraceLog(trace, {}, {}, kTraceUser, "start",
                   {{"kind", kind},
                    {"REQTYPE", std::to_string(RequestTypeOf(item))},
                    {"UUID", item.GetDataString("UUID")}});
}

// The host's Lua side has answered at once.
void CUIDataManager::_passHostAnswer(const CQueueReqItem& item, const CUIData& record) {
    CUIData params;
    item.GetData("Params", params);
    if (!params.Has("result")) return;
    CUIData answer(record.GetTypeText());
    answer.SetData("handle", HandleOf(record));
    answer.SetData("method", params.GetDataText("method"));
    answer.SetData("result", params.GetDataText("result"));
    ResponseNotify(&answer, HandleOf(record), false);
}

void CUIDataManager::_fillItem(CQueueReqItem& item, const CUIData& record, int type) {
    CUIData params = MakeParams(record);
    if (type == kReqHq || type == kReqHqZq) {
        params.SetData("codeID", record.GetDataText("stock_code"));
        params.SetData("DataItems", kQuoteDataItems);
    }
    item.SetData("REQTYPE", type);
    item.SetData("Refresh", record.GetDataLong("refresh") != 0);
    item.SetData("FundToken", record.GetDataText("fund_token"));
    item.SetData("Params", params);
    if (const TextView trace = record.GetDataText("TraceID"); !trace.empty()) item.SetData("TraceID", trace);
    if (CDataTable table; record.GetData("table", table)) item.SetData("Table", table);
}

void CUIDataManager::_getDestServer(CQueueReqItem& item) {
    CUIData params;
    item.GetData("Params", params);
    std::string_view server = params.GetDataText("session_flag");
    if (server.empty()) {
        const std::string_view key = InstIDKeyOf(RequestTypeOf(item));
        if (!key.empty()) server = Servers().ServerOf(params.GetDataText(key));
    }
    if (!server.empty()) item.SetData("DestServer", server);
}

void CUIDataManager::_getReqMsgRouteType(CQueueReqItem& item) {
    item.SetData("RouteType", RouteTypeOf(RequestTypeOf(item), !item.GetDataText("DestServer").empty()));
}

void CUIDataManager::_saveMultiServerInstRecord(const CQueueReqItem& item) {
    if (RequestTypeOf(item) != kReqBasketOrder) return;
    CUIData params;
    item.GetData("Params", params);
    InstructionRecord::Instance().Remember(params.GetDataText("InstanceID"), std::time(nullptr));
}

bool CUIDataManager::Request(CQueueReqItem& request) {
    if (!_complete(request)) return false;
    if (CUIData shared; request.GetDataShared("Params", shared))
        shared.SetData("id", request.GetDataText("UUID"));
    CUIData params;
    request.GetData("Params", params);
    const bool isLua = RequestTypeOf(request) == kReqLuaCall;
    auto& router = CUIStockDataManager::get_mutable_instance();
    if (isLua && params.GetDataText("method") == "initLoginInfo") {
        router.Init(params.GetDataString("params"), router.HostWindow());
    }
    return router.Request(request);
}

}  // namespace luadui
