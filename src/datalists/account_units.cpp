#include "datalists/account_units.h"

#include <algorithm>

#include "base/counters.h"
#include "base/data_list.h"
#include "base/json_object.h"
#include "base/text_map.h"
#include "datalists/account_money.h"
#include "datalists/json_array.h"

namespace luadui {
namespace {

static_assert(kAccountColumns - kFirstMoneyColumn == MoneyCells::kColumns);

// How servers call the columns. The first one that a table has counts.
using Names = std::array<std::string_view, 3>;
constexpr std::array<Names, kFirstMoneyColumn> kServerNames = {{
    {"accountkey", "account_key"},
    {"account_id", "accountid"},
    {"accountname", "account_name"},
    {"accountmark", "account_mark"},
    {"nickname", "nick_name", "alias"},
    {"qsid", "qs_id", "broker_id"},
    {"qsname", "qs_name", "broker_name"},
    {"trade_type", "tradetype"},
    {"canuse", "can_use"},
    {"AccountMsg", "account_msg"},
    {"fund_token", "fundtoken"},
    {"portfolioid", "portfolio_id"},
    {"portfolioname", "portfolio_name"},
}};

std::string TextOf(const ValueView& value) {
    return value.Kind() == kDataInteger ? std::to_string(value.AsLong()) : std::string(value.AsText());
}

std::string EitherOf(const CJsonObject& object, std::string_view name, std::string_view otherName) {
    const std::string text = TextOf(object.Find(name));
    return text.empty() ? TextOf(object.Find(otherName)) : text;
}

// The columns of the rows, and where the server's cells go.
class RowMaker {
  public:
    explicit RowMaker(const CDataTable& accounts) {
        for (const std::string_view name : kAccountColumnNames) m_header.AddColumn(name);
        m_targets.assign(static_cast<size_t>(accounts.GetColumnNumber()), -1);
        for (int column = 0; column < kFirstMoneyColumn; ++column) {
            const int source = FindAccountColumn(accounts, static_cast<AccountColumn>(column));
            if (source >= 0) m_targets[static_cast<size_t>(source)] = column;
        }
        for (int col = 0; col < accounts.GetColumnNumber(); ++col) {
            int& target = m_targets[static_cast<size_t>(col)];
            if (target >= 0) continue;
            const TextView name = accounts.GetColumnProperty(col, "name");
            if (!name.empty() && m_header.FindColumn(name) < 0) {
                target = m_header.AddColumn(name);
            } else {
                CCounters::Add("account_column_dropped");
            }
        }
    }

    const CDataTable& Header() const { return m_header; }
    // Appends the account with the portfolio, if any, to `rows`.
    AccountUnit Append(const TableRow& account, const ListedPortfolio* portfolio, bool isOfPortfolio,
                       CDataTable& rows) const {
        const int row = rows.AppendRow();
        for (size_t col = 0; col < m_targets.size(); ++col) {
            const TextView text = account[static_cast<int>(col)];
            if (m_targets[col] >= 0 && !text.empty()) rows.SetItemText(row, m_targets[col], text);
        }
        if (portfolio) {
            if (isOfPortfolio || rows.GetItemText(row, kFundToken).empty())
                rows.SetItemText(row, kFundToken, portfolio->token);
            rows.SetItemText(row, kPortfolioId, portfolio->id);
            rows.SetItemText(row, kPortfolioName, portfolio->name);
        }
        return _unitOf(rows, row, isOfPortfolio ? portfolio : nullptr);
    }

  private:
    static AccountUnit _unitOf(CDataTable& rows, int row, const ListedPortfolio* portfolio) {
        AccountUnit unit{std::string(rows.GetItemText(row, kAccountKey)),
                         std::string(rows.GetItemText(row, kAccountId)),
                         std::string(rows.GetItemText(row, kFundToken))};
        if (unit.key.empty()) {
            unit.key = unit.id + '|' + rows.GetItemText(row, kQsId) + '|' + rows.GetItemText(row, kTradeType);
            rows.SetItemText(row, kAccountKey, unit.key);
        }
        if (portfolio) unit.key += '|' + (portfolio->id.empty() ? portfolio->token : portfolio->id);
        return unit;
    }

    CDataTable m_header;
    std::vector<int> m_targets;  // of the server's columns; -1: left out
};

// Accounts of the same key are told apart by their order.
void MakeKeysUnlike(std::vector<AccountUnit>& units) {
    TextMap<int> seen;
    for (AccountUnit& unit : units) {
        if (const int times = seen[unit.key]++; times > 0) {
            CCounters::Add("account_key_repeated");
            unit.key += '\n' + std::to_string(times);
        }
    }
}

const ListedPortfolio* DefaultOf(const std::vector<ListedPortfolio>& portfolios) {
    if (portfolios.size() == 1) return &portfolios.front();
    const auto found = std::ranges::find(portfolios, true, &ListedPortfolio::isDefault);
    return found == portfolios.end() ? nullptr : &*found;
}

}  // namespace

int FindAccountColumn(const CDataTable& accounts, AccountColumn column) {
    for (const std::string_view name : kServerNames[column]) {
        const int col = name.empty() ? -1 : accounts.FindColumn(name);
        if (col >= 0) return col;
    }
    return -1;
}

std::vector<ListedPortfolio> ReadPortfolios(std::string_view json) {
    std::vector<ListedPortfolio> portfolios;
    if (json.empty()) return portfolios;
    CDataList array;
    if (!ParseJsonArray(json, array)) {
        CCounters::Add("account_portfolios_unreadable");
        return portfolios;
    }
    for (const auto& [key, value] : array) {
        CJsonObject object;
        value.Get(object);
        ListedPortfolio portfolio{
            TextOf(object.Find("fund_token")), EitherOf(object, "portfolioid", "portfolio_id"),
            EitherOf(object, "portfolioname", "portfolio_name"), object.GetLong("is_default") == 1};
        if (portfolio.token.empty() && portfolio.id.empty()) {
            CCounters::Add("account_portfolio_dropped");
        } else {
            portfolios.push_back(std::move(portfolio));
        }
    }
    return portfolios;
}

AccountUnits ReadAccountUnits(const FamilyAccounts& accounts, bool byPortfolio) {
    const RowMaker maker(accounts.rows);
    AccountUnits read;
    read.rows.CopyHeader(maker.Header());
    for (int row = 0; row < accounts.rows.GetRowNumber(); ++row) {
        const TableRow account = accounts.rows.GetRow(row);
        const std::vector<ListedPortfolio>& portfolios = accounts.portfolios[static_cast<size_t>(row)];
        if (!byPortfolio || portfolios.empty()) {
            read.units.push_back(maker.Append(account, DefaultOf(portfolios), false, read.rows));
            continue;
        }
        for (const ListedPortfolio& portfolio : portfolios)
            read.units.push_back(maker.Append(account, &portfolio, true, read.rows));
    }
    MakeKeysUnlike(read.units);
    return read;
}

}  // namespace luadui
