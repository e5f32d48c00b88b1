// The request object: what a page, or a data manager acting for one, talks to the server with.
#pragma once

#include <map>
#include <string>

#include "base/base_object.h"
#include "base/data_table.h"
#include "messaging/host_types.h"
#include "messaging/queue_data.h"
#include "platform/export.h"

namespace luadui {

// Builds request records and takes the answers that carry its handle in "To". While it is asleep (its page is
// not on screen) it does not query again when data changed: it remembers that and asks once when it wakes.
//
// Threads:   the UI thread only.
// Lifetime:  answers for an object that has gone are dropped. A callback of the host may destroy the object in
//            the middle of any call here.
class LUADUI_API CRequestBase : public CBaseObject {
  public:
    CRequestBase() = default;
    ~CRequestBase() override;

    // Receives every response addressed to the object that PreHandleResponse did not take. `response` is
    // valid during the call only. Does nothing here.
    virtual void OnResponse(const CQueueRespData* response);
    // Completes and sends a filled request. False when it was not sent.
    virtual bool Request(CQueueReqItem& request) = 0;
    // A synchronous question to the host about `key` in `file`; `value` goes out and comes back changed when
    // the host answered something. False when the host failed.
    virtual bool RequestSync(unsigned int type, const std::string& key, std::string& value,
                             const std::string& file) = 0;

    // Each sends one request of `type` for the account `fundToken` and returns what Request() said. `params`
    // go out as texts in "Params"; `refresh` asks for fresh data.
    bool SendQuery(const std::string& fundToken, unsigned int type, const StringMap& params, bool refresh);
    bool SendQuery(const std::string& fundToken, unsigned int type, bool refresh);
    bool SendSubcribe(const std::string& fundToken, unsigned int type, const std::string& key);
    bool SendSubcribe(const std::string& fundToken, unsigned int type, const StringMap& params);
    // `table` may be null; it is not changed and not kept.
    bool SendOrder(const std::string& fundToken, unsigned int type, const StringMap& params,
                   const CDataTable* table);
    // Calls `method` of the host's Lua interface with `params` (JSON text) and returns its answer, empty when
    // there is none. A non-empty `pageSign` registers this object for messages under that sign; the method
    // "page_register" does only that.
    std::string SendLuaSync(const std::string& method, const std::string& params,
                            const std::string& pageSign);

    // Puts the object to sleep or wakes it; waking sends one query per request type whose data changed
    // meanwhile, in ascending order of type.
    void Sleep(bool asleep);
    bool isActive() const { return !m_asleep; }

    // The text that goes out as "log_source" with every request.
    void SetRequestSource(const std::string& source) { m_source = source; }

    // The first look at every response. Takes change notices (true): asks again at once, or on waking. False
    // for everything else and for null.
    bool PreHandleResponse(const CQueueRespData* response);

  protected:
    // What every request gets before it leaves: "UUID", "FundToken", "From" and the sender's part of "Params". False
    // without a record "Params".
    bool _complete(CQueueReqItem& request) const;

  private:
    bool _send(const std::string& fundToken, unsigned int type, const StringMap& params, bool refresh,
               const CDataTable* table);
    bool _queryAgain(const std::string& fundToken, int type);

    bool m_asleep = false;
    std::map<int, std::string> m_deferred;  // request type -> fund token of the last notice
    std::string m_source;
};

}  // namespace luadui
