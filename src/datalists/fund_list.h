// CFundList, CFundListCredit, CFundListGGT: the money of ordinary, credit and Stock Connect accounts.
#pragma once

#include "datalists/token_table_list.h"

namespace luadui {

// The row of an account's funds in a currency: the first one of that, or of no, currency; without one to look for
// the first row. -1 when there is none.
int FindFundRow(const CDataTable& funds, std::string_view currency);
// The column with the money for the order that `request` describes (see CalcStockAvailable of the two lists).
std::string_view MoneyColumnOf(const CUIData& request, bool isCredit);

// Rows are currencies. "update_user" is the account whose funds were set or confirmed last. A push brings the
// values of single currencies (see UpdateFundTable); an answer replaces the account's table.
//
// Threads: the UI thread.
class CFundList : public CTokenTableList {
  public:
    CFundList();
    const char* ClassName() const override { return "CFundList"; }

    // Brings the account up to date, as a push that is newer than all that is held. Rows whose "Currency" is in
    // `table` (the last row of a currency counts) take over every column of theirs from there; a column that is
    // missing there becomes empty. Currencies that the account does not have are not added, counted as
    // "fund_row_of_new_currency", rows without currency as "fund_row_without_currency". An account without rows,
    // or not known yet, takes the table as it stands.
    void UpdateFundTable(const std::string& token, const CDataTable& table);

    // How much may be bought for the money of several accounts. Reads from `request`:
    //   "fund_token"       the set of accounts; without it there are none
    //   "stock_code", "stock_marketid", "stock_price" (number or text), "stock_unit" (below 1 counts
    //                      as 1, for Stock Connect as the board lot)
    //   "entrust_type"     "sell", else a buy
    //   "client_type"      "PB_MODE": the money of products, "Inst_AvailableValue" instead of "AvailableValue"
    //   "currency"         the row to take: the first one of that, or of no, currency; without it the first row
    //   "commission_rate"  optional: part of the turnover that the broker takes
    // and sets "stock_available" (the total as text without decimals) and "multi_account_amount" (a record: token
    // -> quantity). Accounts that are not held have none there, counted as "stock_available_account_unknown".
    // Money and prices that are no numbers count as zero, counted by kind and column. Always true.
    bool CalcStockAvailable(CUIData& request) const;

  protected:
    bool _merge(std::string_view token, CDataTable& held, const CDataTable& push) override;
    void _updated(std::string_view token) override;
};

// A push brings the account's whole table.
class CFundListCredit : public CTokenTableList {
  public:
    CFundListCredit();
    const char* ClassName() const override { return "CFundListCredit"; }

    // As in CFundList, without "client_type" and "currency": the money is in the account's first row, in
    // "WT_RZRQ_RQXYZYLL" for a sell with "usertoken_type" 3, in "AvailableValue" with 2, in "FinEnableQuota" else.
    bool CalcStockAvailable(CUIData& request) const;

  protected:
    void _updated(std::string_view token) override;
};

class CFundListGGT : public CTokenTableList {
  public:
    CFundListGGT() : CTokenTableList("fund_ggt") {}
    const char* ClassName() const override { return "CFundListGGT"; }
};

}  // namespace luadui
