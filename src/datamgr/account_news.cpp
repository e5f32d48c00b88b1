#include "datamgr/account_news.h"

#include <algorithm>
#include <array>

#include "datamgr/answer_handlers.h"
#include "datamgr/ui_data_manager.h"

namespace luadui {
namespace {

using Setter = AccountDataList::News (AccountDataList::*)(std::string_view, const CDataTable&);

struct MoneyKind {
    std::string_view list;
    ListStore::Family family;
    Setter set;
};
constexpr std::array kMoneyKinds = std::to_array<MoneyKind>({
    {"fund", ListStore::kPlain, &AccountDataList::SetFunds},
    {"credit_fund", ListStore::kCredit, &AccountDataList::SetFunds},
    {"fund_ggt", ListStore::kGGT, &AccountDataList::SetFunds},
    {"position", ListStore::kPlain, &AccountDataList::SetPositions},
    {"positioncredit", ListStore::kCredit, &AccountDataList::SetPositions},
    {"position_ggt", ListStore::kGGT, &AccountDataList::SetPositions},
});

}  // namespace

bool TellAccountData(CUIDataManager& manager, std::string_view listKind, const std::string& token,
                     const CDataTable& table) {
    const auto kind = std::ranges::find(kMoneyKinds, listKind, &MoneyKind::list);
    if (kind == kMoneyKinds.end()) return true;
    AccountDataList* const list = manager.Lists().Accounts(kind->family);
    if (!list) return true;
    list->Queue((list->*kind->set)(token, table));
    return TellQueued(manager, *list);
}

bool TellQueued(CUIDataManager& manager, AccountDataList& list) {
    if (!list.BeginTelling()) return true;
    CUIData record;
    while (list.TakeUntold(record)) {
        record.SetData("handle", CBaseObject::kNoHandle);
        record.SetData("ret_code", 0);
        record.SetData("ret_message", "");
        if (!Tell(manager, record, CBaseObject::kNoHandle)) return false;  // and the list with it
    }
    return true;
}

}  // namespace luadui
