// A page library for tests: pages with a window and a request object, watched and steered through a probe.
#include "messaging/request_object.h"
#include "platform/duilib.h"
#include "tests/luadui/plugins/page_probe.h"

namespace luadui {
namespace {

PageProbe& Probe() {
    static auto* const probe = new PageProbe;  // never destroyed: pages may live until the process ends
    return *probe;
}

class Page : public CWindowWnd, public CRequestObject, public TestPage {
  public:
    explicit Page(const PageInit& init) : m_name(init.name), m_info(init.info) {
        Create(nullptr, L"test page", 0, 0, 0, 0, 0, 0);
        Probe().pages[m_name] = this;
    }
    ~Page() override {
        Probe().pages.erase(m_name);
        Probe().Add("gone " + m_name);
    }

    std::string Handle() const override { return std::to_string(GetHandle()); }
    std::string Name() const override { return m_name; }
    bool Query(unsigned int type) override { return SendQuery("F1", type, {{"page", m_name}}, false); }
    std::string CallLua(const std::string& method, const std::string& pageSign) override {
        return SendLuaSync(method, "{}", pageSign);
    }
    void Close() override { DestroyWindow(GetHWND()); }
    const std::string& Info() const { return m_info; }

    void OnResponse(const CQueueRespData* response) override {
        if (Probe().onResponse) Probe().onResponse(*this, *response);
    }
    void Call(const std::string& what) {
        Probe().Add(m_name + " " + what);
        if (Probe().onCall) Probe().onCall(*this, what);
    }

  protected:
    LPCWSTR GetWindowClassName() const override { return L"TestPage"; }
    LRESULT HandleMessage(UINT message, WPARAM wParam, LPARAM lParam) override {
        if (message == 0x2001) Probe().Add(m_name + " companion message");
        return CWindowWnd::HandleMessage(message, wParam, lParam);
    }
    void OnFinalMessage(HWND) override { delete this; }

  private:
    const std::string m_name;
    const std::string m_info;
};

Page* PageNamed(const char* name) {
    const auto found = Probe().pages.find(name);
    return found == Probe().pages.end() ? nullptr : static_cast<Page*>(found->second);
}

unsigned int NumberOf(HWND window) { return static_cast<unsigned int>(reinterpret_cast<uintptr_t>(window)); }

unsigned int MakePage(const PageInit& init) { return NumberOf((new Page(init))->GetHWND()); }

}  // namespace
}  // namespace luadui

using luadui::Probe;

LUADUI_PAGE_EXPORT luadui::PageProbe* page_probe() {
    if (!Probe().onCreate) Probe().onCreate = luadui::MakePage;
    return &Probe();
}

unsigned int create_page(const luadui::PageInit* init) {
    if (std::string_view(init->name).starts_with(luadui::kRunFunction)) {
        (*reinterpret_cast<const std::function<void()>*>(std::stoull(init->info)))();
        return 0;
    }
    Probe().Add("create " + std::to_string(init->a) + " " + std::to_string(init->b) + " " + init->name + " " +
                init->info + " " + init->library + " " + std::to_string(init->flag) + " " +
                std::to_string(luadui::NumberOf(init->parent1)) + " " +
                std::to_string(luadui::NumberOf(init->parent2)));
    const auto make = Probe().onCreate;
    return make ? make(*init) : luadui::MakePage(*init);
}

void page_sleep(int asleep, const char* name) {
    auto* const page = luadui::PageNamed(name);
    if (!page) return;
    page->Sleep(asleep != 0);
    page->Call("sleep " + std::to_string(asleep));
}

void resizepage(const char* name, int width, int height) {
    if (auto* const page = luadui::PageNamed(name))
        page->Call("resize " + std::to_string(width) + "x" + std::to_string(height));
}

void handlepage_focus(int reason, const char* info) {
    const auto pages = Probe().pages;
    for (const auto& entry : pages) {
        auto* const page = luadui::PageNamed(entry.first.c_str());
        if (page && page->Info() == info) page->Call("focus " + std::to_string(reason) + " " + info);
    }
}
