#include "luadui/lua_functions.h"

#include <cstdio>
#include <memory>
#include <tuple>

#include "base/counters.h"
#include "base/text.h"
#include "codedata/data_manager.h"
#include "luadui/frame_message.h"
#include "luadui/page_manager_wnd.h"
#include "luadui/ui_settings.h"
#include "luadui/version_list.h"
#include "luadui/window_number.h"
#include "messaging/host_link.h"
#include "messaging/page_sign_registry.h"
#include "messaging/request_types.h"

namespace luadui {
namespace {

// Host window

void SendFrame(const LuaArguments& in, LuaResults&) {
    const HWND window = WindowOfNumber(static_cast<uint32_t>(HostMainWindow()));
    if (!window || !IsWindow(window)) return;
    auto message = std::make_unique<FrameMessage>();
    message->code = in.Number(1);
    message->target = in.Text(2);
    message->method = in.Text(3);
    message->body.Parse(in.Text(4));
    if (PostMessageW(window, kMsgFrame, reinterpret_cast<WPARAM>(message.get()), 0)) {
        static_cast<void>(message.release());  // the receiver's now
    } else {
        CCounters::Add("frame_message_refused");
    }
}

void OnSetHWnd(const LuaArguments& in, LuaResults& out) {
    if (SetHostMainWindow(in.Number(1))) {
        out.AddText(Gbk("主窗口句柄设置成功！"));
    } else {
        out.AddNil();
        out.AddText(Gbk("主窗口句柄已被设置，设置失败！"));
    }
}

void OnGetHWnd(const LuaArguments&, LuaResults& out) {
    if (const int32_t window = HostMainWindow()) {
        out.AddNumber(window);
    } else {
        out.AddNumber(-1);
        out.AddText(Gbk("主窗口句柄为空！"));
    }
}

// Messages to pages

void PostHostMessage(const std::string& pageSign, const std::string& text) {
    const std::string sender = CPageSignRegistry::Instance().Find(pageSign);
    auto* const manager = CPageManagerWnd::Existing();
    if (sender.empty() || !manager) return;
    auto message = std::make_unique<CQueueRespData>();
    message->SetData("REQTYPE", kReqPageRegister);
    message->SetData("To", sender);
    message->SetData("DATATYPE", kDataHostMessage);
    CJsonObject body;
    body.Parse(ReplaceText(text, "UserToken", "fund_token"));
    message->SetData("JsonData", body);
    manager->PostResponse(std::move(message), 0);
}

// Scripts ignore the answer, which has always been a failure.
void OnError(const LuaArguments& in, LuaResults& out) {
    out.AddNil();
    out.AddText("FAIL");
    PostHostMessage(in.Text(1), in.Text(2));
}

// Pages

void OnInit(const LuaArguments& in, LuaResults& out) {
    out.AddFlag(false);
    auto& manager = CPageManagerWnd::WaitUntilReady();
    PageOrder order;
    order.a = in.Number(4);
    order.b = in.Number(5);
    order.name = in.Text(1);
    order.info = in.Text(3);
    order.library = in.Text(2);
    order.flag = in.Flag(8) ? 1 : 0;
    std::tie(order.parent1, order.parent2) = manager.Parents();
    const bool isCreated = manager.CreatePage(order, kMsgCreatePage) != 0;
    out.Clear();
    out.AddFlag(isCreated);
}

void StartCompanion(const LuaArguments& in, LuaResults& out) {
    const auto* const manager = CPageManagerWnd::Existing();
    const HWND companion = manager ? manager->CompanionWindow() : nullptr;
    if (!companion || !IsWindow(companion)) return OnInit(in, out);
    SendMessageW(companion, kMsgCompanion, 0, 0);
    out.AnswerLastArgument();
}

void OnSize(const LuaArguments&, LuaResults& out) { out.AnswerLastArgument(); }

void OnSetFocus(const LuaArguments& in, LuaResults&) {
    if (auto* const manager = CPageManagerWnd::Existing()) manager->SetFocusTo(in.Text(1));
}

void OnSwitchTab(const LuaArguments& in, LuaResults&) {
    if (auto* const manager = CPageManagerWnd::Existing()) manager->SwitchTab(in.Text(1), in.Number(2));
}

void GetLoginInfo(const LuaArguments& in, LuaResults& out) {
    std::string info;
    auto* const manager = CPageManagerWnd::Existing();
    if (manager && manager->GetLoginInfo(in.Text(1), info)) return out.AddText(std::move(info));
    out.AddNil();
    out.AddText("Can't find page");
}

// Settings and the rest

void Print(const std::string& text) {
    std::fwrite(text.data(), 1, text.size(), stdout);
    std::fflush(stdout);
}

void InitConfig(const LuaArguments& in, LuaResults&) {
    SetScriptConfigPath(in.Text(1));
    Print(in.Text(1) + "\n");
}

void GetConfig(const LuaArguments& in, LuaResults& out) {
    const std::string key = in.Text(1);
    std::string value = ReadConfig(ScriptConfigPath(), key);
    Print(key + " " + value + "\n");
    out.AddText(std::move(value));
}

void SetConfig(const LuaArguments& in, LuaResults&) {
    WriteConfig(ScriptConfigPath(), in.Text(1), in.Text(2));
    Print(in.Text(1) + " " + in.Text(2));
}

void GetVersionList(const LuaArguments& in, LuaResults& out) { out.AddText(VersionList(in.Text(1))); }

void InitMarketCodeList(const LuaArguments& in, LuaResults&) {
    if (!CDataManager::HasKeyFairy()) CDataManager::InitKeyFairy(in.Text(1));
}

}  // namespace

const LuaFunction kLuaFunctions[kLuaFunctionCount] = {
    {"send_frame", "nsss", SendFrame},   {"on_set_hWnd", "n", OnSetHWnd},
    {"on_get_hWnd", "", OnGetHWnd},      {"on_error", "ss", OnError},
    {"on_loop", "ss", OnError},          {"on_init_marketcodelist", "s", InitMarketCodeList},
    {"on_init", "sssnn-nb", OnInit},     {"on_size", "", OnSize},
    {"on_setfocus", "s", OnSetFocus},    {"get_login_info", "s", GetLoginInfo},
    {"on_switchtab", "sn", OnSwitchTab}, {"get_version_list", "s", GetVersionList},
    {"init_config", "s", InitConfig},    {"get_config", "s", GetConfig},
    {"set_config", "ss", SetConfig},     {"start_VD_hwnd", "sssnn-nb", StartCompanion},
};

}  // namespace luadui
