// Ends the process, as a failure, when a test hangs.
#pragma once

#include <chrono>
#include <condition_variable>
#include <cstdio>
#include <cstdlib>
#include <mutex>
#include <thread>

namespace luadui {

#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
inline constexpr bool kIsSanitized = true;
#else
inline constexpr bool kIsSanitized = false;
#endif
#ifdef _WIN32
inline constexpr bool kIsWindows = true;
#else
inline constexpr bool kIsWindows = false;
#endif
// How much longer than natively things may take.
inline constexpr int kSlowness = kIsSanitized || kIsWindows ? 6 : 1;

class Watchdog {
  public:
    explicit Watchdog(int seconds = 20)
        : m_thread([this, seconds] {
              std::unique_lock lock(m_mutex);
              if (m_wake.wait_for(lock, std::chrono::seconds(seconds * kSlowness),
                                  [this] { return m_isOver; }))
                  return;
              std::fprintf(stderr, "watchdog: still running after %d s\n", seconds * kSlowness);
              std::_Exit(99);
          }) {}
    ~Watchdog() {
        {
            const std::lock_guard lock(m_mutex);
            m_isOver = true;
        }
        m_wake.notify_one();
        m_thread.join();
    }

  private:
    std::mutex m_mutex;
    std::condition_variable m_wake;
    bool m_isOver = false;
    std::thread m_thread;
};

// Polls until `isDone`; false after a time that is far too long.
template <class Condition>
bool WaitFor(Condition&& isDone, int seconds = 10) {
    const auto end = std::chrono::steady_clock::now() + std::chrono::seconds(seconds * kSlowness);
    while (!isDone()) {
        if (std::chrono::steady_clock::now() > end) return false;
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
    }
    return true;
}

}  // namespace luadui
