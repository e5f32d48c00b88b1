#include "datalists/account_data_list.h"

#include <algorithm>
#include <utility>

#include "base/counters.h"
#include "base/data_list.h"
#include "base/json_object.h"
#include "datalists/json_array.h"

namespace luadui {
namespace {

constexpr std::string_view kFundToken = "fund_token";

int FindEither(const CDataTable& table, std::string_view name, std::string_view otherName) {
    const int col = table.FindColumn(name);
    return col >= 0 ? col : table.FindColumn(otherName);
}

int FindId(const CDataTable& accounts) { return FindEither(accounts, "account_id", "accountid"); }

// The columns are those of `source`, or more.
void AppendRowOf(const CDataTable& source, int row, CDataTable& target) {
    const int added = target.AppendRow();
    const TableRow cells = source.GetRow(row);
    for (int col = 0; col < source.GetColumnNumber(); ++col) {
        if (const TextView text = cells[col]; !text.empty()) target.SetItemText(added, col, text);
    }
}

void InsertAll(const CDataSet& texts, CDataSet& target) {
    for (const std::string& text : texts) target.Insert(text);
}

// The tokens of the account's portfolios.
void AddPortfolioTokens(std::string_view json, CDataSet& tokens) {
    if (json.empty()) return;
    CDataList portfolios;
    if (!ParseJsonArray(json, portfolios)) return CCounters::Add("account_portfolios_unreadable");
    for (const auto& [key, value] : portfolios) {
        CJsonObject portfolio;
        if (!value.Get(portfolio)) continue;
        if (const TextView token = portfolio.GetText(kFundToken); !token.empty()) tokens.Insert(token);
    }
}

// False when the text is no array of ids; elements that are none are counted.
bool ReadMembers(std::string_view json, CDataSet& members) {
    CDataList ids;
    if (!ParseJsonArray(json, ids)) return false;
    members.Clear();
    for (const auto& [key, value] : ids) {
        if (const TextView id = value.AsText(); !id.empty()) {
            members.Insert(id);
        } else {
            CCounters::Add("account_group_member_dropped");
        }
    }
    return true;
}

}  // namespace

CFamilyAccountList::~CFamilyAccountList() = default;

const char* CAccountDataList::ClassName() const { return "CAccountDataList"; }
const char* CAccountDataListCredit::ClassName() const { return "CAccountDataListCredit"; }
const char* CAccountDataListGGT::ClassName() const { return "CAccountDataListGGT"; }

bool CFamilyAccountList::GetData(CUIData& request) const {
    if (!m_hasAccounts) return false;
    const std::string group = request.GetDataString("groupname");
    const std::string type = request.GetType();
    const View* view = _view(group);
    const View none = view ? View() : _makeView(CDataSet());
    if (!view) {
        CCounters::Add("account_group_unknown");
        view = &none;
    }
    request.SetData(_serves(type) ? type : m_kind, view->rows);
    request.SetData("usertoken_set", view->tokens);
    request.SetData("groupname", group);
    return true;
}

bool CFamilyAccountList::GetGroupAccount(std::string_view group, CDataSet& tokens) const {
    const View* view = _view(group);
    tokens = view ? view->tokens : CDataSet();
    return view != nullptr;
}

bool CFamilyAccountList::IsInGroup(std::string_view group, std::string_view token) const {
    const View* view = _view(group);
    return view && view->tokens.Contains(token);
}

// An account that is not logged in has no token: it is known by its id.
bool CFamilyAccountList::IsRowInGroup(std::string_view group, const CDataTable& accounts, int row) const {
    const TextView token = accounts.GetItemText(row, accounts.FindColumn(kFundToken));
    if (!token.empty()) return IsInGroup(group, token);
    const TextView id = accounts.GetItemText(row, FindId(accounts));
    if (!m_rows.contains(id)) return false;
    const auto members = m_members.find(group);
    return group.empty() || (members != m_members.end() && members->second.Contains(id));
}

void CFamilyAccountList::SetAccounts(const CDataTable& accounts) {
    const int id = FindId(accounts);
    const int tradeType = FindEither(accounts, "trade_type", "tradetype");
    const int token = accounts.FindColumn(kFundToken);
    const int portfolios = accounts.FindColumn("portfolios");

    View all;
    all.rows.CopyHeader(accounts);
    if (token < 0) all.rows.AddColumn(kFundToken);
    m_rows.clear();
    m_tokens.clear();
    for (int row = 0; row < accounts.GetRowNumber(); ++row) {
        const TableRow cells = accounts.GetRow(row);
        if (!_isOfFamily(cells[tradeType])) continue;
        CDataSet tokens;
        if (!cells[token].empty()) tokens.Insert(cells[token]);
        AddPortfolioTokens(cells[portfolios], tokens);
        InsertAll(tokens, all.tokens);
        m_rows[std::string(cells[id])].push_back(static_cast<int>(m_tokens.size()));
        m_tokens.push_back(std::move(tokens));
        AppendRowOf(accounts, row, all.rows);
    }
    m_all = std::move(all);
    m_hasAccounts = true;
    m_views.clear();
    SetData(m_kind, m_all.rows);
    SetData(kFundToken, m_all.tokens);
}

void CFamilyAccountList::SetGroups(const CDataTable& groups) {
    Groups known;
    const int id = groups.FindColumn("groupid");
    const int name = groups.FindColumn("groupname");
    const int account = groups.FindColumn("account");
    for (int row = 0; row < groups.GetRowNumber(); ++row) {
        const TableRow cells = groups.GetRow(row);
        Group group{cells[name], CDataSet()};
        if (!ReadMembers(cells[account], group.members)) {
            CCounters::Add("account_group_unreadable");
            if (const auto old = m_groups.find(cells[id]); old != m_groups.end())
                group.members = old->second.members;
        }
        known.insert_or_assign(std::string(cells[id]), std::move(group));
    }
    m_groups = std::move(known);
    m_members.clear();
    for (const auto& [groupId, group] : m_groups) InsertAll(group.members, m_members[group.name]);
    m_views.clear();
}

const CFamilyAccountList::View* CFamilyAccountList::_view(std::string_view group) const {
    if (group.empty()) return &m_all;
    const auto made = m_views.find(group);
    if (made != m_views.end()) return &made->second;
    const auto members = m_members.find(group);
    if (members == m_members.end()) return nullptr;
    return &m_views.emplace(members->first, _makeView(members->second)).first->second;
}

CFamilyAccountList::View CFamilyAccountList::_makeView(const CDataSet& members) const {
    std::vector<int> rows;
    for (const std::string& member : members) {
        const auto found = m_rows.find(member);
        if (found != m_rows.end()) rows.insert(rows.end(), found->second.begin(), found->second.end());
    }
    std::sort(rows.begin(), rows.end());  // as in the list of all

    View view;
    view.rows.CopyHeader(m_all.rows);
    for (const int row : rows) {
        AppendRowOf(m_all.rows, row, view.rows);
        InsertAll(m_tokens[static_cast<size_t>(row)], view.tokens);
    }
    return view;
}

}  // namespace luadui
