#include "host/news.h"

#include <vector>

#include "base/counters.h"

namespace terminal {
namespace {

using luadui::CUIData;

constexpr int kDataOfPage = 2001;  // nothing that the client keeps
constexpr char kClient[] = "CLIENT_CACHE";

CUIData ParamsOf(const CUIData& request) {
    CUIData params;
    request.GetData("Params", params);
    return params;
}

}  // namespace

bool News::Take(const CUIData& request) {
    const int64_t type = request.GetDataLong("REQTYPE");
    if (type == kSubscribe) _subscribe(request);
    if (type == kPublish) {
        const CUIData params = ParamsOf(request);
        Tell(params.GetDataString("_SUBKEY"), params.GetDataString("_SEND_DATA"),
             params.GetDataString("_UUID"));
    }
    return type == kSubscribe || type == kPublish;
}

void News::_subscribe(const CUIData& request) {
    const CUIData params = ParamsOf(request);
    const std::string topic = params.GetDataString("key"), sender = request.GetDataString("From");
    std::lock_guard lock(m_mutex);
    if (params.GetDataText("unsub") == "true") {
        const auto found = m_subscribers.find(topic);
        if (found != m_subscribers.end() && found->second.erase(sender) > 0 && found->second.empty())
            m_subscribers.erase(found);
    } else if (m_subscribers.size() < kMaxSubscriptions) {
        m_subscribers[topic].insert(sender);
    } else {
        luadui::CCounters::Add("news_subscription_refused");
    }
}

void News::Tell(const std::string& topic, const std::string& json, const std::string& uuid) {
    std::vector<std::string> receivers{kClient};
    {
        std::lock_guard lock(m_mutex);
        const auto found = m_subscribers.find(topic);
        if (found != m_subscribers.end())
            receivers.insert(receivers.end(), found->second.begin(), found->second.end());
    }
    for (const std::string& receiver : receivers) {
        CUIData push;
        push.SetData("DATATYPE", kDataOfPage);
        push.SetData("Topic", topic);
        push.SetData("To", receiver);
        push.SetData("RawData", json);
        push.SetData("UUID", uuid);
        m_deliver(push);
    }
}

}  // namespace terminal
