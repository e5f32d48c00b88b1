#include "platform/posix/waitable.h"

#include <algorithm>
#include <span>
#include <unordered_map>

#include "platform/posix/thread.h"

namespace luadui::posix {

namespace {

struct HandleTable {
    std::unordered_map<uint32_t, std::shared_ptr<Waitable>> objects;
    uint32_t last = 0;
};

// Never destroyed: threads may still run while the process ends. Guarded by the kernel mutex.
HandleTable& Handles() {
    static auto& table = *new HandleTable;
    return table;
}

uint32_t Number(HANDLE handle) {
    const auto value = reinterpret_cast<uintptr_t>(handle);
    return value <= UINT32_MAX ? static_cast<uint32_t>(value) : 0;
}

class Event : public Waitable {
  public:
    Event(bool manualReset, bool signalled) : m_manualReset(manualReset), m_signalled(signalled) {}

    bool IsSignalled() const override { return m_signalled; }
    void Consume() override { m_signalled = m_signalled && m_manualReset; }
    void Set(bool signalled) {
        m_signalled = signalled;
        if (signalled) _wakeWaiters();
    }

  private:
    const bool m_manualReset;
    bool m_signalled;
};

BOOL SetSignalled(HANDLE handle, bool signalled) {
    const auto event = std::dynamic_pointer_cast<Event>(FindObject(handle));
    if (!event) {
        SetLastError(ERROR_INVALID_HANDLE);
        return FALSE;
    }
    const std::lock_guard lock(KernelMutex());
    event->Set(signalled);
    return TRUE;
}

using Objects = std::vector<std::shared_ptr<Waitable>>;

// The thread's parker among the waiters of some objects.
class Registration {
  public:
    Registration(const Objects& objects, Parker& parker) : m_objects(objects), m_parker(parker) {
        const std::lock_guard lock(KernelMutex());
        for (const auto& object : m_objects) object->AddWaiter(&m_parker);
    }
    ~Registration() {
        const std::lock_guard lock(KernelMutex());
        for (const auto& object : m_objects) object->RemoveWaiter(&m_parker);
    }
    Registration(const Registration&) = delete;
    Registration& operator=(const Registration&) = delete;

  private:
    const Objects& m_objects;
    Parker& m_parker;
};

// The index of the object that ended the wait, or -1.
int TryConsume(const Objects& objects, bool all) {
    const std::lock_guard lock(KernelMutex());
    const auto signalled = [](const auto& object) { return object->IsSignalled(); };
    if (all) {
        if (!std::all_of(objects.begin(), objects.end(), signalled)) return -1;
        for (const auto& object : objects) object->Consume();
        return 0;
    }
    const auto first = std::find_if(objects.begin(), objects.end(), signalled);
    if (first == objects.end()) return -1;
    (*first)->Consume();
    return static_cast<int>(first - objects.begin());
}

// `messages`: also end when the thread's queue holds something.
DWORD Wait(std::span<const HANDLE> handles, bool all, DWORD milliseconds, bool messages) {
    Objects objects;
    for (HANDLE handle : handles) {
        objects.push_back(FindObject(handle));
        if (!objects.back()) return WAIT_FAILED;
    }
    Thread& self = Thread::Current();
    const Deadline deadline = DeadlineAfter(milliseconds);
    const Registration registration(objects, self.GetParker());
    for (;;) {
        if (const int index = objects.empty() ? -1 : TryConsume(objects, all); index >= 0) {
            return WAIT_OBJECT_0 + static_cast<DWORD>(index);
        }
        if (messages && self.Queue().HasInput()) return WAIT_OBJECT_0 + static_cast<DWORD>(objects.size());
        if (deadline != kNever && Clock::now() >= deadline) return WAIT_TIMEOUT;
        self.GetParker().Park(messages ? std::min(deadline, self.Queue().NextTimer()) : deadline);
    }
}

bool ValidCount(DWORD count, const HANDLE* handles, DWORD least) {
    if (count >= least && count <= MAXIMUM_WAIT_OBJECTS && (handles || count == 0)) return true;
    SetLastError(ERROR_INVALID_PARAMETER);
    return false;
}

}  // namespace

std::mutex& KernelMutex() {
    static auto& mutex = *new std::mutex;
    return mutex;
}

void Waitable::RemoveWaiter(Parker* parker) {
    m_waiters.erase(std::find(m_waiters.begin(), m_waiters.end(), parker));
}

void Waitable::_wakeWaiters() const {
    for (Parker* parker : m_waiters) parker->Unpark();
}

HANDLE OpenHandle(std::shared_ptr<Waitable> object) {
    const std::lock_guard lock(KernelMutex());
    HandleTable& table = Handles();
    if (table.last > UINT32_MAX - 4) {  // never used twice
        SetLastError(ERROR_NOT_ENOUGH_MEMORY);
        return nullptr;
    }
    table.last += 4;
    table.objects.emplace(table.last, std::move(object));
    return reinterpret_cast<HANDLE>(static_cast<uintptr_t>(table.last));
}

std::shared_ptr<Waitable> FindObject(HANDLE handle) {
    const std::lock_guard lock(KernelMutex());
    const auto found = Handles().objects.find(Number(handle));
    if (found != Handles().objects.end()) return found->second;
    SetLastError(ERROR_INVALID_HANDLE);
    return nullptr;
}

}  // namespace luadui::posix

using namespace luadui::posix;

HANDLE CreateEventW(LPSECURITY_ATTRIBUTES, BOOL manualReset, BOOL initialState, LPCWSTR name) {
    if (name) {
        SetLastError(ERROR_NOT_SUPPORTED);
        return nullptr;
    }
    return OpenHandle(std::make_shared<Event>(manualReset != FALSE, initialState != FALSE));
}

BOOL SetEvent(HANDLE event) { return SetSignalled(event, true); }
BOOL ResetEvent(HANDLE event) { return SetSignalled(event, false); }

BOOL CloseHandle(HANDLE handle) {
    const auto last = FindObject(handle);  // dies, if it does, after the lock is released
    if (!last) return FALSE;
    const std::lock_guard lock(KernelMutex());
    return Handles().objects.erase(Number(handle)) != 0;
}

DWORD WaitForSingleObject(HANDLE handle, DWORD milliseconds) {
    return Wait({&handle, 1}, false, milliseconds, false);
}

DWORD WaitForMultipleObjects(DWORD count, const HANDLE* handles, BOOL all, DWORD milliseconds) {
    if (!ValidCount(count, handles, 1)) return WAIT_FAILED;
    return Wait({handles, count}, all != FALSE, milliseconds, false);
}

DWORD MsgWaitForMultipleObjects(DWORD count, const HANDLE* handles, BOOL all, DWORD milliseconds,
                                DWORD wakeMask) {
    if (!ValidCount(count, handles, 0)) return WAIT_FAILED;
    if (all || wakeMask != QS_ALLINPUT) {
        SetLastError(ERROR_NOT_SUPPORTED);
        return WAIT_FAILED;
    }
    Thread::Current().OpenQueue();
    return Wait({handles, count}, false, milliseconds, true);
}
