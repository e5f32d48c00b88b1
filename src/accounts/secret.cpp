#include "accounts/secret.h"

#include <cstring>
#include <utility>

namespace luadui {

void WipeMemory(void* memory, size_t size) noexcept {
    if (size == 0) return;
    std::memset(memory, 0, size);
    asm volatile("" : : "r"(memory) : "memory");  // for all that the compiler knows, somebody reads it now
}

Secret::Witness Secret::s_witness = nullptr;

Secret& Secret::operator=(const Secret& other) {
    if (this != &other) Set(other.View());
    return *this;
}

Secret& Secret::operator=(Secret&& other) noexcept {
    if (this != &other) {
        Wipe();
        _take(other);
    }
    return *this;
}

void Secret::Set(std::string_view text) {
    std::unique_ptr<char[]> fresh;
    if (!text.empty()) {
        fresh.reset(new char[text.size()]);
        std::memcpy(fresh.get(), text.data(), text.size());
    }
    const size_t size = text.size();  // `text` may be what is wiped next
    Wipe();
    m_text = std::move(fresh);
    m_size = size;
}

void Secret::Wipe() noexcept {
    WipeMemory(m_text.get(), m_size);
    if (s_witness && m_text) s_witness(View());
    m_text.reset();
    m_size = 0;
}

void Secret::_take(Secret& other) noexcept {
    m_text = std::move(other.m_text);
    m_size = std::exchange(other.m_size, 0);
}

}  // namespace luadui
