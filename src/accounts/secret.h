// Secret: the one type that holds a password.
#pragma once

#include <cstddef>
#include <memory>
#include <string_view>

namespace luadui {

// Keeps a text of its own in memory that is overwritten before it is given back: on destruction, when another text
// takes its place and when it is moved away. It is never written by streams or put into records by itself: who needs the
// text asks for View() and passes it on without keeping it.
//
// Threads: one at a time. Texts are code page 936.
class Secret {
  public:
    Secret() noexcept = default;
    explicit Secret(std::string_view text) { Set(text); }
    Secret(const Secret& other) { Set(other.View()); }
    Secret(Secret&& other) noexcept { _take(other); }
    Secret& operator=(const Secret& other);
    Secret& operator=(Secret&& other) noexcept;
    ~Secret() { Wipe(); }

    // `text` may be a part of this secret. Without memory it throws and leaves the old text.
    void Set(std::string_view text);
    void Wipe() noexcept;

    bool IsEmpty() const noexcept { return m_size == 0; }
    // Valid until the secret is changed or destroyed.
    std::string_view View() const noexcept { return {m_text.get(), m_size}; }

    // Sees the memory of every secret as it is given back; null for nobody. For tests.
    using Witness = void (*)(std::string_view memory);
    static void SetWitness(Witness witness) noexcept { s_witness = witness; }

  private:
    void _take(Secret& other) noexcept;

    static Witness s_witness;
    std::unique_ptr<char[]> m_text;  // never reallocated by anyone else: no copies are left behind
    size_t m_size = 0;
};

// Overwrites `size` bytes with zeros, in a way that the compiler cannot leave out.
void WipeMemory(void* memory, size_t size) noexcept;

}  // namespace luadui
