#include "messaging/page_sign_registry.h"

#include "base/counters.h"

namespace luadui {

CPageSignRegistry& CPageSignRegistry::Instance() {
    static auto* const registry = new CPageSignRegistry;  // never destroyed: host threads may outlive main()
    return *registry;
}

void CPageSignRegistry::Register(const std::string& sign, const std::string& sender) {
    const std::lock_guard lock(m_mutex);
    const auto found = m_senders.find(sign);
    if (found == m_senders.end() && m_senders.size() >= kMaxSigns) return CCounters::Add("page_sign_refused");
    if (found != m_senders.end()) _dropSign(found->second, sign);
    m_senders[sign] = sender;
    m_signsOf[sender].insert(sign);
}

std::string CPageSignRegistry::Find(std::string_view sign) const {
    const std::lock_guard lock(m_mutex);
    const auto found = m_senders.find(sign);
    return found == m_senders.end() ? std::string() : found->second;
}

void CPageSignRegistry::Forget(std::string_view sender) {
    const std::lock_guard lock(m_mutex);
    const auto signs = m_signsOf.find(sender);
    if (signs == m_signsOf.end()) return;
    for (const std::string& sign : signs->second) m_senders.erase(sign);
    m_signsOf.erase(signs);
}

void CPageSignRegistry::_dropSign(const std::string& sender, const std::string& sign) {
    const auto signs = m_signsOf.find(sender);
    signs->second.erase(sign);
    if (signs->second.empty()) m_signsOf.erase(signs);
}

}  // namespace luadui
