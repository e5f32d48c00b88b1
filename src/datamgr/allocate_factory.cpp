// Dividing an order among accounts.
#include <algorithm>
#include <string>
#include <vector>

#include "base/counters.h"
#include "base/text.h"
#include "datalists/fund_list.h"
#include "datalists/number_cell.h"
#include "datalists/stock_available.h"
#include "datamgr/kind_table.h"
#include "datamgr/local_sources.h"
#include "datamgr/stock_source.h"
#include "datamgr/trade_factories.h"
#include "datamgr/ui_data_manager.h"
#include "trade/allocation.h"

namespace luadui {
namespace {

constexpr char kAllocate[] = "allocate";

enum class Way { kEqual, kAvailable, kAssets, kWeight };

struct WayName {
    std::string_view name;
    Way way;
};
constexpr WayName kWays[] = {
    {"0", Way::kEqual},  {"equal", Way::kEqual},   {"1", Way::kAvailable}, {"available", Way::kAvailable},
    {"2", Way::kAssets}, {"assets", Way::kAssets}, {"3", Way::kWeight},    {"weight", Way::kWeight},
};

// The accounts, and what is known of each of them.
struct Accounts {
    CDataSet tokens;
    std::vector<AllocationShare> shares;  // in the order of the tokens
    CDataSet missing;
};

// What one account has, as a weight; nothing when it is not known.
using Weigher = std::optional<Decimal> (*)(CUIDataManager&, const CUIData&, const StockSource&,
                                           const std::string& token);

// The number in the account's funds.
std::optional<Decimal> FundNumber(CUIDataManager& manager, const CUIData& request, const StockSource& source,
                                  const std::string& token, std::string_view column, const char* unreadable) {
    const std::string_view kind = source.isCredit ? "credit_fund" : "fund";
    const CTokenTableList* const list = StoreOf(manager, kind).Find(kind);
    CDataTable funds;
    if (!list || !list->GetTable(token, funds)) return std::nullopt;
    const int row =
        FindFundRow(funds, source.isCredit ? std::string_view() : request.GetDataText("currency"));
    return row < 0 ? std::nullopt : std::optional(ReadNumber(funds.GetItemText(row, column), unreadable));
}

std::optional<Decimal> WeighAvailable(CUIDataManager& manager, const CUIData& request,
                                      const StockSource& source, const std::string& token) {
    return FundNumber(manager, request, source, token, MoneyColumnOf(request, source.isCredit),
                      "allocate_available_unreadable");
}

std::optional<Decimal> WeighAssets(CUIDataManager& manager, const CUIData& request, const StockSource& source,
                                   const std::string& token) {
    return FundNumber(manager, request, source, token, "TotalAssets", "allocate_total_assets_unreadable");
}

void Weigh(CUIDataManager& manager, const CUIData& request, const StockSource& source, Weigher weigher,
           Accounts& accounts) {
    size_t i = 0;
    for (const std::string& token : accounts.tokens) {
        const auto weight = weigher(manager, request, source, token);
        if (!weight) accounts.missing.Insert(token);
        accounts.shares[i++].weight = weight.value_or(Decimal());
    }
}

Refusal TakeWeights(const CUIData& request, Accounts& accounts) {
    CUIData weights;
    if (!request.GetData("weights", weights)) return "缺少分配权重";
    size_t i = 0;
    for (const std::string& token : accounts.tokens) {
        Decimal& weight = accounts.shares[i++].weight;
        if (!weights.Has(token)) continue;
        const auto number = NumberOf(weights, token);
        if (!number || *number < 0) return "分配权重无效";
        weight = *number;
    }
    return {};
}

// The order that is divided.
class Order {
  public:
    Refusal Read(const CUIData& request) {
        const std::string code = NameOf(request, "stock_code"), market = NameOf(request, "stock_marketid");
        m_info.stockType = CTrade::GetStockType(code, market);
        m_info.direction = DirectionOf(request);
        m_info.unit = ReadUnit(request, code, market);
        const auto price = PriceOf(request.GetDataView("stock_price"));
        if (!price) return "价格无效";
        m_info.price = *price;
        const auto rate = request.Has("commission_rate") ? NumberOf(request, "commission_rate") : Decimal();
        if (!rate || *rate < 0 || *rate >= 1) return "佣金费率无效";
        m_info.commissionRate = *rate;
        return _readWhole(request);
    }

    int64_t Whole() const { return m_whole; }
    const TRADE_INFO& Info() const { return m_info; }
    // What it costs with commission, or yields.
    Decimal MoneyOf(int64_t quantity) const {
        const Decimal turnover = CTrade::CalcTurnover(m_info.stockType, m_info.price, quantity);
        return m_info.direction == kTradeSell ? turnover : turnover + turnover * m_info.commissionRate;
    }

  private:
    Refusal _readWhole(const CUIData& request) {
        const bool isAmount = request.Has("amount");
        if (!isAmount && !request.Has("money")) return "缺少分配数量或金额";
        const auto whole = NumberOf(request, isAmount ? "amount" : "money");
        if (!whole || *whole <= 0) return isAmount ? "分配数量无效" : "分配金额无效";
        if (m_info.price == 0 && !(isAmount && m_info.direction == kTradeSell)) return "缺少价格";
        if (isAmount) {
            m_whole = whole->ToLong();
        } else if (m_info.direction == kTradeBuy) {
            m_info.money = *whole;
            m_whole = CTrade::CountAmountByMoney(m_info);
        } else {
            m_whole = whole->WholeTimes(CTrade::CalcTurnover(m_info.stockType, m_info.price, 1));
        }
        return {};
    }

    TRADE_INFO m_info;
    int64_t m_whole = 0;
};

// How much each account can pay for or deliver.
Refusal TakeMost(CUIDataManager& manager, const CUIData& request, const Order& order, Accounts& accounts) {
    CUIData asked = request, amounts;
    asked.SetData("stock_unit", order.Info().unit);
    const Refusal refusal = ComputeStockAvailable(manager, asked);
    if (!refusal.empty()) return refusal;
    asked.GetData("multi_account_amount", amounts);
    asked.GetData("missing_account", accounts.missing);
    size_t i = 0;
    for (const std::string& token : accounts.tokens)
        accounts.shares[i++].most = NumberOf(amounts, token).value_or(Decimal()).ToLong();
    return {};
}

Refusal TakeShares(CUIDataManager& manager, const CUIData& request, Accounts& accounts) {
    const std::string name = NameOf(request, "alloc_type");
    const WayName* const row = KindIndex<kWays, &WayName::name>::Find(name);
    if (!row) return name.empty() ? "缺少分配方式" : "分配方式无效";
    const StockSource source = StockSourceOf(manager, request, accounts.tokens);
    if (row->way == Way::kWeight) {
        const Refusal refusal = TakeWeights(request, accounts);
        if (!refusal.empty()) return refusal;
    } else if (row->way == Way::kAssets) {
        Weigh(manager, request, source, WeighAssets, accounts);
    } else if (row->way == Way::kAvailable && !source.isPositions) {
        Weigh(manager, request, source, WeighAvailable, accounts);
    } else {
        for (AllocationShare& share : accounts.shares)
            share.weight = row->way == Way::kEqual ? Decimal(1) : Decimal(share.most);
    }
    const bool isAny =
        std::ranges::any_of(accounts.shares, [](const auto& share) { return share.weight > 0; });
    return isAny ? Refusal() : "分配权重之和为零";
}

void WriteAnswer(const Order& order, const Accounts& accounts, CUIData& request) {
    const auto& info = order.Info();
    const auto parts =
        AllocateQuantity(order.Whole(), accounts.shares,
                         {.stockType = info.stockType, .direction = info.direction, .unit = info.unit});
    Decimal weights;
    for (const AllocationShare& share : accounts.shares) weights += std::max(share.weight, Decimal());
    CDataTable table;
    for (const char* column : {"fund_token", "Amount", "Money", "Weight"}) table.AddColumn(column);
    CUIData amounts;
    Decimal total;
    size_t i = 0;
    for (const std::string& token : accounts.tokens) {
        const int row = table.AppendRow();
        const Decimal weight = std::max(accounts.shares[i].weight, Decimal());
        table.SetItemText(row, 0, token);
        table.SetItemText(row, 1, LongText(parts[i]));
        table.SetItemText(row, 2, order.MoneyOf(parts[i]).Text());
        table.SetItemText(row, 3, (weight / weights * 100).Text(4));
        amounts.SetData(token, parts[i]);
        total += parts[i++];
    }
    request.SetData(kAllocate, table);
    request.SetData("multi_account_amount", amounts);
    request.SetData("stock_available", total.Text(0));
}

}  // namespace

Refusal ComputeAllocation(CUIDataManager& manager, CUIData& request) {
    for (const char* key : {kAllocate, "multi_account_amount", "stock_available", "missing_account"})
        request.Remove(key);
    Accounts accounts;
    accounts.tokens = AccountsOf(request);
    accounts.shares.resize(accounts.tokens.Size());
    if (accounts.tokens.IsEmpty()) return "缺少资金账号";
    Order order;
    Refusal refusal = order.Read(request);
    if (refusal.empty()) refusal = TakeMost(manager, request, order, accounts);
    if (refusal.empty()) refusal = TakeShares(manager, request, accounts);
    if (refusal.empty()) {
        request.SetData("fund_token", accounts.tokens);
        WriteAnswer(order, accounts, request);
    }
    if (!accounts.missing.IsEmpty()) request.SetData("missing_account", accounts.missing);
    return refusal;
}

}  // namespace luadui
