// The code book of the moment, for readers that must not get into each other's way.
#pragma once

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <memory>

#include "codedata/code_book.h"

namespace luadui {

// Readers announce themselves in one of several lanes, picked by their thread, so that threads share no cache line as
// long as there are more lanes than threads; there is no lock. Who replaces the book waits until everyone has left the
// old one: a reading is for one lookup, and nothing is called meanwhile that could wait.
//
// Threads: Read any; Replace one at a time, and not while its own thread reads.
class CurrentBook {
    struct Lane;

  public:
    // Keeps the book that was current when it was made. Belongs to one scope of one thread.
    class Reading {
      public:
        ~Reading() { m_readers.fetch_sub(1, std::memory_order_release); }
        Reading(const Reading&) = delete;
        Reading& operator=(const Reading&) = delete;
        const CodeBook& operator*() const { return m_book; }
        const CodeBook* operator->() const { return &m_book; }

      private:
        friend class CurrentBook;
        Reading(std::atomic<uint32_t>& readers, const std::atomic<const CodeBook*>& book)
            : m_readers(_enter(readers)), m_book(*book.load()) {}
        static std::atomic<uint32_t>& _enter(std::atomic<uint32_t>& readers) {
            readers.fetch_add(1);
            return readers;
        }

        std::atomic<uint32_t>& m_readers;
        const CodeBook& m_book;
    };

    CurrentBook() : m_book(&m_empty) {}
    CurrentBook(const CurrentBook&) = delete;
    CurrentBook& operator=(const CurrentBook&) = delete;

    Reading Read() const noexcept { return Reading(_lane().readers[m_phase.load()], m_book); }

    // Makes `book` the current one and drops the old one when nobody reads it any more. Should a reader not leave
    // within a second (a thread that was ended inside), the old book stays in memory: counted as "code_book_kept".
    void Replace(std::shared_ptr<const CodeBook> book);
    // The current one. Only for the thread that replaces it.
    const std::shared_ptr<const CodeBook>& Owned() const { return m_owned; }

  private:
    static constexpr size_t kLanes = 16;

    // Readers are counted in two turns: while one of them runs dry, new readers take the other.
    struct alignas(64) Lane {
        mutable std::atomic<uint32_t> readers[2] = {};
    };

    const Lane& _lane() const noexcept;
    bool _waitUntilLeft(size_t phase) const;

    Lane m_lanes[kLanes];
    std::atomic<size_t> m_phase{0};
    const CodeBook m_empty;               // the first one
    std::atomic<const CodeBook*> m_book;  // never null
    std::shared_ptr<const CodeBook> m_owned;
};

}  // namespace luadui
