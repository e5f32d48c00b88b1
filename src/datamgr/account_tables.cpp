#include "datamgr/account_tables.h"

#include <algorithm>
#include <iterator>

#include "base/base_object.h"
#include "base/counters.h"
#include "datamgr/request_ledger.h"
#include "datamgr/ui_registry.h"

namespace luadui {
namespace {

constexpr std::string_view kFundToken = "fund_token";

// Queries for all accounts at once. Their requests carry no account.
struct WholeQuery {
    std::string_view query, ofAll;
};
constexpr WholeQuery kWholeQueries[] = {{"fund", "all_fund"}};

}  // namespace

bool IsTableUnderWay(std::string_view query, std::string_view token) {
    auto& ledger = RequestLedger::Instance();
    if (ledger.IsUnderWay(RequestTypeOfKind(query), token)) return true;
    const auto* const whole = std::ranges::find(kWholeQueries, query, &WholeQuery::query);
    return whole != std::end(kWholeQueries) && ledger.IsUnderWay(RequestTypeOfKind(whole->ofAll), {});
}

AccountTables SplitByAccount(const CDataTable& table, const std::string& token) {
    AccountTables accounts;
    const int column = table.FindColumn(kFundToken);
    if (column < 0) {
        if (!token.empty()) {
            accounts[token] = table;
        } else if (table.GetRowNumber() > 0) {
            CCounters::Add("row_without_account", static_cast<uint64_t>(table.GetRowNumber()));
        }
        return accounts;
    }
    for (int row = 0; row < table.GetRowNumber(); ++row) {
        std::string own(table.GetItemText(row, column));
        if (own.empty()) own = token;
        if (own.empty()) {
            CCounters::Add("row_without_account");
            continue;
        }
        CDataTable& rows = accounts[own];
        if (rows.GetColumnNumber() == 0) rows.CopyHeader(table);
        rows.InsertRow(table, row);
    }
    return accounts;
}

CUIData MakeTableNews(const CTokenTableList& list, const std::string& token) {
    CUIData record;
    if (!list.MakeRecord(token, record)) return record;
    record.SetData("handle", CBaseObject::kNoHandle);
    record.SetData("ret_code", 0);
    record.SetData("ret_message", "");
    return record;
}

}  // namespace luadui
