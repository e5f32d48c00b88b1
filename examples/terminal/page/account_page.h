// The page "news of accounts".
#pragma once

#include <string>
#include <vector>

#include "base/json_object.h"
#include "datamgr/ui_page_data.h"
#include "messaging/request_object.h"
#include "page/text_page.h"

namespace terminal {

// Signs its user in, and hears what the account manager publishes and answers. Each is told to the host's window as a record
// (page/page_view.h): "kind" is the topic, "why" is "news", "message" says what is in it, in one line. A password is shown as
// "*" only.
//
// Its parameters: "user" and "id" of the user, "hear" topics separated by commas. The host's message {"user", "id"} to its
// page sign "accountpage:<name>" signs another user in.
class AccountPage : public TextPage {
  public:
    // Null when the window cannot be created or the init string names no user.
    static AccountPage* Create(const luadui::PageInit& init);

  protected:
    LPCWSTR GetWindowClassName() const override { return L"SampleAccountPage"; }
    LRESULT HandleMessage(UINT message, WPARAM wParam, LPARAM lParam) override;
    std::string _text(size_t columns) const override;

  private:
    class Requests : public luadui::CRequestObject {
      public:
        explicit Requests(AccountPage& page) : m_page(page) {}
        void OnResponse(const luadui::CQueueRespData* response) override;

      private:
        AccountPage& m_page;
    };

    explicit AccountPage(const luadui::PageInit& init);

    void _start();
    void _signIn(const std::string& user, const std::string& id);
    void _subscribe(bool isOn);
    void _onResponse(const luadui::CQueueRespData& response);

    luadui::CUIPageData m_data;
    Requests m_requests{*this};
    std::vector<std::string> m_lines;  // the last news
};

}  // namespace terminal
