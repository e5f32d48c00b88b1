// Subscribing: which pushes a manager gets from the router, and which of its windows hear of them.
#include <algorithm>

#include "base/counters.h"
#include "datamgr/push_routes.h"
#include "datamgr/quote_fields.h"
#include "datamgr/quote_names.h"
#include "datamgr/ui_data_manager.h"
#include "messaging/request_types.h"
#include "messaging/subscription_dispatcher.h"

namespace luadui {
namespace {

constexpr int kReqSubscribe = 1601;
constexpr int kReqSubscribeSecurity = 1602;
constexpr int kReqSubscribeInstruction = 1702;

// Kinds whose subscription is of another type than the ordinary one.
struct SubscriptionType {
    std::string_view kind;
    int type;
};
constexpr SubscriptionType kSubscriptionTypes[] = {
    {"hq", kReqSubscribeSecurity},
    {"hq_zq", kReqSubscribeSecurity},
    {"sub_dui_uievent", kReqPageEventSubscribe},
    {"STR_PB_SINGLE_INSTRUCTION", kReqSubscribeInstruction},
};

int TypeOf(const CUIData& record) {
    const int type = RequestTypeOf(record);
    if (IsSubscription(type) || IsInstructionSubscription(type)) return type;
    for (const SubscriptionType& row : kSubscriptionTypes) {
        if (row.kind == record.GetTypeText()) return row.type;
    }
    return kReqSubscribe;
}

// The topic of the server's pushes. The eight ordinary account topics are completed by the subscription
// dispatcher, the others that end in "|" here.
std::string KeyOf(const CUIData& record) {
    std::string key = record.GetDataString("key");
    if (key.empty()) key = PushTopicOf(record.GetTypeText());
    const TextView token = record.GetDataText("fund_token");
    if (key.ends_with('|') && CompleteTopic(key, token) == key) key += token;
    return key;
}

CUIData MakeParams(const CUIData& record, int type, bool subscribe) {
    CUIData params;
    if (CUIData given; record.GetData("Params", given)) params = given;
    for (const auto [name, value] : record) {
        if (value.Kind() == kDataString) params.SetData(name, value.AsText());
    }
    int32_t handle = 0;
    if (record.GetData("handle", handle)) params.SetData("handle", std::to_string(handle));
    if (type == kReqSubscribeSecurity) {
        params.SetData("DataItems", kQuoteDataItems);
    }
    const TextView code = record.GetDataText("stock_code");
    if (IsCodeKeyedRequest(type) && record.GetDataText("code").empty()) params.SetData("code", code);
    if (const std::string key = KeyOf(record); !key.empty()) params.SetData("key", key);
    if (!subscribe) params.SetData("unsub", "true");
    return params;
}

std::string TopicOf(const CUIData& params) {
    const TextView key = params.GetDataText("key");
    return CompleteTopic(key.empty() ? params.GetDataText("code") : key, params.GetDataText("fund_token"));
}

}  // namespace

void CUIDataManager::_handleSubRequest(const CUIData& record, bool subscribe) {
    CDataSet tokens;
    // Each is left on its own, whatever was subscribed to together.
    const auto securities =
        IsQuoteKind(record.GetTypeText()) ? SecuritiesOf(record) : std::vector<std::string>();
    if (securities.size() > 1) {
        _subscribeEach(record, record.Has("stock_code") ? "stock_code" : "code", securities, subscribe);
    } else if (record.GetData("fund_token", tokens)) {
        if (tokens.IsEmpty()) CCounters::Add("request_without_account");
        _subscribeEach(record, "fund_token", tokens, subscribe);
    } else {
        _handleSingeSubReq(record, subscribe);
    }
}

template <class Names>
void CUIDataManager::_subscribeEach(const CUIData& record, const char* key, const Names& names,
                                    bool subscribe) {
    const int32_t self = GetHandle();
    CUIData single = record;
    for (const std::string& name : names) {
        single.SetData(key, name);
        _handleSingeSubReq(single, subscribe);
        if (CBaseObject::Find(self) != this) return;
    }
}

void CUIDataManager::_handleSingeSubReq(const CUIData& record, bool subscribe) {
    const std::string kind = record.GetType();
    const int type = TypeOf(record);
    const CUIData params = MakeParams(record, type, subscribe);
    int32_t handle = 0;
    record.GetData("handle", handle);
    const auto window = static_cast<uint32_t>(std::max(handle, 0));
    const std::string topic = TopicOf(params);
    if (subscribe) _leaveTopicsOfGone();
    const auto change =
        subscribe ? m_subscriptions.Add(topic, kind, window) : m_subscriptions.Remove(topic, kind, window);
    if (change.ofKind && window != 0) Listen(window, kind, NotifyTable::kSubscribed, subscribe);
    if (topic.empty()) return;  // made in the terminal itself: whoever makes it tells those who listen
    // A topic is left when nobody here wants it any more; asking for it again does no harm.
    if (subscribe || change.ofTopic) _sendSubscription(type, params);
}

void CUIDataManager::_leaveTopicsOfGone() {
    for (const std::string& topic : m_subscriptions.DropGone()) {
        if (topic.empty()) continue;
        CUIData params;
        params.SetData("key", topic);
        params.SetData("unsub", "true");
        _sendSubscription(kReqSubscribe, params);
    }
}

void CUIDataManager::_sendSubscription(int type, const CUIData& params) {
    CQueueReqItem item;
    item.SetData("REQTYPE", type);
    item.SetData("FundToken", params.GetDataText("fund_token"));
    item.SetData("Params", params);
    Request(item);
}

}  // namespace luadui
