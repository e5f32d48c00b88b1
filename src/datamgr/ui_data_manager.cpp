#include "datamgr/ui_data_manager.h"

#include <chrono>
#include <ctime>
#include <utility>

#include "accounts/account_commands.h"
#include "base/counters.h"
#include "codedata/data_manager.h"
#include "datalists/data_timer_wnd.h"
#include "datamgr/request_route.h"
#include "datamgr/ui_registry.h"
#include "datamgr/ui_stock_data_manager.h"
#include "messaging/host_link.h"

namespace luadui {
namespace {

// The second at which the local day began.
int64_t LocalMidnight() {
    const std::time_t now = std::time(nullptr);
    std::tm day = *std::localtime(&now);  // NOLINT(concurrency-mt-unsafe): the UI thread, and nothing is kept
    day.tm_hour = day.tm_min = day.tm_sec = 0;
    day.tm_isdst = -1;
    return std::mktime(&day);
}

}  // namespace

CUIDataManager::CUIDataManager() = default;

CUIDataManager::~CUIDataManager() = default;

void CUIDataManager::Init(const std::string& pageName) {
    const int32_t self = GetHandle();
    _initUIData(pageName);
    // The host has been asked for settings, and may have closed the page meanwhile.
    if (CBaseObject::Find(self) != this) return;
    _initMultiServerInstRecord();
    if (CBaseObject::Find(self) == this) _createTimerWnd();
}

void CUIDataManager::_initUIData(const std::string& pageName) {
    m_typeCodes = TypeCodeRecord();
    m_pushKeys = PushKeyRecord();
    if (m_runType == kTypeCommonData) return m_lists.MakeCommonLists();
    const int32_t self = GetHandle();
    auto config = ListStore::ReadInstConfig(pageName);
    if (CBaseObject::Find(self) == this) m_lists.MakePageLists(pageName, std::move(config));
}

void CUIDataManager::_initMultiServerInstRecord() { InstructionRecord::Instance().Load(LocalMidnight()); }

void CUIDataManager::_createTimerWnd() {
    m_timer = std::make_unique<CDataTimerWnd>(this);
    m_timer->Create();
}

void CUIDataManager::SetData(CUIData* record, SET_DATA mode) {
    if (!record) return;
    switch (mode) {
        case kSetRequest:
            _handleRequest(*record);
            return;
        case kSetFactoryRequest:
            return _handleFactoryRequest(*record);
        case kSetSubscribe:
        case kSetUnsubscribe:
            return _handleSubRequest(*record, mode == kSetSubscribe);
        case kSetSave:
            return _handleSaveData(*record);
        case kSetLua:
            return _sendLua(*record);
    }
    CCounters::Add("set_data_mode_unknown");
}

bool CUIDataManager::IsCommonData(const std::string& kind) {
    const CUIData record(kind);
    return CUIStockDataManager::IsCommonData(&record);
}

void CUIDataManager::RegisterNotify(unsigned int handle, std::string kind) {
    Listen(handle, kind, NotifyTable::kRegistered, true);
}

void CUIDataManager::UnRegisterNotify(unsigned int handle, std::string kind) {
    Listen(handle, kind, NotifyTable::kRegistered, false);
}

void CUIDataManager::Listen(uint32_t window, const std::string& kind, NotifyTable::Reason reason,
                            bool wants) {
    if (wants) {
        if (m_notify.Add(window, kind, reason)) _kindWanted(kind);
    } else {
        if (m_notify.Remove(window, kind, reason)) _kindUnwanted(kind);
    }
}

void CUIDataManager::RunAccountCommand(const char* command) {
    AccountCommands* const commands = CUIStockDataManager::get_mutable_instance().GetAccountCommands();
    if (!commands) return;
    CUIData arguments;
    arguments.SetData("module", "MODULE_ACCOUNTMANAGER");
    commands->Execute(command, arguments);
}

bool CUIDataManager::StartTimer(uint32_t id, uint32_t milliseconds) {
    return m_timer && m_timer->StartTimer(id, milliseconds);
}

bool CUIDataManager::StopTimer(uint32_t id) { return m_timer && m_timer->StopTimer(id); }

bool CUIDataManager::RequestSync(unsigned int type, const std::string& key, std::string& value,
                                 const std::string& file) {
    StringMap params{{"FileName", file}, {"Key", key}, {"Value", value}};
    return CHostLink::Instance().RequestSync(type, params, &value);
}

void CUIDataManager::RecordTraceLog(const std::string& traceId, const std::string& source,
                                    const std::string& module, const std::string& user,
                                    const std::string& stage, const StringMap& fields) {
    CQueueLogElkItem item(traceId, source, module, user, stage, fields);
    RecordELK(item);
}

void CUIDataManager::RecordELK(CQueueLogElkItem& item) { CDataManager::Instance().PushELK(item); }

}  // namespace luadui
