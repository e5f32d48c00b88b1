#include "host/ui_probe.h"

#include <algorithm>
#include <utility>

namespace terminal {

void UiProbe::Start(HWND window) {
    Stop();
    m_isStopping = false;
    m_thread = std::thread([this, window] { _run(window); });
}

UiProbe::Result UiProbe::Stop() {
    m_isStopping = true;
    if (m_thread.joinable()) m_thread.join();
    return std::exchange(m_result, {});
}

void UiProbe::_run(HWND window) {
    constexpr UINT kLimit = 5000;
    constexpr double kLong = 10;
    uint64_t countLong = 0;
    while (!m_isStopping) {
        const auto began = std::chrono::steady_clock::now();
        DWORD_PTR answer = 0;
        SendMessageTimeoutW(window, WM_NULL, 0, 0, SMTO_NORMAL, kLimit, &answer);
        const std::chrono::duration<double, std::milli> took = std::chrono::steady_clock::now() - began;
        ++m_result.probes;
        m_result.longest = std::max(m_result.longest, took.count());
        countLong += took.count() > kLong ? 1 : 0;
        std::this_thread::sleep_for(kPeriod);
    }
    if (m_result.probes > 0)
        m_result.above10 = static_cast<double>(countLong) / static_cast<double>(m_result.probes);
}

}  // namespace terminal
