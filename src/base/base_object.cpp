#include "base/base_object.h"

#include <limits>
#include <mutex>
#include <unordered_map>

#include "base/counters.h"

namespace luadui {
namespace {

// All objects of the process that have a handle.
class Registry {
  public:
    // Never destroyed: objects may outlive static ones.
    static Registry& Instance() {
        static auto* const registry = new Registry;
        return *registry;
    }

    int32_t Insert(CBaseObject* object) {
        const std::lock_guard lock(m_mutex);
        if (m_last == std::numeric_limits<int32_t>::max()) return CBaseObject::kNoHandle;
        m_objects.emplace(m_last + 1, object);
        return ++m_last;
    }
    void Erase(int32_t handle) noexcept {
        const std::lock_guard lock(m_mutex);
        m_objects.erase(handle);
    }
    CBaseObject* Find(int32_t handle) noexcept {
        const std::lock_guard lock(m_mutex);
        const auto found = m_objects.find(handle);
        return found == m_objects.end() ? nullptr : found->second;
    }

  private:
    std::mutex m_mutex;
    std::unordered_map<int32_t, CBaseObject*> m_objects;
    int32_t m_last = 0;
};

}  // namespace

CBaseObject::CBaseObject() : m_handle(Registry::Instance().Insert(this)) {
    if (m_handle == kNoHandle) CCounters::Add("object_handles_used_up");
}

CBaseObject::~CBaseObject() { Registry::Instance().Erase(m_handle); }

CBaseObject* CBaseObject::Find(int64_t handle) noexcept {
    if (handle < 1 || handle > std::numeric_limits<int32_t>::max()) return nullptr;
    return Registry::Instance().Find(static_cast<int32_t>(handle));
}

CBaseObject* CBaseObject::Find(int64_t handle, int kind) noexcept {
    return kind == 1 ? Find(handle) : nullptr;
}

bool CBaseObject::Notify(int64_t handle, CUIData* data) {
    CBaseObject* object = Find(handle);
    if (!object) return false;
    object->OnNotify(data);
    return true;
}

void CBaseObject::OnNotify(void*) {}

}  // namespace luadui
