#include "datamgr/push_handlers.h"

#include <utility>

#include "base/counters.h"
#include "datalists/token_table_list.h"
#include "datamgr/ui_data_manager.h"
#include "datamgr/ui_registry.h"

namespace luadui {
namespace {

bool IsFund(std::string_view list) { return list == "fund" || list == "credit_fund"; }

void FindRows(Push& push) {
    if (push.hasTable) return;
    for (const auto [name, value] : CUIData(push.fields)) {
        if (value.Get(push.table)) {
            push.hasTable = true;
            return;
        }
    }
}

std::string AccountOf(const Push& push) { return MakePushRecord(push, {}).GetDataString("fund_token"); }

// False when the list has no use for the push.
bool Merge(CUIDataManager& manager, Push& push, const PushedList& row) {
    CTokenTableList* const list = manager.Lists().FindOrMake(row.list);
    const std::string token = AccountOf(push);
    if (list && !token.empty()) FindRows(push);
    if (!list || token.empty() || !push.hasTable) {
        if (row.rows == PushedRows::kOfPage) return true;
        CCounters::Add("push_without_table");
        return false;
    }
    const bool isQueried = RequestLedger::Instance().IsUnderWay(RequestTypeOfKind(row.query), token);
    switch (list->TakePush(token, push.table, push.age, isQueried)) {
        case PushResult::kTaken:
        case PushResult::kUnchanged:  // the list knew it from an answer, which went to its asker only
        case PushResult::kKept:
            break;
        default:
            return false;
    }
    if (row.rows == PushedRows::kWholeTable) list->GetTable(token, push.table);
    if (IsFund(row.list)) push.fields.SetData("update_user", token);
    return true;
}

}  // namespace

void PublishPush(CUIDataManager& manager, Push& push, std::string_view kind) {
    if (!ReadPush(push)) return;
    CUIData record = MakePushRecord(push, kind);
    manager.ResponseNotify(&record, CBaseObject::kNoHandle, true);
}

void MergePush(CUIDataManager& manager, Push& push, std::string_view kind) {
    if (!ReadPush(push)) return;
    if (!std::exchange(push.isMerged, true)) {
        push.isUseless = !Merge(manager, push, *PushedListIndex::Find(push.key));
    }
    if (!push.isUseless) PublishPush(manager, push, kind);
}

}  // namespace luadui
