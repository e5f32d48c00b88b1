// Saving: what pages put down for themselves and for each other, and the settings that they change.
#include <utility>

#include "base/counters.h"
#include "datamgr/client_log.h"
#include "datamgr/config_store.h"
#include "datamgr/kind_table.h"
#include "datamgr/ui_data_manager.h"
#include "datamgr/ui_registry.h"
#include "datamgr/ui_stock_data_manager.h"
#include "messaging/host_link.h"

namespace luadui {
namespace {

// What says where a record goes is no content of it.
bool IsAddress(std::string_view key) {
    return key == "handle" || key == "pageName" || key == "force_sendmoudle";
}

CUIData ContentOf(const CUIData& record) {
    CUIData content(record.GetTypeText());
    for (const auto [key, value] : record) {
        if (!IsAddress(key)) content.SetData(key, value);
    }
    return content;
}

}  // namespace

struct CUIDataManager::Saver {
    std::string_view kind;
    void (CUIDataManager::*save)(CUIData& data);
};

void CUIDataManager::_handleSaveData(CUIData& record) {
    static constexpr Saver kSavers[] = {
        {"set_skin", &CUIDataManager::_saveSkin},
        {"mutiinst_config_save", &CUIDataManager::_saveInstConfig},
        {"config", &CUIDataManager::_saveSettingConfig},
        {"page_sign", &CUIDataManager::_savePageSign},
        {"write_log", &CUIDataManager::_handleWriteLog},
        {"refresh_hq_event", &CUIDataManager::_publish},
        {"basketmemberalloclistui", &CUIDataManager::_shareForPages},
        {"basketmemberalloclistuicredit", &CUIDataManager::_shareForPages},
        {"account_param_filter", &CUIDataManager::_shareForPages},
        {"sub_account_filter", &CUIDataManager::_shareForPages},
        {"checked_account", &CUIDataManager::_shareForPages},
        {"mutiinst_allocstratefy", &CUIDataManager::_shareForPages},
        {"mutiinst_grouptype", &CUIDataManager::_shareForPages},
        {"mutiinst_usertoken_list", &CUIDataManager::_shareForPages},
        {"mutiinst_usertoken_list_credit", &CUIDataManager::_shareForPages},
        {"update_weightfactor_pt", &CUIDataManager::_shareForPages},
        {"update_weightfactor_xy", &CUIDataManager::_shareForPages},
        {"mutiinst_accountorder", &CUIDataManager::_shareForPages},
        {"etf_check_notrade", &CUIDataManager::_shareForPages},
        {"fund_update_extravalue", &CUIDataManager::_shareForPages},
    };
    const Saver* const saver = KindIndex<kSavers, &Saver::kind>::Find(record.GetTypeText());
    if (!saver) return CCounters::Add("save_kind_unknown");
    // What all pages share is kept where all pages look for it.
    const bool isCommon = m_runType == kTypePageData && IsCommonKind(saver->kind);
    CUIDataManager& keeper = isCommon ? CUIStockDataManager::get_mutable_instance().CommonData() : *this;
    (keeper.*saver->save)(record);
}

// The skin shows at the next start of a page; the user's settings keep it for the next start of the terminal.
void CUIDataManager::_saveSkin(CUIData& data) {
    CUIData news = ContentOf(data);
    const std::string skin = data.GetDataString("skin");
    const int32_t self = GetHandle();
    _setSkin(skin);
    WriteConfig(kUserConfigFile, "skin", skin);
    if (CBaseObject::Find(self) == this) _tell(std::move(news));
}

void CUIDataManager::_saveInstConfig(CUIData& data) {
    constexpr char kConfig[] = "mutiinst_config";
    const CUIData settings = ContentOf(data);
    CUIData news;
    {
        CUIData config(kConfig);
        if (!m_lists.Shared().GetDataShared(kConfig, config)) ShareData(kConfig, config);
        for (const auto [key, value] : settings) {
            if (value.Kind() == kDataString) config.SetData(key, value);
        }
        news = config;
    }
    const int32_t self = GetHandle();
    for (const auto [key, value] : settings) {
        if (value.Kind() == kDataString) WriteConfig(kUserConfigFile, std::string(key), value.AsText());
    }
    if (CBaseObject::Find(self) == this) _tell(std::move(news));
}

void CUIDataManager::_saveSettingConfig(CUIData& data) { SaveSettingConfig(ContentOf(data)); }

// The host's messages for this sign come to this manager from now on.
void CUIDataManager::_savePageSign(CUIData& data) {
    const std::string sign = data.GetDataString("page_sign");
    if (sign.empty()) return CCounters::Add("page_sign_missing");
    SendLuaSync("page_register", {}, sign);
}

void CUIDataManager::_shareForPages(CUIData& data) {
    CUIData content = ContentOf(data);
    CUIData news = content;
    CUIData shared;
    if (m_lists.Shared().GetDataShared(content.GetType(), shared)) {
        shared = content;  // those that attached it see the new content
    } else {
        ShareData(content.GetType(), content);
    }
    _tell(std::move(news));
}

void CUIDataManager::_publish(CUIData& data) { _tell(ContentOf(data)); }

void CUIDataManager::_tell(CUIData news) {
    news.SetData("handle", kNoHandle);
    ResponseNotify(&news, kNoHandle, true);
}

void CUIDataManager::_handleWriteLog(CUIData& data) {
    _writeLog(data.GetDataString("log_value"), data.GetDataString("log_filename"));
}

bool CUIDataManager::_writeLog(const std::string& message, const std::string& fileName) {
    return WriteClientLog(message, fileName);
}

}  // namespace luadui
