// Which windows subscribed to which topics.
#pragma once

#include <cstdint>
#include <map>
#include <set>
#include <string>
#include <string_view>
#include <utility>

namespace luadui {

// A window subscribes to a topic in order to hear of a data kind. Several kinds may come with one topic, and several topics
// (one per account) bring the same kind; a subscription is known by all three.
//
// Threads: the UI thread.
class SubscriptionBook {
  public:
    struct Change {
        bool ofTopic = false;  // the topic got its first subscription, or lost its last one
        bool ofKind = false;   // the same for the kind at this window
    };

    Change Add(const std::string& topic, const std::string& kind, uint32_t window);
    Change Remove(const std::string& topic, const std::string& kind, uint32_t window);

  private:
    using Listener = std::pair<uint32_t, std::string>;  // window, kind

    std::map<std::string, std::set<Listener>> m_topics;
    std::map<Listener, size_t> m_listeners;  // -> number of topics
};

}  // namespace luadui
