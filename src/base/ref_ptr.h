// Counted references to storage that several owners share and nobody changes while it is shared.
#pragma once

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <utility>

namespace luadui {

// Base of what RefPtr points to. Born with one reference, which belongs to its creator. No virtual functions:
// the derived class T has `static void Destroy(T*) noexcept`.
class RefCounted {
  public:
    void AddRef() const noexcept { m_refs.fetch_add(1, std::memory_order_relaxed); }
    // True when that was the last reference. A sole owner pays no atomic write.
    bool DropRef() const noexcept {
        return m_refs.load(std::memory_order_acquire) == 1 ||
               m_refs.fetch_sub(1, std::memory_order_acq_rel) == 1;
    }
    // True when the caller's reference is the only one: the storage may be written. Acquire, so that all that
    // other owners did with it happened before.
    bool IsUnique() const noexcept { return m_refs.load(std::memory_order_acquire) == 1; }

  protected:
    RefCounted() noexcept = default;
    ~RefCounted() = default;

  private:
    mutable std::atomic<uint32_t> m_refs{1};
};

template <class T>
class RefPtr {
  public:
    RefPtr() noexcept = default;
    RefPtr(std::nullptr_t) noexcept {}
    RefPtr(const RefPtr& other) noexcept : m_object(other.m_object) {
        if (m_object) m_object->AddRef();
    }
    RefPtr(RefPtr&& other) noexcept : m_object(std::exchange(other.m_object, nullptr)) {}
    RefPtr& operator=(RefPtr other) noexcept {
        std::swap(m_object, other.m_object);
        return *this;
    }
    ~RefPtr() {
        if (m_object && m_object->DropRef()) T::Destroy(m_object);
    }

    // Takes over the creator's reference.
    static RefPtr Adopt(T* object) noexcept {
        RefPtr ptr;
        ptr.m_object = object;
        return ptr;
    }

    T* get() const noexcept { return m_object; }
    T& operator*() const noexcept { return *m_object; }
    T* operator->() const noexcept { return m_object; }
    explicit operator bool() const noexcept { return m_object != nullptr; }

  private:
    T* m_object = nullptr;
};

}  // namespace luadui
