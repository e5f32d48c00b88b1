#include "messaging/page_sign_registry.h"

#include "base/counters.h"

namespace luadui {

CPageSignRegistry& CPageSignRegistry::Instance() {
    static auto* const registry = new CPageSignRegistry;  // never destroyed: host threads may outlive main()
    return *registry;
}

void CPageSignRegistry::Register(const std::string& sign, const std::string& sender) {
    const std::lock_guard lock(m_mutex);
    if (const auto found = m_senders.find(sign); found != m_senders.end()) {
        found->second = sender;
    } else if (m_senders.size() < kMaxSigns) {
        m_senders.emplace(sign, sender);
    } else {
        CCounters::Add("page_sign_refused");
    }
}

std::string CPageSignRegistry::Find(std::string_view sign) const {
    const std::lock_guard lock(m_mutex);
    const auto found = m_senders.find(sign);
    return found == m_senders.end() ? std::string() : found->second;
}

void CPageSignRegistry::Forget(std::string_view sender) {
    const std::lock_guard lock(m_mutex);
    std::erase_if(m_senders, [&](const auto& entry) { return entry.second == sender; });
}

}  // namespace luadui
