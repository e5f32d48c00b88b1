// The host's Lua side: calls that are answered at once, and messages that go out as requests.
#include "base/json_object.h"
#include "datamgr/ui_data_manager.h"

namespace luadui {
namespace {

// Kinds that the host takes as requests of their own type.
bool IsRequest(std::string_view kind) {
    return kind == "send_copydata" || kind == "dui_send_2_lua" || kind == "send_http_request" ||
           kind == "start_tactic";
}

// What says how a call is made is no parameter of it.
bool IsEnvelope(std::string_view key) {
    return key == "handle" || key == "pageName" || key == "method" || key == "page_sign" ||
           key == "TraceID" || key == "result";
}

std::string ParamsOf(const CUIData& record) {
    if (record.GetDataType("params") == kDataString) return record.GetDataString("params");
    CJsonObject params;
    for (const auto [key, value] : record) {
        if (!IsEnvelope(key) && value.Kind() == kDataString) params.Set(key, value.AsText());
    }
    return params.ToText();
}

}  // namespace

void CUIDataManager::_sendLua(CUIData& record) {
    if (IsRequest(record.GetTypeText())) {
        _handleRequest(record);
        return;
    }
    std::string method = record.GetDataString("method");
    if (method.empty()) method = record.GetType();
    record.SetData("result", SendLuaSync(method, ParamsOf(record), record.GetDataString("page_sign")));
    int32_t handle = 0;
    if (record.GetData("handle", handle) && handle > 0) ResponseNotify(&record, handle, false);
}

}  // namespace luadui
