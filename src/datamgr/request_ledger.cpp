#include "datamgr/request_ledger.h"

#include "base/counters.h"
#include "messaging/handle_text.h"
#include "messaging/request_types.h"
#include "platform/win32.h"

namespace luadui {

RequestLedger& RequestLedger::Instance() {
    static auto* const ledger = new RequestLedger;
    return *ledger;
}

void RequestLedger::Describe(const std::string& uuid, Entry entry) {
    if (const auto found = m_entries.find(uuid); found != m_entries.end()) {
        _uncount(found->second);
        found->second = std::move(entry);
    } else {
        _makeRoom();
        m_order.push_back(&*m_entries.emplace(uuid, std::move(entry)).first);
    }
}

void RequestLedger::Sent(const CQueueReqItem& request) {
    const std::string uuid = request.GetDataString("UUID");
    CUIData params;
    request.GetData("Params", params);
    Entry* entry = Find(uuid);
    if (!entry) {
        Entry plain;
        plain.handle = params.Has("handle") ? HandleFromText(params.GetDataText("handle")) : -1;
        plain.fundToken = request.GetDataString("FundToken");
        if (plain.fundToken.empty()) plain.fundToken = params.GetDataString("fund_token");
        Describe(uuid, std::move(plain));
        entry = Find(uuid);
    }
    _uncount(*entry);
    entry->age = NextAge();
    entry->type = RequestTypeOf(request);
    entry->isSub = params.Has("isSub");
    entry->isDone = false;
    entry->isCounted = true;
    entry->sentAt = GetTickCount();
    ++m_underWay[{entry->type, entry->fundToken}];
    entry->waiting = m_waiting.insert(m_waiting.end(), entry);
    _losePatience();
}

void RequestLedger::Drop(const std::string& uuid) {
    Entry* const entry = Find(uuid);
    if (!entry) return;
    _uncount(*entry);
    *entry = Entry();
    entry->isDropped = true;
}

RequestLedger::Entry* RequestLedger::Find(std::string_view uuid) {
    if (uuid.empty()) return nullptr;
    const auto found = m_entries.find(uuid);
    return found == m_entries.end() || found->second.isDropped ? nullptr : &found->second;
}

bool RequestLedger::Finish(Entry& entry) {
    _uncount(entry);
    const bool isFirst = !std::exchange(entry.isDone, true);
    return isFirst || entry.isSub;
}

bool RequestLedger::IsUnderWay(int type, std::string_view fundToken) {
    _losePatience();
    return m_underWay.contains(std::pair(type, fundToken));
}

void RequestLedger::_makeRoom() {
    while (m_order.size() >= kMaxEntries) {
        auto& [uuid, entry] = *m_order.front();
        m_order.pop_front();
        if (!entry.isDone && !entry.isDropped) CCounters::Add("ledger_entry_evicted");
        _uncount(entry);
        m_entries.erase(m_entries.find(uuid));
    }
}

void RequestLedger::_losePatience() {
    const uint32_t now = GetTickCount();
    while (!m_waiting.empty() && now - m_waiting.front()->sentAt >= kPatience) _uncount(*m_waiting.front());
}

void RequestLedger::_uncount(Entry& entry) {
    if (!std::exchange(entry.isCounted, false)) return;
    m_waiting.erase(entry.waiting);
    const auto query = m_underWay.find(std::pair(entry.type, std::string_view(entry.fundToken)));
    if (--query->second == 0) m_underWay.erase(query);
}

}  // namespace luadui
