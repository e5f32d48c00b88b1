// Page signs: the names under which pages registered for messages from the host's scripts.
#pragma once

#include <map>
#include <mutex>
#include <set>
#include <string>
#include <string_view>

namespace luadui {

// Threads: any. A sign whose sender has gone stays until it is registered anew; messages to it are dropped
// where they are routed, since handles are never reused.
class CPageSignRegistry {
  public:
    static CPageSignRegistry& Instance();

    // Remembers `sender` (a decimal handle) under `sign`; a later registration of the sign replaces it.
    // Beyond kMaxSigns a new sign is refused and counted.
    void Register(const std::string& sign, const std::string& sender);
    // The sender registered under `sign`, empty when there is none.
    std::string Find(std::string_view sign) const;
    // Forgets the signs of a sender that has gone.
    void Forget(std::string_view sender);

    static constexpr size_t kMaxSigns = 10000;

  private:
    void _dropSign(const std::string& sender, const std::string& sign);

    mutable std::mutex m_mutex;                                           // guards what follows
    std::map<std::string, std::string, std::less<>> m_senders;            // by sign
    std::map<std::string, std::set<std::string>, std::less<>> m_signsOf;  // by sender
};

}  // namespace luadui
