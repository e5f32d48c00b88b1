// The way out to the host: its three callbacks, the synchronous request, and the request types that are
// answered without a server.
#pragma once

#include <atomic>
#include <string>

#include "messaging/host_types.h"
#include "messaging/queue_data.h"

namespace luadui {

// Threads: any; a callback runs on the thread that sends. No lock is held meanwhile, so a callback may call
// back into the library. An exception that comes out of one is counted as "host_callback_threw" and fails the
// call.
class CHostLink {
  public:
    using PushCallback = int (*)(CQueueReqItem* request);
    using RequestSyncCallback = int (*)(CQueueReqItem* request);
    using LoginCallback = int (*)(unsigned int kind, const std::string& user, const std::string& secret,
                                  const ServerMap& servers, const tag_login_user* detail, unsigned int flags);

    static CHostLink& Instance();

    // Each stores the callback and returns true; null returns false and changes nothing.
    bool SetPushCallback(PushCallback callback) { return m_push.Set(callback); }
    bool SetRequestSyncCallback(RequestSyncCallback callback) { return m_requestSync.Set(callback); }
    bool SetLoginCallback(LoginCallback callback) { return m_login.Set(callback); }

    // Sends a completed request. Types 1502 and 1603 stay inside: "Params" "page_sign" is registered for
    // "From", and a 1502 whose method is not "page_register" is answered by the host's Lua interface under
    // "Params" "result". Every other type goes to the push callback. True also when no callback is set
    // (nothing leaves then).
    bool Send(CQueueReqItem& request);

    // Asks the host for something at once. `params` go out as texts in "Params"; what the host set there
    // comes back into the map. A non-empty answer replaces `*result` (may be null). True, and nothing
    // changed, when no callback is set.
    bool RequestSync(unsigned int type, StringMap& params, std::string* result);

    // Passes a login on. Nothing happens when no callback is set.
    void Login(unsigned int kind, const std::string& user, const std::string& secret,
               const ServerMap& servers, const tag_login_user* detail, unsigned int flags);

  private:
    // One of the three callbacks. Kept as a plain function: what std::atomic does with a callback's own type would need
    // argument types that only the host knows.
    template <class Callback>
    class Slot {
      public:
        bool Set(Callback callback) {
            if (callback) m_function.store(reinterpret_cast<Function>(callback), std::memory_order_release);
            return callback != nullptr;
        }
        Callback Get() const {
            return reinterpret_cast<Callback>(m_function.load(std::memory_order_acquire));
        }

      private:
        using Function = void (*)();
        std::atomic<Function> m_function{nullptr};
    };
    bool _handleInside(CQueueReqItem& request, int type);
    bool _callLua(CUIData& params);

    Slot<PushCallback> m_push;
    Slot<RequestSyncCallback> m_requestSync;
    Slot<LoginCallback> m_login;
};

// Settings and files, all kept by the host.

// The file of the user's settings.
inline constexpr char kUserConfigFile[] = "\\qsclient\\users\\user.cfg";

// The value of `key` in the settings file `file`; `fallback` when the host has none.
std::string ReadConfig(const std::string& file, const std::string& key, const std::string& fallback = {});
void WriteConfig(const std::string& file, const std::string& key, const std::string& value);

}  // namespace luadui
