#include "host/callbacks.h"

#include <atomic>

#include "base/counters.h"
#include "base/guard.h"

namespace terminal {
namespace {

using luadui::CQueueReqItem;
using luadui::CUIData;

enum SyncRequest : int {
    kLuaCall = 1502,
    kRead = 0x80001,
    kWrite = 0x80002,
    kReadAll = 0x80003,
    kErase = 0x80004,
    kFileOpened = 0x80006,  // told, not asked
    kFileClosed = 0x80007,
};

CallbackTargets g_targets;
std::atomic<const CallbackTargets*> g_current{nullptr};
std::atomic<int> g_running{0};

// Lua code and C code call through here; no exception may pass.
template <class Work>
int Guard(Work work) {
    ++g_running;
    if (const CallbackTargets* const targets = g_current.load()) {
        luadui::Guarded("host_callback_failed", [&] { work(*targets); });
    }
    --g_running;
    g_running.notify_all();
    return 0;
}

int OnPush(CQueueReqItem* request) {
    return Guard([&](const CallbackTargets& targets) {
        if (!targets.news->Take(*request)) targets.broker->Submit(*request);
    });
}

int OnRequestSync(CQueueReqItem* request) {
    return Guard([&](const CallbackTargets& targets) { AnswerRequest(targets, *request); });
}

// The sample accounts are open from the start; a real host connects and logs in here.
int OnLogin(unsigned int, const std::string&, const std::string&, const std::map<int, tag_SrvAddr>&,
            const tag_login_user*, unsigned int) {
    return 0;
}

std::string Field(const CUIData& request, const char* name) {
    CUIData params;
    std::string text;
    if (request.GetData("Params", params) && params.GetData(name, text)) return text;
    return request.GetDataString(name);
}

void AnswerReadAll(SettingsStore& settings, CUIData& request) {
    std::vector<std::pair<std::string, std::string>> all;
    settings.ReadAll(Field(request, "FileName"), all);
    CUIData pairs;
    CUIData params;
    const bool hasParams = request.GetDataShared("Params", params);
    for (const auto& [key, value] : all) {
        pairs.SetData(key, value);
        if (hasParams) params.SetData(key, value);
    }
    request.SetData("result", pairs);
}

}  // namespace

void AnswerRequest(const CallbackTargets& targets, CUIData& request) {
    switch (request.GetDataLong("REQTYPE")) {
        case kRead: {
            std::string value;
            targets.settings->Read(Field(request, "FileName"), Field(request, "Key"), value);
            request.SetData("result", value);
            break;
        }
        case kWrite:
            targets.settings->Write(Field(request, "FileName"), Field(request, "Key"),
                                    Field(request, "Value"));
            break;
        case kReadAll:
            AnswerReadAll(*targets.settings, request);
            break;
        case kErase:
            if (targets.settings->Erase(Field(request, "FileName"), Field(request, "Key")))
                request.SetData("result", "true");
            break;
        case kLuaCall:
            request.SetData("result",
                            targets.luaInterface->Call(Field(request, "method"), Field(request, "params")));
            break;
        case kFileOpened:
        case kFileClosed:
            break;
        default:
            luadui::CCounters::Add("host_request_unknown");
    }
}

bool SetCallbacks(const Library& library, const CallbackTargets& targets) {
    g_targets = targets;
    g_current = &g_targets;
    return library.setPushCallback(&OnPush) && library.setRequestSyncCallback(&OnRequestSync) &&
           library.setLoginCallback(&OnLogin);
}

void ClearCallbackTargets() {
    g_current = nullptr;
    while (const int running = g_running.load()) g_running.wait(running);
}

}  // namespace terminal
