// The lists that single pages have besides those of orders, deals, positions and funds.
#pragma once

#include "datalists/token_table_list.h"

namespace luadui {

// How the members of a basket are allocated to accounts.
class CBasketMemberAllocList : public CTokenTableList {
  public:
    CBasketMemberAllocList() : CTokenTableList("basketmemberalloclist") {}
    const char* ClassName() const override { return "CBasketMemberAllocList"; }
};

class CBasketMemberAllocListCredit : public CTokenTableList {
  public:
    CBasketMemberAllocListCredit() : CTokenTableList("basketmemberalloclistcredit") {}
    const char* ClassName() const override { return "CBasketMemberAllocListCredit"; }
};

// How an instruction for several accounts is allocated to them.
class CMutiInstAllocList : public CTokenTableList {
  public:
    CMutiInstAllocList() : CTokenTableList("mutiinstalloclist") {}
    const char* ClassName() const override { return "CMutiInstAllocList"; }
};

class CMutiInstAllocListCredit : public CTokenTableList {
  public:
    CMutiInstAllocListCredit() : CTokenTableList("mutiinstalloclistcredit") {}
    const char* ClassName() const override { return "CMutiInstAllocListCredit"; }
};

// The positions that graded conditional instructions are about.
class CCassifyCondPosition : public CTokenTableList {
  public:
    CCassifyCondPosition() : CTokenTableList("grade_cond_position_inst") {}
    const char* ClassName() const override { return "CCassifyCondPosition"; }
};

// The members of ETFs; here the token is the ETF's code.
class CETFMemberDataList : public CTokenTableList {
  public:
    CETFMemberDataList() : CTokenTableList("etfmemberlist", {}, {}, "etf_code") {}
    const char* ClassName() const override { return "CETFMemberDataList"; }
};

// Automatic algorithm instructions; a push updates single instructions.
class CAutoAlgoInstList : public CTokenTableList {
  public:
    CAutoAlgoInstList() : CTokenTableList("auto_algo_inst", {}, "InstanceID") {}
    const char* ClassName() const override { return "CAutoAlgoInstList"; }
};

}  // namespace luadui
