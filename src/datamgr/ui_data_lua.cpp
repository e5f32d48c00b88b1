// The host's Lua side: calls that are answered at once, and messages that go out as requests.
#include <algorithm>

#include "base/counters.h"
#include "base/data_list.h"
#include "base/json_object.h"
#include "datamgr/ui_data_manager.h"

namespace luadui {
namespace {

constexpr char kMessageToLua[] = "dui_send_2_lua";
constexpr char kStartTactic[] = "start_tactic";

// Kinds that the host takes as requests of their own type.
constexpr std::string_view kRequests[] = {"send_copydata", "send_http_request", kMessageToLua};
// What says how a call is made is no parameter of it.
constexpr std::string_view kEnvelope[] = {"handle", "pageName",  "force_sendmoudle", "cmd",   "method",
                                          "params", "page_sign", "TraceID",          "result"};

template <class Texts>
bool Contains(const Texts& texts, std::string_view text) {
    return std::ranges::find(texts, text) != std::end(texts);
}

CDataList ListOf(const CDataSet& texts) {
    CDataList list;
    for (const std::string& text : texts) list.Append(text);
    return list;
}

bool AddParameter(CJsonObject& params, std::string_view name, const ValueView& value) {
    switch (value.Kind()) {
        case kDataString:
            return params.Set(name, value.AsText());
        case kDataInteger:
            return params.Set(name, value.AsLong());
        case kDataDouble:
            return params.Set(name, value.AsDouble());
        case kDataBoolean:
            return params.Set(name, value.AsBool());
        default:
            break;
    }
    if (CDataSet texts; value.Get(texts)) return params.Set(name, ListOf(texts));
    if (CDataList list; value.Get(list)) return params.Set(name, list);
    if (CJsonObject object; value.Get(object)) return params.Set(name, object);
    return false;
}

// The parameters of a call as JSON: "params" as it is, or else what the record holds. Records and tables have
// no form that scripts would expect.
std::string ParamsOf(const CUIData& record) {
    if (record.GetDataType("params") == kDataString) return record.GetDataString("params");
    CJsonObject params;
    for (const auto [name, value] : record) {
        if (Contains(kEnvelope, name)) continue;
        if (!AddParameter(params, name, value)) CCounters::Add("lua_parameter_dropped");
    }
    return params.ToText();
}

}  // namespace

void CUIDataManager::_sendLua(CUIData& record) {
    const std::string kind = record.GetType();
    if (kind == kStartTactic) {  // the host's scripts run tactics: it is a message to them
        CUIData message = record;
        message.SetType(kMessageToLua);
        message.SetData("method", kStartTactic);
        _handleRequest(message);
    } else if (Contains(kRequests, kind)) {
        _handleRequest(record);
    } else {
        _callLua(record);
    }
}

void CUIDataManager::_callLua(CUIData& record) {
    std::string method = record.GetDataString("method");
    if (method.empty()) method = record.GetType();
    const int32_t self = GetHandle();
    record.SetData("result", SendLuaSync(method, ParamsOf(record), record.GetDataString("page_sign")));
    int32_t handle = 0;
    const bool isAsked = record.GetData("handle", handle) && handle > 0;
    if (isAsked && CBaseObject::Find(self) == this) ResponseNotify(&record, handle, false);
}

}  // namespace luadui
