// Local factories: what is answered without the server, because it is made of what is here or kept by the
// host.
#include "base/data_set.h"
#include "base/text.h"
#include "datamgr/config_store.h"
#include "datamgr/kind_table.h"
#include "datamgr/local_sources.h"
#include "datamgr/position_sum.h"
#include "datamgr/trade_calendar.h"
#include "datamgr/trade_factories.h"
#include "datamgr/ui_data_manager.h"

namespace luadui {
namespace {

CUIDataManager::SkinAccess g_skin;

bool FillConfig(CUIDataManager&, CUIData& data) { return GetConfig(data); }
bool FillAllConfig(CUIDataManager&, CUIData& data) { return GetAllConfig(data); }
bool FillErasedConfig(CUIDataManager&, CUIData& data) { return EraseConfig(data); }
bool FillSettingConfig(CUIDataManager&, CUIData& data) {
    return GetSettingConfig(data, "setting_config_type");
}

bool FillSkin(CUIDataManager&, CUIData& data) {
    data.SetData("skin", g_skin.get ? g_skin.get() : std::string());
    return true;
}

// The calendar is the same for all: that of the common data serves pages that never asked for it.
bool FindHolidays(CUIDataManager& manager, CDataSet& holidays) {
    constexpr char kHolidays[] = "holidays";
    CUIData calendar;
    return FindShared(manager, kHolidays, calendar) && calendar.GetData(kHolidays, holidays);
}

bool FillIsTradeDate(CUIDataManager& manager, CUIData& data) {
    CDataSet holidays;
    data.SetData("is_trade_date",
                 FindHolidays(manager, holidays) && IsTradeDate(data.GetDataText("date"), holidays));
    return true;
}

bool FillTradeDates(CUIDataManager& manager, CUIData& data) {
    CDataSet holidays;
    return FindHolidays(manager, holidays) && ShiftTradeDate(data, holidays);
}

bool FillView(CUIDataManager& manager, CUIData& data) {
    const std::string_view kind = ListStore::ListOfView(data.GetTypeText());
    const CTokenTableList* const list = StoreOf(manager, kind).Find(kind);
    CUIData view = data;
    const CDataSet tokens = AccountsOf(data);
    if (!list || tokens.IsEmpty()) return false;
    view.SetData("fund_token", tokens);
    if (!list->MergeMultiAccount(view)) return false;
    data = view;
    return true;
}

bool FillPositionSum(CUIDataManager& manager, CUIData& data) {
    if (!FillView(manager, data)) return false;
    SumView(data);
    return true;
}

// Answers into the record; false: the server is asked.
struct Factory {
    std::string_view kind;
    bool (*fill)(CUIDataManager& manager, CUIData& data);
};
constexpr Factory kFactories[] = {
    {"config", FillConfig},
    {"get_all_config", FillAllConfig},
    {"erase_config", FillErasedConfig},
    {"setting_config", FillSettingConfig},
    {"skin", FillSkin},
    {"is_trade_date", FillIsTradeDate},
    {"trade_date", FillTradeDates},
    {"entrustmulti", FillView},
    {"entrustmulticredit", FillView},
    {"entrust_ggt_multi", FillView},
    {"dealmulti", FillView},
    {"dealmulticredit", FillView},
    {"deal_ggt_multi", FillView},
    {"positionmulti", FillView},
    {"positionmulticredit", FillView},
    {"position_ggt_multi", FillView},
    {"positionsum", FillPositionSum},
};

// What no server can be asked.
struct Computation {
    std::string_view kind;
    Refusal (*compute)(CUIDataManager& manager, CUIData& request);
};
constexpr Computation kComputations[] = {
    {"stock_available", ComputeStockAvailable},
    {"price_spread", ComputePriceSpread},
    {"allocate", ComputeAllocation},
    {"price_level", ComputePriceLevel},
    {"limit_price", ComputeLimitPrice},
    {"code_mask", ComputeCodeMask},
};

constexpr int kNotComputed = -1;

const Computation* FindComputation(std::string_view kind) {
    return KindIndex<kComputations, &Computation::kind>::Find(kind);
}

}  // namespace

bool CUIDataManager::_isComputed(std::string_view kind) { return FindComputation(kind) != nullptr; }

bool CUIDataManager::_handleFactoryData(CUIData& request) {
    const std::string_view kind = request.GetTypeText();
    const Factory* const factory = KindIndex<kFactories, &Factory::kind>::Find(kind);
    if (factory) return factory->fill(*this, request);
    const Computation* const computation = FindComputation(kind);
    if (!computation) return false;
    const Refusal refusal = computation->compute(*this, request);
    request.SetData("ret_code", refusal.empty() ? 0 : kNotComputed);
    request.SetData("ret_message", Gbk(refusal));
    return refusal.empty();
}

// What no factory can make is asked of the server: a page need not know where its data come from. But what is
// computed here the page is told, or why it is not.
void CUIDataManager::_handleFactoryRequest(CUIData& record) {
    const int32_t self = GetHandle();
    int32_t handle = kNoHandle;
    record.GetData("handle", handle);
    const bool isComputed = _isComputed(record.GetTypeText());
    const bool isMade = (isComputed || record.GetDataLong("refresh") == 0) && _handleFactoryData(record);
    if (CBaseObject::Find(self) != this) return;  // the host was asked meanwhile
    if (!isMade && !isComputed) {
        _handleRequest(record);
        return;
    }
    if (isMade) _completeAnswer(record, handle);
    ResponseNotify(&record, handle, false);
}

void CUIDataManager::_completeAnswer(CUIData& record, int32_t handle) {
    if (!record.Has("handle")) record.SetData("handle", handle);  // where all settings were read into it
    record.SetData("ret_code", 0);
    record.SetData("ret_message", "");
}

void CUIDataManager::SetSkinAccess(SkinAccess access) { g_skin = access; }

void CUIDataManager::_setSkin(const std::string& skin) {
    if (g_skin.set) g_skin.set(skin);
}

}  // namespace luadui
