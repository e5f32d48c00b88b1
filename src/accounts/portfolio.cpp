#include "accounts/portfolio.h"

#include <algorithm>
#include <span>
#include <utility>

#include "base/counters.h"
#include "base/json_rows.h"
#include "base/text.h"

namespace luadui {
namespace {

Portfolio FromCells(std::span<const JsonCell> cells) {
    Portfolio portfolio;
    for (const JsonCell& cell : cells) {
        const auto* const field = std::ranges::find(kPortfolioFields, cell.name, &PortfolioField::column);
        if (field != std::end(kPortfolioFields)) portfolio.*field->text = cell.text;
    }
    return portfolio;
}

}  // namespace

CJsonObject Portfolio::ToJson() const {
    CJsonObject json;
    for (const PortfolioField& field : kPortfolioFields) json.Set(field.key, this->*field.text);
    return json;
}

void Portfolios::Put(Portfolio portfolio) {
    if (portfolio.id.empty()) {
        CCounters::Add("account_portfolio_refused");
        return;
    }
    if (portfolio.IsDefault()) {
        for (Portfolio& other : m_items) {
            if (other.IsDefault()) other.isDefault = "0";
        }
    }
    const auto at = std::ranges::lower_bound(m_items, portfolio.id, {}, &Portfolio::id);
    if (at != m_items.end() && at->id == portfolio.id) {
        *at = std::move(portfolio);
    } else {
        m_items.insert(at, std::move(portfolio));
    }
}

const Portfolio* Portfolios::Find(std::string_view id) const {
    const auto at = std::ranges::lower_bound(m_items, id, {}, &Portfolio::id);
    return at != m_items.end() && at->id == id ? &*at : nullptr;
}

const Portfolio* Portfolios::Default() const {
    const auto found = std::ranges::find_if(m_items, &Portfolio::IsDefault);
    if (found != m_items.end()) return &*found;
    return m_items.empty() ? nullptr : &m_items.front();
}

CDataList Portfolios::ToJson() const {
    CDataList list;
    for (const Portfolio& portfolio : m_items) list.Append(portfolio.ToJson());
    return list;
}

bool ReadPortfolios(std::string_view text, Portfolios& out) {
    out.Clear();
    text = TrimText(text);
    if (text.empty()) return true;
    constexpr std::string_view kArrays[] = {"portfolios"};
    const std::string object = "{\"portfolios\":" + std::string(text) + "}";
    const bool isRead = text.front() == '[' &&
                        ReadJsonRows(object, kArrays,
                                     [&](size_t, std::span<const JsonCell> row) { out.Put(FromCells(row)); });
    if (!isRead) CCounters::Add("account_portfolios_unreadable");
    return isRead;
}

Portfolio PortfolioOfRow(const CDataTable& table, int row) {
    Portfolio portfolio;
    for (const PortfolioField& field : kPortfolioFields)
        portfolio.*field.text = std::string_view(table.GetItemText(row, field.column));
    return portfolio;
}

}  // namespace luadui
