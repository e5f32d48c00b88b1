#include "datamgr/subscription_book.h"

#include <algorithm>

#include "base/base_object.h"

namespace luadui {

SubscriptionBook::Change SubscriptionBook::Add(const std::string& topic, const std::string& kind,
                                               uint32_t window) {
    auto& listeners = m_topics[topic];
    Change change{.ofTopic = listeners.empty()};
    const auto [listener, isNew] = listeners.emplace(window, kind);
    if (!isNew) return change;
    ++m_size;
    change.ofKind = ++m_listeners[*listener] == 1;
    return change;
}

SubscriptionBook::Change SubscriptionBook::Remove(const std::string& topic, const std::string& kind,
                                                  uint32_t window) {
    const Listener listener(window, kind);
    const auto listeners = m_topics.find(topic);
    if (listeners == m_topics.end() || listeners->second.erase(listener) == 0) return {};
    --m_size;
    Change change{.ofTopic = listeners->second.empty()};
    if (change.ofTopic) m_topics.erase(listeners);
    const auto count = m_listeners.find(listener);
    change.ofKind = --count->second == 0;
    if (change.ofKind) m_listeners.erase(count);
    return change;
}

std::vector<std::string> SubscriptionBook::DropGone() {
    std::vector<std::string> left;
    if (m_size <= m_allowed) return left;
    const auto isGone = [](const Listener& listener) {
        return listener.first != 0 && !CBaseObject::Find(listener.first);
    };
    std::erase_if(m_listeners, [&](const auto& entry) { return isGone(entry.first); });
    for (auto& [topic, listeners] : m_topics) {
        m_size -= std::erase_if(listeners, isGone);
        if (listeners.empty()) left.push_back(topic);
    }
    for (const std::string& topic : left) m_topics.erase(topic);
    m_allowed = std::max(kKept, 2 * m_size);
    return left;
}

}  // namespace luadui
