// How quotes and the securities that they are of are named.
#pragma once

#include <algorithm>
#include <iterator>
#include <string>
#include <string_view>
#include <vector>

#include "base/data_set.h"
#include "base/text.h"
#include "base/ui_data.h"

namespace luadui {

// The kinds that the server pushes; each has a list of its own (CHqData).
inline constexpr std::string_view kQuoteKinds[] = {"hq", "hq_zq"};
inline constexpr size_t kQuoteKindCount = std::size(kQuoteKinds);

// Its place among the kinds of quotes; kQuoteKindCount for all others.
inline size_t QuoteKindOf(std::string_view kind) {
    return static_cast<size_t>(std::ranges::find(kQuoteKinds, kind) - std::begin(kQuoteKinds));
}
inline bool IsQuoteKind(std::string_view kind) { return QuoteKindOf(kind) != kQuoteKindCount; }

// The securities that a page's record names in "stock_code" or else "code": each "code:market" ("600000:17"), or "code"
// for those of any market; several are separated by commas.
inline std::vector<std::string> SecuritiesOf(const CUIData& record) {
    std::string_view names = TrimText(record.GetDataText("stock_code"));
    if (names.empty()) names = TrimText(record.GetDataText("code"));
    std::vector<std::string> securities;
    for (const std::string_view name : SplitText(names, ',')) {
        if (const std::string_view security = TrimText(name); !security.empty())
            securities.emplace_back(security);
    }
    return securities;
}

inline std::string JoinSecurities(const std::vector<std::string>& securities) {
    std::string names;
    for (const std::string& security : securities) names.append(names.empty() ? "" : ",").append(security);
    return names;
}

// What the keys of quotes ("code:market") of a named security begin with; the whole key where it names its market.
inline std::string QuotePrefixOf(std::string_view security) {
    return security.find(':') == std::string_view::npos ? std::string(security).append(":")
                                                        : std::string(security);
}
inline bool HasPrefix(std::string_view key, std::string_view prefix) {
    return prefix.ends_with(':') ? key.starts_with(prefix) : key == prefix;
}
// The first key in the set that has the prefix; keys.end() when none has.
inline CDataSet::const_iterator FindPrefix(const CDataSet& keys, std::string_view prefix) {
    const auto key = keys.LowerBound(prefix);
    return key != keys.end() && HasPrefix(*key, prefix) ? key : keys.end();
}

}  // namespace luadui
