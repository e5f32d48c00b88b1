// Quantities, limits and masks: what pages compute while an order is entered.
#include "datamgr/trade_factories.h"

#include <algorithm>
#include <string>

#include "base/data_list.h"
#include "base/data_table.h"
#include "base/text.h"
#include "datalists/ggt_reference.h"
#include "datalists/stock_available.h"
#include "datamgr/local_sources.h"
#include "datamgr/stock_source.h"
#include "datamgr/ui_stock_data_manager.h"
#include "trade/trade.h"

namespace luadui {
namespace {

constexpr char kNoCode[] = "缺少证券代码";

// "688***": each '?' and '*' stands for a digit, but a single '*' at the end for whatever follows.
bool FitsMask(std::string_view code, std::string_view mask) {
    if (mask.empty()) return false;
    const bool isOpen = mask.ends_with('*') && !mask.ends_with("**");
    if (isOpen) mask.remove_suffix(1);
    if (isOpen ? code.size() < mask.size() : code.size() != mask.size()) return false;
    return std::equal(mask.begin(), mask.end(), code.begin(), [](char wanted, char c) {
        return wanted == '?' || wanted == '*' ? c >= '0' && c <= '9' : c == wanted;
    });
}

bool FitsAny(std::string_view code, std::string_view masks) {
    const auto parts = SplitText(masks, ';');
    return std::ranges::any_of(parts, [&](std::string_view mask) { return FitsMask(code, TrimText(mask)); });
}

// The columns have no settled names.
bool FitsAny(std::string_view code, const CDataTable& masks) {
    for (int row = 0; row < masks.GetRowNumber(); ++row) {
        for (int col = 0; col < masks.GetColumnNumber(); ++col) {
            if (FitsAny(code, masks.GetItemText(row, col))) return true;
        }
    }
    return false;
}

// None when the value holds no masks.
std::optional<bool> FitsAny(std::string_view code, const ValueView& masks) {
    if (masks.Kind() == kDataString) return FitsAny(code, masks.AsText());
    if (CDataSet set; masks.Get(set))
        return std::ranges::any_of(set, [&](const std::string& mask) { return FitsAny(code, mask); });
    CDataTable table;
    if (masks.Get(table)) return FitsAny(code, table);
    CDataList list;
    if (!masks.Get(list)) return std::nullopt;
    for (const auto [key, mask] : list) {
        if (FitsAny(code, mask.AsText())) return true;
    }
    return false;
}

// Prices as texts, with as many decimals as the security's prices have.
class PriceTexts {
  public:
    PriceTexts(std::string_view code, std::string_view market, CUIData& record)
        : m_code(code), m_market(market), m_record(record) {}

    void Set(const char* key, Decimal price) {
        m_record.SetData(key, price.Text(CTrade::GetPriceDecimals(m_code, m_market)));
    }
    void Set(const char* low, const char* high, const std::optional<PriceRange>& range) {
        for (const auto& [key, end] : {std::pair(low, &PriceRange::lowest), {high, &PriceRange::highest}}) {
            if (range) {
                Set(key, (*range).*end);
            } else {
                m_record.SetData(key, "");
            }
        }
    }

  private:
    const std::string_view m_code, m_market;
    CUIData& m_record;
};

}  // namespace

Refusal ComputeStockAvailable(CUIDataManager& manager, CUIData& request) {
    for (const char* key : {"stock_available", "multi_account_amount", "missing_account"})
        request.Remove(key);
    const CDataSet tokens = AccountsOf(request);
    if (tokens.IsEmpty()) return "缺少资金账号";
    if (NameOf(request, "stock_code").empty()) return kNoCode;
    request.SetData("fund_token", tokens);
    const StockSource source = StockSourceOf(manager, request, tokens);
    if (!source.calc(*source.list, request)) return "缺少资金或持仓数据";
    CDataSet missing;
    for (const std::string& token : tokens) {
        if (!source.list->Holds(token)) missing.Insert(token);
    }
    if (!missing.IsEmpty()) request.SetData("missing_account", missing);
    return {};
}

Refusal ComputePriceSpread(CUIDataManager& manager, CUIData& request) {
    constexpr char kSpreads[] = "tb_price_spred_ggt";
    request.Remove("price_spread");
    const auto& common = CUIStockDataManager::get_mutable_instance().CommonData().Lists();
    const auto* spreads = manager.Lists().Find<CPriceSpreadGGT>(kSpreads);
    if (!spreads) spreads = common.Find<CPriceSpreadGGT>(kSpreads);
    if (!spreads) return "缺少港股通价差数据";
    return spreads->GetPriceSpread(request) ? Refusal() : "缺少市场或价格";
}

Refusal ComputeLimitPrice(CUIDataManager&, CUIData& request) {
    for (const char* key : {"limit_up", "limit_down", "declare_high", "declare_low", "price_step"})
        request.Remove(key);
    const std::string code = NameOf(request, "stock_code"), market = NameOf(request, "stock_marketid");
    if (code.empty()) return kNoCode;
    const auto previous = PriceOf(request.GetDataView("previous_close"));
    if (!previous || *previous == 0) return "缺少昨收价";
    const auto reference = PriceOf(request.GetDataView("reference_price"));
    if (!reference) return "参考价无效";
    const Decimal basis = *reference == 0 ? *previous : *reference;
    PriceTexts texts(code, market, request);
    texts.Set("limit_down", "limit_up", CTrade::GetDailyLimits(code, market, *previous));
    texts.Set("declare_low", "declare_high",
              CTrade::GetDeclarationRange(code, market, basis, *previous, DirectionOf(request)));
    const Decimal step = CTrade::GetPriceStep(code, market, basis);
    request.SetData("price_step", step == 0 ? std::string() : step.Text());
    return {};
}

Refusal ComputeCodeMask(CUIDataManager& manager, CUIData& request) {
    request.Remove("is_match");
    const std::string code = NameOf(request, "stock_code");
    if (code.empty()) return kNoCode;
    auto isMatch = FitsAny(code, request.GetDataView("masks"));
    CUIData shared;
    if (!isMatch && FindShared(manager, "kcb_code_mask", shared)) {
        isMatch = FitsAny(code, shared.GetDataView("masks"));
        if (!isMatch) isMatch = FitsAny(code, shared.GetDataView("kcb_code_mask"));
    }
    if (!isMatch) return "缺少代码掩码";
    request.SetData("is_match", *isMatch);
    return {};
}

}  // namespace luadui
