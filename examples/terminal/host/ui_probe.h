// Measures how long the UI thread lets others wait.
#pragma once

#include <atomic>
#include <chrono>
#include <cstdint>
#include <thread>

#include "platform/win32.h"

namespace terminal {

// Sends WM_NULL to a window of the UI thread every kPeriod: the answer takes as long as that thread is busy with what it
// does at the moment. A busy machine counts, too.
//
// Threads: Start and Stop by one; the probe has a thread of its own.
class UiProbe {
  public:
    static constexpr std::chrono::milliseconds kPeriod{2};

    UiProbe() = default;
    ~UiProbe() { Stop(); }
    UiProbe(const UiProbe&) = delete;
    UiProbe& operator=(const UiProbe&) = delete;

    struct Result {
        uint64_t probes = 0;
        double longest = 0;  // milliseconds
        double above10 = 0;  // the part of the probes that took more than 10 ms
    };
    // Goes on until Stop, which answers what was measured; a probe that runs is stopped first.
    void Start(HWND window);
    Result Stop();

  private:
    void _run(HWND window);

    std::atomic<bool> m_isStopping{false};
    Result m_result;  // of the thread while it runs
    std::thread m_thread;
};

}  // namespace terminal
