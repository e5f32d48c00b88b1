// The exported C functions.
#include <cstring>

#include "base/guard.h"
#include "base/text.h"
#include "codedata/data_manager.h"
#include "luadui/component_adapter.h"
#include "luadui/luadui.h"
#include "luadui/page_manager_wnd.h"
#include "luadui/text_argument.h"
#include "luadui/ui_settings.h"
#include "messaging/host_link.h"

using namespace luadui;  // NOLINT(google-build-using-namespace): the functions themselves are global

namespace {

constexpr char kExportThrew[] = "exported_function_threw";

// Runs `call` and answers its result; `failure` when it threw.
template <class Call, class Result>
Result Answered(Result failure, Call&& call) {
    Result result = failure;
    Guarded(kExportThrew, [&] { result = call(); });
    return result;
}

unsigned int CopyAnswer(const std::string& answer, char* buffer, unsigned int size) {
    if (buffer && size >= answer.size()) std::memcpy(buffer, answer.data(), answer.size());
    return static_cast<unsigned int>(answer.size());
}

}  // namespace

bool set_push_callback(LuaduiPushCallback callback) {
    return CHostLink::Instance().SetPushCallback(callback);
}

bool set_req_sync_callback(LuaduiRequestSyncCallback callback) {
    return CHostLink::Instance().SetRequestSyncCallback(callback);
}

bool set_login_callback(LuaduiLoginCallback callback) {
    return CHostLink::Instance().SetLoginCallback(callback);
}

unsigned int start_dui_thread() {
    return Answered(0U, [] {
        LoadSkin();
        return static_cast<unsigned int>(CPageManagerWnd::Instance().UiThreadId());
    });
}

int handle_response_callback(CUIData* data) {
    return Answered(0, [&] {
        auto* const manager = CPageManagerWnd::Existing();
        if (!data || !manager) {
            CCounters::Add(data ? "response_without_ui_thread" : "null_response");
            return 0;
        }
        auto response = std::make_unique<CQueueRespData>();
        if (CQueueRespData::IsChangeNotice(*data)) {
            response->CopyNoticeFrom(*data);
        } else {
            response->CopyFrom(*data);
        }
        manager->PostResponse(std::move(response), 1);
        return 0;
    });
}

int handle_keyboard_callback(uint16_t reason, uint32_t market, uint32_t first, uint32_t last) {
    Guarded(kExportThrew, [&] { CDataManager::Instance().Update_CodeList(reason, market, first, last); });
    return 0;
}

int init_keyfairy(const char* path) {
    return Answered(-1, [&] { return CDataManager::InitKeyFairy(TextOf(path)) ? 0 : -1; });
}

unsigned int get_securityname(const char* code, char* buffer, const char* market, unsigned int size) {
    return Answered(0U, [&] {
        return CopyAnswer(CDataManager::SecurityName(TextOf(code), TextOf(market)) + ":" + TextOf(market),
                          buffer, size);
    });
}

unsigned int get_marketbycodeandzqmc(const char* code, char* buffer, const char* name, unsigned int size) {
    return Answered(0U, [&] {
        return CopyAnswer(CDataManager::SecurityMarket(TextOf(code), TextOf(name)), buffer, size);
    });
}

unsigned int create_dui_page(int a, int b, const std::string& name, const std::string& info,
                             const std::string& library, HWND parent1, HWND parent2, int flag,
                             bool asynchronous) {
    return Answered(0U, [&] {
        auto& manager = CPageManagerWnd::WaitUntilReady();
        manager.KeepParents(parent1, parent2);
        PageOrder order{a, b, name, info, library, flag, parent1, parent2};
        if (!asynchronous) return manager.CreatePage(order, kMsgCreatePage);
        return manager.PostPageOrder(std::make_unique<PageOrder>(std::move(order)), kMsgCreatePage) ? 1U : 0U;
    });
}

int create_com_page(const char* library, const char* name, const char* info, int flag) {
    return Answered(0, [&] {
        auto& manager = CPageManagerWnd::WaitUntilReady();
        const auto* const adapter = CComponentAdapter::Existing();
        const PageOrder order = adapter ? adapter->Describe(library, name, info, flag)
                                        : CComponentAdapter({}, {}).Describe(library, name, info, flag);
        return static_cast<int>(manager.CreatePage(order, kMsgCreateComponentPage));
    });
}

int init(const char* folder, const char* info) {
    Guarded(kExportThrew, [&] { CComponentAdapter::Init(folder, info); });
    return 0;
}

int create(const char* library, const char* name, const char* info, int flag) {
    return Answered(-1, [&] {
        const auto* const adapter = CComponentAdapter::Existing();
        if (!adapter) return -1;
        // A host that creates components only need not start the thread itself.
        auto& manager = CPageManagerWnd::Instance();
        auto order = std::make_unique<PageOrder>(adapter->Describe(library, name, info, flag));
        if (manager.WaitUntilStarted()) manager.PostPageOrder(std::move(order), kMsgCreateComponentPage);
        return 0;
    });
}
