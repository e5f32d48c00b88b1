// Where a request goes: by its type alone, and, when it is about an instruction that one server holds, to
// that server.
#pragma once

#include <cstddef>
#include <cstdint>
#include <deque>
#include <map>
#include <string>
#include <string_view>

namespace luadui {

// The "Params" field that names the instruction which a request of this type is about; empty when there is
// none.
// Threads: any.
std::string_view InstIDKeyOf(int type);

// The "RouteType" of a request: "Specific-Tunnel", "All-Tunnel" or "Main-Tunnel". Threads: any.
std::string_view RouteTypeOf(int type, bool hasDestServer);

// Longer identifiers and server names are nobody's: refused and counted as "instruction_name_refused".
inline constexpr size_t kLongestInstructionName = 256;

// Which server holds which instruction.
//
// Threads: one at a time.
class InstructionServers {
  public:
    explicit InstructionServers(size_t limit = 20'000) : m_limit(limit) {}

    // Notes the server of an instruction, whose first one stays: that is where the instruction lives. Beyond
    // the limit the one noted longest ago is forgotten ("instruction_server_forgotten"). False, and nothing
    // changed, for names that are empty or too long and for instructions already known.
    bool Remember(std::string_view instruction, std::string_view server);
    // Empty when unknown. Valid until the next Remember.
    std::string_view ServerOf(std::string_view instruction) const;
    size_t Size() const { return m_servers.size(); }

  private:
    using Servers = std::map<std::string, std::string, std::less<>>;

    const size_t m_limit;
    Servers m_servers;
    std::deque<Servers::iterator> m_order;  // the one noted first in front
};

// The orders over several accounts or servers that were sent today, each with the second of sending. Kept in
// a settings file, so that they are known again after a restart.
//
// Threads: the UI thread; the host is called.
class InstructionRecord {
  public:
    // The one of the process, shared by all data managers; never destroyed.
    static InstructionRecord& Instance();

    explicit InstructionRecord(size_t limit = 10'000) : m_limit(limit) {}

    // Notes the instruction in memory and file, stamped with `nowSeconds` (since 1970) or, when that is no
    // later than the newest stamp, with the second after that one: stamps strictly increase. Beyond the limit
    // the oldest is forgotten in memory ("instruction_record_forgotten"). Returns the stamp; 0, and nothing
    // changed, for names that are empty or too long.
    int64_t Remember(std::string_view instruction, int64_t nowSeconds);

    // Forgets everything and reads the file again. What was stamped at `localMidnightSeconds` (the start of
    // today) or before, or with no number, is erased from it. Stamps more than two days ahead would push
    // every later one there with them: they are ignored, like names that are too long
    // ("instruction_stamp_refused").
    void Load(int64_t localMidnightSeconds);

    // The stamp of an instruction; 0 when unknown.
    int64_t StampOf(std::string_view instruction) const;
    size_t Size() const { return m_stamps.size(); }

  private:
    void _keep(std::string_view instruction, int64_t stamp);

    const size_t m_limit;
    std::map<std::string, int64_t, std::less<>> m_stamps;
    int64_t m_newest = 0;  // of all stamps ever seen here
};

}  // namespace luadui
