// CBaseObject: an object that others find by a number instead of a pointer, so that a message to one that is
// gone reaches nobody instead of freed memory.
#pragma once

#include <cstdint>

#include "platform/export.h"

namespace luadui {

class CUIData;

// Threads: an object is created, notified and destroyed on its own thread. Find is safe on every thread, but
// its answer may be used only on the object's thread (elsewhere it is a test of existence, outdated at once).
class TESSEL_API CBaseObject {
  public:
    static constexpr int32_t kNoHandle = -1;

    CBaseObject();
    virtual ~CBaseObject();
    CBaseObject(const CBaseObject&) = delete;
    CBaseObject& operator=(const CBaseObject&) = delete;

    // 1 to 2^31-1, unique in the process and never given again. kNoHandle when they are used up (counted as
    // "object_handles_used_up"): such an object works but cannot be found.
    int32_t GetHandle() const noexcept { return m_handle; }

    // The living object with `handle`, or null. O(1).
    static CBaseObject* Find(int64_t handle) noexcept;
    // The same; `kind` is the handle's kind, of which there is one (1). Any other answers null.
    static CBaseObject* Find(int64_t handle, int kind) noexcept;
    // Calls OnNotify of the object with `handle`; false when there is none. On the object's thread only.
    static bool Notify(int64_t handle, CUIData* data);

    // Receives a record: `data` is a CUIData*, borrowed for the call. Does nothing here.
    virtual void OnNotify(void* data);

  private:
    int32_t m_handle;
};

}  // namespace luadui
