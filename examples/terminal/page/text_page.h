// What the sample pages have in common: a window that shows text on the host's screen.
#pragma once

#include <string>
#include <string_view>

#include "base/dui_base_wnd.h"
#include "base/ui_data.h"
#include "luadui/page_plugin.h"

namespace terminal {

// A page draws text and posts it to the host (see page/page_view.h), once for all changes of a turn of the message loop.
// The first init integer names the window that shows it; init string 3 holds its parameters, "name=value" separated by
// ";".
//
// Threads:  the UI thread.
// Lifetime: owned by its window.
class TextPage : public luadui::CDuiBaseWnd {
  public:
    // The living page of that name, or null.
    static TextPage* Find(const std::string& name);
    // Gives the focus to the pages with this init string 3, and takes it from the others.
    static void Focus(const std::string& info);

    virtual void Sleep(bool asleep);
    void Resize(int width, int height);

  protected:
    explicit TextPage(const luadui::PageInit& init);

    // Creates the window; from then on OnFinalMessage deletes the page. False when it cannot be created.
    bool _open(const luadui::PageInit& init);
    // The value of a parameter of an init string 3; empty when it is not there.
    static std::string _parameter(std::string_view info, std::string_view name);

    // What the page shows, code page 936; lines at most `columns` long (0: any).
    virtual std::string _text(size_t columns) const = 0;
    // More for the host about what the page shows.
    virtual void _addToView(luadui::CUIData&) const {}
    // Tells the host of a record that the page received (see kMsgPageRecord).
    struct RecordReport {
        std::string kind, why;
        std::string accounts = {};
        int rows = -1;
        int64_t code = 0;
        std::string message = {};
    };
    void _reportRecord(const RecordReport& report) const;
    // Shows the page anew.
    void _changed();

    LRESULT HandleMessage(UINT message, WPARAM wParam, LPARAM lParam) override;
    void OnFinalMessage(HWND window) override;

    const std::string m_name;
    const std::string m_info;
    const HWND m_screen;
    struct {
        int queries = 0;
        int answers = 0;
        int errors = 0;
        int unreadable = 0;
    } m_count;

  private:
    void _show();

    bool m_asleep = false;
    bool m_focused = false;
    bool m_showPosted = false;
    int m_width = 0;
    int m_height = 0;
};

}  // namespace terminal
