#include "datamgr/quote_feed.h"

#include <algorithm>
#include <utility>

#include "base/base_object.h"
#include "base/counters.h"
#include "datalists/hq_data.h"
#include "datamgr/quote_handlers.h"
#include "datamgr/ui_data_manager.h"
#include "platform/win32.h"

namespace luadui {
namespace {

constexpr char kSubscribe[] = "isSub", kUnsubscribe[] = "unsub";

// By a key, "code:market".
bool FindQuote(const CHqData& list, std::string_view key, CUIData& quote) {
    const size_t colon = key.find(':');
    return colon != key.npos && list.FindQuote(key.substr(0, colon), key.substr(colon + 1), quote);
}

}  // namespace

uint32_t QuoteFeed::TickCount() { return static_cast<uint32_t>(GetTickCount()); }

const CHqData* QuoteFeed::_list(size_t kind) const {
    return m_manager.Lists().Find<CHqData>(kQuoteKinds[kind]);
}

// Subscriptions.

QuoteFeed::Held QuoteFeed::_hold(Kind& kind, const Names& securities, uint32_t holder) {
    Held held;
    for (const std::string& name : securities) {
        if (kind.securities.size() >= kMaxSecurities && !kind.securities.contains(name)) {
            CCounters::Add("quote_subscription_refused");
            held.others.push_back(name);
            continue;
        }
        Security& security = kind.securities[name];
        if (kind.holders[holder].insert(name).second) ++security.holders;
        const bool isLost = security.asker != 0 && m_now() - security.askedAt >= kPatience;
        if (!std::exchange(security.isAtServer, true) || isLost) {
            security.asker = holder;
            security.askedAt = m_now();
            held.fresh.push_back(name);
        } else if (!security.keys.empty()) {
            held.current.push_back(name);
        } else {
            (security.asker == holder ? held.pending : held.others).push_back(name);
        }
    }
    return held;
}

void QuoteFeed::Subscribe(std::string_view kind, const Names& securities, uint32_t holder) {
    const size_t number = QuoteKindOf(kind);
    if (number == kQuoteKindCount) return;
    const Held held = _hold(m_kinds[number], securities, holder);
    _send(kind, held.fresh, holder, kSubscribe);
    _send(kind, held.others, holder, nullptr);
    if (held.current.empty()) return;
    CUIData news(kind);
    news.SetData("handle", static_cast<int32_t>(holder));
    news.SetData("stock_code", JoinSecurities(held.current));
    m_manager.GetData(news, false, false);
}

bool QuoteFeed::TakeQuery(CUIData& request, uint32_t holder) {
    const size_t number = QuoteKindOf(request.GetTypeText());
    if (number == kQuoteKindCount) return false;
    const Names securities = SecuritiesOf(request);
    if (request.GetDataText(kUnsubscribe) == "true") {
        Unsubscribe(request.GetType(), securities, holder);
        return true;
    }
    if (request.GetDataText(kSubscribe) != "true" || securities.empty()) return false;
    const Held held = _hold(m_kinds[number], securities, holder);
    if (held.fresh.size() == securities.size()) return false;  // it subscribes by itself
    request.Remove(kSubscribe);
    if (held.pending.size() == securities.size() && request.GetDataLong("refresh") == 0) return true;
    _send(request.GetType(), held.fresh, holder, kSubscribe);
    return false;
}

QuoteFeed::Names QuoteFeed::_release(Kind& kind, const Names& securities, uint32_t holder) {
    Names free;
    const auto held = kind.holders.find(holder);
    if (held == kind.holders.end()) return free;
    for (const std::string& name : securities) {
        if (held->second.erase(name) == 0) continue;
        const auto security = kind.securities.find(name);
        if (--security->second.holders != 0) continue;
        if (security->second.isAtServer) free.push_back(name);
        kind.securities.erase(security);
    }
    if (held->second.empty()) kind.holders.erase(held);
    return free;
}

void QuoteFeed::Unsubscribe(std::string_view kind, const Names& securities, uint32_t holder) {
    const size_t number = QuoteKindOf(kind);
    if (number == kQuoteKindCount) return;
    const Names free = _release(m_kinds[number], securities, holder);
    _send(kind, free, 0, kUnsubscribe);
}

void QuoteFeed::Leave(std::string_view kind, uint32_t holder) {
    const size_t number = QuoteKindOf(kind);
    if (number == kQuoteKindCount) return;
    const auto held = m_kinds[number].holders.find(holder);
    if (held == m_kinds[number].holders.end()) return;
    const Names names(held->second.begin(), held->second.end());
    Unsubscribe(kind, names, holder);
}

void QuoteFeed::_leaveGone() {
    for (size_t kind = 0; kind < kQuoteKindCount; ++kind) {
        std::vector<uint32_t> gone;
        for (const auto& [holder, names] : m_kinds[kind].holders) {
            if (!CBaseObject::Find(holder)) gone.push_back(holder);
        }
        for (const uint32_t holder : gone) Leave(kQuoteKinds[kind], holder);
    }
}

void QuoteFeed::_send(std::string_view kind, const Names& securities, uint32_t holder, const char* flag) {
    if (securities.empty()) return;
    CUIData request(kind);
    if (holder != 0) request.SetData("handle", static_cast<int32_t>(holder));
    request.SetData("stock_code", JoinSecurities(securities));
    if (flag) request.SetData(flag, "true");
    m_manager.SetData(&request, kSetRequest);
}

// Answers.

void QuoteFeed::Answered(std::string_view kind, const Names& asked, const CDataSet& keys, bool isSub) {
    const size_t number = QuoteKindOf(kind);
    if (number == kQuoteKindCount) return;
    Kind& entry = m_kinds[number];
    for (const std::string& name : asked) {
        const auto security = entry.securities.find(name);
        if (security == entry.securities.end()) continue;
        if (isSub) security->second.asker = 0;
        if (security->second.asker != 0) continue;  // somebody else's answer: it may never be pushed
        const std::string prefix = QuotePrefixOf(name);
        auto key = FindPrefix(keys, prefix);
        if (key != keys.end()) security->second.keys.clear();
        for (; key != keys.end() && HasPrefix(*key, prefix); ++key) security->second.keys.push_back(*key);
    }
    for (const std::string& key : keys) entry.answered[key] = m_now();
    if (entry.answered.size() <= entry.answersAllowed) return;
    std::erase_if(entry.answered, [&](const auto& answer) { return !_isFresh(entry, answer.first); });
    entry.answersAllowed = std::max<size_t>(1024, 2 * entry.answered.size());
}

void QuoteFeed::Refused(std::string_view kind, const Names& asked) {
    const size_t number = QuoteKindOf(kind);
    if (number == kQuoteKindCount) return;
    for (const std::string& name : asked) {
        const auto security = m_kinds[number].securities.find(name);
        if (security == m_kinds[number].securities.end()) continue;
        security->second.isAtServer = false;
        security->second.asker = 0;
    }
}

bool QuoteFeed::_isFresh(const Kind& kind, std::string_view key) const {
    const auto answered = kind.answered.find(key);
    return answered != kind.answered.end() && m_now() - answered->second < kFreshTime;
}

QuoteFeed::Names QuoteFeed::_currentKeys(const Kind& kind, std::string_view name) {
    if (const auto security = kind.securities.find(name); security != kind.securities.end())
        return security->second.keys;
    // One that is subscribed to in all markets is in each of them.
    const auto security = kind.securities.find(name.substr(0, name.find(':')));
    if (security == kind.securities.end() ||
        std::ranges::find(security->second.keys, name) == security->second.keys.end())
        return {};
    return {std::string(name)};
}

bool QuoteFeed::AnswerFrom(CUIData& request) const {
    const size_t number = QuoteKindOf(request.GetTypeText());
    const CHqData* const list = number == kQuoteKindCount ? nullptr : _list(number);
    const Names asked = SecuritiesOf(request);
    if (!list || asked.empty()) return false;
    std::map<std::string, CUIData> quotes;
    CDataSet keys;
    for (const std::string& name : asked) {
        const Names current = _currentKeys(m_kinds[number], name);
        if (current.empty()) return false;
        for (const std::string& key : current) {
            if (!FindQuote(*list, key, quotes[key])) return false;
            keys.Insert(key);
        }
    }
    for (const auto& [key, quote] : quotes) request.SetData(key, quote);
    request.SetData("updatecode", keys);
    request.SetData("is_push", 0);
    return true;
}

bool QuoteFeed::FindCurrent(std::string_view code, std::string_view market, CUIData& quote) const {
    for (size_t number = 0; number < kQuoteKindCount; ++number) {
        const Kind& kind = m_kinds[number];
        std::string name(code);
        if (!market.empty()) name.append(":").append(market);
        const Names keys = _currentKeys(kind, name);
        const CHqData* const list = _list(number);
        if (!list || keys.size() > 1 || (keys.empty() && !_isFresh(kind, name))) continue;
        if (FindQuote(*list, keys.empty() ? name : keys[0], quote)) return true;
    }
    return false;
}

void QuoteFeed::Tick() {
    for (const std::string_view kind : kQuoteKinds) PublishQuotes(m_manager, kind);
    if (++m_ticks % kTicksBetweenLooks == 0) _leaveGone();
}

}  // namespace luadui
