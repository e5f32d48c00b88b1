#include "datamgr/push_handlers.h"

#include <vector>

#include "base/counters.h"
#include "datalists/token_table_list.h"
#include "datamgr/account_news.h"
#include "datamgr/account_tables.h"
#include "datamgr/answer_handlers.h"
#include "datamgr/ui_data_manager.h"

namespace luadui {
namespace {

// What became of an account's rows in their list.
struct Merged {
    CTokenTableList* list = nullptr;
    std::string token;
    bool isUseful = false;  // to those who want the list's kinds
    bool isNew = false;     // the list changed
};

std::string AccountOf(const Push& push) { return MakePushRecord(push, {}).GetDataString("fund_token"); }

// The list that knows the account; failing all of them the first.
CTokenTableList* ListOf(ListStore& lists, const PushedList& row, const std::string& token) {
    for (const std::string_view kind : {row.creditList, row.connectList}) {
        if (kind.empty()) break;
        CTokenTableList* const list = lists.FindOrMake(kind);
        if (list && (list->Holds(token) || IsTableUnderWay(kind, token))) return list;
    }
    return lists.FindOrMake(row.list);
}

bool IsPublished(PushResult result) {
    switch (result) {
        case PushResult::kTaken:
        case PushResult::kUnchanged:  // the list knew it from an answer, which went to its asker only
        case PushResult::kKept:
            return true;
        default:
            return false;
    }
}

Merged Merge(CUIDataManager& manager, const Push& push, const PushedList& row, const std::string& token,
             const CDataTable& table) {
    Merged merged{.list = ListOf(manager.Lists(), row, token), .token = token};
    if (!merged.list) return merged;
    const bool isOfFirst = merged.list->GetTypeText() == row.list;
    const std::string_view query = isOfFirst ? row.query : merged.list->GetTypeText();
    const PushResult result = merged.list->TakePush(token, table, push.age, IsTableUnderWay(query, token));
    merged.isUseful = IsPublished(result);
    merged.isNew = result == PushResult::kTaken;
    return merged;
}

Merged MergeAccount(CUIDataManager& manager, Push& push, const PushedList& row) {
    const std::string token = AccountOf(push);
    if (!token.empty()) FindRows(push);
    if (token.empty() || !push.hasTable) {
        CCounters::Add("push_without_table");
        return Merged();
    }
    if (IsFund(row.list)) push.fields.SetData("update_user", token);
    return Merge(manager, push, row, token, push.table);
}

// Puts what the list holds now in the place of what was pushed. Receivers may let newer pushes in while they are told of
// this one: whoever is told later must not hear of older content.
void TakeHeld(const Merged& merged, PushedRows rows, CDataTable& table) {
    if (rows == PushedRows::kWholeTable) {
        merged.list->GetTable(merged.token, table);
    } else {
        merged.list->GetRowsOf(merged.token, table);
    }
}

// False when the manager went meanwhile.
bool Publish(CUIDataManager& manager, const Push& push, std::string_view kind) {
    CUIData record = MakePushRecord(push, kind);
    return Tell(manager, record, CBaseObject::kNoHandle);
}

// The same under the kind of the list, with the account's whole table; that of an account which is not held yet comes
// with the answer.
bool PublishTable(CUIDataManager& manager, const Push& push, const Merged& merged) {
    CDataTable table;
    if (!merged.list->GetTable(merged.token, table)) return true;
    CUIData record = MakePushRecord(push, merged.list->GetTypeText());
    record.SetData(merged.list->GetTypeText(), table);
    return Tell(manager, record, CBaseObject::kNoHandle);
}

}  // namespace

void FindRows(Push& push) {
    if (push.hasTable) return;
    for (const auto [name, value] : CUIData(push.fields)) {
        if (value.Get(push.table)) {
            push.hasTable = true;
            return;
        }
    }
}

bool HasFailed(const Push& push) {
    if (push.code != 0) CCounters::Add("push_failed_not_merged");
    return push.code != 0;
}

void PublishPush(CUIDataManager& manager, Push& push, std::span<const std::string_view> kinds) {
    for (const std::string_view kind : kinds) {
        if (!Publish(manager, push, kind)) return;
    }
}

void MergePush(CUIDataManager& manager, Push& push, std::span<const std::string_view> kinds) {
    if (HasFailed(push)) return PublishPush(manager, push, kinds);
    const PushedList& row = *PushedListIndex::Find(push.key);
    const Merged merged = MergeAccount(manager, push, row);
    if (!merged.isUseful) return;
    for (const std::string_view kind : kinds) {
        const bool isTable = row.rows == PushedRows::kSingle && kind == row.list;
        if (!isTable) TakeHeld(merged, row.rows, push.table);
        if (!(isTable ? PublishTable(manager, push, merged) : Publish(manager, push, kind))) return;
    }
    if (row.rows != PushedRows::kWholeTable) return;
    TakeHeld(merged, row.rows, push.table);
    TellAccountData(manager, row.list, merged.token, push.table);
}

void MergePageList(CUIDataManager& manager, Push& push, std::span<const std::string_view> kinds) {
    const PushedList& row = *PushedListIndex::Find(push.key);
    const std::string token = AccountOf(push);
    if (!token.empty() && manager.Lists().Find(row.list) && !HasFailed(push)) {
        FindRows(push);
        if (push.hasTable && !Merge(manager, push, row, token, push.table).isUseful) return;
    }
    PublishPush(manager, push, kinds);
}

void MergeMessage(CUIDataManager& manager, Push& push, std::span<const std::string_view> kinds) {
    const PushedList& row = *PushedListIndex::Find(push.key);
    FindRows(push);
    std::vector<Merged> changed;
    for (const auto& [token, table] : SplitByAccount(push.table, AccountOf(push))) {
        const Merged merged = Merge(manager, push, row, token, table);
        if (merged.isNew) changed.push_back(merged);
    }
    for (const std::string_view kind : kinds) {
        if (!Publish(manager, push, kind)) return;
    }
    for (const Merged& merged : changed) {
        CUIData news = MakeTableNews(*merged.list, merged.token);
        if (!Tell(manager, news, CBaseObject::kNoHandle)) return;
    }
}

}  // namespace luadui
