#include "platform/posix/thread.h"

#include <pthread.h>
#include <unistd.h>
#include <algorithm>
#include <climits>
#include <unordered_map>

#include "platform/module_pin.h"
#include "platform/posix/win32_system.h"
#include "platform/posix/window.h"

namespace luadui::posix {

namespace {

struct ThreadTable {
    std::mutex mutex;
    std::unordered_map<DWORD, std::weak_ptr<Thread>> threads;
};

ThreadTable& Threads() {
    static auto& table = *new ThreadTable;
    return table;
}

DWORD NextId() {
    static std::atomic<DWORD> last{0};
    return last.fetch_add(4, std::memory_order_relaxed) + 4;
}

constinit thread_local Thread* t_current = nullptr;
const char kInThisModule = 0;

// A thread's shared_ptr to itself hangs on this key. Such keys are cleared after all thread_local objects, so windows
// outlive those; and should one of them come back to this layer even later, the key is simply cleared once more.
pthread_key_t EndKey() {
    static const pthread_key_t key = [] {
        PinModuleOf(&kInThisModule);  // the key calls back into it for as long as any thread lives
        pthread_key_t made;
        pthread_key_create(&made, [](void* value) {
            const std::unique_ptr<std::shared_ptr<Thread>> self(static_cast<std::shared_ptr<Thread>*>(value));
            (*self)->End();
            t_current = nullptr;
        });
        return made;
    }();
    return key;
}

struct Start {
    std::shared_ptr<Thread> thread;
    LPTHREAD_START_ROUTINE routine;
    LPVOID argument;
};

void* Run(void* argument) {
    const Start start = *std::unique_ptr<Start>(static_cast<Start*>(argument));
    Thread::Adopt(start.thread);
    start.thread->SetExitCode(start.routine(start.argument));
    return nullptr;
}

bool StartDetached(std::unique_ptr<Start> start, size_t stack) {
    pthread_attr_t attributes;
    pthread_attr_init(&attributes);
    pthread_attr_setdetachstate(&attributes, PTHREAD_CREATE_DETACHED);
    if (stack > 0) {
        const auto page = static_cast<size_t>(sysconf(_SC_PAGESIZE));
        const size_t least = std::max<size_t>(stack, static_cast<size_t>(PTHREAD_STACK_MIN));
        pthread_attr_setstacksize(&attributes, (least + page - 1) / page * page);
    }
    pthread_t thread;
    const bool started = pthread_create(&thread, &attributes, Run, start.get()) == 0;
    pthread_attr_destroy(&attributes);
    if (started) static_cast<void>(start.release());  // Run owns it now
    return started;
}

}  // namespace

Thread::Thread() : m_id(NextId()), m_queue(m_parker) {}

Thread& Thread::Current() {
    if (!t_current) Adopt(std::make_shared<Thread>());
    return *t_current;
}

std::shared_ptr<Thread> Thread::Find(DWORD id) {
    const std::lock_guard lock(Threads().mutex);
    const auto found = Threads().threads.find(id);
    return found == Threads().threads.end() ? nullptr : found->second.lock();
}

void Thread::Adopt(std::shared_ptr<Thread> thread) {
    t_current = thread.get();
    {
        const std::lock_guard lock(Threads().mutex);
        Threads().threads.insert_or_assign(thread->Id(), thread);
    }
    pthread_setspecific(EndKey(), new std::shared_ptr<Thread>(std::move(thread)));
}

MessageQueue& Thread::OpenQueue() {
    m_queue.Open();
    return m_queue;
}

void Thread::End() {
    {
        const std::lock_guard lock(Threads().mutex);
        Threads().threads.erase(m_id);
    }
    RemoveWindowsOf(*this);
    m_queue.Close();
    const std::lock_guard lock(KernelMutex());
    m_ended = true;
    m_exitCode = m_nextCode;
    _wakeWaiters();
}

}  // namespace luadui::posix

using namespace luadui::posix;

HANDLE CreateThread(LPSECURITY_ATTRIBUTES, SIZE_T stack, LPTHREAD_START_ROUTINE routine, LPVOID argument,
                    DWORD flags, LPDWORD id) {
    if (!routine || flags != 0) {
        SetLastError(ERROR_INVALID_PARAMETER);
        return nullptr;
    }
    const auto thread = std::make_shared<Thread>();
    // Registered before it runs: the caller may ask for it by its number at once.
    {
        const std::lock_guard lock(Threads().mutex);
        Threads().threads.emplace(thread->Id(), thread);
    }
    HANDLE handle = OpenHandle(thread);
    if (id) *id = thread->Id();
    if (handle && StartDetached(std::unique_ptr<Start>(new Start{thread, routine, argument}), stack))
        return handle;

    if (handle) CloseHandle(handle);
    const std::lock_guard lock(Threads().mutex);
    Threads().threads.erase(thread->Id());
    SetLastError(ERROR_NOT_ENOUGH_MEMORY);
    return nullptr;
}

HANDLE OpenThread(DWORD, BOOL, DWORD id) {
    if (auto thread = Thread::Find(id)) return OpenHandle(std::move(thread));
    SetLastError(ERROR_INVALID_PARAMETER);
    return nullptr;
}

BOOL GetExitCodeThread(HANDLE handle, LPDWORD code) {
    const auto thread = std::dynamic_pointer_cast<Thread>(FindObject(handle));
    if (!thread || !code) {
        SetLastError(thread ? ERROR_INVALID_PARAMETER : ERROR_INVALID_HANDLE);
        return FALSE;
    }
    const std::lock_guard lock(KernelMutex());
    *code = thread->ExitCode();
    return TRUE;
}

DWORD GetCurrentThreadId() { return Thread::Current().Id(); }
DWORD GetCurrentProcessId() { return static_cast<DWORD>(getpid()); }
