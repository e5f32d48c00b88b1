// From loading the module to a UI thread that is ready, each time in a process of its own, beside an empty process.
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <string>

#include "bench/report.h"
#include "luadui/lua_api.h"
#include "platform/win32.h"

namespace luadui {
namespace {

// Runs `body` in a child and answers the seconds that it measured itself; negative when it failed.
template <class Body>
double InChild(Body&& body) {
    int pipeEnds[2];
    if (pipe(pipeEnds) != 0) return -1;
    const pid_t child = fork();
    if (child == 0) {
        const double seconds = body();
        const ssize_t written = write(pipeEnds[1], &seconds, sizeof seconds);
        _exit(written == sizeof seconds ? 0 : 1);
    }
    close(pipeEnds[1]);
    double seconds = -1;
    if (read(pipeEnds[0], &seconds, sizeof seconds) != sizeof seconds) seconds = -1;
    close(pipeEnds[0]);
    waitpid(child, nullptr, 0);
    return seconds;
}

double StartModule() {
    lua_State* const scripts = luaL_newstate();  // the host has Lua loaded, whose functions the module uses
    if (!scripts) return -1;
    const auto begin = std::chrono::steady_clock::now();
    const HMODULE module = LoadLibraryW(L"luadui.dll");
    const auto start = reinterpret_cast<unsigned int (*)()>(
        reinterpret_cast<void*>(GetProcAddress(module, "start_dui_thread")));
    if (!start || start() == 0) return -1;
    while (!FindWindowW(L"PageManagerWnd", nullptr)) usleep(50);
    return std::chrono::duration<double>(std::chrono::steady_clock::now() - begin).count();
}

LUADUI_REPORT(Start) {
    std::vector<double> starts;
    for (int round = 0; round < 9; ++round) starts.push_back(InChild(StartModule));
    for (const double seconds : starts) {
        if (seconds < 0) return bench::AtLeast("start_works", 0, 1);
    }
    bench::AtMost("start_load_to_ui_ready_ms", bench::Median(starts) * 1000, 50);
}

}  // namespace
}  // namespace luadui
