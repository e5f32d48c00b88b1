// Values that share their storage until one of them is written: the mechanism under records, tables, sets,
// lists and JSON objects.
//
// A handle (SharedHandle) is one word: empty, a counted body of its own, or attached to a cell.
//   body   the content. Immutable while more than one owner holds it; the one road to writing is _edit(),
//   which
//          clones a body that others hold too.
//   cell   one level of indirection: all handles and record entries attached to one cell are the same object
//   and see
//          each other's changes.
//
// Copying a handle copies the value: one count, whatever the content. A copy is never attached. Assignment
// replaces the content and keeps the identity: it is seen through the cell. Move construction hands over the
// attachment too.
//
// Threads: a handle, and all handles attached to one cell, are used by one thread at a time; bodies may be
// shared between threads freely. Reading one const handle from several threads is safe, with one exception:
// copying a record in which CUIData::GetDataShared opened a by-value entry counts as writing to it.
#pragma once

#include <atomic>
#include <cstdint>
#include <utility>

#include "platform/export.h"

namespace luadui {

class SharedBody;

// Bodies whose last reference went, waiting to be freed. Freeing runs over this list and never recurses, so
// that values nested without limit cannot exhaust the stack.
class ReleaseQueue {
  public:
    // Gives up one reference to `body` (null is allowed); the last one queues it.
    void Drop(SharedBody* body) noexcept;

  private:
    friend class SharedBody;
    SharedBody* m_head = nullptr;
};

// The content behind handles. Born with one reference, which belongs to its creator.
class TESSEL_API SharedBody {
  public:
    enum Flag : uint32_t {
        kHasOpenEntries = 1,  // a record with entries opened in place; such a body has exactly one owner
        kHoldsCells = 2,      // cells may be reached from here; never cleared
        kHoldsBodies = 8,     // something is to be released with this body; never cleared
        kOpenCell = 4,        // a cell that only stands for a by-value entry to which access was given
    };

    SharedBody(const SharedBody&) = delete;
    SharedBody& operator=(const SharedBody&) = delete;

    void AddRef() noexcept { m_refs.fetch_add(1, std::memory_order_relaxed); }
    // True when the caller's reference is the only one: the body may be written. Acquire: everything that the
    // other owners did with the body happened before.
    bool IsUnique() const noexcept { return m_refs.load(std::memory_order_acquire) == 1; }
    bool HasFlag(Flag flag) const noexcept { return (m_flags & flag) != 0; }
    void SetFlag(Flag flag) noexcept { m_flags |= flag; }
    void ClearFlag(Flag flag) noexcept { m_flags &= ~static_cast<uint32_t>(flag); }

    // Gives up one reference; frees the body with the last one. Null is allowed.
    static void Release(SharedBody* body) noexcept {
        if (body && body->_dropRef()) _destroyAll(body);
    }

    // One more reference to the content as it is now; null for null. A body with open entries answers a
    // snapshot.
    static SharedBody* Share(SharedBody* body) {
        if (!body) return nullptr;
        if (body->HasFlag(kHasOpenEntries)) return body->Snapshot();
        body->AddRef();
        return body;
    }

    // True when `cell` can be reached from `body`: putting `body` into `cell` would make a ring.
    static bool Reaches(SharedBody* body, const SharedBody* cell);

    // A body of the same content with one reference. Never called on a body with open entries.
    virtual SharedBody* Clone() const = 0;
    // Only for bodies with open entries: a reference to the content of this moment.
    virtual SharedBody* Snapshot();
    // The cells and bodies held directly, for Reaches(): calls visit(context, child) for each.
    virtual void VisitChildren(void (*visit)(void* context, SharedBody* child), void* context) const;

  protected:
    explicit SharedBody(uint32_t flags = 0) noexcept : m_flags(flags) {}
    virtual ~SharedBody() = default;
    // Drops what the body holds into `queue` and frees the body. The default is `delete this`, right for
    // every body that holds no other values.
    virtual void Destroy(ReleaseQueue& queue) noexcept;
    uint32_t _flags() const noexcept { return m_flags; }

  private:
    friend class ReleaseQueue;
    bool _dropRef() noexcept {
        // A sole owner need not pay for an atomic write: nobody else can come to own the body meanwhile.
        if (m_refs.load(std::memory_order_acquire) == 1) return true;
        return m_refs.fetch_sub(1, std::memory_order_acq_rel) == 1;
    }
    static void _destroyAll(SharedBody* body) noexcept;

    std::atomic<uint32_t> m_refs{1};
    uint32_t m_flags;
    SharedBody* m_nextDead = nullptr;  // link of the release queue
};

inline void ReleaseQueue::Drop(SharedBody* body) noexcept {
    if (!body || !body->_dropRef()) return;
    body->m_nextDead = m_head;
    m_head = body;
}

// What makes several handles one object. Owns one reference to its content, which may be null (empty).
class TESSEL_API SharedCell final : public SharedBody {
  public:
    // Takes over the reference to `content`.
    explicit SharedCell(SharedBody* content, uint32_t flags = 0) noexcept
        : SharedBody(flags | kHoldsCells), m_content(content) {}

    SharedBody* Content() const noexcept { return m_content; }
    // Stores `content` without releasing what was there; the reference is taken over.
    void SetContent(SharedBody* content) noexcept { m_content = content; }

    SharedBody* Clone() const override;
    void VisitChildren(void (*visit)(void* context, SharedBody* child), void* context) const override;

  protected:
    void Destroy(ReleaseQueue& queue) noexcept override;

  private:
    SharedBody* m_content;
};

// The handle, without the type of its content; base of CUIData, CDataTable, CDataSet, CDataList and
// CJsonObject.
class TESSEL_API SharedHandle {
  public:
    // True while changes through this handle are seen through others attached to the same cell (or could be).
    bool IsAttached() const noexcept { return (m_word & kCellTag) != 0; }
    // True when both hold the same storage: nothing was copied, or both are empty.
    bool SharesWith(const SharedHandle& other) const noexcept { return _body() == other._body(); }

  protected:
    // For the value classes, which know what they hold: a handle as such must not take another's content.
    SharedHandle() noexcept = default;
    SharedHandle(const SharedHandle& other) : m_word(_toWord(SharedBody::Share(other._body()))) {}
    SharedHandle(SharedHandle&& other) noexcept : m_word(std::exchange(other.m_word, 0)) {}
    ~SharedHandle() { SharedBody::Release(_owned()); }
    // Replaces the content; seen by everything attached to the same cell. An assignment that would put an attached
    // object into itself changes nothing and counts as "shared_ring_refused".
    SharedHandle& operator=(const SharedHandle& other);
    SharedHandle& operator=(SharedHandle&& other);

    // The content; null when empty.
    SharedBody* _body() const noexcept { return IsAttached() ? _cell()->Content() : _owned(); }
    // The cell; only while attached.
    SharedCell* _cell() const noexcept { return static_cast<SharedCell*>(_owned()); }
    // Stores `body` as the content without releasing the old one; takes over the reference.
    void _setBody(SharedBody* body) noexcept {
        if (IsAttached()) {
            _cell()->SetContent(body);
        } else {
            m_word = _toWord(body);
        }
    }
    // Replaces and releases the content; takes over the reference. Seen through the cell. False, counted and
    // nothing changed (but `body` released) when that would make a ring.
    bool _assign(SharedBody* body);
    // Puts the content into a cell unless it is in one; answers the cell, not counted for the caller.
    SharedCell* _promote();
    // Leaves what the handle held and joins `cell` (one more reference).
    void _attach(SharedCell* cell) noexcept;
    // Leaves what the handle held, also its cell, and takes over the reference to `body`.
    void _detachTo(SharedBody* body) noexcept;

  private:
    friend class RecordBody;  // record entries hold the same bodies and cells
    static constexpr uintptr_t kCellTag = 1;
    static uintptr_t _toWord(SharedBody* body) noexcept { return reinterpret_cast<uintptr_t>(body); }
    static SharedBody* _toBody(uintptr_t word) noexcept {
        return reinterpret_cast<SharedBody*>(word & ~kCellTag);
    }
    SharedBody* _owned() const noexcept { return _toBody(m_word); }

    uintptr_t m_word = 0;
};

// The handle to bodies of one type. `Body` derives from SharedBody and has `static Body* Create()`; it may be
// incomplete where the value class is declared.
template <class Body>
class SharedValue : public SharedHandle {
  protected:
    SharedValue() noexcept = default;
    SharedValue(const SharedValue&) = default;
    SharedValue(SharedValue&&) noexcept = default;
    ~SharedValue() = default;
    SharedValue& operator=(const SharedValue&) = default;
    SharedValue& operator=(SharedValue&&) = default;

    // The content for reading; null when empty.
    const Body* _read() const noexcept { return static_cast<const Body*>(_body()); }

    // The content for writing: made when empty, cloned when others hold it too.
    Body& _edit() {
        SharedBody* body = _body();
        if (!body) {
            _setBody(body = Body::Create());
        } else if (!body->IsUnique()) {
            SharedBody* own = body->Clone();
            _setBody(own);
            SharedBody::Release(body);
            body = own;
        }
        return *static_cast<Body*>(body);
    }
};

}  // namespace luadui
