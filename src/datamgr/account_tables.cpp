#include "datamgr/account_tables.h"

#include "base/base_object.h"
#include "base/counters.h"

namespace luadui {
namespace {

constexpr std::string_view kFundToken = "fund_token";

}  // namespace

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
