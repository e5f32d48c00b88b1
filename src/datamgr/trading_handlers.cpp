// Answers with the trading tables of an account, and the views made of them.
#include <vector>

#include "base/counters.h"
#include "datamgr/account_news.h"
#include "datamgr/account_tables.h"
#include "datamgr/answer_handlers.h"
#include "datamgr/answer_routes.h"
#include "datamgr/position_sum.h"
#include "datamgr/ui_data_manager.h"
#include "datamgr/ui_registry.h"

namespace luadui {
namespace {

CUIData MakeTableRecord(const Answer& answer, std::string_view kind) {
    CUIData record = MakeAnswerRecord(answer, kind);
    if (IsFund(kind)) record.SetData("update_user", answer.fundToken);
    return record;
}

bool IsFundOrPosition(std::string_view kind) {
    return kind.starts_with("fund") || kind.starts_with("position") || kind == "credit_fund";
}

// Gives the table to the list, and takes back what the list holds then. False when there was nothing to give.
bool Merge(CTokenTableList& list, Answer& answer) {
    const bool isGood = answer.hasTable && answer.code == 0;
    if (isGood) list.TakeAnswer(answer.fundToken, answer.table, answer.age);
    if (!isGood && answer.code == 0) list.TakeEmptyAnswer(answer.fundToken);
    if (!IsTableUnderWay(list.GetTypeText(), answer.fundToken)) list.QueryEnded(answer.fundToken);
    if (isGood) list.GetTable(answer.fundToken, answer.table);
    return isGood;
}

// The kinds made of the same table have the same request type.
void TellAll(CUIDataManager& manager, const Answer& answer) {
    for (const KindType& row : TypeCodes()) {
        if (row.type != answer.type) continue;
        CUIData record = MakeTableRecord(answer, row.kind);
        if (!Tell(manager, record, answer.handle)) return;
    }
}

// The view of all accounts of the ask goes out once, when none of them is still to come. If one of them failed, it
// is made of what was held before, and says so.
void DeliverView(CUIDataManager& manager, const CTokenTableList& list, Answer& answer) {
    CDataSet tokens = answer.tokens;
    if (tokens.IsEmpty()) tokens.Insert(answer.fundToken);
    if (!answer.isLastOfAsk) return CCounters::Add("view_waits_for_accounts");
    if (!list.Holds(tokens)) return CCounters::Add("view_lacks_accounts");
    answer.hasTable = false;  // that of one account
    CUIData view = MakeAnswerRecord(answer, answer.kind);
    view.SetData("fund_token", tokens);
    if (!list.MergeMultiAccount(view)) return DeliverAnswer(manager, answer);  // there is no view of it
    if (answer.kind == "positionsum") SumView(view);
    Tell(manager, view, answer.handle);
}

// Delivers what the list holds, or what the server said instead. False when the manager went meanwhile.
bool DeliverTable(CUIDataManager& manager, CTokenTableList* list, Answer& answer, std::string_view kind,
                  bool isMerged) {
    const int32_t self = manager.GetHandle();
    const bool isView = answer.handle != CBaseObject::kNoHandle && answer.kind != kind;
    if (!isMerged) {
        DeliverAnswer(manager, answer);
        const bool hasOthers = list && isView && answer.tokens.Size() > 1;
        if (hasOthers && CBaseObject::Find(self) == &manager) DeliverView(manager, *list, answer);
    } else if (isView) {
        DeliverView(manager, *list, answer);
    } else if (answer.handle == CBaseObject::kNoHandle) {
        TellAll(manager, answer);
    } else {
        CUIData record = MakeTableRecord(answer, kind);
        Tell(manager, record, answer.handle);
    }
    return CBaseObject::Find(self) == &manager;
}

}  // namespace

void HandleTradingTable(CUIDataManager& manager, Answer& answer) {
    const std::string_view kind = FindAnswerRoute(answer.type)->kind;
    CTokenTableList* const list = manager.Lists().FindOrMake(kind);
    const bool isMerged = list && !answer.fundToken.empty() && Merge(*list, answer);
    const bool isAlive = DeliverTable(manager, list, answer, kind, isMerged);
    CDataTable table;  // receivers may have let newer content in
    if (isAlive && isMerged && IsFundOrPosition(kind) && list->GetTable(answer.fundToken, table))
        TellAccountData(manager, kind, answer.fundToken, table);
}

void HandleAllFunds(CUIDataManager& manager, Answer& answer) {
    CTokenTableList& list = *manager.Lists().FindOrMake("fund");
    const bool isGood = answer.hasTable && answer.code == 0;
    const auto accounts = isGood ? SplitByAccount(answer.table, answer.fundToken) : AccountTables();
    for (const auto& [token, table] : accounts) list.TakeAnswer(token, table, answer.age);
    for (const std::string& token : list.Waiting()) {
        if (!IsTableUnderWay("fund", token)) list.QueryEnded(token);
    }
    CUIData record = MakeAnswerRecord(answer, answer.kind);
    bool isAlive = Tell(manager, record, answer.handle);
    for (auto account = accounts.begin(); isAlive && account != accounts.end(); ++account) {
        const std::string& token = account->first;
        CDataTable table;
        if (!list.GetTable(token, table)) continue;
        CUIData news = MakeTableNews(list, token);
        news.SetData("update_user", token);
        isAlive =
            Tell(manager, news, CBaseObject::kNoHandle) && TellAccountData(manager, "fund", token, table);
    }
}

}  // namespace luadui
