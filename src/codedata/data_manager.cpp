#include "codedata/data_manager.h"

#include <cstddef>
#include <new>

namespace luadui {

CDataManager& CDataManager::Instance() {
    // Never destroyed, since threads may push until the process ends; in the module's own memory, since the
    // module may be unloaded without ever having started.
    alignas(CDataManager) static std::byte place[sizeof(CDataManager)];
    static auto* const manager = new (place) CDataManager;
    return *manager;
}

void CDataManager::PushELK(CQueueLogElkItem& item) { m_elkQueue.Push(item); }

size_t CDataManager::ShipELK() { return m_elkSink ? m_elkQueue.Ship(*m_elkSink) : 0; }

}  // namespace luadui
