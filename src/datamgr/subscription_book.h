// Which windows subscribed to which topics.
#pragma once

#include <cstddef>
#include <cstdint>
#include <map>
#include <set>
#include <string>
#include <utility>
#include <vector>

namespace luadui {

// A window subscribes to a topic in order to hear of a data kind. Several kinds may come with one topic, and
// several topics (one per account) bring the same kind; a subscription is known by all three. Window 0 is the
// manager itself.
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

    // Most windows close without a word. When the book has grown much since it was last looked through,
    // forgets those that have gone, and returns the topics that nobody wants any more.
    std::vector<std::string> DropGone();

    static constexpr size_t kKept = 1024;  // subscriptions that are not worth the look

  private:
    using Listener = std::pair<uint32_t, std::string>;  // window, kind

    std::map<std::string, std::set<Listener>> m_topics;
    std::map<Listener, size_t> m_listeners;  // -> number of topics
    size_t m_size = 0;
    size_t m_allowed = kKept;
};

}  // namespace luadui
