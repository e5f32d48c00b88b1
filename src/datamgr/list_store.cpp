#include "datamgr/list_store.h"

#include <algorithm>
#include <array>
#include <utility>

#include "datalists/deal_list.h"
#include "datalists/entrust_list.h"
#include "datalists/fund_list.h"
#include "datalists/ggt_reference.h"
#include "datalists/hq_data.h"
#include "datalists/order_list.h"
#include "datalists/page_lists.h"
#include "datalists/position_list.h"
#include "datalists/trade_data.h"
#include "datamgr/kind_table.h"
#include "datamgr/quote_names.h"

namespace luadui {
namespace {

constexpr char kInstructionPage[] = "MULTIINST_DUI";

// What is made when it is first handled.
struct ListMaker {
    std::string_view kind;
    std::unique_ptr<CUIData> (*make)(ListOwner* owner);
    // Whether pages read the list itself under its kind. They do not where it holds answers of the moment only.
    bool isShared = true;
};

template <class List>
std::unique_ptr<CUIData> Make(ListOwner* owner) {
    if constexpr (std::is_constructible_v<List, ListOwner*>) {
        return std::make_unique<List>(owner);
    } else {
        return std::make_unique<List>();
    }
}

template <size_t kKind>
std::unique_ptr<CUIData> MakeQuotes(ListOwner*) {
    return std::make_unique<CHqData>(kQuoteKinds[kKind]);
}

constexpr std::array kMakers = std::to_array<ListMaker>({
    {kQuoteKinds[0], MakeQuotes<0>, false},
    {kQuoteKinds[1], MakeQuotes<1>, false},
    {"entrust", Make<CEntrustList>},
    {"entrustcredit", Make<CEntrustListCredit>},
    {"entrust_ggt", Make<CEntrustListGGT>},
    {"deal", Make<CDealList>},
    {"dealcredit", Make<CDealListCredit>},
    {"deal_ggt", Make<CDealListGGT>},
    {"deal_his_ggt", Make<CDealListHisGGT>},
    {"fund", Make<CFundList>},
    {"credit_fund", Make<CFundListCredit>},
    {"fund_ggt", Make<CFundListGGT>},
    {"position", Make<CPositionList>},
    {"positioncredit", Make<CPositionListCredit>},
    {"position_ggt", Make<CPositionListGGT>},
    {"order", Make<COrderList>, false},
    {"tb_price_spred_ggt", Make<CPriceSpreadGGT>},
    {"rate_ggt", Make<CRateGGT>},
});

// Which list the views of several accounts come from. The two Stock Connect views go out under the kind of
// their list.
struct View {
    std::string_view name;
    std::string_view list;
};
constexpr std::array kViews = std::to_array<View>({
    {"entrustmulti", "entrust"},
    {"entrustmulticredit", "entrustcredit"},
    {"entrust_ggt_multi", "entrust_ggt"},
    {"dealmulti", "deal"},
    {"dealmulticredit", "dealcredit"},
    {"deal_ggt_multi", "deal_ggt"},
    {"positionmulti", "position"},
    {"positionmulticredit", "positioncredit"},
    {"position_ggt_multi", "position_ggt"},
    {"positionsum", "position"},
});

struct FamilyKind {
    std::string_view name;
    ListStore::Family family;
};
constexpr std::array kFamilyKinds = std::to_array<FamilyKind>({
    {"accountdatalist", ListStore::kPlain},
    {"currency_accountdatalist", ListStore::kPlain},
    {"accountdatalist_push", ListStore::kPlain},
    {"currency_accountdatalist_push", ListStore::kPlain},
    {"accountdatalistcredit", ListStore::kCredit},
    {"accountdatalist_push_credit", ListStore::kCredit},
    {"accountdatalist_ggt", ListStore::kGGT},
    {"accountdatalist_ggt_push", ListStore::kGGT},
});

}  // namespace

template <class List>
void ListStore::_add(std::unique_ptr<List> list) {
    const std::string name = list->GetType();
    if (auto* const tables = dynamic_cast<CTokenTableList*>(list.get())) m_tables[name] = tables;
    m_shared.SetDataShared(name, static_cast<CUIData&>(*list));
    m_lists[name] = std::move(list);
}

void ListStore::MakeCommonLists() {
    m_accounts[kPlain] = std::make_unique<CAccountDataList>();
    m_accounts[kCredit] = std::make_unique<CAccountDataListCredit>();
    m_accounts[kGGT] = std::make_unique<CAccountDataListGGT>();
    for (const auto& list : m_accounts) m_shared.SetDataShared(list->GetType(), static_cast<CUIData&>(*list));
    m_messageCenter = std::make_unique<CMessageCenterList>(m_owner);
}

std::unique_ptr<CMutiInstCfg> ListStore::ReadInstConfig(const std::string& pageName) {
    return pageName == kInstructionPage ? std::make_unique<CMutiInstCfg>(true) : nullptr;
}

void ListStore::MakePageLists(const std::string& pageName, std::unique_ptr<CMutiInstCfg> config) {
    if (config) _add(std::move(config));
    if (pageName == kInstructionPage) {
        _add<CBasketMemberAllocList>();
        _add<CBasketMemberAllocListCredit>();
        _add<CMutiInstAllocList>();
        _add<CMutiInstAllocListCredit>();
    } else if (pageName == "MultiGrade_DUI") {
        _add<CCassifyCondPosition>();
    } else if (pageName == "ETF") {
        _add<CETFMemberDataList>();
    } else if (pageName == "MESSAGETIP") {
        m_messageCenter = std::make_unique<CMessageCenterList>(m_owner);
    } else if (pageName == "AUTO_ALGORITHM") {
        _add<CAutoAlgoInstList>();
    }
    _add<CTradeData>();
}

CTokenTableList* ListStore::Find(std::string_view kind) const {
    const auto list = m_tables.find(kind);
    return list == m_tables.end() ? nullptr : list->second;
}

CTokenTableList* ListStore::FindOrMake(std::string_view kind) {
    if (CTokenTableList* const list = Find(kind)) return list;
    _make(kind);
    return Find(kind);
}

void ListStore::_make(std::string_view kind) {
    const ListMaker* const maker = KindIndex<kMakers, &ListMaker::kind>::Find(kind);
    if (!maker || m_lists.contains(kind)) return;
    auto list = maker->make(m_owner);
    if (maker->isShared) {
        _add(std::move(list));
    } else {
        m_lists[std::string(kind)] = std::move(list);
    }
}

void ListStore::KeepNewest(CUIData& record) const {
    const std::string_view kind = record.GetTypeText();
    CDataTable told, held;
    if (record.GetDataLong("ret_code") != 0 || !record.GetData(kind, told)) return;
    const CTokenTableList* const list = Find(kind);
    if (!list || !list->GetTable(record.GetDataText("fund_token"), held) || held.SharesWith(told)) return;
    record.SetData(kind, held);
}

uint64_t ListStore::SharedAge(std::string_view name) const {
    const auto age = m_sharedAges.find(name);
    return age == m_sharedAges.end() ? 0 : age->second;
}

std::string_view ListStore::ListOfView(std::string_view kind) {
    const View* const view = KindIndex<kViews, &View::name>::Find(kind);
    return view ? view->list : std::string_view();
}

ListStore::Family ListStore::FamilyOf(std::string_view kind) {
    const FamilyKind* const row = KindIndex<kFamilyKinds, &FamilyKind::name>::Find(kind);
    return row ? row->family : kFamilies;
}

}  // namespace luadui
