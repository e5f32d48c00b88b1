#include "datalists/account_names.h"

#include "base/data_list.h"
#include "base/json_object.h"
#include "datalists/field_text.h"
#include "datalists/json_array.h"

namespace luadui {
namespace {

// The columns of the name that the client uses and of the one that servers use.
struct ColumnPair {
    ColumnPair(const CDataTable& table, const char* name, const char* serverName)
        : own(table.FindColumn(name)), server(table.FindColumn(serverName)) {}
    std::string In(const CDataTable& table, int row) const {
        const TextView text = table.GetItemText(row, own);
        return text.empty() ? table.GetItemText(row, server) : text;
    }

    const int own, server;
};

}  // namespace

AccountNames::AccountNames(const CUIData& accounts, const char* kind) {
    CDataTable table;
    if (!accounts.GetData(kind, table)) accounts.GetData("Table", table);
    const int tokens = table.FindColumn("fund_token"), portfolios = table.FindColumn("portfolios");
    const ColumnPair names(table, "accountname", "account_name"), ids(table, "accountid", "account_id"),
        marks(table, "accountmark", "account_mark"), products(table, "productname", "product_name");
    for (int row = 0; row < table.GetRowNumber(); ++row) {
        const AccountName account{
            names.In(table, row), ids.In(table, row), marks.In(table, row), {}, products.In(table, row)};
        _addPortfolios(account, table.GetItemText(row, portfolios));
        if (const TextView token = table.GetItemText(row, tokens); !token.empty())
            m_names.emplace(token, account);
    }
}

void AccountNames::_addPortfolios(const AccountName& account, std::string_view json) {
    CDataList portfolios;
    if (json.empty() || !ParseJsonArray(json, portfolios)) return;
    for (const auto& [key, value] : portfolios) {
        CJsonObject portfolio;
        if (!value.Get(portfolio) || portfolio.GetText("fund_token").empty()) continue;
        const auto [added, isNew] = m_names.emplace(portfolio.GetText("fund_token"), account);
        if (isNew) added->second.portfolio = FirstText(portfolio, {"portfolioname", "portfolio_name"});
    }
}

const AccountName* AccountNames::Find(std::string_view token) const {
    const auto found = m_names.find(token);
    return found == m_names.end() ? nullptr : &found->second;
}

}  // namespace luadui
