#include "datamgr/stock_source.h"

#include <algorithm>

#include "datalists/fund_list.h"
#include "datalists/position_list.h"
#include "datalists/stock_available.h"
#include "datamgr/local_sources.h"
#include "trade/trade.h"

namespace luadui {
namespace {

constexpr int kBorrows = 3;  // "usertoken_type" of a credit account that sells what it borrows

struct Source {
    std::string_view kind;
    bool (*calc)(CTokenTableList& list, CUIData& request);
};

template <class List>
bool Calc(CTokenTableList& list, CUIData& request) {
    const auto* const typed = dynamic_cast<const List*>(&list);
    return typed && typed->CalcStockAvailable(request);
}

// By: of credit accounts, of positions.
constexpr Source kSources[2][2] = {
    {{"fund", Calc<CFundList>}, {"position", Calc<CPositionList>}},
    {{"credit_fund", Calc<CFundListCredit>}, {"positioncredit", Calc<CPositionListCredit>}},
};

bool HoldsAny(CUIDataManager& manager, const Source (&sources)[2], const CDataSet& tokens) {
    return std::ranges::any_of(sources, [&](const Source& source) {
        const CTokenTableList* const list = StoreOf(manager, source.kind).Find(source.kind);
        return list && std::ranges::any_of(tokens, [&](const auto& token) { return list->Holds(token); });
    });
}

bool IsCredit(CUIDataManager& manager, const CUIData& request, const CDataSet& tokens) {
    if (HoldsAny(manager, kSources[1], tokens)) return true;
    if (HoldsAny(manager, kSources[0], tokens)) return false;
    const std::string type = NameOf(request, "trade_type");
    return (!type.empty() && type != "0") || request.Has("usertoken_type");
}

// Whoever lends money against a repo sells it.
bool IsRepo(const CUIData& request) {
    const StockType type =
        CTrade::GetStockType(NameOf(request, "stock_code"), NameOf(request, "stock_marketid"));
    return type == StockType::kShanghaiRepo || type == StockType::kShenzhenRepo;
}

}  // namespace

StockSource StockSourceOf(CUIDataManager& manager, const CUIData& request, const CDataSet& tokens) {
    const bool isCredit = IsCredit(manager, request, tokens);
    const bool isBorrowed = isCredit && request.GetDataLong("usertoken_type") == kBorrows;
    const bool isPositions = DirectionOf(request) == kTradeSell && !isBorrowed && !IsRepo(request);
    const Source& source = kSources[isCredit][isPositions];
    return {.list = StoreOf(manager, source.kind).FindOrMake(source.kind),
            .calc = source.calc,
            .isCredit = isCredit,
            .isPositions = isPositions};
}

}  // namespace luadui
