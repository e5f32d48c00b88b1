#include "platform/posix/window.h"

#include <algorithm>
#include <utility>

namespace luadui::posix {

WindowTable& WindowTable::Instance() {
    static auto& table = *new WindowTable;
    return table;
}

Window* WindowTable::Find(HWND window) const {
    const auto found = m_windows.find(window);
    return found == m_windows.end() ? nullptr : found->second.get();
}

HWND WindowTable::Add(std::unique_ptr<Window> window) {
    if (m_last >= 0x7FFFFFF0) return nullptr;  // also when read as a signed number it stays positive
    m_last += 2;
    window->handle = reinterpret_cast<HWND>(static_cast<uintptr_t>(m_last));
    _siblings(window->parent).push_back(window->handle);
    return m_windows.emplace(window->handle, std::move(window)).first->first;
}

std::unique_ptr<Window> WindowTable::Remove(HWND window) {
    auto node = m_windows.extract(window);
    if (!node) return nullptr;
    std::erase(_siblings(node.mapped()->parent), window);
    for (HWND child : node.mapped()->children) {
        if (Window* orphan = Find(child)) {
            orphan->parent = nullptr;
            m_topLevel.push_back(child);
        }
    }
    return std::move(node.mapped());
}

void WindowTable::SetParent(Window& window, HWND parent) {
    std::erase(_siblings(window.parent), window.handle);
    window.parent = parent;
    _siblings(parent).push_back(window.handle);
}

std::vector<HWND>& WindowTable::_siblings(HWND parent) {
    if (parent == HWND_MESSAGE) return m_messageOnly;
    Window* const found = parent ? Find(parent) : nullptr;
    return found ? found->children : m_topLevel;
}

const std::vector<HWND>& WindowTable::ChildrenOf(HWND parent) const {
    return const_cast<WindowTable*>(this)->_siblings(parent);
}

Window* FindOwn(HWND window) {
    const auto& own = Thread::Current().OwnWindows();
    const auto found = own.find(window);
    return found == own.end() ? nullptr : found->second;
}

void RemoveWindowsOf(Thread& thread) {
    std::vector<std::unique_ptr<Window>> removed;  // die after the lock is released
    std::vector<HWND> orphans;
    {
        WriteWindows windows;
        for (const auto& [window, own] : std::exchange(thread.OwnWindows(), {})) {
            removed.push_back(windows->Remove(window));
            orphans.insert(orphans.end(), removed.back()->children.begin(), removed.back()->children.end());
        }
    }
    for (HWND orphan : orphans) RequestDestroy(orphan);
}

void RequestDestroy(HWND window) {
    const ReadWindows windows;
    const Window* found = windows->Find(window);
    if (found)
        found->thread->Queue().Send(std::make_shared<SentMessage>(window, kDestroyRequest, 0, 0, nullptr));
}

}  // namespace luadui::posix
