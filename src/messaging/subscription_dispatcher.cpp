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
    const int type = RequestTypeOf(request);
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
    const bool subscribed = params.GetDataText("unsub") != "true";
    if (topic.empty() || !CBaseObject::Find(sender) || !_setSubscribed(sender, topic, subscribed)) {
        CCounters::Add("subscription_refused");
    }
}

bool CSubscriptionDispatcher::_setSubscribed(int32_t sender, const std::string& topic, bool subscribed) {
    if (subscribed) {
        auto& topics = m_senders[sender].topics;
        if (topics.size() >= kMaxTopics && !topics.contains(topic)) return false;
        topics.insert(topic);
        m_topics[topic].insert(sender);
        return true;
    }
    const auto senders = m_topics.find(topic);
    if (senders == m_topics.end() || senders->second.erase(sender) == 0) return true;
    if (senders->second.empty()) m_topics.erase(senders);
    m_senders[sender].topics.erase(topic);
    _dropSenderIfIdle(sender);
    return true;
}

void CSubscriptionDispatcher::_remember(CQueueReqItem& request) {
    std::string uuid = request.GetDataString("UUID");
    if (uuid.empty()) request.SetData("UUID", uuid = NewGuid());
    const int32_t sender = HandleFromText(request.GetDataText("From"));
    if (IsPageRegistration(RequestTypeOf(request)) || !CBaseObject::Find(sender)) return;
    _dropRoute(uuid);
    auto& uuids = m_senders[sender].uuids;
    if (uuids.size() >= kMaxRoutes) {
        m_routes.erase(m_routes.find(*uuids.front()));
        uuids.pop_front();
        CCounters::Add("uuid_route_evicted");
    }
    const auto route = m_routes.emplace(uuid, Route{sender, {}}).first;
    route->second.uuid = uuids.insert(uuids.end(), &route->first);
}

void CSubscriptionDispatcher::_dropRoute(const std::string& uuid) {
    const auto route = m_routes.find(uuid);
    if (route == m_routes.end()) return;
    const int32_t sender = route->second.sender;
    m_senders[sender].uuids.erase(route->second.uuid);
    m_routes.erase(route);
    _dropSenderIfIdle(sender);
}

void CSubscriptionDispatcher::_dropSenderIfIdle(int32_t sender) {
    const auto found = m_senders.find(sender);
    if (found != m_senders.end() && found->second.topics.empty() && found->second.uuids.empty()) {
        m_senders.erase(found);
    }
}

std::vector<int32_t> CSubscriptionDispatcher::Receivers(const CUIData& response) {
    std::vector<int32_t> receivers;
    if (const auto route = m_routes.find(response.GetDataText("UUID")); route != m_routes.end()) {
        receivers.push_back(route->second.sender);
    } else if (const auto topic = m_topics.find(response.GetDataText("Topic")); topic != m_topics.end()) {
        receivers.assign(topic->second.begin(), topic->second.end());
    }
    // An object that is no request object tells nobody when it goes.
    std::erase_if(receivers, [this](int32_t sender) {
        const bool isGone = !CBaseObject::Find(sender);
        if (isGone) Forget(sender);
        return isGone;
    });
    return receivers;
}

void CSubscriptionDispatcher::Forget(int32_t sender) {
    const auto found = m_senders.find(sender);
    if (found == m_senders.end()) return;
    for (const std::string& topic : found->second.topics) {
        const auto senders = m_topics.find(topic);
        senders->second.erase(sender);
        if (senders->second.empty()) m_topics.erase(senders);
    }
    for (const std::string* uuid : found->second.uuids) m_routes.erase(m_routes.find(*uuid));
    m_senders.erase(found);
}

}  // namespace luadui
