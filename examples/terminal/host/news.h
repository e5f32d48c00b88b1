// News on their way through the host: what the library publishes comes back to whoever subscribed to it.
#pragma once

#include <functional>
#include <map>
#include <mutex>
#include <set>
#include <string>

#include "base/ui_data.h"

namespace terminal {

// A published record (type 65537) becomes a push whose "Topic" is its "_SUBKEY" and whose "RawData" is its "_SEND_DATA": one
// for the client, whose own subscriptions the library keeps, and one for each page that subscribed here (1601, "key"; "unsub"
// "true" ends that).
//
// Threads: any; `deliver` is called on the caller's, without a lock held.
class News {
  public:
    using Deliver = std::function<void(luadui::CUIData& record)>;
    static constexpr int kPublish = 65537, kSubscribe = 1601;

    explicit News(Deliver deliver) : m_deliver(std::move(deliver)) {}

    // Takes a record of one of the two types; false for all others.
    bool Take(const luadui::CUIData& request);
    // Hands JSON text (code page 936) to all that subscribed to the topic.
    void Tell(const std::string& topic, const std::string& json, const std::string& uuid = {});

  private:
    static constexpr size_t kMaxSubscriptions = 10'000;

    void _subscribe(const luadui::CUIData& request);

    const Deliver m_deliver;
    std::mutex m_mutex;
    std::map<std::string, std::set<std::string>> m_subscribers;  // topic -> senders ("From")
};

}  // namespace terminal
