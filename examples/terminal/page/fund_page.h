// The page "funds and positions" of one account.
#pragma once

#include <map>
#include <string>

#include "base/data_table.h"
#include "messaging/request_object.h"
#include "page/text_page.h"

namespace terminal {

// Asks for the account's funds and positions with a request object of its own, and again whenever the server says that
// they changed. While asleep it lets such changes wait.
//
// Its parameter "fund_token" is the account.
class FundPage : public TextPage {
  public:
    // Null when the window cannot be created or the init string names no account.
    static FundPage* Create(const luadui::PageInit& init);

    void Sleep(bool asleep) override;

  protected:
    LPCWSTR GetWindowClassName() const override { return L"SampleFundPage"; }
    LRESULT HandleMessage(UINT message, WPARAM wParam, LPARAM lParam) override;
    std::string _text(size_t columns) const override;

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
    std::string _fundText(size_t columns) const;
    std::string _positionText(size_t columns) const;

    const std::string m_fundToken;
    Requests m_requests{*this};

    luadui::CDataTable m_funds;
    luadui::CDataTable m_positions;
    std::map<std::string, std::string>
        m_initials;                       // "code|market" -> initials; empty when the host knows none
    std::map<int, std::string> m_errors;  // request type -> error of the last answer
    std::string m_hostMessage;
};

}  // namespace terminal
