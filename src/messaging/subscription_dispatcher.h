// Who gets what: which sender asked under which UUID, and which senders subscribed to which topic.
#pragma once

#include <cstdint>
#include <list>
#include <map>
#include <set>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "messaging/queue_data.h"

namespace luadui {

// Subscriptions are completed here: the server side is subscribed by queries that carry "isSub" and pushes to
// the "From" that it saw. Senders are handles of objects; nothing is kept of one that has gone.
//
// Threads: the UI thread only.
class CSubscriptionDispatcher {
  public:
    static CSubscriptionDispatcher& Instance();

    // Looks at a request on its way out. Takes subscriptions (1601, 1602, 1701, 1702) and records or, with
    // "Params" "unsub" = "true", removes them: true, and the request goes no further. A request of type 1604
    // is recorded too but not taken. Every other request gets a "UUID" if it has none, and its sender
    // ("From") is remembered under it: false.
    //
    // The topic is "Params" "key" (a securities subscription without one uses "code"). The eight account
    // topics such as "Fund|" are completed with "Params" "fund_token", also in the record. A subscription
    // without topic or sender is taken, dropped and counted.
    bool Offer(CQueueReqItem& request);

    // The senders that a response is for: the one that asked under its "UUID" if that is known, otherwise all
    // that subscribed to exactly its "Topic", in ascending order; decimal handles, each once.
    std::vector<std::string> Receivers(const CUIData& response);

    // Forgets a sender that has gone: its topics and its UUIDs.
    void Forget(int32_t sender);

    // How many UUIDs are remembered; the oldest go first and are counted as "uuid_route_evicted".
    static constexpr size_t kMaxRoutes = 100000;

    size_t RouteCount() const { return m_routes.size(); }
    size_t TopicCount() const { return m_topics.size(); }

  private:
    struct Route {
        std::string uuid;
        int32_t sender;
    };
    using RouteList = std::list<Route>;
    struct Sender {
        std::set<std::string> topics;
        std::set<std::string_view> uuids;  // point into m_routes
    };

    void _subscribe(CQueueReqItem& request, int type);
    void _setSubscribed(int32_t sender, const std::string& topic, bool subscribed);
    void _remember(CQueueReqItem& request);
    void _dropRoute(RouteList::iterator route);
    void _dropSenderIfIdle(int32_t sender);

    std::map<std::string, std::set<int32_t>, std::less<>> m_topics;
    RouteList m_routes;  // oldest first
    std::unordered_map<std::string_view, RouteList::iterator> m_byUuid;
    std::map<int32_t, Sender> m_senders;
};

// The topic of a subscription with this "key": the eight account topics are completed with the fund token.
std::string CompleteTopic(std::string_view key, std::string_view fundToken);

}  // namespace luadui
