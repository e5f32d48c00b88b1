// Pages with a window each, around the one router, on the thread of the benchmark; the host swallows what is sent.
#pragma once

#include <algorithm>
#include <chrono>
#include <memory>
#include <string>
#include <vector>

#include "base/dui_base_wnd.h"
#include "bench/report.h"
#include "datamgr/ui_page_data.h"
#include "datamgr/ui_stock_data_manager.h"
#include "messaging/host_link.h"

namespace luadui::bench {

// Reads nothing of what it gets, but remembers it if told so.
class DeskWindow : public CDuiBaseWnd {
  public:
    DeskWindow() { Create(HWND_MESSAGE, L"", 0, 0, 0, 0, 0, 0); }
    ~DeskWindow() override {
        if (m_hWnd) DestroyWindow(m_hWnd);
    }
    void OnNotify(void* data) override {
        ++received;
        if (keeps) last = *static_cast<CUIData*>(data);
    }
    uint64_t received = 0;
    bool keeps = false;
    CUIData last;

  protected:
    LPCWSTR GetWindowClassName() const override { return L"LuaduiDeskWindow"; }
};

// The router, ready, with a host that takes every request.
inline CUIStockDataManager& Router() {
    static CUIStockDataManager& router = [&]() -> CUIStockDataManager& {
        CHostLink::Instance().SetPushCallback([](CQueueReqItem*) { return 0; });
        auto& made = CUIStockDataManager::get_mutable_instance();
        made.StartCommonData();
        return made;
    }();
    return router;
}

struct DeskPage {
    DeskPage() : data("DeskPage" + std::to_string(window.GetHandle())) {
        Router();
        data.Init();
    }

    // An ask for `kind` of one account, as this page's window sends it.
    CUIData Ask(const std::string& kind, const std::string& token) const {
        CUIData request(kind);
        request.SetData("handle", window.GetHandle());
        request.SetData("fund_token", token);
        return request;
    }

    DeskWindow window;  // outlives the manager, which delivers to it
    CUIPageData data;
};

using DeskPages = std::vector<std::unique_ptr<DeskPage>>;

inline DeskPages MakePages(int count) {
    DeskPages pages;
    for (int i = 0; i < count; ++i) pages.push_back(std::make_unique<DeskPage>());
    return pages;
}

inline std::string Token(int account) { return "fund_token_" + std::to_string(880'000 + account); }

// `rows` orders (or deals, or positions) as a server sends them: the key, which is `first` and up, and 29 columns more.
inline CDataTable Rows(const char* keyColumn, int first, int rows) {
    constexpr int kColumns = 30;
    CDataTable table;
    table.AddColumn(keyColumn);
    for (int col = 1; col < kColumns; ++col) table.AddColumn("OrderColumn" + std::to_string(col));
    for (int row = 0; row < rows; ++row) {
        const std::string text = std::to_string(100'000 + first + row);
        table.AppendRow();
        for (int col = 0; col < kColumns; ++col) table.SetItemText(row, col, text);
    }
    return table;
}

// Gives the common list of `kind` tables of the accounts 0 to accounts - 1.
inline void FillList(const char* kind, const char* keyColumn, int accounts, int rows) {
    CTokenTableList& list = *Router().CommonData().Lists().FindOrMake(kind);
    for (int account = 0; account < accounts; ++account) {
        const Age age = RequestLedger::Instance().NextAge();
        list.TakeAnswer(Token(account), Rows(keyColumn, account * rows, rows), age);
    }
}

// The times of single calls.
struct CallTimes {
    double median;
    double p99;  // what one call in a hundred exceeds
};
// The medians of several rounds of 10,000 calls each, so that a moment of other load on the machine does not count. `prepare` runs
// before each call, `finish` after it, both outside of what is measured.
template <class Prepare, class Body, class Finish>
CallTimes TimeCalls(Prepare&& prepare, Body&& body, Finish&& finish, int rounds = 7) {
    constexpr size_t kCalls = 10'000;
    std::vector<double> medians, p99s, seconds(kCalls);
    for (int round = 0; round <= rounds; ++round) {
        for (double& call : seconds) {
            prepare();
            const auto start = std::chrono::steady_clock::now();
            body();
            call = std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
            finish();
        }
        if (round == 0) continue;  // it warmed everything up
        std::ranges::sort(seconds);
        medians.push_back(seconds[kCalls / 2]);
        p99s.push_back(seconds[kCalls * 99 / 100]);
    }
    return {Median(std::move(medians)), Median(std::move(p99s))};
}

}  // namespace luadui::bench
