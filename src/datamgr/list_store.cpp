#include "datamgr/list_store.h"

#include <algorithm>
#include <array>
#include <utility>

#include "datalists/page_lists.h"
#include "datalists/trade_data.h"

namespace luadui {
namespace {

constexpr char kInstructionPage[] = "MULTIINST_DUI";

// The trading tables: one list each, with a table per account.
struct TableKind {
    std::string_view name;
    std::string_view view;    // of several accounts joined
    std::string_view rowKey;  // empty: the server pushes whole tables
};

constexpr std::array kTableKinds = std::to_array<TableKind>({
    {"entrust", "entrustmulti", "OrderID"},
    {"entrustcredit", "entrustmulticredit", "OrderID"},
    {"entrust_ggt", "entrust_ggt", "OrderID"},
    {"deal", "dealmulti", "ExecID"},
    {"dealcredit", "dealmulticredit", "ExecID"},
    {"deal_ggt", "deal_ggt", "ExecID"},
    {"deal_his_ggt", "", ""},
    {"fund", "", ""},
    {"credit_fund", "", ""},
    {"fund_ggt", "", ""},
    {"position", "positionmulti", ""},
    {"positioncredit", "positionmulticredit", ""},
    {"position_ggt", "position_ggt_multi", ""},
    {"tb_price_spred_ggt", "", ""},
    {"rate_ggt", "", ""},
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

template <class Rows>
const auto* FindRow(const Rows& rows, std::string_view name) {
    const auto row = std::ranges::find(rows, name, [](const auto& entry) { return entry.name; });
    return row == rows.end() ? nullptr : &*row;
}

}  // namespace

template <class List>
void ListStore::_add(std::unique_ptr<List> list) {
    const std::string name = list->GetType();
    if constexpr (std::is_base_of_v<CTokenTableList, List>) m_tables[name] = list.get();
    m_shared.SetDataShared(name, static_cast<CUIData&>(*list));
    m_lists[name] = std::move(list);
}

void ListStore::MakeCommonLists(ListOwner* owner) {
    m_accounts[kPlain] = std::make_unique<CAccountDataList>();
    m_accounts[kCredit] = std::make_unique<CAccountDataListCredit>();
    m_accounts[kGGT] = std::make_unique<CAccountDataListGGT>();
    for (const auto& list : m_accounts) m_shared.SetDataShared(list->GetType(), static_cast<CUIData&>(*list));
    m_messageCenter = std::make_unique<CMessageCenterList>(owner);
}

std::unique_ptr<CMutiInstCfg> ListStore::ReadInstConfig(const std::string& pageName) {
    return pageName == kInstructionPage ? std::make_unique<CMutiInstCfg>(true) : nullptr;
}

void ListStore::MakePageLists(const std::string& pageName, ListOwner* owner,
                              std::unique_ptr<CMutiInstCfg> config) {
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
        m_messageCenter = std::make_unique<CMessageCenterList>(owner);
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
    const TableKind* const row = FindRow(kTableKinds, kind);
    if (!row) return nullptr;
    _add(std::make_unique<CTokenTableList>(row->name, row->view, row->rowKey));
    return Find(kind);
}

uint64_t ListStore::SharedAge(std::string_view name) const {
    const auto age = m_sharedAges.find(name);
    return age == m_sharedAges.end() ? 0 : age->second;
}

std::string_view ListStore::ListOfView(std::string_view kind) {
    const View* const view = FindRow(kViews, kind);
    return view ? view->list : std::string_view();
}

ListStore::Family ListStore::FamilyOf(std::string_view kind) {
    if (kind.find("accountdatalist") == std::string_view::npos) return kFamilies;
    const FamilyKind* const row = FindRow(kFamilyKinds, kind);
    return row ? row->family : kFamilies;
}

}  // namespace luadui
