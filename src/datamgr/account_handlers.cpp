// The user's accounts and groups, and who of them is logged in.
#include <span>
#include <utility>

#include "datalists/account_data_list.h"
#include "datalists/account_online.h"
#include "datalists/account_units.h"
#include "datamgr/account_news.h"
#include "datamgr/answer_handlers.h"
#include "datamgr/push_handlers.h"
#include "datamgr/ui_data_manager.h"

namespace luadui {
namespace {

using Families = std::span<const ListStore::Family>;

constexpr ListStore::Family kOrdinary[] = {ListStore::kPlain, ListStore::kGGT};
constexpr ListStore::Family kOnCredit[] = {ListStore::kCredit};

constexpr char kAccounts[] = "account", kCreditAccounts[] = "account_xy";
constexpr char kGroups[] = "accountgroup", kCreditGroups[] = "accountgroupcredit";
// Who is logged in, as far as pushes told; shared under this name.
constexpr char kOnline[] = "AccountOnline";
constexpr char kIsWhole[] = "is_whole";  // there: pushes about all that are logged in were among them

bool IsGood(const Answer& answer) { return answer.hasTable && answer.code == 0; }

// Whole lists go first: who takes both finds nothing new in the news.
enum Telling { kAlways, kIfChanged };
void SetAccounts(CUIDataManager& manager, Families families, const CDataTable& rows, Telling when = kAlways) {
    for (const auto family : families) {
        AccountDataList* const list = manager.Lists().Accounts(family);
        if (!list) continue;
        AccountDataList::News news = list->SetAccounts(rows);
        if (when == kIfChanged && news.empty()) continue;
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

CDataTable SharedTable(CUIDataManager& manager, const char* name) {
    CUIData held;
    CDataTable rows;
    if (manager.Lists().Shared().GetData(name, held)) held.GetData(name, rows);
    return rows;
}

void ShareTable(CUIDataManager& manager, const char* name, const CDataTable& rows, Age age) {
    CUIData held(name);
    manager.Lists().Shared().GetData(name, held);
    held.SetData(name, rows);
    Share(manager, name, held, age);
}

bool IsOfOneAccount(const Push& push) {
    return !push.fundToken.empty() || !push.response.GetDataText("FundToken").empty();
}

// False when the push does not say who.
bool NoteOnline(CUIDataManager& manager, const Push& push) {
    const bool isWhole = !IsOfOneAccount(push);
    CUIData noted;
    manager.Lists().Shared().GetData(kOnline, noted);
    CDataTable online;
    if (!isWhole) noted.GetData(kOnline, online);
    if (!MergeOnline({push.table, isWhole}, online)) return false;
    noted.SetType(kOnline);
    noted.SetData(kOnline, online);
    if (isWhole) noted.SetData(kIsWhole, true);
    Share(manager, kOnline, noted, push.age);
    return true;
}

// An answer may have been asked for before the last login, and servers need not say who is logged in at this terminal.
void AddOnline(CUIDataManager& manager, Answer& answer) {
    CUIData noted;
    OnlineNews news;
    news.mayAddAccounts = answer.age < manager.Lists().SharedAge(kOnline);
    const bool knowsBetter = !news.mayAddAccounts && FindAccountColumn(answer.table, kCanUse) >= 0;
    if (!IsGood(answer) || knowsBetter || !manager.Lists().Shared().GetData(kOnline, noted)) return;
    news.isWhole = noted.GetDataBool(kIsWhole);
    if (noted.GetData(kOnline, news.rows)) MergeOnline(news, answer.table);
}

// The groups of the push in the form of answers. False when it has none.
bool ReadGroups(Push& push) {
    if (!push.hasTable) push.hasTable = push.fields.GetData("clientgroups", push.table);
    const int members = push.table.FindColumn("accountlist");
    if (members >= 0 && push.table.FindColumn("account") < 0)
        push.table.SetColumnProperty(members, "name", "account");
    return push.hasTable && push.code == 0 && push.table.FindColumn("groupid") >= 0 &&
           push.table.FindColumn("account") >= 0;
}

bool TellPush(CUIDataManager& manager, const Push& push, std::string_view kind) {
    CUIData record = MakePushRecord(push, kind);
    return Tell(manager, record, CBaseObject::kNoHandle);
}

}  // namespace

void TakeOnline(CUIDataManager& manager, Push& push, std::span<const std::string_view> kinds) {
    const bool isNoted = push.hasTable && push.code == 0 && NoteOnline(manager, push);
    CDataTable rows = SharedTable(manager, kAccounts);
    if (!isNoted || rows.GetRowNumber() == 0) return PublishPush(manager, push, kinds);
    const bool isWhole = !IsOfOneAccount(push);
    MergeOnline({push.table, isWhole}, rows);
    ShareTable(manager, kAccounts, rows, manager.Lists().SharedAge(kAccounts));
    SetAccounts(manager, kOrdinary, rows, kIfChanged);
    if (const AccountDataList* const list = manager.Lists().Accounts(ListStore::kCredit)) {
        ShareTable(manager, kCreditAccounts, list->RowsOfFamily(rows),
                   manager.Lists().SharedAge(kCreditAccounts));
        SetAccounts(manager, kOnCredit, rows, kIfChanged);
    }
    if (isWhole) push.table = rows;
    for (const std::string_view kind : kinds) {
        if (!TellPush(manager, push, kind)) return;
    }
    if (TellFamilies(manager, kOrdinary)) TellFamilies(manager, kOnCredit);
}

void TakeGroups(CUIDataManager& manager, Push& push, std::span<const std::string_view> kinds) {
    if (!ReadGroups(push)) return PublishPush(manager, push, kinds);
    SetGroups(manager, kOrdinary, push.table);
    SetGroups(manager, kOnCredit, push.table);
    for (const char* const kind : {kGroups, kCreditGroups})
        Share(manager, kind, MakePushRecord(push, kind), push.age);
    for (const std::string_view kind : kinds) {
        if (!TellPush(manager, push, kind)) return;
    }
    if (TellFamilies(manager, kOrdinary)) TellFamilies(manager, kOnCredit);
}

void HandleAccounts(CUIDataManager& manager, Answer& answer) {
    constexpr const char* kKind = kAccounts;
    AddOnline(manager, answer);
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
    constexpr const char* kKind = kCreditAccounts;
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
    HandleGroupsOf(manager, answer, kGroups, kOrdinary);
}

void HandleGroupsCredit(CUIDataManager& manager, Answer& answer) {
    HandleGroupsOf(manager, answer, kCreditGroups, kOnCredit);
}

}  // namespace luadui
