// What was asked: every request that left, until it is answered, and for a while afterwards.
#pragma once

#include <cstdint>
#include <deque>
#include <list>
#include <map>
#include <memory>
#include <string>
#include <string_view>
#include <utility>

#include "base/data_set.h"
#include "base/text_map.h"
#include "datamgr/answer_parts.h"
#include "messaging/queue_data.h"

namespace luadui {

// One process-wide count orders everything that is sent and everything that is pushed. The age of an answer
// is the count at which its request left, the age of a push the one at which it came in: the larger is the
// newer content.
using Age = uint64_t;

// Threads: the UI thread.
class RequestLedger {
  public:
    struct Entry {
        Age age = 0;  // 0: not sent yet
        int type = 0;
        std::string kind;       // the data kind asked for; empty when only the type is known
        int32_t handle = -1;    // who asked; -1: nobody in particular
        std::string fundToken;  // the account of this one request
        // All accounts of the ask that this request belongs to; those of its requests that are unanswered hold it
        // together. Null when it was for one.
        std::shared_ptr<const CDataSet> ask;
        bool isSub = false;  // further answers may follow
        bool wantsEndRecord = false;
        bool isDone = false;
        bool isCounted = false;               // as under way
        bool isDropped = false;               // not found any more
        uint32_t sentAt = 0;                  // GetTickCount()
        AnswerParts parts;                    // of its answer
        std::list<Entry*>::iterator waiting;  // its place among those, while it is counted
    };

    static RequestLedger& Instance();

    Age NextAge() { return ++m_lastAge; }

    // Remembers what a request is about before it is sent.
    void Describe(const std::string& uuid, Entry entry);
    // The request leaves now. One that was not described is remembered by what it says itself.
    void Sent(const CQueueReqItem& request);
    // Forgets a request that was not sent after all.
    void Drop(const std::string& uuid);

    // The request with that UUID; null when there is none. Valid until the ledger changes.
    Entry* Find(std::string_view uuid);
    // Its answer came. False when it had come before, and the request was not one for several answers.
    bool Finish(Entry& entry);

    // Whether a query of that type is under way for the account. One that has waited kPatience is not.
    bool IsUnderWay(int type, std::string_view fundToken);

    static constexpr uint32_t kPatience = 60'000;  // ms
    static constexpr size_t kMaxEntries =
        20'000;  // the oldest go first, counted as "ledger_entry_evicted" when unanswered

  private:
    using Query = std::pair<int, std::string>;
    struct QueryLess {
        using is_transparent = void;
        template <class A, class B>
        bool operator()(const A& a, const B& b) const {
            return a.first != b.first ? a.first < b.first
                                      : std::string_view(a.second) < std::string_view(b.second);
        }
    };
    using Entries = TextMap<Entry>;

    void _makeRoom();
    void _losePatience();
    void _uncount(Entry& entry);

    Age m_lastAge = 0;
    Entries m_entries;                         // by UUID
    std::deque<Entries::value_type*> m_order;  // all of them, oldest first
    std::list<Entry*> m_waiting;               // those under way, the one sent first in front
    std::map<Query, int, QueryLess> m_underWay;
};

}  // namespace luadui
