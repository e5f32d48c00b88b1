// What kernel handles stand for, and waiting for it.
#pragma once

#include <memory>
#include <mutex>
#include <vector>

#include "platform/posix/parker.h"
#include "platform/posix/win32_threads.h"

namespace luadui::posix {

// Guards the state of all waitable objects and the table of handles. Held for moments only, and no other lock is
// taken under it.
std::mutex& KernelMutex();

// An object that a thread can wait for. Everything but the destructor is called with the kernel mutex held.
class Waitable {
  public:
    Waitable() = default;
    virtual ~Waitable() = default;
    Waitable(const Waitable&) = delete;
    Waitable& operator=(const Waitable&) = delete;

    virtual bool IsSignalled() const = 0;
    virtual void Consume() {}  // a wait for the object has ended

    void AddWaiter(Parker* parker) { m_waiters.push_back(parker); }
    void RemoveWaiter(Parker* parker);

  protected:
    void _wakeWaiters() const;

  private:
    std::vector<Parker*> m_waiters;
};

// A new handle for the object; null, with the error set, when handles are used up.
HANDLE OpenHandle(std::shared_ptr<Waitable> object);
// The object of an open handle, or null with ERROR_INVALID_HANDLE.
std::shared_ptr<Waitable> FindObject(HANDLE handle);

}  // namespace luadui::posix
