#include "datalists/order_list.h"

#include <algorithm>
#include <array>
#include <utility>
#include <vector>

#include "base/counters.h"
#include "base/json_object.h"
#include "base/text_map.h"
#include "datalists/account_names.h"
#include "datalists/basket_tables.h"
#include "datalists/field_text.h"

namespace luadui {
namespace {

constexpr std::array kKeyNames = {"InstanceID", "TaskID", "SnapshotID"};

// Tells the rows of an answer from each other.
class RowIdentity {
  public:
    explicit RowIdentity(const CDataTable& table) {
        std::ranges::transform(kNames, m_columns.begin(),
                               [&table](const char* name) { return table.FindColumn(name); });
    }
    bool HasIds() const {
        return std::any_of(m_columns.begin() + 1, m_columns.end(), [](int col) { return col >= 0; });
    }
    // The same text for rows that are one; empty for a row without ids.
    std::string_view Of(const CDataTable& table, int row) {
        m_text.clear();
        bool hasId = false;
        for (size_t i = 0; i < kNames.size(); ++i) {
            const TextView text = table.GetItemText(row, m_columns[i]);
            hasId = hasId || (i > 0 && !text.empty());
            m_text += std::to_string(text.size());  // so that no text can pose as two
            m_text.append(":").append(text);
        }
        return hasId ? std::string_view(m_text) : std::string_view();
    }

  private:
    static constexpr std::array kNames = {"fund_token", "PendingOrderID", "OrderID", "ExecID"};

    std::array<int, kNames.size()> m_columns;
    std::string m_text;
};

// For every row of `part` the row of `held` that it renews; -1 for new ones. Empty when all are new.
std::vector<int> RowsToRenew(const CDataTable& held, const CDataTable& part) {
    RowIdentity heldIdentity(held), partIdentity(part);
    if (!heldIdentity.HasIds() || !partIdentity.HasIds()) return {};
    TextMap<int> places;
    places.reserve(static_cast<size_t>(held.GetRowNumber()));
    for (int row = 0; row < held.GetRowNumber(); ++row) {
        const std::string_view identity = heldIdentity.Of(held, row);
        if (!identity.empty()) places.emplace(identity, row);
    }
    std::vector<int> renewed(static_cast<size_t>(part.GetRowNumber()), -1);
    bool any = false;
    for (int row = 0; row < part.GetRowNumber(); ++row) {
        const auto place = places.find(partIdentity.Of(part, row));
        if (place == places.end()) continue;
        renewed[static_cast<size_t>(row)] = place->second;
        any = true;
    }
    return any ? renewed : std::vector<int>();
}

// For every column of `part` the one of that name in `held`, which gets those that it lacks; -1 for those without
// room, and for the second of two with one name.
std::vector<int> MapColumns(CDataTable& held, const CDataTable& part) {
    std::vector<int> columns;
    for (int col = 0; col < part.GetColumnNumber(); ++col) {
        const TextView name = part.GetColumnProperty(col, "name");
        int target = part.FindColumn(name) == col ? held.FindColumn(name) : -1;
        if (target < 0 && part.FindColumn(name) == col) {
            if (held.GetColumnNumber() < COrderList::kMaxColumns)
                target = held.AddColumn(name);
            else
                CCounters::Add("table_column_dropped");
        }
        columns.push_back(target);
    }
    return columns;
}

void Merge(CDataTable& held, const CDataTable& part) {
    if (held.GetColumnNumber() == 0) {
        held = part;
        return;
    }
    const std::vector<int> columns = MapColumns(held, part);
    const std::vector<int> renewed = RowsToRenew(held, part);
    if (renewed.empty()) {
        held.InsertTable(part);
        return;
    }
    for (int row = 0; row < part.GetRowNumber(); ++row) {
        const int known = renewed[static_cast<size_t>(row)];
        const int target = known >= 0 ? known : held.AppendRow();
        for (int col = 0; col < part.GetColumnNumber(); ++col) {
            const int to = columns[static_cast<size_t>(col)];
            if (to >= 0) held.SetItemText(target, to, part.GetItemText(row, col));
        }
    }
}

// Text, or what a host that took it apart already made of it.
std::string RawData(const CUIData& response) {
    CJsonObject json;
    return response.GetData("RawData", json) ? json.ToText() : response.GetDataString("RawData");
}

}  // namespace

COrderList::COrderList() : CUIData("order") {}

COrderList::~COrderList() = default;

const char* COrderList::ClassName() const { return "COrderList"; }

bool COrderList::SetBasketDetail(CUIData& response, const CUIData* accounts, CUIData& out) {
    CUIData request, params;
    response.GetData("Request", request);
    request.GetData("Params", params);
    std::array<std::string, kKeyNames.size()> ids;
    std::string key;
    for (size_t i = 0; i < ids.size(); ++i) key += ids[i] = FirstText(params, {kKeyNames[i]});
    if (key.empty()) {
        CCounters::Add("basket_answer_without_key");
        return false;
    }

    BasketTables tables;
    const bool isWhole =
        tables.Read(RawData(response), accounts ? AccountNames(*accounts, "account") : AccountNames());
    CDataTable table, part;
    GetData(key, table);
    if (response.GetData("Table", part)) Merge(table, part);
    _store(key, table);

    out = CUIData();
    for (CUIData* record : {&response, &out}) {
        record->SetType("order");
        record->SetData(key, table);
        record->SetData("basket_deal_table", tables.deals);
        record->SetData("basket_pending_table", tables.pending);
        if (!isWhole) record->SetData("incomplete", true);
    }
    for (size_t i = 0; i < ids.size(); ++i) out.SetData(kKeyNames[i], ids[i]);
    return true;
}

void COrderList::_store(const std::string& key, const CDataTable& table) {
    std::erase(m_keys, key);
    m_keys.push_back(key);
    SetData(key, table);
    if (m_keys.size() <= kMaxTables) return;
    Remove(m_keys.front());
    m_keys.pop_front();
    CCounters::Add("basket_table_dropped");
}

}  // namespace luadui
