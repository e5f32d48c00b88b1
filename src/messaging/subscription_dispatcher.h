// Who gets what: which sender asked under which UUID, and which senders subscribed to which topic.
#pragma once

#include <cstdint>
#include <list>
#include <map>
#include <set>
#include <string>
#include <string_view>
#include <vector>

#include "base/text_map.h"
#include "messaging/queue_data.h"

namespace luadui {

// Subscriptions are completed here: the server side is subscribed by queries that carry "isSub" and pushes to
// the "From" that it saw. Senders are handles of objects; nothing is kept of one that has gone.
//
// Threads: the UI thread only.
class CSubscriptionDispatcher {
  public:
    static CSubscriptionDispatcher& Instance();

    // Looks at a request on its way out. Takes subscriptions (1601, 1602, 1701, 1702) and records or, with "Params"
    // "unsub" = "true", removes them: true, and the request goes no further. A request of type 1604 is recorded too
    // but not taken. Every other request gets a "UUID" if it has none, and its sender ("From") is remembered under
    // it, unless it is a page registration or Lua call, which are answered at once: false.
    //
    // The topic is "Params" "key" (a securities subscription without one uses "code"). The eight account topics such
    // as "Fund|" are completed with "Params" "fund_token", also in the record. A subscription is taken, but dropped
    // and counted as "subscription_refused", when it has no topic, when its sender does not exist, or when that has
    // kMaxTopics.
    bool Offer(CQueueReqItem& request);

    // The senders that a response is for: the one that asked under its "UUID" if that is known, otherwise all that
    // subscribed to exactly its "Topic"; each once.
    std::vector<int32_t> Receivers(const CUIData& response);

    // Forgets a sender that has gone: its topics and its UUIDs.
    void Forget(int32_t sender);

    // Of one sender. Its oldest UUIDs go first and are counted as "uuid_route_evicted".
    static constexpr size_t kMaxRoutes = 20000;
    static constexpr size_t kMaxTopics = 20000;

    size_t RouteCount() const { return m_routes.size(); }
    size_t TopicCount() const { return m_topics.size(); }

  private:
    struct Sender {
        std::set<std::string> topics;
        std::list<const std::string*> uuids;  // those of its routes, oldest first
    };
    struct Route {
        int32_t sender;
        std::list<const std::string*>::iterator uuid;
    };

    void _subscribe(CQueueReqItem& request, int type);
    bool _setSubscribed(int32_t sender, const std::string& topic, bool subscribed);
    void _remember(CQueueReqItem& request);
    void _dropRoute(const std::string& uuid);
    void _dropSenderIfIdle(int32_t sender);

    std::map<std::string, std::set<int32_t>, std::less<>> m_topics;
    TextMap<Route> m_routes;  // by UUID
    std::map<int32_t, Sender> m_senders;
};

// The topic of a subscription with this "key": the eight account topics are completed with the fund token.
std::string CompleteTopic(std::string_view key, std::string_view fundToken);

}  // namespace luadui
