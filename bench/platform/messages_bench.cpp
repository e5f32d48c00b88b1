// The message queue: how fast a sleeping thread is woken, and how many messages go through.
#include <benchmark/benchmark.h>
#include <glib.h>
#include <sched.h>
#include <sys/eventfd.h>
#include <unistd.h>

#include <future>
#include <thread>

#include "bench/report.h"
#include "platform/win32.h"

namespace luadui::bench {
namespace {

constexpr UINT kPing = WM_APP + 1;

// Keeps the calling thread on one processor. Where two threads run decides most of what a wake-up between them costs,
// so both sides of a comparison must run alike.
void StayOn(int processor) {
    cpu_set_t set;
    CPU_ZERO(&set);
    CPU_SET(processor, &set);
    sched_setaffinity(0, sizeof(set), &set);
}

// A thread that answers every message to it with one to the thread that made it; both sleep in between.
class MessageEcho {
  public:
    explicit MessageEcho(int processor) {
        MSG message;
        PeekMessageW(&message, nullptr, 0, 0, PM_NOREMOVE);
        std::promise<void> ready;
        m_thread = std::thread([this, &ready, processor, caller = GetCurrentThreadId()] {
            StayOn(processor);
            MSG ping;
            PeekMessageW(&ping, nullptr, 0, 0, PM_NOREMOVE);
            m_id = GetCurrentThreadId();
            ready.set_value();
            while (GetMessageW(&ping, nullptr, 0, 0) > 0) PostThreadMessageW(caller, kPing, 0, 0);
        });
        ready.get_future().wait();
    }
    ~MessageEcho() {
        PostThreadMessageW(m_id, WM_QUIT, 0, 0);
        m_thread.join();
    }
    void RoundTrip() {
        MSG message;
        PostThreadMessageW(m_id, kPing, 0, 0);
        GetMessageW(&message, nullptr, 0, 0);
    }

  private:
    std::thread m_thread;
    DWORD m_id = 0;
};

// The least that the system lets one thread wake another with.
class EventEcho {
  public:
    explicit EventEcho(int processor) : m_there(eventfd(0, 0)), m_back(eventfd(0, 0)) {
        m_thread = std::thread([this, processor] {
            StayOn(processor);
            while (_read(m_there) == 1) _write(m_back, 1);
        });
    }
    ~EventEcho() {
        _write(m_there, 2);
        m_thread.join();
        close(m_there);
        close(m_back);
    }
    void RoundTrip() {
        _write(m_there, 1);
        _read(m_back);
    }

  private:
    static void _write(int fd, eventfd_t value) { eventfd_write(fd, value); }
    static eventfd_t _read(int fd) {
        eventfd_t value = 0;
        eventfd_read(fd, &value);
        return value;
    }

    const int m_there, m_back;
    std::thread m_thread;
};

// A thread that counts what it gets, and says when a burst is complete.
constexpr int kBurst = 5000;  // half of what a queue takes

class MessageSink {
  public:
    MessageSink() {
        std::promise<void> ready;
        m_thread = std::thread([this, &ready] {
            WNDCLASSW info{};
            info.lpfnWndProc = [](HWND window, UINT message, WPARAM wParam, LPARAM lParam) -> LRESULT {
                if (message != kPing) return DefWindowProcW(window, message, wParam, lParam);
                if (wParam) reinterpret_cast<std::promise<void>*>(wParam)->set_value();
                return 0;
            };
            info.lpszClassName = L"Sink";
            RegisterClassW(&info);
            m_window =
                CreateWindowExW(0, L"Sink", nullptr, 0, 0, 0, 0, 0, HWND_MESSAGE, nullptr, nullptr, nullptr);
            ready.set_value();
            MSG message;
            while (GetMessageW(&message, nullptr, 0, 0) > 0) DispatchMessageW(&message);
        });
        ready.get_future().wait();
    }
    ~MessageSink() {
        PostMessageW(m_window, WM_QUIT, 0, 0);
        m_thread.join();
    }
    void Burst() {
        std::promise<void> done;
        for (int i = 1; i < kBurst; ++i) PostMessageW(m_window, kPing, 0, 0);
        PostMessageW(m_window, kPing, reinterpret_cast<WPARAM>(&done), 0);
        done.get_future().wait();
    }

  private:
    std::thread m_thread;
    HWND m_window = nullptr;
};

class GlibSink {
  public:
    GlibSink() : m_loop(g_main_loop_new(nullptr, FALSE)), m_thread([this] { g_main_loop_run(m_loop); }) {}
    ~GlibSink() {
        g_idle_add(
            [](gpointer loop) -> gboolean { return g_main_loop_quit(static_cast<GMainLoop*>(loop)), FALSE; },
            m_loop);
        m_thread.join();
        g_main_loop_unref(m_loop);
    }
    void Burst() {
        std::promise<void> done;
        const GSourceFunc count = [](gpointer last) -> gboolean {
            if (last) static_cast<std::promise<void>*>(last)->set_value();
            return FALSE;
        };
        for (int i = 1; i < kBurst; ++i) g_idle_add(count, nullptr);
        g_idle_add(count, &done);
        done.get_future().wait();
    }

  private:
    GMainLoop* const m_loop;
    std::thread m_thread;
};

void ReportWakeUp(std::string_view name, int processor) {
    StayOn(0);
    MessageEcho ours(processor);
    EventEcho bare(processor);
    const Rounds rounds{.count = 9, .turnSeconds = 0.1};
    const auto time = Compare([&] { ours.RoundTrip(); }, [&] { bare.RoundTrip(); }, rounds);
    AtMost(name, time.CostRatio(), 1.3);
}

LUADUI_REPORT(WakeUp) {
    cpu_set_t all;
    sched_getaffinity(0, sizeof(all), &all);
    ReportWakeUp("wake_up_same_cpu_vs_eventfd", 0);
    if (std::thread::hardware_concurrency() > 1) ReportWakeUp("wake_up_other_cpu_vs_eventfd", 1);
    sched_setaffinity(0, sizeof(all), &all);
}

LUADUI_REPORT(PostAndDispatch) {
    MessageSink ours;
    GlibSink glib;
    const auto time = Compare([&] { ours.Burst(); }, [&] { glib.Burst(); });
    AtLeast("post_dispatch_vs_g_idle_add", time.Speedup(), 2);
}

template <class Echo>
void RoundTrip(benchmark::State& state) {
    cpu_set_t all;
    sched_getaffinity(0, sizeof(all), &all);
    StayOn(0);
    Echo echo(static_cast<int>(state.range(0)));
    for (auto _ : state) echo.RoundTrip();
    sched_setaffinity(0, sizeof(all), &all);
}
BENCHMARK(RoundTrip<MessageEcho>)->ArgName("cpu")->Arg(0)->Arg(1)->UseRealTime();
BENCHMARK(RoundTrip<EventEcho>)->ArgName("cpu")->Arg(0)->Arg(1)->UseRealTime();

template <class Sink>
void Burst(benchmark::State& state) {
    Sink sink;
    for (auto _ : state) sink.Burst();
    state.SetItemsProcessed(state.iterations() * kBurst);
}
BENCHMARK(Burst<MessageSink>)->UseRealTime();
BENCHMARK(Burst<GlibSink>)->UseRealTime();

}  // namespace
}  // namespace luadui::bench
