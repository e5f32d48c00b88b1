#include "messaging/host_link.h"

#include "base/guard.h"
#include "messaging/page_sign_registry.h"
#include "messaging/request_types.h"

namespace luadui {
namespace {

constexpr char kCallbackThrew[] = "host_callback_threw";

void CopyParamsBack(const CUIData& request, StringMap& params) {
    CUIData answered;
    if (!request.GetData("Params", answered)) return;
    for (const auto& [key, value] : answered) {
        std::string text;
        if (value.Get(text)) params[std::string(key)] = std::move(text);
    }
}

}  // namespace

CHostLink& CHostLink::Instance() {
    static CHostLink link;
    return link;
}

bool CHostLink::Send(CQueueReqItem& request) {
    const int type = RequestTypeOf(request);
    if (IsPageRegistration(type)) return _handleInside(request, type);
    const PushCallback push = m_push.Get();
    return !push || Guarded(kCallbackThrew, [&] { push(&request); });
}

bool CHostLink::_handleInside(CQueueReqItem& request, int type) {
    CUIData params;
    if (!request.GetDataShared("Params", params)) return false;
    const std::string sign = params.GetDataString("page_sign");
    if (!sign.empty()) CPageSignRegistry::Instance().Register(sign, request.GetDataString("From"));
    if (type == kReqPageRegister || params.GetDataText("method") == "page_register") return true;
    return _callLua(params);
}

bool CHostLink::_callLua(CUIData& params) {
    const RequestSyncCallback callback = m_requestSync.Get();
    if (!callback) return true;
    CQueueReqItem call;
    call.SetData("REQTYPE", static_cast<int>(kReqLuaCall));
    call.SetData("Params", params);
    if (!Guarded(kCallbackThrew, [&] { callback(&call); })) return false;
    params.SetData("result", call.GetDataText("result"));
    return true;
}

bool CHostLink::RequestSync(unsigned int type, StringMap& params, std::string* result) {
    const RequestSyncCallback callback = m_requestSync.Get();
    if (!callback) return true;
    CQueueReqItem request;
    request.SetData("REQTYPE", type);
    CUIData record;
    for (const auto& [key, value] : params) record.SetData(key, value);
    request.SetData("Params", record);
    if (!Guarded(kCallbackThrew, [&] { callback(&request); })) return false;
    if (result) {
        if (std::string answer = request.GetDataString("result"); !answer.empty())
            *result = std::move(answer);
    }
    CopyParamsBack(request, params);
    return true;
}

void CHostLink::Login(unsigned int kind, const std::string& user, const std::string& secret,
                      const ServerMap& servers, const tag_login_user* detail, unsigned int flags) {
    const LoginCallback callback = m_login.Get();
    if (!callback) return;
    Guarded(kCallbackThrew, [&] { callback(kind, user, secret, servers, detail, flags); });
}

std::string ReadConfig(const std::string& file, const std::string& key, const std::string& fallback) {
    StringMap params{{"FileName", file}, {"Key", key}};
    std::string value = fallback;
    CHostLink::Instance().RequestSync(kReqConfigRead, params, &value);
    return value;
}

void WriteConfig(const std::string& file, const std::string& key, const std::string& value) {
    StringMap params{{"FileName", file}, {"Key", key}, {"Value", value}};
    CHostLink::Instance().RequestSync(kReqConfigWrite, params, nullptr);
}

}  // namespace luadui
