#include "datamgr/request_route.h"

#include <algorithm>
#include <charconv>
#include <iterator>

#include "base/counters.h"
#include "datamgr/config_store.h"
#include "datamgr/kind_table.h"
#include "messaging/host_link.h"

namespace luadui {
namespace {

constexpr int kByInstruction[] = {1161, 1162, 1163, 1164, 1165, 1168, 1170, 1221, 1222, 1223,
                                  1224, 1225, 1226, 1251, 1252, 1253, 1254, 1255, 1258, 1259,
                                  1261, 1262, 1263, 1264, 1265, 1268, 1269, 1271, 1272, 1273,
                                  1281, 1282, 1283, 1284, 1285, 1287, 1288};
constexpr int kByInstance[] = {1166, 1167, 1220, 1228, 1229, 1257, 1267};
constexpr int kByOrder[] = {1171, 1227, 1260, 1270, 1289};

constexpr bool Overlap(const auto& left, const auto& right) {
    return std::ranges::find_first_of(left, right) != std::end(left);
}
static_assert(!Overlap(kByInstruction, kByInstance) && !Overlap(kByInstruction, kByOrder) &&
              !Overlap(kByInstance, kByOrder));

constexpr char kMultiServerFile[] = "\\log\\TradeLog\\basketIsntRecord.log";
constexpr int64_t kFarthestStamp = 2 * 24 * 60 * 60;  // seconds after midnight

bool IsBetween(int type, int first, int last) { return first <= type && type <= last; }

bool IsName(std::string_view name) {
    if (name.size() > kLongestInstructionName) CCounters::Add("instruction_name_refused");
    return !name.empty() && name.size() <= kLongestInstructionName;
}

// 0 when the text is no number.
int64_t ReadStamp(std::string_view text) {
    int64_t stamp = 0;
    const char* const end = text.data() + text.size();
    return std::from_chars(text.data(), end, stamp).ptr == end ? stamp : 0;
}

}  // namespace

std::string_view InstIDKeyOf(int type) {
    if (NumberIndex<kByInstruction>::Contains(type)) return "instructionid";
    if (NumberIndex<kByInstance>::Contains(type)) return "InstanceID";
    if (NumberIndex<kByOrder>::Contains(type)) return "order_no";
    return {};
}

std::string_view RouteTypeOf(int type, bool hasDestServer) {
    if (hasDestServer) return "Specific-Tunnel";
    if (IsBetween(type, 1211, 1219) || IsBetween(type, 1230, 1239)) return "All-Tunnel";
    return IsBetween(type, 1101, 1459) ? "Specific-Tunnel" : "Main-Tunnel";
}

bool InstructionServers::Remember(std::string_view instruction, std::string_view server) {
    if (!IsName(instruction) || !IsName(server)) return false;
    const auto [entry, isNew] = m_servers.try_emplace(std::string(instruction), server);
    if (!isNew) return false;
    m_order.push_back(entry);
    if (m_order.size() > m_limit) {
        m_servers.erase(m_order.front());
        m_order.pop_front();
        CCounters::Add("instruction_server_forgotten");
    }
    return true;
}

std::string_view InstructionServers::ServerOf(std::string_view instruction) const {
    const auto entry = m_servers.find(instruction);
    return entry == m_servers.end() ? std::string_view() : entry->second;
}

InstructionRecord& InstructionRecord::Instance() {
    static auto* const record = new InstructionRecord;
    return *record;
}

int64_t InstructionRecord::Remember(std::string_view instruction, int64_t nowSeconds) {
    if (!IsName(instruction)) return 0;
    const int64_t stamp = std::max(nowSeconds, m_newest + 1);
    _keep(instruction, stamp);
    WriteConfig(kMultiServerFile, std::string(instruction), std::to_string(stamp));
    return stamp;
}

void InstructionRecord::Load(int64_t localMidnightSeconds) {
    const StringMap stored = ReadAllConfig(kMultiServerFile);
    m_stamps.clear();
    for (const auto& [instruction, text] : stored) {
        const int64_t stamp = ReadStamp(text);
        if (stamp <= localMidnightSeconds) {
            EraseConfigKey(kMultiServerFile, instruction);
        } else if (stamp > localMidnightSeconds + kFarthestStamp) {
            CCounters::Add("instruction_stamp_refused");
        } else if (IsName(instruction)) {
            _keep(instruction, stamp);
        }
    }
}

int64_t InstructionRecord::StampOf(std::string_view instruction) const {
    const auto entry = m_stamps.find(instruction);
    return entry == m_stamps.end() ? 0 : entry->second;
}

void InstructionRecord::_keep(std::string_view instruction, int64_t stamp) {
    m_stamps.insert_or_assign(std::string(instruction), stamp);
    m_newest = std::max(m_newest, stamp);
    if (m_stamps.size() <= m_limit) return;
    m_stamps.erase(std::ranges::min_element(m_stamps, {}, [](const auto& entry) { return entry.second; }));
    CCounters::Add("instruction_record_forgotten");
}

}  // namespace luadui
