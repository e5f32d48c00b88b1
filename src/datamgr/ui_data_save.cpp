// Saving: what pages put down for themselves and for each other, and the settings that they change.
#include "base/counters.h"
#include "datamgr/client_log.h"
#include "datamgr/config_store.h"
#include "datamgr/kind_table.h"
#include "datamgr/ui_data_manager.h"
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
    (this->*saver->save)(record);
}

// The skin shows at the next start of a page; the user's settings keep it for the next start of the terminal.
void CUIDataManager::_saveSkin(CUIData& data) {
    const std::string skin = data.GetDataString("skin");
    _setSkin(skin);
    WriteConfig(kUserConfigFile, "skin", skin);
    _publish(data);
}

void CUIDataManager::_saveInstConfig(CUIData& data) {
    constexpr char kConfig[] = "mutiinst_config";
    CUIData config(kConfig);
    const bool isShared = GetDataShared(kConfig, config);
    for (const auto [key, value] : ContentOf(data)) {
        if (value.Kind() != kDataString) continue;
        config.SetData(key, value);
        WriteConfig(kUserConfigFile, std::string(key), std::string(value.AsText()));
    }
    if (!isShared) ShareData(kConfig, config);
    CUIData news = config;
    ResponseNotify(&news, kNoHandle, true);
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
    CUIData shared;
    if (GetDataShared(content.GetType(), shared)) {
        shared = content;  // those that attached it see the new content
    } else {
        ShareData(content.GetType(), content);
    }
    CUIData news = content;
    ResponseNotify(&news, kNoHandle, true);
}

void CUIDataManager::_publish(CUIData& data) {
    CUIData news = ContentOf(data);
    ResponseNotify(&news, kNoHandle, true);
}

void CUIDataManager::_handleWriteLog(CUIData& data) {
    _writeLog(data.GetDataString("log_value"), data.GetDataString("log_filename"));
}

bool CUIDataManager::_writeLog(const std::string& message, const std::string& fileName) {
    return WriteClientLog(message, fileName);
}

}  // namespace luadui
