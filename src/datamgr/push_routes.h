// Which handler serves which push, and which data kinds it is news of.
#pragma once

#include <span>
#include <string_view>

#include "datamgr/answer.h"

namespace luadui {

class CUIDataManager;

// Merges a push into its list, if it has one, and publishes it as news of each of the kinds, in their order.
using PushHandler = void (*)(CUIDataManager& manager, Push& push, std::span<const std::string_view> kinds);

struct PushRoute {
    std::string_view key;  // a whole topic, or its beginning up to and including the "|"
    PushHandler handler;
    std::span<const std::string_view> kinds;
};

std::span<const PushRoute> PushRoutes();
// The key of the pushes that bring news of a kind; empty when there are none.
std::string_view PushTopicOf(std::string_view kind);
// The route of a topic: the one with exactly this key, or else with what stands up to and including its first
// "|". Null when there is none.
const PushRoute* FindPushRoute(std::string_view topic);

}  // namespace luadui
