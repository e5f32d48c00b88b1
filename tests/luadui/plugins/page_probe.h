// What a test sees of the pages in a test library, and how it tells them what to do.
#pragma once

#include <functional>
#include <map>
#include <mutex>
#include <string>
#include <utility>
#include <vector>

#include "luadui/page_plugin.h"
#include "messaging/queue_data.h"

namespace luadui {

// A page of the test library. UI thread only.
class TestPage {
  public:
    virtual ~TestPage() = default;
    virtual std::string Handle() const = 0;  // of its request object, as text
    virtual std::string Name() const = 0;
    virtual bool Query(unsigned int type) = 0;
    virtual std::string CallLua(const std::string& method, const std::string& pageSign) = 0;
    virtual void Close() = 0;  // the page is gone when this returns
};

// One per test library; the library's function "page_probe" answers it.
struct PageProbe {
    // UI thread only, as all that follows down to Add.
    std::map<std::string, TestPage*> pages;                 // the living ones by name
    std::function<unsigned int(const PageInit&)> onCreate;  // makes the page; at first as a page library does
    std::function<void(TestPage&, const CQueueRespData&)> onResponse;
    std::function<void(TestPage&, const std::string&)> onCall;  // "sleep 1", "focus info", "resize 3x4"

    void Add(std::string line) {
        const std::lock_guard lock(m_mutex);
        m_lines.push_back(std::move(line));
    }
    // What happened since the last call, a line per event.
    std::vector<std::string> Take() {
        const std::lock_guard lock(m_mutex);
        return std::exchange(m_lines, {});
    }

  private:
    std::mutex m_mutex;
    std::vector<std::string> m_lines;
};

// A page with a name that begins so is none: init string 3 is the address of a std::function<void()> to run instead.
inline constexpr char kRunFunction[] = "run ";

using PageProbeFunction = PageProbe*();

}  // namespace luadui
