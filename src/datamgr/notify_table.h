// Who wants to hear of which data kind.
#pragma once

#include <cstdint>
#include <map>
#include <string>
#include <string_view>
#include <vector>

namespace luadui {

// Handles of windows and objects by data kind. A handle may be there for two reasons at once, and stays until
// both are gone.
//
// Threads: the UI thread.
class NotifyTable {
  public:
    enum Reason : uint8_t { kRegistered = 1, kSubscribed = 2 };

    // True when the kind had nobody before.
    bool Add(uint32_t handle, std::string_view kind, Reason reason);
    // True when the kind has nobody any more.
    bool Remove(uint32_t handle, std::string_view kind, Reason reason);
    // Forgets a handle whose object has gone, whatever it was there for.
    bool RemoveAll(uint32_t handle, std::string_view kind);
    bool Has(uint32_t handle, std::string_view kind) const;

    // The handles of a kind in ascending order; a copy, since those who are told may change the table.
    std::vector<uint32_t> Handles(std::string_view kind) const;
    std::vector<std::string> Kinds() const;

  private:
    std::map<std::string, std::map<uint32_t, uint8_t>, std::less<>> m_handles;
};

}  // namespace luadui
