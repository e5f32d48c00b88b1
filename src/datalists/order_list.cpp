#include "datalists/order_list.h"

#include <algorithm>
#include <array>
#include <numeric>
#include <vector>

#include "base/counters.h"
#include "base/data_list.h"
#include "base/json_object.h"
#include "base/text_map.h"
#include "datalists/account_names.h"
#include "datalists/field_text.h"
#include "datalists/table_columns.h"

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

// For every row of `part` the row that it renews, among those held or those that `part` adds to them; -1 for new ones.
// Empty when all are new.
std::vector<int> RowsToRenew(const CDataTable& held, const CDataTable& part) {
    RowIdentity heldIdentity(held), partIdentity(part);
    if (!partIdentity.HasIds()) return {};
    TextMap<int> places;
    places.reserve(static_cast<size_t>(held.GetRowNumber() + part.GetRowNumber()));
    for (int row = 0; row < held.GetRowNumber(); ++row) {
        const std::string_view identity = heldIdentity.Of(held, row);
        if (!identity.empty()) places.emplace(identity, row);
    }
    std::vector<int> renewed(static_cast<size_t>(part.GetRowNumber()), -1);
    int end = held.GetRowNumber();
    for (int row = 0; row < part.GetRowNumber(); ++row) {
        const std::string_view identity = partIdentity.Of(part, row);
        const auto [place, isNew] = places.emplace(identity, end);
        if (identity.empty() || isNew) {
            ++end;
        } else {
            renewed[static_cast<size_t>(row)] = place->second;
        }
    }
    return end == held.GetRowNumber() + part.GetRowNumber() ? std::vector<int>() : renewed;
}

void CopyRow(const CDataTable& from, int row, CDataTable& to, int target) {
    for (int col = 0; col < from.GetColumnNumber(); ++col) {
        const TextView name = from.GetColumnProperty(col, "name");
        const int column = from.FindColumn(name) == col ? to.FindColumn(name) : -1;
        if (column >= 0) to.SetItemText(target, column, from.GetItemText(row, col));
    }
}

// Rows that are known take the place of the earlier ones, the others are appended.
void Merge(CDataTable& held, const CDataTable& part) {
    const std::vector<int> renewed = RowsToRenew(held, part);
    AddColumnsOf(part, held, COrderList::kMaxColumns);
    const int room = COrderList::kMaxRows - held.GetRowNumber();
    if (renewed.empty() && part.GetRowNumber() <= room) {
        held.InsertTable(part);
        return;
    }
    size_t dropped = 0;
    for (int row = 0; row < part.GetRowNumber(); ++row) {
        const int known = renewed.empty() ? -1 : renewed[static_cast<size_t>(row)];
        if (known >= 0 && known < held.GetRowNumber()) {
            CopyRow(part, row, held, known);
        } else if (held.GetRowNumber() >= COrderList::kMaxRows || !held.InsertRow(part, row)) {
            ++dropped;
        }
    }
    if (dropped != 0) CCounters::Add("basket_row_dropped", dropped);
}

// Text, or what a host that took it apart already made of it.
template <class Value>
std::string JsonText(const Value& value) {
    CJsonObject json;
    return value.Get(json) ? json.ToText() : std::string(value.AsText());
}

std::vector<std::string> RawData(const CUIData& response) {
    const ValueView value = response.GetDataView("RawData");
    CDataList parts;
    std::vector<std::string> texts;
    if (!value.Get(parts)) {
        texts.push_back(JsonText(value));
        return texts;
    }
    for (const auto [key, part] : parts) texts.push_back(JsonText(part));
    return texts;
}

std::array<std::string, kKeyNames.size()> IdsOf(const CUIData& response) {
    CUIData request, params;
    response.GetData("Request", request);
    request.GetData("Params", params);
    std::array<std::string, kKeyNames.size()> ids;
    for (size_t i = 0; i < ids.size(); ++i) ids[i] = FirstText(params, {kKeyNames[i]});
    return ids;
}

}  // namespace

COrderList::COrderList() : CUIData("order") {}

COrderList::~COrderList() = default;

const char* COrderList::ClassName() const { return "COrderList"; }

std::string COrderList::KeyOf(const CUIData& response) {
    std::string key;
    for (const std::string& id : IdsOf(response)) key += id;
    return key;
}

bool COrderList::SetBasketDetail(CUIData& response, const CUIData* accounts, CUIData& out, uint64_t age) {
    const std::string key = KeyOf(response);
    if (key.empty()) {
        CCounters::Add("basket_answer_without_key");
        return false;
    }
    const Held& held = _take(key, response, accounts, age);

    out = CUIData();
    const ValueView table = GetDataView(key);
    for (CUIData* record : {&response, &out}) {
        record->SetType("order");
        record->SetData(key, table);
        record->SetData("basket_deal_table", held.tables.deals);
        record->SetData("basket_pending_table", held.tables.pending);
        if (!held.isWhole) record->SetData("incomplete", true);
    }
    const auto ids = IdsOf(response);
    for (size_t i = 0; i < ids.size(); ++i) out.SetData(kKeyNames[i], ids[i]);
    return true;
}

const COrderList::Held& COrderList::_take(const std::string& key, const CUIData& response,
                                          const CUIData* accounts, uint64_t age) {
    Held& held = _held(key);
    const std::string query = response.GetDataString("UUID");
    if (age != 0 && age < held.age && query != held.query) {
        CCounters::Add("older_answer_ignored");
        return held;
    }
    CDataTable table, part;
    if (held.query == query) GetData(key, table);
    if (response.GetData("Table", part)) Merge(table, part);
    SetData(key, table);
    held.query = query;
    held.age = std::max(held.age, age);

    const AccountNames names = accounts ? AccountNames(*accounts, "account") : AccountNames();
    held.tables = BasketTables();
    held.isWhole = true;
    for (const std::string& json : RawData(response)) {
        if (!held.tables.Read(json, names)) held.isWhole = false;
    }
    held.rows = table.GetRowNumber() + held.tables.deals.GetRowNumber() + held.tables.pending.GetRowNumber();
    _makeRoom();
    return held;
}

COrderList::Held& COrderList::_held(const std::string& key) {
    const auto found = std::ranges::find(m_held, key, &Held::key);
    if (found == m_held.end()) {
        m_held.emplace_back().key = key;
    } else {
        m_held.splice(m_held.end(), m_held, found);
    }
    return m_held.back();
}

void COrderList::_makeRoom() {
    const auto rows = [this] {
        return std::accumulate(m_held.begin(), m_held.end(), int64_t{0},
                               [](int64_t sum, const Held& held) { return sum + held.rows; });
    };
    while (m_held.size() > kMaxTables || (m_held.size() > 1 && rows() > kMaxRows)) {
        Remove(m_held.front().key);
        m_held.pop_front();
        CCounters::Add("basket_table_dropped");
    }
}

}  // namespace luadui
