// Which handler serves which push, and which data kinds it is news of.
#pragma once

#include <span>
#include <string_view>

#include "datamgr/answer.h"

namespace luadui {

class CUIDataManager;

// Merges a push into its list, if it has one, and publishes it as news of `kind`. What the list has no use
// for (it is of an account that was never queried) is not published.
using PushHandler = void (*)(CUIDataManager& manager, Push& push, std::string_view kind);

struct PushRoute {
    std::string_view key;                     // a whole topic, or its beginning up to and including the "|"
    PushHandler handler;                      // called once for each kind
    std::span<const std::string_view> kinds;  // in the order in which they are published
};

std::span<const PushRoute> PushRoutes();
// The key of the pushes that bring news of a kind; empty when there are none.
std::string_view PushTopicOf(std::string_view kind);
// The route of a topic: the one with exactly this key, or else with what stands up to and including its first
// "|". Null when there is none.
const PushRoute* FindPushRoute(std::string_view topic);

}  // namespace luadui
