#include "base/shared_value.h"

#include <unordered_set>
#include <vector>

#include "base/counters.h"

namespace luadui {

SharedBody* SharedBody::Snapshot() {
    AddRef();
    return this;
}

void SharedBody::VisitChildren(void (*)(void*, SharedBody*), void*) const {}

void SharedBody::Destroy(ReleaseQueue&) noexcept { delete this; }

void SharedBody::_destroyAll(SharedBody* body) noexcept {
    ReleaseQueue queue;
    while (body) {
        body->Destroy(queue);
        body = queue.m_head;
        if (body) queue.m_head = body->m_nextDead;
    }
}

bool SharedBody::Reaches(SharedBody* body, const SharedBody* cell) {
    if (!body || !body->HasFlag(kHoldsCells)) return false;
    struct Walk {
        std::vector<SharedBody*> todo;
        std::unordered_set<SharedBody*> seen;
    } walk;
    const auto visit = [](void* context, SharedBody* child) {
        auto& walk = *static_cast<Walk*>(context);
        if (child && child->HasFlag(kHoldsCells) && walk.seen.insert(child).second)
            walk.todo.push_back(child);
    };
    visit(&walk, body);
    while (!walk.todo.empty()) {
        SharedBody* next = walk.todo.back();
        walk.todo.pop_back();
        if (next == cell) return true;
        next->VisitChildren(visit, &walk);
    }
    return false;
}

SharedBody* SharedCell::Clone() const { return new SharedCell(SharedBody::Share(m_content)); }

void SharedCell::VisitChildren(void (*visit)(void*, SharedBody*), void* context) const {
    visit(context, m_content);
}

void SharedCell::Destroy(ReleaseQueue& queue) noexcept {
    queue.Drop(m_content);
    delete this;
}

SharedHandle& SharedHandle::operator=(const SharedHandle& other) {
    if (this != &other && _body() != other._body()) _assign(SharedBody::Share(other._body()));
    return *this;
}

SharedHandle& SharedHandle::operator=(SharedHandle&& other) {
    if (this == &other) return *this;
    // What is attached stays there, and what is refused is not lost: both are the affair of the copy.
    const bool ring = IsAttached() && SharedBody::Reaches(other._body(), _cell());
    if (ring || other.IsAttached()) return *this = static_cast<const SharedHandle&>(other);
    _assign(_toBody(std::exchange(other.m_word, 0)));
    return *this;
}

bool SharedHandle::_assign(SharedBody* body) {
    if (IsAttached() && SharedBody::Reaches(body, _cell())) {
        SharedBody::Release(body);
        CCounters::Add("shared_ring_refused");
        return false;
    }
    SharedBody* old = _body();
    _setBody(body);
    SharedBody::Release(old);
    return true;
}

SharedCell* SharedHandle::_promote() {
    if (!IsAttached()) {
        // The content stays in place until the cell exists, so that a failed allocation loses nothing.
        m_word = _toWord(new SharedCell(_owned())) | kCellTag;
    }
    return _cell();
}

void SharedHandle::_attach(SharedCell* cell) noexcept {
    cell->AddRef();  // before the release: the cell may live only in what this handle holds
    SharedBody* old = _owned();
    m_word = _toWord(cell) | kCellTag;
    SharedBody::Release(old);
}

void SharedHandle::_detachTo(SharedBody* body) noexcept {
    SharedBody* old = _owned();
    m_word = _toWord(body);
    SharedBody::Release(old);
}

}  // namespace luadui
