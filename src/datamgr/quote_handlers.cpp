#include "datamgr/quote_handlers.h"

#include "base/counters.h"
#include "datalists/hq_data.h"
#include "datamgr/answer_handlers.h"
#include "datamgr/local_sources.h"
#include "datamgr/push_handlers.h"
#include "datamgr/quote_feed.h"
#include "datamgr/ui_stock_data_manager.h"

namespace luadui {
namespace {

constexpr char kUpdated[] = "updatecode", kIsPush[] = "is_push";

// Where the answer to a request for quotes of one moment finds the meaning of fields.
constexpr std::string_view kOnceList = "hq";

CHqData* ListOf(CUIDataManager& manager, std::string_view kind) {
    return StoreOf(manager, kind).FindOrMake<CHqData>(kind);
}

// The record without quotes.
CUIData StartRecord(Answer& answer) {
    const bool hasTable = std::exchange(answer.hasTable, false);  // its rows are told as quotes
    CUIData record = MakeAnswerRecord(answer, answer.kind);
    answer.hasTable = hasTable && answer.code == 0;
    record.SetData(kUpdated, CDataSet());
    record.SetData(kIsPush, 0);
    return record;
}

CDataSet UpdatedIn(const CUIData& record) {
    CDataSet keys;
    record.GetData(kUpdated, keys);
    return keys;
}

}  // namespace

void HandleQuotes(CUIDataManager& manager, Answer& answer) {
    CUIData record = StartRecord(answer);
    QuoteFeed& feed = CUIStockDataManager::get_mutable_instance().CommonData().Quotes();
    if (answer.hasTable) {
        ListOf(manager, answer.kind)->BuildQueryQuotes(answer.table, record);
        feed.Answered(answer.kind, SecuritiesOf(answer.params), UpdatedIn(record), answer.isSub);
    } else if (answer.code != 0 && answer.isSub) {
        feed.Refused(answer.kind, SecuritiesOf(answer.params));
    }
    Tell(manager, record, answer.handle);
}

void HandleQuoteOnce(CUIDataManager& manager, Answer& answer) {
    CUIData record = StartRecord(answer);
    CDataSet keys;
    CHqData* const list = ListOf(manager, kOnceList);
    for (int row = 0; answer.hasTable && row < answer.table.GetRowNumber(); ++row) {
        CUIData quote(answer.kind);
        if (!list->FillQuoteRecord(answer.table, row, quote)) continue;
        const std::string key = quote.GetDataString("Zqdm") + ':' + LongText(quote.GetDataLong("Market"));
        keys.Insert(key);
        record.SetDataShared(key, quote);
    }
    record.SetData(kUpdated, keys);
    Tell(manager, record, answer.handle);
}

void MergeQuotes(CUIDataManager& manager, Push& push, std::span<const std::string_view> kinds) {
    if (HasFailed(push)) return;
    FindRows(push);
    if (!push.hasTable) return CCounters::Add("push_without_table");
    for (const std::string_view kind : kinds) ListOf(manager, kind)->MergePushRows(push.table);
    CCounters::Add("quote_rows_pushed", static_cast<uint64_t>(push.table.GetRowNumber()));
}

void PublishQuotes(CUIDataManager& manager, std::string_view kind) {
    auto* const list = manager.Lists().Find<CHqData>(kind);
    CUIData record(kind);
    if (!list || !list->FlushPush(record)) return;
    // Before anyone is told: what is pushed meanwhile is for the next tick.
    list->ClearPush();
    record.SetData("handle", CBaseObject::kNoHandle);
    record.SetData("ret_code", 0);
    record.SetData("ret_message", "");
    CCounters::Add("quotes_published", UpdatedIn(record).Size());
    Tell(manager, record, CBaseObject::kNoHandle);
}

}  // namespace luadui
