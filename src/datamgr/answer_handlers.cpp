#include "datamgr/answer_handlers.h"

#include <algorithm>

#include "base/counters.h"
#include "datalists/ggt_reference.h"
#include "datalists/order_list.h"
#include "datalists/token_table_list.h"
#include "datamgr/answer_routes.h"
#include "datamgr/trade_calendar.h"
#include "datamgr/ui_data_manager.h"
#include "datamgr/ui_stock_data_manager.h"

namespace luadui {
namespace {

constexpr char kHolidays[] = "holidays";

// Which list an answer of a kind is for, and which of the request's parameters name its table; without one of
// them the account does.
struct PageList {
    std::string_view kind;
    std::string_view list;
    std::string_view key = {};
    std::string_view otherKey = {};
};
constexpr PageList kPageLists[] = {
    {"basketmemberalloclist", "basketmemberalloclist"},
    {"basketmemberalloclistcredit", "basketmemberalloclistcredit"},
    {"etfmemberlist", "etfmemberlist", "etf_code", "stock_code"},
    {"query_inst_autoalgo", "auto_algo_inst"},
};

std::string TableName(const PageList& row, const Answer& answer) {
    if (row.key.empty()) return answer.fundToken;
    const TextView name = answer.params.GetDataText(row.key);
    return name.empty() ? answer.params.GetDataString(row.otherKey) : name;
}

}  // namespace

bool Tell(CUIDataManager& manager, CUIData& record, int32_t handle) {
    const int32_t self = manager.GetHandle();
    manager.ResponseNotify(&record, handle, true);
    return CBaseObject::Find(self) == &manager;
}

bool IsNewest(CUIDataManager& manager, const std::string& name, Age age) {
    if (manager.Lists().SharedAge(name) <= age) return true;
    CCounters::Add("older_answer_ignored");
    return false;
}

void Share(CUIDataManager& manager, const std::string& name, const CUIData& record, Age age) {
    CUIData own = record;
    for (const char* key : {"handle", "sleep_refresh_request"}) own.Remove(key);
    manager.Lists().SetSharedAge(name, age);
    CUIData held;
    if (manager.Lists().Shared().GetDataShared(name, held)) {
        held = own;
    } else {
        manager.ShareData(name, own);
    }
}

void TakeShared(CUIDataManager& manager, const std::string& name, CUIData& record) {
    CUIData held;
    if (manager.Lists().Shared().GetData(name, held)) record.SetData(name, held.GetDataView(name));
}

void DeliverAnswer(CUIDataManager& manager, Answer& answer) {
    CUIData record = MakeAnswerRecord(answer, answer.kind);
    Tell(manager, record, answer.handle);
}

void DeliverUnderRouteKind(CUIDataManager& manager, Answer& answer) {
    CUIData record = MakeAnswerRecord(answer, FindAnswerRoute(answer.type)->kind);
    Tell(manager, record, answer.handle);
}

void HandlePageList(CUIDataManager& manager, Answer& answer) {
    const auto* const row = std::ranges::find(kPageLists, answer.kind, &PageList::kind);
    CTokenTableList* const list = row == std::end(kPageLists) ? nullptr : manager.Lists().Find(row->list);
    if (!list || !answer.hasTable || answer.code != 0) return DeliverAnswer(manager, answer);
    const std::string name = TableName(*row, answer);
    list->TakeAnswer(name, answer.table, answer.age);
    if (!RequestLedger::Instance().IsUnderWay(answer.type, answer.fundToken)) list->QueryEnded(name);
    list->GetTable(name, answer.table);
    CUIData record = MakeAnswerRecord(answer, answer.kind);
    if (!row->key.empty()) record.SetData(row->key, name);
    Tell(manager, record, answer.handle);
}

void HandleReference(CUIDataManager& manager, Answer& answer) {
    const std::string kind(FindAnswerRoute(answer.type)->kind);
    auto* const list = manager.Lists().FindOrMake<ReferenceListGGT>(kind);
    if (answer.hasTable && answer.code == 0 && IsNewest(manager, kind, answer.age)) {
        CUIData response;
        response.SetData("Table", answer.table);  // the rows of all parts
        list->SetResponse(response);
        manager.Lists().SetSharedAge(kind, answer.age);
    }
    CUIData record = MakeAnswerRecord(answer, kind);
    if (answer.hasTable && answer.code == 0) record.SetData(kind, list->GetDataView(kind));
    Tell(manager, record, answer.handle);
}

void HandleBasketDetail(CUIDataManager& manager, Answer& answer) {
    CUIData response = answer.response;
    if (answer.hasTable) response.SetData("Table", answer.table);  // the rows of all parts
    if (!answer.rawData.IsEmpty()) response.SetData("RawData", answer.rawData);
    CUIData accounts, detail;
    CUIStockDataManager::get_mutable_instance().GetUIData("account", accounts, "CommonData", false);
    auto* const list = manager.Lists().FindOrMake<COrderList>(answer.kind);
    const bool isRead = answer.code == 0 && list->SetBasketDetail(response, &accounts, detail, answer.age);
    if (isRead && answer.hasTable) list->GetData(COrderList::KeyOf(response), answer.table);
    CUIData record = MakeAnswerRecord(answer, answer.kind);
    for (const auto [key, value] : detail) {
        if (isRead) record.SetData(key, value);
    }
    Tell(manager, record, answer.handle);
}

void HandleShared(CUIDataManager& manager, Answer& answer) {
    CUIData record = MakeAnswerRecord(answer, answer.kind);
    if (answer.code == 0) {
        if (IsNewest(manager, answer.kind, answer.age)) {
            Share(manager, answer.kind, record, answer.age);
        } else {
            TakeShared(manager, answer.kind, record);
        }
    }
    Tell(manager, record, answer.handle);
}

void HandleHolidays(CUIDataManager& manager, Answer& answer) {
    CUIData record = MakeAnswerRecord(answer, kHolidays);
    const CDataSet dates = ParseHolidays(record.GetDataText(kHolidays));
    if (answer.code == 0 && !dates.IsEmpty()) {
        record.SetData(kHolidays, dates);
        if (IsNewest(manager, kHolidays, answer.age)) {
            Share(manager, kHolidays, record, answer.age);
        } else {
            TakeShared(manager, kHolidays, record);
        }
    }
    Tell(manager, record, answer.handle);
}

}  // namespace luadui
