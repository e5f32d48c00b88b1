// News of accounts' money, for pages that show the account data lists.
#pragma once

#include <string>
#include <string_view>

#include "base/data_table.h"

namespace luadui {

class AccountDataList;
class CUIDataManager;

// Takes an account's fund or position table, as the list `listKind` ("fund", "credit_fund", "fund_ggt", "position",
// "positioncredit", "position_ggt") holds it now, into the account data list of its family and publishes the rows
// that changed. Other kinds, and managers without account data lists, change nothing. False when the manager went
// meanwhile.
//
// Threads: the UI thread.
bool TellAccountData(CUIDataManager& manager, std::string_view listKind, const std::string& token,
                     const CDataTable& table);

// Publishes what waits in the list (see AccountDataList::Queue), one record after the other, to all that want it.
// False as above.
bool TellQueued(CUIDataManager& manager, AccountDataList& list);

}  // namespace luadui
