#include "codedata/code_list_query.h"

#include "base/counters.h"
#include "messaging/host_link.h"
#include "messaging/request_types.h"

namespace luadui {
namespace {

// The markets of the query are what its quotes enclose.
static_assert([] {
    std::string_view rest = kCodeListQuery;
    for (const std::string_view market : kCodeListMarkets) {
        rest.remove_prefix(rest.find('\'') + 1);
        if (rest.substr(0, rest.find('\'')) != market) return false;
        rest.remove_prefix(market.size() + 1);
    }
    return rest.empty();
}());

}  // namespace

std::optional<std::string> QueryCodeList(std::string_view path) {
    StringMap params{{"cmd", "sync"},
                     {"method", std::string(kCodeListFunction)},
                     {"script", std::string(kCodeListScript)},
                     {"params", std::string(kCodeListQuery)}};
    if (!path.empty()) params.emplace("path", path);
    std::string reply;
    if (CHostLink::Instance().RequestSync(kReqLuaCall, params, &reply) && !reply.empty()) return reply;
    CCounters::Add("code_list_unanswered");
    return std::nullopt;
}

}  // namespace luadui
