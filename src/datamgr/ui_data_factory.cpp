// Local factories: what is answered without the server, because it is made of what is here or kept by the host.
#include "base/data_set.h"
#include "datamgr/config_store.h"
#include "datamgr/kind_table.h"
#include "datamgr/position_sum.h"
#include "datamgr/trade_calendar.h"
#include "datamgr/ui_data_manager.h"

namespace luadui {
namespace {

CUIDataManager::SkinAccess g_skin;

}  // namespace

struct CUIDataManager::Factory {
    std::string_view kind;
    bool (CUIDataManager::*make)(CUIData& data);
};

bool CUIDataManager::_handleFactoryData(CUIData& request) {
    static constexpr Factory kFactories[] = {
        {"config", &CUIDataManager::_getConfig},
        {"get_all_config", &CUIDataManager::_getAllConfig},
        {"erase_config", &CUIDataManager::_eraseConfig},
        {"setting_config", &CUIDataManager::_getSettingConfig},
        {"skin", &CUIDataManager::_fillSkin},
        {"is_trade_date", &CUIDataManager::_isTradeDate},
        {"trade_date", &CUIDataManager::_getTradeDate},
        {"entrustmulti", &CUIDataManager::_mergeAccounts},
        {"entrustmulticredit", &CUIDataManager::_mergeAccounts},
        {"entrust_ggt_multi", &CUIDataManager::_mergeAccounts},
        {"dealmulti", &CUIDataManager::_mergeAccounts},
        {"dealmulticredit", &CUIDataManager::_mergeAccounts},
        {"deal_ggt_multi", &CUIDataManager::_mergeAccounts},
        {"positionmulti", &CUIDataManager::_mergeAccounts},
        {"positionmulticredit", &CUIDataManager::_mergeAccounts},
        {"position_ggt_multi", &CUIDataManager::_mergeAccounts},
        {"positionsum", &CUIDataManager::_sumPositions},
    };
    const Factory* const factory = KindIndex<kFactories, &Factory::kind>::Find(request.GetTypeText());
    return factory && (this->*factory->make)(request);
}

// What no factory can make is asked of the server: a page need not know where its data come from.
void CUIDataManager::_handleFactoryRequest(CUIData& record) {
    if (!_handleFactoryData(record)) {
        _handleRequest(record);
        return;
    }
    record.SetData("ret_code", 0);
    record.SetData("ret_message", "");
    ResponseNotify(&record, static_cast<int>(record.GetDataLong("handle")), false);
}

bool CUIDataManager::_getConfig(CUIData& data) { return GetConfig(data); }

bool CUIDataManager::_getAllConfig(CUIData& data) { return GetAllConfig(data); }

bool CUIDataManager::_eraseConfig(CUIData& data) { return EraseConfig(data); }

bool CUIDataManager::_getSettingConfig(CUIData& data) {
    return GetSettingConfig(data, "setting_config_type");
}

void CUIDataManager::SetSkinAccess(SkinAccess access) { g_skin = access; }

std::string CUIDataManager::_getSkin() { return g_skin.get ? g_skin.get() : std::string(); }

void CUIDataManager::_setSkin(const std::string& skin) {
    if (g_skin.set) g_skin.set(skin);
}

bool CUIDataManager::_fillSkin(CUIData& data) {
    data.SetData("skin", _getSkin());
    return true;
}

bool CUIDataManager::_getHolidays(CDataSet& holidays) const {
    CUIData calendar;
    return m_lists.Shared().GetData("holidays", calendar) && calendar.GetData("holidays", holidays);
}

bool CUIDataManager::_isTradeDate(CUIData& data) {
    CDataSet holidays;
    data.SetData("is_trade_date", _getHolidays(holidays) && IsTradeDate(data.GetDataText("date"), holidays));
    return true;
}

bool CUIDataManager::_getTradeDate(CUIData& data) {
    CDataSet holidays;
    return _getHolidays(holidays) && ShiftTradeDate(data, holidays);
}

bool CUIDataManager::_mergeAccounts(CUIData& data) {
    const CTokenTableList* const list = m_lists.Find(ListStore::ListOfView(data.GetTypeText()));
    return list && list->MergeMultiAccount(data);
}

bool CUIDataManager::_sumPositions(CUIData& data) {
    const std::string kind = data.GetType();
    if (!_mergeAccounts(data)) return false;
    const std::string joinedKind = data.GetType();
    CDataTable joined;
    data.GetData(joinedKind, joined);
    data.Remove(joinedKind);
    data.SetData(kind, SumPositions(joined));
    data.SetType(kind);
    return true;
}

}  // namespace luadui
