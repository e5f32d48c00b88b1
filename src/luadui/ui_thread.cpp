// The UI thread of the page manager: its start in the order that pages rely on, its loop and its end.
#include "base/guard.h"
#include "base/text.h"
#include "codedata/data_manager.h"
#include "datamgr/account_bridge.h"
#include "datamgr/client_log.h"
#include "datamgr/ui_stock_data_manager.h"
#include "luadui/host_folder.h"
#include "luadui/message_thread.h"
#include "luadui/module_pin.h"
#include "luadui/page_manager_wnd.h"
#include "luadui/ui_settings.h"

namespace luadui {

void CPageManagerWnd::_start() {
    PinModule();  // by the caller, before there is a thread whose code could be taken away
    CDataManager::InitMarketMap();
    DWORD threadId = 0;
    const HANDLE thread = StartMessageThread(
        [](void* manager) { static_cast<CPageManagerWnd*>(manager)->_runUiThread(); }, this, threadId);
    m_uiThreadId.store(threadId);
    if (thread) {
        CloseHandle(thread);
    } else {
        CCounters::Add("ui_thread_not_started");
        m_failed.store(true);
    }
}

void CPageManagerWnd::_runUiThread() {
    SetClientFolder(HostFolderPath());
    CUIDataManager::SetSkinAccess({.get = [] { return WideToGbk(SkinName().GetData()); },
                                   .set = [](const std::string& skin) { SetSkin(skin); }});
    CUIStockDataManager::get_mutable_instance().StartCommonData();
    CPaintManagerUI::SetInstance(GetModuleHandleW(nullptr));
    if (FAILED(CoInitialize(nullptr))) return m_failed.store(true);
    if (_createWindow()) {
        {
            const AccountBridge accounts;  // ends before the pages: nobody asks for anything then
            CPaintManagerUI::MessageLoop();
        }
        _endPages();
    } else {
        m_failed.store(true);
    }
    CoUninitialize();
}

bool CPageManagerWnd::_createWindow() {
    const HWND window = Create(nullptr, L"PageManagerWnd", 0, 0, 0, 0, 0, 0);
    if (!window) return false;
    m_window.store(window);
    _setReady();
    m_exportWorker.Start(window);
    CPaintManagerUI::SetPageManager(window);
    return true;
}

void CPageManagerWnd::_endPages() {
    m_pages.DestroyAll();
    if (const HWND window = m_window.load()) DestroyWindow(window);
    m_exportWorker.Stop();
}

}  // namespace luadui
