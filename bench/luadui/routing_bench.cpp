// From the host's thread to OnResponse on the UI thread, beside the idle queue of GLib's main loop that carries a copy
// of the same record as a map of variants.
#include <glib.h>

#include <atomic>
#include <memory>
#include <string>
#include <thread>
#include <unordered_map>
#include <variant>
#include <vector>

#include "bench/report.h"
#include "luadui/luadui.h"
#include "luadui/page_manager_wnd.h"
#include "messaging/request_object.h"

namespace luadui {
namespace {

constexpr int kBurst = 5000;

// The fields of a typical answer: 15 in all.
const std::vector<std::pair<std::string, std::variant<int64_t, bool, std::string>>>& Fields() {
    static const std::vector<std::pair<std::string, std::variant<int64_t, bool, std::string>>> fields = {
        {"DATATYPE", int64_t{2003}},
        {"REQTYPE", int64_t{1004}},
        {"IsLast", true},
        {"UUID", "1f0c2a9e-7b54-4c1d-9a31-6d2f80c3e5b7"},
        {"RawData", "{\"retcode\":\"0\",\"message\":\"\"}"},
        {"FundToken", "fund_token_000123456789"},
        {"Topic", "Fund|fund_token_000123456789"},
        {"SrcServer", "tunnel-main-01"},
        {"TraceID", "trace-0001-000042"},
        {"Market", "17"},
        {"Account", "880012345678"},
        {"CreateTime", int64_t{123456789}},
        {"Sequence", int64_t{42}},
        {"Version", "1.0.0"},
    };
    return fields;
}

// "To" makes it 15.
CUIData MakeRecord(const std::string& to) {
    CUIData record;
    for (const auto& [key, value] : Fields()) {
        std::visit([&key = key, &record](const auto& v) { record.SetData(key, v); }, value);
    }
    record.SetData("To", to);
    return record;
}

using Map = std::unordered_map<std::string, std::variant<int64_t, bool, std::string>>;

class Counter : public CRequestObject {
  public:
    void OnResponse(const CQueueRespData*) override { count.fetch_add(1, std::memory_order_relaxed); }
    std::atomic<int> count{0};
};

template <class Sent>
void WaitFor(const std::atomic<int>& count, Sent sent) {
    while (count.load(std::memory_order_relaxed) < sent) std::this_thread::yield();
}

class GlibLoop {
  public:
    GlibLoop() : m_thread([this] { g_main_loop_run(m_loop); }) {}
    ~GlibLoop() {
        g_main_loop_quit(m_loop);
        m_thread.join();
        g_main_loop_unref(m_loop);
    }
    void Send(const Map& map) { g_idle_add(&GlibLoop::_receive, new Message{this, map}); }
    std::atomic<int> count{0};

  private:
    struct Message {
        GlibLoop* loop;
        Map map;
    };
    static gboolean _receive(gpointer data) {
        const std::unique_ptr<Message> message(static_cast<Message*>(data));
        message->loop->count.fetch_add(1, std::memory_order_relaxed);
        return G_SOURCE_REMOVE;
    }

    GMainLoop* m_loop = g_main_loop_new(nullptr, FALSE);
    std::thread m_thread;
};

LUADUI_REPORT(ResponseRouting) {
    start_dui_thread();
    CPageManagerWnd::WaitUntilReady();
    Counter counter;
    CUIData record = MakeRecord(std::to_string(counter.GetHandle()));
    GlibLoop glib;
    Map map(Fields().begin(), Fields().end());
    map.emplace("To", std::to_string(counter.GetHandle()));
    const auto time = bench::Compare(
        [&] {
            const int sent = counter.count.load() + kBurst;
            for (int i = 0; i < kBurst; ++i) handle_response_callback(&record);
            WaitFor(counter.count, sent);
        },
        [&] {
            const int sent = glib.count.load() + kBurst;
            for (int i = 0; i < kBurst; ++i) glib.Send(map);
            WaitFor(glib.count, sent);
        });
    bench::AtLeast("response_to_handler_vs_g_idle_add", time.Speedup(), 5);
}

}  // namespace
}  // namespace luadui
