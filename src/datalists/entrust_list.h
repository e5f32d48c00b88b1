// CEntrustList, CEntrustListCredit, CEntrustListGGT: the orders of ordinary, credit and Stock Connect accounts.
#pragma once

#include "datalists/token_table_list.h"

namespace luadui {

// Rows are orders, found by "OrderID". Pushes and answers may come late and in any order, and an answer may have been
// made before a push that it comes after. But nothing takes an order back from a final to another status (see
// order_status.h), nor to a smaller dealt volume ("DealVolume"; where there is no such column, "TradeVolume"): such
// rows stay as they are, counted as "push_row_refused" and "answer_row_refused". A volume that is no number says
// nothing: the row is taken and the volume of the list stays, counted by the list's kind.
//
// Servers begin anew with their numbers: an answer's order of another "SecurityID" or "OrderDate" is another one. Orders
// that an answer lacks go.
//
// Threads: the UI thread.
class EntrustTables : public CTokenTableList {
  protected:
    EntrustTables(std::string_view kind, std::string_view mergedKind, const char* volumeUnreadable);
    bool _acceptsRow(RowChange& change) const override;
    bool _guardsAnswers() const override { return true; }
    bool _rowsLast() const override { return true; }
    bool _isOther(const RowChange& change) const override;

  private:
    const char* const m_volumeUnreadable;  // counter
};

class CEntrustList : public EntrustTables {
  public:
    CEntrustList();
    const char* ClassName() const override { return "CEntrustList"; }
};

class CEntrustListCredit : public EntrustTables {
  public:
    CEntrustListCredit();
    const char* ClassName() const override { return "CEntrustListCredit"; }
};

// Its view of several accounts goes out under the list's own kind.
class CEntrustListGGT : public EntrustTables {
  public:
    CEntrustListGGT();
    const char* ClassName() const override { return "CEntrustListGGT"; }
};

}  // namespace luadui
