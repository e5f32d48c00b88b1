// CDealList, CDealListCredit, CDealListGGT, CDealListHisGGT: the deals of ordinary, credit and Stock Connect
// accounts.
#pragma once

#include "datalists/token_table_list.h"

namespace luadui {

// Rows are deals, found by "ExecID". Threads: the UI thread.
class CDealList : public CTokenTableList {
  public:
    CDealList() : CTokenTableList("deal", "dealmulti", "ExecID") {}
    const char* ClassName() const override { return "CDealList"; }
};

class CDealListCredit : public CTokenTableList {
  public:
    CDealListCredit() : CTokenTableList("dealcredit", "dealmulticredit", "ExecID") {}
    const char* ClassName() const override { return "CDealListCredit"; }
};

// Its view of several accounts goes out under the list's own kind.
class CDealListGGT : public CTokenTableList {
  public:
    CDealListGGT() : CTokenTableList("deal_ggt", "deal_ggt", "ExecID") {}
    const char* ClassName() const override { return "CDealListGGT"; }
};

// Those of earlier days, which only come as answers.
class CDealListHisGGT : public CTokenTableList {
  public:
    CDealListHisGGT() : CTokenTableList("deal_his_ggt") {}
    const char* ClassName() const override { return "CDealListHisGGT"; }
};

}  // namespace luadui
