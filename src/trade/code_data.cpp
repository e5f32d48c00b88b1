// What the code list knows of single securities.
#include <algorithm>
#include <atomic>
#include <mutex>
#include <optional>
#include <shared_mutex>
#include <unordered_map>
#include <utility>

#include "base/counters.h"
#include "trade/trade.h"
#include "trade/venue.h"

namespace luadui {
namespace {

struct CodeData {
    bool isRiskWarned = false;
    int64_t boardLot = 0;
    bool operator==(const CodeData&) const = default;
};

struct Registry {
    std::shared_mutex mutex;
    // Only those about which there is something to know, by KeyOf.
    std::unordered_map<uint64_t, CodeData> codes;
    std::atomic<uint64_t> version{1};
};

Registry& Registered() {
    static auto* const registry = new Registry;
    return *registry;
}

// None for what can be no code, or of no market.
std::optional<uint64_t> KeyOf(std::string_view code, std::string_view market) {
    constexpr size_t kMost = 6;
    const Venue venue = VenueOf(market);
    if (venue == Venue::kUnknown || code.empty() || code.size() > kMost) return std::nullopt;
    uint64_t key = static_cast<uint64_t>(venue);
    for (const char c : code) key = key << 8 | static_cast<unsigned char>(c);
    return key;
}

CodeData Find(std::string_view code, std::string_view market) {
    const auto key = KeyOf(code, market);
    if (!key) return {};
    Registry& registry = Registered();
    const std::shared_lock lock(registry.mutex);
    const auto found = registry.codes.find(*key);
    return found == registry.codes.end() ? CodeData() : found->second;
}

// Takes the first character that is no blank from `name`; letters of full width become plain ones.
char TakeCharacter(std::string_view& name) {
    constexpr char kFullWidth = '\xA3';
    while (name.starts_with(' ')) name.remove_prefix(1);
    if (name.empty()) return '\0';
    const bool isWide = name[0] == kFullWidth && name.size() > 1;
    const char character = isWide ? static_cast<char>(name[1] & 0x7F) : name[0];
    name.remove_prefix(isWide ? 2 : 1);
    return character;
}

// "ST" or "*ST", also after the mark of the day ("XD", "XR", "DR") and of shares whose reform is pending ("S").
bool IsRiskWarnedName(std::string_view name) {
    std::string start;
    for (int i = 0; i < 6; ++i) start += TakeCharacter(name);
    std::string_view rest = start;
    if (rest.starts_with("XD") || rest.starts_with("XR") || rest.starts_with("DR")) rest.remove_prefix(2);
    for (const std::string_view mark : {"ST", "*ST", "SST", "S*ST"}) {
        if (rest.starts_with(mark)) return true;
    }
    return false;
}

}  // namespace

void CTrade::AddCodeData(std::string_view code, std::string_view market, std::string_view name,
                         int64_t boardLot) {
    const auto key = KeyOf(code, market);
    if (!key) {
        CCounters::Add("code_data_refused");
        return;
    }
    const CodeData data{IsRiskWarnedName(name), std::max<int64_t>(boardLot, 0)};
    Registry& registry = Registered();
    const std::unique_lock lock(registry.mutex);
    bool isChanged = false;
    if (data.isRiskWarned || data.boardLot > 0) {
        isChanged = std::exchange(registry.codes[*key], data) != data;
    } else {
        isChanged = registry.codes.erase(*key) != 0;
    }
    if (isChanged) registry.version.fetch_add(1, std::memory_order_release);
}

uint64_t CTrade::CodeDataVersion() { return Registered().version.load(std::memory_order_acquire); }

int64_t CTrade::GetBoardLot(std::string_view code, std::string_view market) {
    return Find(code, market).boardLot;
}

bool CTrade::IsRiskWarned(std::string_view code, std::string_view market) {
    return Find(code, market).isRiskWarned;
}

}  // namespace luadui
