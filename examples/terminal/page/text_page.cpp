#include "page/text_page.h"

#include <algorithm>
#include <map>

#include "base/counters.h"
#include "base/text.h"
#include "page/page_view.h"

namespace terminal {
namespace {

constexpr UINT kMsgShow = WM_APP + 2;
constexpr UINT_PTR kShowAgain = 1;
constexpr int kPixelsPerColumn = 8;

// UI thread only.
std::map<std::string, TextPage*>& Pages() {
    static std::map<std::string, TextPage*> pages;
    return pages;
}

}  // namespace

TextPage::TextPage(const luadui::PageInit& init)
    : m_name(init.name), m_info(init.info), m_screen(init.a != 0 ? HandleOfNumber(init.a) : init.parent1) {}

bool TextPage::_open(const luadui::PageInit& init) {
    const DWORD style = init.parent1 ? WS_CHILD : 0;
    if (!Create(init.parent1, luadui::GbkToWide(init.name).c_str(), style, 0, 0, 0, 0, 0)) return false;
    Pages()[m_name] = this;
    return true;
}

TextPage* TextPage::Find(const std::string& name) {
    const auto found = Pages().find(name);
    return found == Pages().end() ? nullptr : found->second;
}

void TextPage::Focus(const std::string& info) {
    for (const auto& [name, page] : Pages()) {
        page->m_focused = page->m_info == info;
        page->_changed();
    }
}

std::string TextPage::_parameter(std::string_view info, std::string_view name) {
    for (const std::string_view part : luadui::SplitText(info, ';')) {
        const size_t equals = part.find('=');
        if (equals != part.npos && part.substr(0, equals) == name)
            return std::string(part.substr(equals + 1));
    }
    return {};
}

void TextPage::Sleep(bool asleep) {
    m_asleep = asleep;
    _changed();
}

void TextPage::Resize(int width, int height) {
    m_width = width;
    m_height = height;
    _changed();
}

LRESULT TextPage::HandleMessage(UINT message, WPARAM wParam, LPARAM lParam) {
    if (message != kMsgShow && (message != WM_TIMER || wParam != kShowAgain))
        return CDuiBaseWnd::HandleMessage(message, wParam, lParam);
    if (message == WM_TIMER) KillTimer(m_hWnd, kShowAgain);
    _show();
    return 0;
}

void TextPage::OnFinalMessage(HWND window) {
    CDuiBaseWnd::OnFinalMessage(window);
    Pages().erase(m_name);
    delete this;
}

void TextPage::_reportRecord(const RecordReport& report) const {
    luadui::CUIData record("page_record");
    record.SetData("page", m_name);
    record.SetData("kind", report.kind);
    record.SetData("why", report.why);
    record.SetData("accounts", report.accounts);
    record.SetData("rows", report.rows);
    record.SetData("code", report.code);
    record.SetData("message", report.message);
    if (!PostToHost(m_screen, kMsgPageRecord, record)) luadui::CCounters::Add("page_record_dropped");
}

void TextPage::_changed() {
    if (!m_hWnd || m_showPosted) return;
    m_showPosted = ::PostMessageW(m_hWnd, kMsgShow, 0, 0) != 0;
}

void TextPage::_show() {
    m_showPosted = false;
    luadui::CUIData view("page_view");
    view.SetData("page", m_name);
    view.SetData("text", _text(static_cast<size_t>(std::max(m_width, 0) / kPixelsPerColumn)));
    view.SetData("window", HandleNumber(m_hWnd));
    view.SetData("asleep", m_asleep);
    view.SetData("focused", m_focused);
    view.SetData("width", m_width);
    view.SetData("height", m_height);
    view.SetData("queries", m_count.queries);
    view.SetData("answers", m_count.answers);
    view.SetData("errors", m_count.errors);
    view.SetData("unreadable", m_count.unreadable);
    _addToView(view);
    if (PostToHost(m_screen, kMsgPageView, view)) return;
    if (IsWindow(m_screen)) {
        SetTimer(m_hWnd, kShowAgain, 100, nullptr);  // its queue is full
    } else {
        luadui::CCounters::Add("page_view_dropped");
    }
}

}  // namespace terminal
