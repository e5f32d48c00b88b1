// Local factories: what is answered without the server, because it is made of what is here or kept by the
// host.
#include "base/data_set.h"
#include "datamgr/config_store.h"
#include "datamgr/kind_table.h"
#include "datamgr/position_sum.h"
#include "datamgr/trade_calendar.h"
#include "datamgr/ui_data_manager.h"
#include "datamgr/ui_registry.h"
#include "datamgr/ui_stock_data_manager.h"

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
    const int32_t self = GetHandle();
    int32_t handle = kNoHandle;
    record.GetData("handle", handle);
    const bool isMade = record.GetDataLong("refresh") == 0 && _handleFactoryData(record);
    if (CBaseObject::Find(self) != this) return;  // the host was asked meanwhile
    if (!isMade) {
        _handleRequest(record);
        return;
    }
    if (!record.Has("handle")) record.SetData("handle", handle);  // where all settings were read into it
    record.SetData("ret_code", 0);
    record.SetData("ret_message", "");
    ResponseNotify(&record, handle, false);
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

// The calendar is the same for all: that of the common data serves pages that never asked for it.
bool CUIDataManager::_getHolidays(CDataSet& holidays) const {
    constexpr char kHolidays[] = "holidays";
    CUIData calendar;
    const auto& common = CUIStockDataManager::get_mutable_instance().CommonData().Lists();
    return (m_lists.Shared().GetData(kHolidays, calendar) || common.Shared().GetData(kHolidays, calendar)) &&
           calendar.GetData(kHolidays, holidays);
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

// The common data manager holds the lists of common kinds, also for views that are none.
const CTokenTableList* CUIDataManager::_findList(std::string_view kind) const {
    const CTokenTableList* const own = m_lists.Find(kind);
    if (own || m_runType != kTypePageData || !IsCommonKind(kind)) return own;
    return CUIStockDataManager::get_mutable_instance().CommonData().Lists().Find(kind);
}

bool CUIDataManager::_mergeAccounts(CUIData& data) {
    const CTokenTableList* const list = _findList(ListStore::ListOfView(data.GetTypeText()));
    if (!list) return false;
    CUIData view = data;
    if (data.GetDataType("fund_token") == kDataString) {
        CDataSet single;
        single.Insert(data.GetDataText("fund_token"));
        view.SetData("fund_token", single);
    }
    CDataSet tokens;
    if (!view.GetData("fund_token", tokens) || tokens.IsEmpty() || !list->MergeMultiAccount(view))
        return false;
    data = view;
    return true;
}

bool CUIDataManager::_sumPositions(CUIData& data) {
    if (!_mergeAccounts(data)) return false;
    SumView(data);
    return true;
}

}  // namespace luadui
