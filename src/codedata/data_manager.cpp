#include "codedata/data_manager.h"

#include "base/counters.h"

namespace luadui {

CDataManager& CDataManager::Instance() {
    static auto* const manager = new CDataManager;  // threads may push until the process ends
    return *manager;
}

void CDataManager::Update_CodeList(uint16_t, uint32_t, uint32_t, uint32_t) {
    CCounters::Add("code_list_without_loader");
}

void CDataManager::InitKeyFairy(const std::string&) { CCounters::Add("code_list_without_loader"); }

size_t CDataManager::KeyFairyCount() const { return 0; }

std::wstring CDataManager::GetZqmcFromFairy(const std::wstring&, const std::wstring&) const { return {}; }

std::wstring CDataManager::GetMarketByCodeAndZQMC(const std::wstring&, const std::wstring&) const {
    return {};
}

void CDataManager::PushELK(CQueueLogElkItem& item) { m_elkQueue.Push(item); }

size_t CDataManager::ShipELK() { return m_elkSink ? m_elkQueue.Ship(*m_elkSink) : 0; }

}  // namespace luadui
