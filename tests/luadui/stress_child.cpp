// A short life: start, traffic from two threads, and one of three ends.  Usage: stress_child quit|close|exit
#include <atomic>
#include <cstring>

#include "tests/luadui/terminal.h"

namespace luadui {
namespace {

constexpr int kEach = 200;

// False when something did not happen that should have.
bool Live(Terminal& terminal, const char* end) {
    if (!terminal.Start()) return false;
    auto& probe = terminal.Probe();
    std::atomic<int> received = 0;
    probe.onResponse = [&](TestPage& page, const CQueueRespData&) {
        ++received;
        page.Query(1);
    };
    if (terminal.CreatePage("p") == 0) return false;
    const std::string handle = terminal.HandleOf("p");
    const auto send = [&](int count) {
        CUIData response = Response(handle, 1);
        for (int i = 0; i < count; ++i) terminal.module.handle_response_callback(&response);
    };
    std::thread first(send, kEach);
    std::thread second(send, kEach);
    first.join();
    second.join();
    if (!std::strcmp(end, "exit")) {
        send(kEach);
        std::exit(0);  // with pages alive, records under way and the UI thread at work
    }
    if (!std::strcmp(end, "close")) {
        SendMessageW(Terminal::ManagerWindow(), WM_CLOSE, 0, 0);
        if (!terminal.HasEnded()) return false;
    } else if (!terminal.Stop()) {
        return false;
    }
    const uint64_t dropped = Count("records_dropped_at_shutdown") + Count("response_without_receiver");
    std::fprintf(stderr, "received %d, dropped %d, pages left %d\n", received.load(),
                 static_cast<int>(dropped), static_cast<int>(probe.pages.size()));
    return received + dropped == 2 * kEach && probe.pages.empty() && terminal.CreatePage("late") == 0;
}

}  // namespace
}  // namespace luadui

int main(int argc, char** argv) {
    static auto* const watchdog = new luadui::Watchdog;
    static auto* const terminal = new luadui::Terminal;
    const bool isWell = luadui::Live(*terminal, argc > 1 ? argv[1] : "quit");
    delete terminal;
    delete watchdog;
    return isWell ? 0 : 1;
}
