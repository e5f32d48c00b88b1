#include "datamgr/notify_table.h"

namespace luadui {

bool NotifyTable::Add(uint32_t handle, std::string_view kind, Reason reason) {
    auto handles = m_handles.find(kind);
    const bool isFirst = handles == m_handles.end();
    if (isFirst) handles = m_handles.emplace(kind, std::map<uint32_t, uint8_t>()).first;
    handles->second[handle] |= reason;
    return isFirst;
}

bool NotifyTable::Remove(uint32_t handle, std::string_view kind, Reason reason) {
    const auto handles = m_handles.find(kind);
    if (handles == m_handles.end()) return false;
    const auto entry = handles->second.find(handle);
    if (entry == handles->second.end()) return false;
    entry->second = static_cast<uint8_t>(entry->second & ~reason);
    return entry->second == 0 && RemoveAll(handle, kind);
}

bool NotifyTable::RemoveAll(uint32_t handle, std::string_view kind) {
    const auto handles = m_handles.find(kind);
    if (handles == m_handles.end() || handles->second.erase(handle) == 0) return false;
    if (!handles->second.empty()) return false;
    m_handles.erase(handles);
    return true;
}

bool NotifyTable::Has(uint32_t handle, std::string_view kind) const {
    const auto handles = m_handles.find(kind);
    return handles != m_handles.end() && handles->second.contains(handle);
}

std::vector<uint32_t> NotifyTable::Handles(std::string_view kind) const {
    std::vector<uint32_t> copy;
    const auto handles = m_handles.find(kind);
    if (handles == m_handles.end()) return copy;
    copy.reserve(handles->second.size());
    for (const auto& [handle, reasons] : handles->second) copy.push_back(handle);
    return copy;
}

std::vector<std::string> NotifyTable::Kinds() const {
    std::vector<std::string> kinds;
    kinds.reserve(m_handles.size());
    for (const auto& [kind, handles] : m_handles) kinds.push_back(kind);
    return kinds;
}

}  // namespace luadui
