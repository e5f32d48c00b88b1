// The page "quotes": a list of securities and what the market says of them.
#pragma once

#include <map>
#include <string>
#include <string_view>
#include <vector>

#include "base/data_table.h"
#include "datamgr/ui_page_data.h"
#include "page/security_search.h"
#include "page/text_page.h"

namespace terminal {

// Shows the securities that it was told to show. It subscribes to their quotes, which brings them as they are; from then on it
// hears of those that changed, twice a second, and while asleep of nothing: what it missed is asked for when it wakes. It reports
// every record to the host (see kMsgPageRecord): "rows" is the number of quotes in it, "why" is "answer", "push" or "asked on
// waking".
//
// Its parameter "codes" are the first securities, "600000:17" each, separated by commas. The host's scripts tell it what to
// do by messages to the page sign "quotepage:<name>": {"do": ..., "codes": ...}, where "do" is "show" (more securities),
// "forget" (these), "single" (asks for one quote only, which is reported), "search" ("queries", "max"; see
// page/security_search.h) or "close".
//
// The view has the tables "quotes", a row for each security, "candidates" and "lookups", those of the last search.
class QuotePage : public TextPage {
  public:
    // Null when the window cannot be created or the name is taken.
    static QuotePage* Create(const luadui::PageInit& init);

    void Sleep(bool asleep) override;
    void OnNotify(void* data) override;

  protected:
    LPCWSTR GetWindowClassName() const override { return L"SampleQuotePage"; }
    LRESULT HandleMessage(UINT message, WPARAM wParam, LPARAM lParam) override;
    std::string _text(size_t columns) const override;
    void _addToView(luadui::CUIData& view) const override;

  private:
    explicit QuotePage(const luadui::PageInit& init);

    void _start();
    void _run(const luadui::CUIData& command);
    void _show(std::string_view codes);
    void _forget(std::string_view codes);
    luadui::CUIData _record(const std::string& kind, const std::string& codes) const;
    void _subscribe(const std::string& kind, const std::string& codes, luadui::SET_DATA mode);
    void _ask(const std::string& kind, const std::string& codes);
    void _search(const luadui::CUIData& command);

    int _take(const luadui::CUIData& record);
    void _takeQuote(int row, const luadui::CUIData& quote);
    void _report(const luadui::CUIData& record, int rows) const;

    luadui::CUIPageData m_data;
    luadui::CDataTable m_quotes;
    std::map<std::string, int, std::less<>> m_rows;  // of the securities, by "code:market"
    SearchResult m_found;                            // of the last search
};

}  // namespace terminal
