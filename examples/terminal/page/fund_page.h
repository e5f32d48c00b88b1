// The page "funds and positions" of one account.
#pragma once

#include <map>
#include <string>

#include "base/data_table.h"
#include "base/dui_base_wnd.h"
#include "luadui/page_plugin.h"
#include "messaging/request_object.h"

namespace terminal {

// Asks for the account's funds and positions, and again whenever the server says that they changed; shows them as text
// (see page/page_view.h). While asleep it lets such changes wait.
//
// Its first init integer names the window that shows it, its init string 3 the account: "fund_token=880001" and, after
// ";", whatever else the host likes.
//
// Threads:  the UI thread.
// Lifetime: owned by its window.
class FundPage : public luadui::CDuiBaseWnd {
  public:
    // Creates the page with its window and sends its first queries. Null when the window cannot be created or the init
    // string names no account.
    static FundPage* Create(const luadui::PageInit& init);
    // The living page of that name, or null.
    static FundPage* Find(const std::string& name);
    // Gives the focus to the pages with this init string 3, and takes it from the others.
    static void Focus(const std::string& info);

    void Sleep(bool asleep);
    void Resize(int width, int height);

  protected:
    LPCWSTR GetWindowClassName() const override { return L"SampleFundPage"; }
    LRESULT HandleMessage(UINT message, WPARAM wParam, LPARAM lParam) override;
    void OnFinalMessage(HWND window) override;

  private:
    // Sends for the page and hands it what comes back.
    class Requests : public luadui::CRequestObject {
      public:
        explicit Requests(FundPage& page) : m_page(page) {}
        bool Request(luadui::CQueueReqItem& request) override;
        void OnResponse(const luadui::CQueueRespData* response) override;

      private:
        FundPage& m_page;
    };

    FundPage(const luadui::PageInit& init, std::string fundToken);

    void _start();
    void _onResponse(const luadui::CQueueRespData& response);
    bool _takeTable(int type, const luadui::CQueueRespData& response);
    void _askInitials();
    // Shows the page anew, once for all changes of this turn of the message loop.
    void _changed();
    void _show();
    std::string _text() const;
    std::string _fundText(size_t columns) const;
    std::string _positionText(size_t columns) const;

    const std::string m_name;
    const std::string m_info;
    const std::string m_fundToken;
    const HWND m_screen;
    Requests m_requests{*this};

    luadui::CDataTable m_funds;
    luadui::CDataTable m_positions;
    std::map<std::string, std::string>
        m_initials;                       // "code|market" -> initials; empty when the host knows none
    std::map<int, std::string> m_errors;  // request type -> error of the last answer
    std::string m_hostMessage;
    bool m_asleep = false;
    bool m_focused = false;
    bool m_showPosted = false;
    int m_width = 0;
    int m_height = 0;
    struct {
        int queries = 0;
        int answers = 0;
        int errors = 0;
        int unreadable = 0;
    } m_count;
};

}  // namespace terminal
