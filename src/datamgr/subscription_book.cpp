#include "datamgr/subscription_book.h"

namespace luadui {

SubscriptionBook::Change SubscriptionBook::Add(const std::string& topic, const std::string& kind,
                                               uint32_t window) {
    auto& listeners = m_topics[topic];
    Change change{.ofTopic = listeners.empty()};
    const auto [listener, isNew] = listeners.emplace(window, kind);
    if (isNew) change.ofKind = ++m_listeners[*listener] == 1;
    return change;
}

SubscriptionBook::Change SubscriptionBook::Remove(const std::string& topic, const std::string& kind,
                                                  uint32_t window) {
    const Listener listener(window, kind);
    const auto listeners = m_topics.find(topic);
    if (listeners == m_topics.end() || listeners->second.erase(listener) == 0) return {};
    Change change{.ofTopic = listeners->second.empty()};
    if (change.ofTopic) m_topics.erase(listeners);
    const auto count = m_listeners.find(listener);
    change.ofKind = --count->second == 0;
    if (change.ofKind) m_listeners.erase(count);
    return change;
}

}  // namespace luadui
