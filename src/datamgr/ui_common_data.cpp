#include "datamgr/ui_common_data.h"

#include "base/counters.h"
#include "codedata/data_manager.h"
#include "datamgr/ui_page_data.h"
#include "datamgr/ui_stock_data_manager.h"

namespace luadui {

void CUICommonData::ResponseNotify(CUIData* record, int handle, bool notifyOthers) {
    if (!record) return;
    // The list of messages names itself as the receiver of its own, which are news all the same.
    const CMessageCenterList* const messages = Lists().MessageCenter();
    if (messages && handle == messages->GetHandle()) handle = kNoHandle;
    const CUIData content = *record;  // the listeners may change or destroy what it belongs to
    const size_t told = notifyOthers ? _notify(content, kNoHandle, handle) : 0;
    if (handle > 0 || CUIStockDataManager::IsCommonData(&content)) {
        CUIStockDataManager::get_mutable_instance().NotifyPage(&content, handle, notifyOthers);
    } else if (told == 0) {
        CCounters::Add("record_without_receiver");
    }
}

bool CUICommonData::_isToldElsewhere(uint32_t listener, const CUIData& record, int64_t asker) const {
    const CUIPageData* const page = CUIStockDataManager::get_mutable_instance().PageOf(listener);
    if (!page || !page->Wants(listener, record.GetTypeText())) return false;
    if (asker > 0 || CUIStockDataManager::IsCommonData(&record)) return true;
    return page->Lists().MessageCenter() && CMessageCenterList::IsOfOrders(record);
}

void CUICommonData::_onTick() {
    constexpr int kBatches = 10;  // at most, so that a flood of log records does not hold up the pages
    for (int batch = 0; batch < kBatches && CDataManager::Instance().ShipELK() > 0;) ++batch;
    m_quotes.Tick();
}

}  // namespace luadui
