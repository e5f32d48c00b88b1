// Fills the code book in the background and gives it to those who look something up.
#pragma once

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <cstddef>
#include <map>
#include <mutex>
#include <span>
#include <string>
#include <utility>
#include <vector>

#include "codedata/code_book.h"
#include "codedata/current_book.h"
#include "platform/win32.h"

namespace luadui {

// A load asks the host for the list (codedata/code_list_query.h), reads the answer, builds the book, hands the codes to
// CTrade and only then replaces the old book. A host that fails or answers nothing leaves the old book where it is:
// counted as "code_list_empty". Loads follow one after the other; the host is asked without a lock that a lookup takes.
//
// The threads run to their end: the module is pinned before the first one starts, and the loader is never destroyed.
//
// Threads: any.
class CodeLoader {
  public:
    // A security that someone else than the code list knows. Texts are code page 936.
    struct Addition {
        std::string code, name, market, phonetic;
    };
    static constexpr size_t kMaxAdditions = 100'000;

    // How long lookups wait for a load, from its order on.
    static constexpr std::chrono::milliseconds kLongestWait = std::chrono::seconds(10);

    static CodeLoader& Instance();
    explicit CodeLoader(std::chrono::milliseconds longestWait = kLongestWait) : m_longestWait(longestWait) {}
    CodeLoader(const CodeLoader&) = delete;
    CodeLoader& operator=(const CodeLoader&) = delete;
    ~CodeLoader() = default;  // only when it IsIdle

    // Starts a load from `path`; lookups wait for it. Each call is a load of its own. False when no thread could be
    // started, which counts as "code_list_thread_refused".
    bool Load(std::string path);
    // Loads once more from where the last Load did, without making lookups wait. What is called while such a load has
    // not begun yet is covered by it. Before the first Load there is nothing to do: "code_list_update_before_load".
    void Reload();
    // Takes securities that have no entry yet, as long as there is room, and answers how many; those without room count
    // as "code_list_additions_refused". Lookups find them when the book has been built anew, in the background, and
    // after every later load, unless the list has them itself.
    size_t Add(std::vector<Addition> additions);

    // The book for one lookup. Waits for a load that was ordered by Load, but no longer than kLongestWait from that
    // order on ("code_list_wait_ended"), and not on the thread that loads: the host's script may look something up, and
    // gets what was there before.
    CurrentBook::Reading Read() {
        if (IsLoading()) _waitForLoads();
        return m_book.Read();
    }
    // The book of this moment, without waiting.
    CurrentBook::Reading ReadNow() const noexcept { return m_book.Read(); }

    // Whether a load that was ordered by Load is not done yet.
    bool IsLoading() const noexcept { return m_loadsAhead.load(std::memory_order_acquire) > 0; }
    bool IsIdle() const;  // no thread is at work

  private:
    struct Order;
    class Turn;

    static DWORD WINAPI _runLoad(LPVOID order);
    static DWORD WINAPI _runInBackground(LPVOID loader);
    bool _startThread(LPTHREAD_START_ROUTINE routine, void* argument);
    void _startBackground();
    bool _workInBackground();
    void _waitForLoads();
    void _endLoad();
    bool _load(const std::string& path);
    void _rebuild();
    void _publish(std::span<const CodeRecord> records);

    const std::chrono::milliseconds m_longestWait;
    CurrentBook m_book;
    std::atomic<int> m_loadsAhead{0};  // ordered by Load and not done
    std::atomic<DWORD> m_loadingThread{0};

    std::mutex m_turn;  // held by the thread that loads or builds, while it does

    mutable std::mutex m_mutex;  // guards what follows; held for moments only
    std::condition_variable m_loadEnded;
    std::chrono::steady_clock::time_point m_waitEnd;
    bool m_wasLoaded = false;  // Load was called
    std::string m_path;        // of the last Load
    bool m_runsInBackground = false, m_wantsReload = false, m_wantsRebuild = false;
    int m_threads = 0;
    std::map<std::pair<std::string, std::string>, Addition> m_additions;  // by code and market
};

}  // namespace luadui
