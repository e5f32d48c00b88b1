// The records that the broker sends: answers, errors, change notices and, on demand, nonsense.
#pragma once

#include <string>
#include <string_view>

#include "base/data_table.h"
#include "base/ui_data.h"

namespace terminal {

enum DataType : int {
    kDataFailed = -1,  // an error answer that does not say of what kind of data
    kDataOfPage = 2001,
    kDataQuotes = 2009,
    kDataChangeNotice = 2010,
    kDataOnline = 2011,
    kDataPush = 2012,
};

// The frame of the answer to `request`: addressed to its sender, with a copy of the request as it came. `dataType` says
// for whom the data are.
luadui::CUIData MakeAnswer(const luadui::CUIData& request, int dataType);
// An error answer; `message` is UTF-8.
luadui::CUIData MakeError(const luadui::CUIData& request, int dataType, int code, std::string_view message);
// "The data of `type` of this account changed", to the object with the handle `to`.
luadui::CUIData MakeChangeNotice(int type, const std::string& fundToken, const std::string& to);
// Rows that are new or changed, to whatever the client keeps: nobody asked for them.
luadui::CUIData MakePush(std::string_view topic, const std::string& fundToken,
                         const luadui::CDataTable& rows);
// One order or deal, as the counter reports it: its row, and who it belongs to as JSON in "RawData".
struct Report {
    std::string topic;
    std::string fundToken;
    std::string account;   // its number
    std::string localId;   // of the order
    std::string instance;  // of the basket; empty for others
    std::string task;
    std::string message;  // code page 936
};
luadui::CUIData MakeReport(const Report& report, const luadui::CDataTable& row);
// Risk control objects to an order of this account.
luadui::CUIData MakeRiskPush(const std::string& fundToken, const luadui::CDataTable& row);
// "This account logged in", with its row of the list of accounts.
luadui::CUIData MakeOnlineNotice(const std::string& fundToken, const luadui::CDataTable& account);
// An answer that arrives but is not what was agreed: known keys with wrong kinds, broken text, rows without columns.
// `variant` says which.
luadui::CUIData MakeGarbage(const luadui::CUIData& request, int dataType, unsigned variant);

}  // namespace terminal
