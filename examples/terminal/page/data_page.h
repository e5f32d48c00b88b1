// The page "data": what it names in its init string, whatever kinds that are, as tables.
#pragma once

#include <map>
#include <string>
#include <string_view>
#include <utility>

#include "base/data_set.h"
#include "base/data_table.h"
#include "datamgr/ui_page_data.h"
#include "page/text_page.h"

namespace terminal {

// Gets its data from the library's data managers by name: it owns a manager, registers its window for the kinds that it
// wants to hear of, asks for those that it shows, and takes what comes in OnNotify. It reports every record to the host
// (see kMsgPageRecord), with the reason why it came:
//
//   "answer"             from the server, to a question of this page
//   "from the cache"     to a question of this page, at once
//   "asked on waking"    what changed while the page slept
//   "push"               news; "push of another account" when it is of none that the page shows
//
// Parameters, lists separated by commas: "kinds" are asked and heard of, "hear" are heard of only, "fund_token" are the
// accounts (none: all), "more" others that it shows when they come, "group" the account group.
//
// The host's scripts tell it what to do by messages to the page sign "datapage:<name>", which come as records of kind
// "lua_subscribe": {"do": ..., "kind": ...}, where
// "do" is "ask" (from the cache or the server), "send" (a request to the server), "hear", "unhear" or "close". All other
// members go into the record: the question's parameters. Messages of the message center pile up, one row for each "LocalID".
class DataPage : public TextPage {
  public:
    // Null when the window cannot be created, the name is taken or no kind is named.
    static DataPage* Create(const luadui::PageInit& init);

    void Sleep(bool asleep) override;
    void OnNotify(void* data) override;

  protected:
    LPCWSTR GetWindowClassName() const override { return L"SampleDataPage"; }
    std::string _text(size_t columns) const override;
    void _addToView(luadui::CUIData& view) const override;

  private:
    using TableName = std::pair<std::string, std::string>;  // kind, account (empty: of all)

    explicit DataPage(const luadui::PageInit& init);
    void _start();
    void _run(const luadui::CUIData& command);
    void _ask(luadui::CUIData record);
    void _send(luadui::CUIData record);
    void _complete(luadui::CUIData& record) const;

    std::string _whyOf(const luadui::CUIData& record) const;
    void _take(const luadui::CUIData& record);
    void _takeTables(const luadui::CUIData& record);
    void _takeTable(const luadui::CUIData& record, const std::string& account, luadui::CDataTable table);
    void _takeMessages(const luadui::CDataTable& messages);
    void _report(const luadui::CUIData& record, const std::string& why) const;
    bool _shows(std::string_view account) const;

    luadui::CUIPageData m_data;
    luadui::CDataSet m_accounts;
    luadui::CDataSet m_moreAccounts;
    const std::string m_group;
    bool m_isAsking = false;  // a question is being asked right now

    std::map<TableName, luadui::CDataTable> m_tables;
    std::map<std::string, std::string> m_fields;  // kind -> what it says besides tables
    std::map<std::string, std::string> m_errors;  // kind -> of the last answer
};

}  // namespace terminal
