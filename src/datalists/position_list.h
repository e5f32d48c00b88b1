// CPositionList, CPositionListCredit, CPositionListGGT: what ordinary, credit and Stock Connect accounts hold.
#pragma once

#include "base/base_object.h"
#include "datalists/list_owner.h"
#include "datalists/token_table_list.h"

namespace luadui {

// The columns, kinds and counters in which ordinary and credit positions differ.
struct PositionForm;

// Rows are positions. A push brings the account's whole table.
//
// Tables of answers get two more columns, those of pushes with the next change of the account's funds:
//   "MarketValueRate"  the position's part of the account's total assets in percent, "12.345"; "0.000" while
//                      these are not above 0.00001
//   "SecurityMarket"   "600000:17"; an empty "Market" is looked up by code and name
// Nothing is added while the owner has no funds of the account. Market values and total assets that are no
// numbers count as zero, counted by kind and column.
//
// Threads: the UI thread.
class PositionTables : public CTokenTableList, public CBaseObject {
  public:
    // Stores the account's table as the newest. With `onlyKnownAccount` it is a push: nothing happens when the
    // account was never queried ("push_for_unqueried_account"), and nothing is computed.
    void SetPositionTable(const std::string& token, const CDataTable& table, bool onlyKnownAccount);

    // News of funds: `data` is a record of the kind of funds with "update_user", the account. Its positions are
    // computed anew and published to every page under the list's kind, with "fund_token" and, as all records,
    // "handle", "ret_code" and "ret_message". Nothing happens for an account without positions or funds, and for
    // funds with the "Push_Source" "AssetManager_Thread". The receivers may destroy the list.
    void OnNotify(void* data) override;

    // How much of a security several accounts may sell. Reads the set "fund_token", "stock_code",
    // "stock_marketid", and for ordinary accounts "client_type" ("PB_MODE": "Inst_AvailableStockBalance" instead
    // of "AvailableStockBalance"); sets "stock_available" and "multi_account_amount" as CFundList does, the
    // latter for accounts that have the security. False, and nothing set, without "fund_token".
    bool CalcStockAvailable(CUIData& request) const;

  protected:
    // `owner` may be null: then tables are only stored.
    PositionTables(const PositionForm& form, ListOwner* owner);
    void _prepare(std::string_view token, CDataTable& table, Origin origin) override;

  private:
    bool _compute(std::string_view token, CDataTable& table) const;

    const PositionForm& m_form;
    ListOwner* const m_owner;  // not owned
};

// Its publications after a change of funds carry "update_type" = "fund" besides.
class CPositionList : public PositionTables {
  public:
    explicit CPositionList(ListOwner* owner);
    const char* ClassName() const override { return "CPositionList"; }
};

class CPositionListCredit : public PositionTables {
  public:
    explicit CPositionListCredit(ListOwner* owner);
    const char* ClassName() const override { return "CPositionListCredit"; }
};

class CPositionListGGT : public CTokenTableList {
  public:
    CPositionListGGT() : CTokenTableList("position_ggt", "position_ggt_multi") {}
    const char* ClassName() const override { return "CPositionListGGT"; }

    // The account is known from then on.
    void TakeEmptyAnswer(std::string_view token) override { _register(token); }
    // Takes the account "FundToken" of an answer with its "Table" (see TakeAnswer for `age`), or without one.
    void SetGGTPositionResponse(const CUIData& response, uint64_t age = kNewest);
};

}  // namespace luadui
