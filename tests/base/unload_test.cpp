// A library whose only tie to the base is that it loaded it may go while the thread that used records lives
// on. The thread's end still gives back the memory that it kept for records: the code for that must be there.
#include <cstdio>
#include <string_view>

#include "platform/win32.h"

namespace {

// The constructor and destructor of CUIData, found at run time: this program is not linked to the base.
using Construct = void (*)(void* record, std::string_view type);
using Destruct = void (*)(void* record);
constexpr const char* kConstruct = "_ZN6luadui7CUIDataC1ESt17basic_string_viewIcSt11char_traitsIcEE";
constexpr const char* kDestruct = "_ZN6luadui7CUIDataD1Ev";

DWORD WINAPI UseAndUnload(LPVOID) {
    const HMODULE base = LoadLibraryW(L"tessel_base.dll");
    if (!base) return 1;
    const auto construct =
        reinterpret_cast<Construct>(reinterpret_cast<void*>(GetProcAddress(base, kConstruct)));
    const auto destruct =
        reinterpret_cast<Destruct>(reinterpret_cast<void*>(GetProcAddress(base, kDestruct)));
    if (!construct || !destruct) return 2;
    alignas(16) char record[64];
    construct(record, "type");
    destruct(record);
    return FreeLibrary(base) ? 0 : 3;
}

}  // namespace

int main() {
    const HANDLE thread = CreateThread(nullptr, 0, UseAndUnload, nullptr, 0, nullptr);
    if (!thread || WaitForSingleObject(thread, 20000) != WAIT_OBJECT_0) {
        std::puts("the thread does not end");
        std::fflush(stdout);
        TerminateProcess(GetCurrentProcess(), 4);  // the loader may be stuck, too
    }
    DWORD code = 5;
    GetExitCodeThread(thread, &code);
    CloseHandle(thread);
    return static_cast<int>(code);
}
