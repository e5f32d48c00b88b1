// Answers with the user's accounts and groups.
#include <span>
#include <utility>

#include "datalists/account_data_list.h"
#include "datamgr/account_news.h"
#include "datamgr/answer_handlers.h"
#include "datamgr/ui_data_manager.h"

namespace luadui {
namespace {

using Families = std::span<const ListStore::Family>;

constexpr ListStore::Family kOrdinary[] = {ListStore::kPlain, ListStore::kGGT};
constexpr ListStore::Family kOnCredit[] = {ListStore::kCredit};

bool IsGood(const Answer& answer) { return answer.hasTable && answer.code == 0; }

// Whole lists go first: who takes both finds nothing new in the news.
void SetAccounts(CUIDataManager& manager, Families families, const CDataTable& rows) {
    for (const auto family : families) {
        AccountDataList* const list = manager.Lists().Accounts(family);
        if (!list) continue;
        AccountDataList::News news = list->SetAccounts(rows);
        list->Queue(list->WholeLists());
        list->Queue(std::move(news));
    }
}

void SetGroups(CUIDataManager& manager, Families families, const CDataTable& rows) {
    for (const auto family : families) {
        AccountDataList* const list = manager.Lists().Accounts(family);
        if (!list) continue;
        list->SetGroups(rows);
        list->Queue(list->WholeLists());
    }
}

int CountAccounts(const AccountDataList& list) {
    CDataTable rows;
    list.GetData(list.GetTypeText(), rows);
    return rows.GetRowNumber();
}

// Publishes what the lists of the families have to tell. False when the manager went meanwhile.
bool TellFamilies(CUIDataManager& manager, Families families) {
    for (const auto family : families) {
        AccountDataList* const list = manager.Lists().Accounts(family);
        if (list && !TellQueued(manager, *list)) return false;
    }
    return true;
}

// The record of a kind that nobody asked for is news to all.
void MakeNews(CUIData& record) {
    record.SetData("handle", CBaseObject::kNoHandle);
    record.Remove("sleep_refresh_request");
}

void HandleGroupsOf(CUIDataManager& manager, Answer& answer, const char* kind, Families families) {
    const bool isAsked = answer.kind == kind || answer.handle == CBaseObject::kNoHandle;
    const bool isNew = IsGood(answer) && IsNewest(manager, kind, answer.age);
    if (!isAsked && !isNew) return;
    CUIData record = MakeAnswerRecord(answer, kind);
    if (!isAsked) MakeNews(record);
    if (isNew) {
        SetGroups(manager, families, answer.table);
        Share(manager, kind, record, answer.age);
    } else if (IsGood(answer)) {
        TakeShared(manager, kind, record);
    }
    const bool isAlive = Tell(manager, record, isAsked ? answer.handle : CBaseObject::kNoHandle);
    if (isAlive && isNew) TellFamilies(manager, families);
}

}  // namespace

void HandleAccounts(CUIDataManager& manager, Answer& answer) {
    constexpr char kKind[] = "account";
    const bool isNew = IsGood(answer) && IsNewest(manager, kKind, answer.age);
    CUIData record = MakeAnswerRecord(answer, kKind);
    if (isNew) {
        SetAccounts(manager, kOrdinary, answer.table);
        Share(manager, kKind, record, answer.age);
    } else if (IsGood(answer)) {
        TakeShared(manager, kKind, record);
    }
    if (Tell(manager, record, answer.handle) && isNew) TellFamilies(manager, kOrdinary);
}

void HandleAccountsCredit(CUIDataManager& manager, Answer& answer) {
    constexpr char kKind[] = "account_xy";
    AccountDataList* const list = manager.Lists().Accounts(ListStore::kCredit);
    if (!list || !IsGood(answer) || !IsNewest(manager, kKind, answer.age)) return;
    CDataTable rows = list->RowsOfFamily(answer.table);
    const bool isNews =
        rows.GetRowNumber() != 0 || CountAccounts(*list) != 0;  // else nobody trades on credit
    if (isNews) {
        SetAccounts(manager, kOnCredit, rows);
    } else {
        list->SetAccounts(rows);
    }
    answer.table = std::move(rows);
    CUIData record = MakeAnswerRecord(answer, kKind);
    MakeNews(record);
    Share(manager, kKind, record, answer.age);
    if (isNews && Tell(manager, record, CBaseObject::kNoHandle)) TellFamilies(manager, kOnCredit);
}

void HandleGroups(CUIDataManager& manager, Answer& answer) {
    HandleGroupsOf(manager, answer, "accountgroup", kOrdinary);
}

void HandleGroupsCredit(CUIDataManager& manager, Answer& answer) {
    HandleGroupsOf(manager, answer, "accountgroupcredit", kOnCredit);
}

}  // namespace luadui
