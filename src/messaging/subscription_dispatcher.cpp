#include "messaging/subscription_dispatcher.h"

#include <algorithm>

#include "base/base_object.h"
#include "base/counters.h"
#include "messaging/guid.h"
#include "messaging/handle_text.h"
#include "messaging/request_types.h"

namespace luadui {
namespace {

constexpr std::string_view kAccountTopics[] = {"Trade|",         "Fund|",          "Entrust|",
                                               "Position|",      "TradeCredit|",   "FundCredit|",
                                               "EntrustCredit|", "PositionCredit|"};

}  // namespace

std::string CompleteTopic(std::string_view key, std::string_view fundToken) {
    const bool isAccountTopic = std::ranges::find(kAccountTopics, key) != std::end(kAccountTopics);
    std::string topic(key);
    if (isAccountTopic) topic += fundToken;
    return topic;
}

CSubscriptionDispatcher& CSubscriptionDispatcher::Instance() {
    static auto* const dispatcher =
        new CSubscriptionDispatcher;  // never destroyed: senders may outlive main()
    return *dispatcher;
}

bool CSubscriptionDispatcher::Offer(CQueueReqItem& request) {
    const int type = static_cast<int>(request.GetDataLong("REQTYPE"));
    if (IsSubscription(type) || IsInstructionSubscription(type)) {
        _subscribe(request, type);
        return type != kReqPageEventSubscribe;
    }
    _remember(request);
    return false;
}

void CSubscriptionDispatcher::_subscribe(CQueueReqItem& request, int type) {
    CUIData params;
    request.GetDataShared("Params", params);
    std::string key = params.GetDataString("key");
    if (key.empty() && IsCodeKeyedRequest(type)) key = params.GetDataString("code");
    const std::string topic = CompleteTopic(key, params.GetDataText("fund_token"));
    if (topic != key) params.SetData("key", topic);
    const int32_t sender = HandleFromText(request.GetDataText("From"));
    if (topic.empty() || sender == CBaseObject::kNoHandle) return CCounters::Add("subscription_refused");
    _setSubscribed(sender, topic, params.GetDataText("unsub") != "true");
}

void CSubscriptionDispatcher::_setSubscribed(int32_t sender, const std::string& topic, bool subscribed) {
    if (subscribed) {
        m_topics[topic].insert(sender);
        m_senders[sender].topics.insert(topic);
        return;
    }
    const auto senders = m_topics.find(topic);
    if (senders == m_topics.end() || senders->second.erase(sender) == 0) return;
    if (senders->second.empty()) m_topics.erase(senders);
    m_senders[sender].topics.erase(topic);
    _dropSenderIfIdle(sender);
}

void CSubscriptionDispatcher::_remember(CQueueReqItem& request) {
    std::string uuid = request.GetDataString("UUID");
    if (uuid.empty()) request.SetData("UUID", uuid = NewGuid());
    const int32_t sender = HandleFromText(request.GetDataText("From"));
    if (sender == CBaseObject::kNoHandle) return;
    if (const auto known = m_byUuid.find(uuid); known != m_byUuid.end()) _dropRoute(known->second);
    if (m_routes.size() >= kMaxRoutes) {
        _dropRoute(m_routes.begin());
        CCounters::Add("uuid_route_evicted");
    }
    const auto route = m_routes.insert(m_routes.end(), {std::move(uuid), sender});
    m_byUuid.emplace(route->uuid, route);
    m_senders[sender].uuids.insert(route->uuid);
}

void CSubscriptionDispatcher::_dropRoute(RouteList::iterator route) {
    const int32_t sender = route->sender;
    m_senders[sender].uuids.erase(route->uuid);
    m_byUuid.erase(route->uuid);
    m_routes.erase(route);
    _dropSenderIfIdle(sender);
}

void CSubscriptionDispatcher::_dropSenderIfIdle(int32_t sender) {
    const auto found = m_senders.find(sender);
    if (found != m_senders.end() && found->second.topics.empty() && found->second.uuids.empty()) {
        m_senders.erase(found);
    }
}

std::vector<std::string> CSubscriptionDispatcher::Receivers(const CUIData& response) {
    std::vector<int32_t> senders;
    if (const auto route = m_byUuid.find(response.GetDataText("UUID")); route != m_byUuid.end()) {
        senders.push_back(route->second->sender);
    } else if (const auto topic = m_topics.find(response.GetDataText("Topic")); topic != m_topics.end()) {
        senders.assign(topic->second.begin(), topic->second.end());
    }
    std::vector<std::string> receivers;
    for (const int32_t sender : senders) {
        if (CBaseObject::Find(sender)) {
            receivers.push_back(std::to_string(sender));
        } else {
            Forget(sender);  // an object that is no request object tells nobody when it goes
        }
    }
    return receivers;
}

void CSubscriptionDispatcher::Forget(int32_t sender) {
    const auto found = m_senders.find(sender);
    if (found == m_senders.end()) return;
    const Sender gone = std::move(found->second);
    m_senders.erase(found);
    for (const std::string& topic : gone.topics) {
        const auto senders = m_topics.find(topic);
        senders->second.erase(sender);
        if (senders->second.empty()) m_topics.erase(senders);
    }
    for (const std::string_view uuid : gone.uuids) {
        const auto entry = m_byUuid.find(uuid);
        const RouteList::iterator route = entry->second;
        m_byUuid.erase(entry);
        m_routes.erase(route);
    }
}

}  // namespace luadui
