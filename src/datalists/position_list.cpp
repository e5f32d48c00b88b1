#include "datalists/position_list.h"

#include <utility>

#include "base/counters.h"
#include "base/text.h"
#include "codedata/data_manager.h"
#include "datalists/number_cell.h"
#include "datalists/portfolio_mode.h"
#include "datalists/stock_available.h"

namespace luadui {

struct PositionForm {
    std::string_view kind, mergedKind, fundKind, updateType;
    bool hasProducts;  // quantities of products stand in a column of their own
    const char *marketValueUnreadable, *totalAssetsUnreadable, *balanceUnreadable;  // counters
};

namespace {

constexpr PositionForm kOrdinary = {"position",
                                    "positionmulti",
                                    "fund",
                                    "fund",
                                    true,
                                    "position_market_value_unreadable",
                                    "fund_total_assets_unreadable",
                                    "position_available_balance_unreadable"};
constexpr PositionForm kCredit = {"positioncredit",
                                  "positionmulticredit",
                                  "credit_fund",
                                  "",
                                  false,
                                  "positioncredit_market_value_unreadable",
                                  "credit_fund_total_assets_unreadable",
                                  "positioncredit_available_balance_unreadable"};

constexpr Decimal kLeastAssets = Decimal::Of(1, 5);  // nothing is a part of less

int NeedColumn(CDataTable& table, std::string_view name) {
    const int column = table.FindColumn(name);
    return column >= 0 ? column : table.AddColumn(name);
}

std::string RateText(Decimal marketValue, Decimal totalAssets) {
    const Decimal rate = totalAssets > kLeastAssets ? marketValue / totalAssets : Decimal();
    return (rate * 100).Text(3);
}

// The market that the code list knows for the security.
std::string LookUpMarket(std::string_view code, std::string_view name) {
    return CDataManager::SecurityMarket(code, name);
}

void SetRates(CDataTable& positions, Decimal totalAssets, const char* unreadable) {
    const int rate = NeedColumn(positions, "MarketValueRate");
    const int marketValue = positions.FindColumn("MarketValue");
    for (int row = 0; row < positions.GetRowNumber(); ++row) {
        const Decimal value = ReadNumber(positions.GetItemText(row, marketValue), unreadable);
        positions.SetItemText(row, rate, RateText(value, totalAssets));
    }
}

void SetMarkets(CDataTable& positions) {
    const int joined = NeedColumn(positions, "SecurityMarket");
    const int code = positions.FindColumn("SecurityID"), market = positions.FindColumn("Market"),
              name = positions.FindColumn("SecurityName");
    for (int row = 0; row < positions.GetRowNumber(); ++row) {
        std::string security = positions.GetItemText(row, code);
        std::string place = positions.GetItemText(row, market);
        if (place.empty()) {
            place = LookUpMarket(security, positions.GetItemText(row, name));
            positions.SetItemText(row, market, place);
        }
        positions.SetItemText(row, joined, security.append(":").append(place));
    }
}

}  // namespace

PositionTables::PositionTables(const PositionForm& form, ListOwner* owner)
    : CTokenTableList(form.kind, form.mergedKind), m_form(form), m_owner(owner) {
    if (owner) owner->RegisterNotify(static_cast<unsigned int>(GetHandle()), std::string(form.fundKind));
}

void PositionTables::SetPositionTable(const std::string& token, const CDataTable& table,
                                      bool onlyKnownAccount) {
    if (onlyKnownAccount) {
        TakePush(token, table, kNewest, false);
    } else {
        TakeAnswer(token, table, kNewest);
    }
}

void PositionTables::OnNotify(void* data) {
    const auto* const funds = static_cast<const CUIData*>(data);
    if (!funds || !m_owner || funds->GetTypeText() != m_form.fundKind ||
        funds->GetDataText("Push_Source") == "AssetManager_Thread")
        return;
    const std::string token = funds->GetDataString("update_user");
    CUIData news(m_form.kind);
    {
        CDataTable positions;
        if (token.empty() || !GetDataShared(token, positions) || !_compute(token, positions)) return;
        news.SetData("fund_token", token);
        news.SetData(m_form.kind, positions);
    }
    if (!m_form.updateType.empty()) news.SetData("update_type", m_form.updateType);
    news.SetData("handle", kNoHandle);
    news.SetData("ret_code", 0);
    news.SetData("ret_message", "");
    m_owner->ResponseNotify(&news, kNoHandle, true);
}

bool PositionTables::CalcStockAvailable(CUIData& request) const {
    CDataSet tokens;
    if (!ReadAccounts(request, tokens)) return false;
    const std::string code = request.GetDataString("stock_code"),
                      market = request.GetDataString("stock_marketid");
    const bool isProduct = m_form.hasProducts && IsPortfolioMode(request);
    const std::string_view balance = isProduct ? "Inst_AvailableStockBalance" : "AvailableStockBalance";
    StockAvailable available;
    for (const std::string& token : tokens) {
        CDataTable positions;
        if (!FindAccount(*this, token, positions)) continue;
        const int codes = positions.FindColumn("SecurityID"), markets = positions.FindColumn("Market"),
                  balances = positions.FindColumn(balance);
        for (int row = 0; row < positions.GetRowNumber(); ++row) {
            const TableRow cells = positions.GetRow(row);
            if (!CTrade::IsMatchPositionCode(cells[codes], cells[markets], code, market)) continue;
            available.Add(token, ReadNumber(cells[balances], m_form.balanceUnreadable).ToLong());
        }
    }
    available.Write(request);
    return true;
}

void PositionTables::_prepare(std::string_view token, CDataTable& table, Origin origin) {
    if (origin == Origin::kAnswer) _compute(token, table);
}

// False, and nothing changed, when there are no positions or no funds to compare them with.
bool PositionTables::_compute(std::string_view token, CDataTable& table) const {
    CDataTable fund;
    if (table.GetRowNumber() == 0 || !m_owner ||
        !m_owner->GetData(0, std::string(m_form.fundKind), std::string(token), fund) ||
        fund.GetRowNumber() == 0)
        return false;
    SetRates(table, ReadNumber(fund.GetItemText(0, "TotalAssets"), m_form.totalAssetsUnreadable),
             m_form.marketValueUnreadable);
    SetMarkets(table);
    return true;
}

CPositionList::CPositionList(ListOwner* owner) : PositionTables(kOrdinary, owner) {}

CPositionListCredit::CPositionListCredit(ListOwner* owner) : PositionTables(kCredit, owner) {}

void CPositionListGGT::SetGGTPositionResponse(const CUIData& response, uint64_t age) {
    const std::string token = response.GetDataString("FundToken");
    CDataTable table;
    if (response.GetData("Table", table)) {
        TakeAnswer(token, table, age);
    } else {
        TakeEmptyAnswer(token);
    }
}

}  // namespace luadui
