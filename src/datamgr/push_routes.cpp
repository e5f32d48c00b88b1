#include "datamgr/push_routes.h"

#include <algorithm>
#include <array>

#include "datamgr/kind_table.h"
#include "datamgr/push_handlers.h"
#include "datamgr/quote_handlers.h"
#include "datamgr/quote_names.h"
#include "datamgr/ui_registry.h"
#include "datamgr/ui_registry_tables.h"

namespace luadui {
namespace {

// Kinds that have no push key of their own: they come with the pushes of others.
constexpr KindPushKey kMoreKinds[] = {
    {"entrust", "Entrust|"},
    {"entrustcredit", "EntrustCredit|"},
    {"deal", "Trade|"},
    {"dealmulti", "Trade|"},
    {"dealpush", "Trade|"},
    {"dealcredit", "TradeCredit|"},
    {"dealmulticredit", "TradeCredit|"},
    {"order_push", "entrustret"},
    {"order_deal_push", "traderet"},
    {"order_push_gradelist", "grade_order"},
    {"inst_resp_mutiinst", "multiinst_instruction"},
    {"condition_order", "condition_order"},
};

// Quotes are pushed under their kind, yet nobody subscribes to that: one subscribes to securities.
constexpr KindPushKey kQuotePushes[] = {{"hq", "hq"}, {"hq_zq", "hq_zq"}};
static_assert(std::ranges::equal(kQuotePushes, kQuoteKinds, {}, &KindPushKey::kind));

constexpr size_t kPairCount =
    std::size(registry::kPushKeys) + std::size(kMoreKinds) + std::size(kQuotePushes);

// Every pair of kind and key, those of a key together, in the order of the tables.
constexpr auto JoinPairs() {
    std::array<KindPushKey, kPairCount> pairs{};
    auto* rest = std::ranges::copy(registry::kPushKeys, pairs.data()).out;
    rest = std::ranges::copy(kMoreKinds, rest).out;
    std::ranges::copy(kQuotePushes, rest);
    // The standard library's stable sort does not run at compile time.
    for (size_t i = 1; i < kPairCount; ++i) {
        for (size_t k = i; k > 0 && pairs[k].key < pairs[k - 1].key; --k) std::swap(pairs[k], pairs[k - 1]);
    }
    return pairs;
}
constexpr auto kPairs = JoinPairs();

constexpr auto ListKinds() {
    std::array<std::string_view, kPairCount> kinds{};
    std::ranges::transform(kPairs, kinds.begin(), &KindPushKey::kind);
    return kinds;
}
constexpr auto kKinds = ListKinds();

constexpr size_t CountKeys() {
    size_t keys = 1;
    for (size_t i = 1; i < kPairCount; ++i) keys += kPairs[i].key != kPairs[i - 1].key ? 1 : 0;
    return keys;
}

constexpr PushHandler HandlerOf(std::string_view key) {
    if (std::ranges::find(kQuoteKinds, key) != std::end(kQuoteKinds)) return MergeQuotes;
    if (key == "AccountOnline") return TakeOnline;
    if (key == "AccountGroup") return TakeGroups;
    const auto* const row = std::ranges::find(kPushedLists, key, &PushedList::key);
    if (row == std::end(kPushedLists)) return PublishPush;
    switch (row->rows) {
        case PushedRows::kMessage:
            return MergeMessage;
        case PushedRows::kOfPage:
            return MergePageList;
        default:
            return MergePush;
    }
}

constexpr auto MakeRoutes() {
    std::array<PushRoute, CountKeys()> routes{};
    size_t begin = 0;
    for (PushRoute& route : routes) {
        size_t end = begin + 1;
        while (end < kPairCount && kPairs[end].key == kPairs[begin].key) ++end;
        const std::string_view key = kPairs[begin].key;
        route = {key, HandlerOf(key), std::span<const std::string_view>(&kKinds[begin], end - begin)};
        begin = end;
    }
    return routes;
}
constexpr auto kRoutes = MakeRoutes();

using RouteIndex = KindIndex<kRoutes, &PushRoute::key>;

// So a topic with more behind its bar is no key itself, and one lookup decides.
static_assert(std::ranges::none_of(
    kRoutes, [](std::string_view key) { return key.find('|') < key.size() - 1; }, &PushRoute::key));

using MoreKindsIndex = KindIndex<kMoreKinds, &KindPushKey::kind>;

}  // namespace

std::string_view PushTopicOf(std::string_view kind) {
    if (const std::string_view key = PushKeyOfKind(kind); !key.empty()) return key;
    const KindPushKey* const row = MoreKindsIndex::Find(kind);
    return row ? row->key : std::string_view();
}

std::span<const PushRoute> PushRoutes() { return kRoutes; }

const PushRoute* FindPushRoute(std::string_view topic) {
    const size_t bar = topic.find('|');
    return RouteIndex::Find(bar == std::string_view::npos ? topic : topic.substr(0, bar + 1));
}

}  // namespace luadui
