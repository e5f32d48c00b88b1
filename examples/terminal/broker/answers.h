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
// "This account logged in", with its row of the list of accounts.
luadui::CUIData MakeOnlineNotice(const std::string& fundToken, const luadui::CDataTable& account);
// An answer that arrives but is not what was agreed: known keys with wrong kinds, broken text, rows without columns.
// `variant` says which.
luadui::CUIData MakeGarbage(const luadui::CUIData& request, int dataType, unsigned variant);

}  // namespace terminal
