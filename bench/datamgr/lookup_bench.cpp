// Names and numbers on every request's and every push's way, beside a hash map of strings.
#include <string>
#include <unordered_map>
#include <vector>

#include "bench/datamgr/allocations.h"
#include "bench/report.h"
#include "datamgr/answer_routes.h"
#include "datamgr/push_routes.h"
#include "datamgr/ui_registry.h"

namespace luadui::bench {
namespace {

constexpr double kLimitNs = 30;

// Looks all keys up, one a call; they come as pages and servers send them, from memory of their own.
template <class Key, class Lookup>
class Cycle {
  public:
    Cycle(std::vector<Key> keys, Lookup lookup) : m_keys(std::move(keys)), m_lookup(std::move(lookup)) {}
    void operator()() {
        Keep(m_lookup(m_keys[m_next]));
        if (++m_next == m_keys.size()) m_next = 0;
    }

  private:
    std::vector<Key> m_keys;
    Lookup m_lookup;
    size_t m_next = 0;
};

// How long a lookup in a hash map of the same strings takes.
double BaselineSeconds(const std::vector<std::string>& keys) {
    std::unordered_map<std::string, int> map;
    for (const std::string& key : keys) map.emplace(key, static_cast<int>(map.size()));
    return Measure(Cycle(keys, [&map](const std::string& key) { return map.find(key)->second; }));
}

template <class Key, class Lookup>
void Report(const std::string& name, std::vector<Key> keys, Lookup lookup, double baseline) {
    Cycle cycle(std::move(keys), lookup);
    const double seconds = Measure(cycle);
    AtMost(name + "_ns", seconds * 1e9, kLimitNs);
    AtMost(name + "_vs_unordered_map", seconds / baseline, 2);
    AtMost(name + "_allocations", CountAllocations(cycle).count, 0);
}

LUADUI_REPORT(Lookup) {
    std::vector<std::string> kinds, topics;
    std::vector<int> types;
    for (const KindType& row : TypeCodes()) kinds.emplace_back(row.kind);
    for (const AnswerRoute& row : AnswerRoutes()) types.push_back(row.type);
    for (const PushRoute& row : PushRoutes()) {
        topics.emplace_back(row.key);
        if (topics.back().ends_with('|')) topics.back() += "fund_token_880001";
    }
    const double kindInMap = BaselineSeconds(kinds), topicInMap = BaselineSeconds(topics);
    const CUIData typeCodes = TypeCodeRecord();
    Report(
        "kind_to_type", kinds, [](const std::string& kind) { return RequestTypeOfKind(kind); }, kindInMap);
    Report(
        "kind_to_type_in_record", kinds, [&](const std::string& kind) { return typeCodes.GetDataLong(kind); },
        kindInMap);
    Report(
        "type_to_handler", types, [](int type) { return FindAnswerRoute(type); }, kindInMap);
    Report(
        "topic_to_handler", topics, [](const std::string& topic) { return FindPushRoute(topic); },
        topicInMap);
}

}  // namespace
}  // namespace luadui::bench
