#include "codedata/data_manager.h"

#include <cstddef>
#include <new>

#include "base/counters.h"

namespace luadui {

CDataManager& CDataManager::Instance() {
    // Never destroyed, since threads may push until the process ends; in the module's own memory, since the
    // module may be unloaded without ever having started.
    alignas(CDataManager) static std::byte place[sizeof(CDataManager)];
    static auto* const manager = new (place) CDataManager;
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
