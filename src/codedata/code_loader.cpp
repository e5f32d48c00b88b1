#include "codedata/code_loader.h"

#include <memory>
#include <new>
#include <optional>
#include <utility>

#include "base/counters.h"
#include "base/guard.h"
#include "codedata/code_list.h"
#include "codedata/code_list_query.h"
#include "platform/module_pin.h"
#include "trade/trade.h"

namespace luadui {
namespace {

constexpr char kLoaderThrew[] = "code_list_loader_threw";

void HandToTrade(const CodeBook& book) {
    // Markets share codes; that of the weightiest one stays.
    const auto byCode = book.ByCode();
    for (auto entry = byCode.rbegin(); entry != byCode.rend(); ++entry) {
        const CodeBook::Entry security = book.At(*entry);
        CTrade::AddCodeData(security.code, security.market, security.name);
    }
}

}  // namespace

struct CodeLoader::Order {
    CodeLoader& loader;
    std::string path;
};

// While it lives, its thread is the one that loads.
class CodeLoader::Turn {
  public:
    explicit Turn(CodeLoader& loader) : m_lock(loader.m_turn), m_thread(loader.m_loadingThread) {
        m_thread = GetCurrentThreadId();
    }
    ~Turn() { m_thread = 0; }
    Turn(const Turn&) = delete;
    Turn& operator=(const Turn&) = delete;

  private:
    const std::lock_guard<std::mutex> m_lock;
    std::atomic<DWORD>& m_thread;
};

CodeLoader& CodeLoader::Instance() {
    // Never destroyed, as threads may load until the process ends; in the module's own memory, since the module may be
    // unloaded without ever having loaded a list.
    alignas(CodeLoader) static std::byte place[sizeof(CodeLoader)];
    static auto* const loader = new (place) CodeLoader;
    return *loader;
}

bool CodeLoader::Load(std::string path) {
    auto order = std::make_unique<Order>(Order{*this, path});
    {
        const std::lock_guard lock(m_mutex);
        m_path = std::move(path);
        m_wasLoaded = true;
        m_waitEnd = std::chrono::steady_clock::now() + m_longestWait;
        ++m_loadsAhead;
    }
    if (!_startThread(_runLoad, order.get())) {
        _endLoad();
        return false;
    }
    static_cast<void>(order.release());  // the thread's now
    return true;
}

void CodeLoader::Reload() {
    {
        const std::lock_guard lock(m_mutex);
        if (!m_wasLoaded) return CCounters::Add("code_list_update_before_load");
        m_wantsReload = true;
    }
    _startBackground();
}

size_t CodeLoader::Add(std::vector<Addition> additions) {
    size_t taken = 0;
    {
        const std::lock_guard lock(m_mutex);
        const auto book = m_book.Read();
        for (Addition& addition : additions) {
            if (m_additions.size() >= kMaxAdditions) {
                CCounters::Add("code_list_additions_refused");
            } else if (!book->Find(addition.code, addition.market)) {
                const std::pair key(addition.code, addition.market);
                taken += m_additions.try_emplace(key, std::move(addition)).second;
            }
        }
        m_wantsRebuild = m_wantsRebuild || taken > 0;
    }
    _startBackground();
    return taken;
}

bool CodeLoader::IsIdle() const {
    const std::lock_guard lock(m_mutex);
    return m_threads == 0;
}

bool CodeLoader::_startThread(LPTHREAD_START_ROUTINE routine, void* argument) {
    static const bool isPinned = PinModuleOf(reinterpret_cast<const void*>(&_runLoad));
    if (!isPinned) CCounters::Add("module_not_pinned");
    {
        const std::lock_guard lock(m_mutex);
        ++m_threads;
    }
    if (const HANDLE thread = CreateThread(nullptr, 0, routine, argument, 0, nullptr)) {
        CloseHandle(thread);
        return true;
    }
    CCounters::Add("code_list_thread_refused");
    const std::lock_guard lock(m_mutex);
    --m_threads;
    return false;
}

DWORD WINAPI CodeLoader::_runLoad(LPVOID argument) {
    const std::unique_ptr<Order> order(static_cast<Order*>(argument));
    CodeLoader& loader = order->loader;
    Guarded(kLoaderThrew, [&] {
        const Turn turn(loader);
        loader._load(order->path);
    });
    loader._endLoad();
    const std::lock_guard lock(loader.m_mutex);
    --loader.m_threads;
    return 0;
}

void CodeLoader::_endLoad() {
    {
        const std::lock_guard lock(m_mutex);
        --m_loadsAhead;
    }
    m_loadEnded.notify_all();
}

void CodeLoader::_startBackground() {
    {
        const std::lock_guard lock(m_mutex);
        if (m_runsInBackground || !(m_wantsReload || m_wantsRebuild)) return;
        m_runsInBackground = true;
    }
    if (_startThread(_runInBackground, this)) return;
    const std::lock_guard lock(m_mutex);
    m_runsInBackground = false;
}

DWORD WINAPI CodeLoader::_runInBackground(LPVOID argument) {
    auto& loader = *static_cast<CodeLoader*>(argument);
    while (loader._workInBackground()) {
    }
    return 0;
}

// False when there was nothing left to do, and no thread to do it any more.
bool CodeLoader::_workInBackground() {
    {
        const Turn turn(*this);
        std::unique_lock lock(m_mutex);
        const bool wantsReload = std::exchange(m_wantsReload, false);
        const bool wantsRebuild = std::exchange(m_wantsRebuild, false);
        const std::string path = m_path;
        lock.unlock();
        Guarded(kLoaderThrew, [&] {
            if (!(wantsReload && _load(path)) && wantsRebuild) _rebuild();
        });
    }
    const std::lock_guard lock(m_mutex);
    if (m_wantsReload || m_wantsRebuild) return true;
    m_runsInBackground = false;
    --m_threads;
    return false;
}

void CodeLoader::_waitForLoads() {
    if (m_loadingThread.load() == GetCurrentThreadId()) return;
    std::unique_lock lock(m_mutex);
    while (m_loadsAhead > 0) {
        const auto end = m_waitEnd;  // a load that is ordered meanwhile moves it
        if (std::chrono::steady_clock::now() >= end) {
            CCounters::Add("code_list_wait_ended");
            return;
        }
        m_loadEnded.wait_until(lock, end);
    }
}

// False when there was nothing to publish.
bool CodeLoader::_load(const std::string& path) {
    const std::optional<std::string> reply = QueryCodeList(path);
    const CodeList list = reply ? CodeList::Parse(*reply) : CodeList();
    if (list.empty()) {
        CCounters::Add("code_list_empty");
        return false;
    }
    _publish(list.Records());
    return true;
}

// The same list with what was added to it.
void CodeLoader::_rebuild() {
    const std::shared_ptr<const CodeBook> old = m_book.Owned();
    std::vector<CodeRecord> records(old ? old->Size() : 0);
    for (size_t i = 0; i < records.size(); ++i) {
        const CodeBook::Entry entry = old->At(i);
        records[i] = {entry.code, entry.name, entry.market, entry.phonetic};
    }
    _publish(records);
}

void CodeLoader::_publish(std::span<const CodeRecord> records) {
    std::vector<Addition> additions;
    {
        const std::lock_guard lock(m_mutex);
        for (const auto& [key, addition] : m_additions) additions.push_back(addition);
    }
    std::vector<CodeRecord> added;
    for (const Addition& addition : additions) {
        added.push_back({addition.code, addition.name, addition.market, addition.phonetic});
    }
    auto book = CodeBook::Build(records, added);
    HandToTrade(*book);
    m_book.Replace(std::move(book));
}

}  // namespace luadui
