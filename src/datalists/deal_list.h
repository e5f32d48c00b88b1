// CDealList, CDealListCredit, CDealListGGT, CDealListHisGGT: the deals of ordinary, credit and Stock Connect
// accounts.
#pragma once

#include <string_view>

#include "datalists/token_table_list.h"

namespace luadui {

// Rows are deals, found by "ExecID". Threads: the UI thread.
class DealTables : public CTokenTableList {
  protected:
    DealTables(std::string_view kind, std::string_view mergedKind)
        : CTokenTableList(kind, mergedKind, "ExecID") {}
    bool _rowsLast() const override { return true; }
};

class CDealList : public DealTables {
  public:
    CDealList() : DealTables("deal", "dealmulti") {}
    const char* ClassName() const override { return "CDealList"; }
};

class CDealListCredit : public DealTables {
  public:
    CDealListCredit() : DealTables("dealcredit", "dealmulticredit") {}
    const char* ClassName() const override { return "CDealListCredit"; }
};

// Its view of several accounts goes out under the list's own kind.
class CDealListGGT : public DealTables {
  public:
    CDealListGGT() : DealTables("deal_ggt", "deal_ggt") {}
    const char* ClassName() const override { return "CDealListGGT"; }
};

// Those of earlier days, which only come as answers.
class CDealListHisGGT : public CTokenTableList {
  public:
    CDealListHisGGT() : CTokenTableList("deal_his_ggt") {}
    const char* ClassName() const override { return "CDealListHisGGT"; }
};

}  // namespace luadui
