#include "datalists/account_data_list.h"

#include <utility>

#include "base/counters.h"
#include "base/data_list.h"
#include "datalists/json_array.h"

namespace luadui {
namespace {

constexpr std::string_view kTokens = "fund_token";
constexpr std::string_view kMode = "PB_MODE";

void InsertAll(const CDataSet& texts, CDataSet& target) {
    for (const std::string& text : texts) target.Insert(text);
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

// The tokens of the account that row `row` of the accounts is.
CDataSet TokensOf(const FamilyAccounts& accounts, int row) {
    CDataSet tokens;
    const TextView own = accounts.rows.GetItemText(row, FindAccountColumn(accounts.rows, kFundToken));
    if (!own.empty()) tokens.Insert(own);
    for (const ListedPortfolio& portfolio : accounts.portfolios[static_cast<size_t>(row)]) {
        if (!portfolio.token.empty()) tokens.Insert(portfolio.token);
    }
    return tokens;
}

}  // namespace

void AccountDataList::Queue(News news) {
    const size_t untold = m_untold.size() + news.size();
    if (untold > kMaxUntold) {
        CCounters::Add("account_news_replaced", untold);
        m_untold.clear();
        news = AllRows();
    }
    for (CUIData& record : news) m_untold.push_back(std::move(record));
}

bool AccountDataList::TakeUntold(CUIData& record) {
    m_isTelling = !m_untold.empty();
    if (!m_isTelling) return false;
    record = std::move(m_untold.front());
    m_untold.pop_front();
    return true;
}

CFamilyAccountList::CFamilyAccountList(const Kinds& kinds) : AccountDataList(kinds.whole), m_kinds(kinds) {
    _sheet(kinds.whole, false);
}

CFamilyAccountList::~CFamilyAccountList() = default;

const char* CAccountDataList::ClassName() const { return "CAccountDataList"; }
const char* CAccountDataListCredit::ClassName() const { return "CAccountDataListCredit"; }
const char* CAccountDataListGGT::ClassName() const { return "CAccountDataListGGT"; }

bool CFamilyAccountList::GetData(CUIData& request) const {
    AccountSheet& sheet = _sheet(request.GetTypeText(), IsPortfolioMode(request));
    if (!m_hasAccounts) return false;
    const std::string group = request.GetDataString("groupname");
    CDataSet tokens;
    if (!GetGroupAccount(group, tokens)) CCounters::Add("account_group_unknown");
    request.SetData(sheet.GetForm().kind, _rows(sheet, group));
    request.SetData("usertoken_set", tokens);
    request.SetData("groupname", group);
    return true;
}

bool CFamilyAccountList::GetGroupAccount(std::string_view group, CDataSet& tokens) const {
    const CDataSet* const found = _tokens(group);
    tokens = found ? *found : CDataSet();
    return found != nullptr;
}

bool CFamilyAccountList::IsInGroup(std::string_view group, std::string_view token) const {
    const CDataSet* const tokens = _tokens(group);
    return tokens && tokens->Contains(token);
}

// An account that is not logged in has no token: it is known by its id.
bool CFamilyAccountList::IsRowInGroup(std::string_view group, const CDataTable& accounts, int row) const {
    const TextView token = accounts.GetItemText(row, FindAccountColumn(accounts, kFundToken));
    if (!token.empty()) return IsInGroup(group, token);
    return m_tokens.contains(accounts.GetItemText(row, FindAccountColumn(accounts, kAccountId))) &&
           WasRowInGroup(group, accounts, row);
}

bool CFamilyAccountList::WasRowInGroup(std::string_view group, const CDataTable& accounts, int row) const {
    if (group.empty()) return true;
    const CDataSet* const members = _members(group);
    return members && members->Contains(accounts.GetItemText(row, FindAccountColumn(accounts, kAccountId)));
}

AccountDataList::News CFamilyAccountList::WholeLists() const {
    News lists;
    if (!m_hasAccounts) return lists;
    for (const auto& sheet : m_sheets) {
        CUIData& record = lists.emplace_back(sheet->GetForm().kind);
        record.SetData(sheet->GetForm().kind, sheet->All());
        record.SetData(kTokens, m_allTokens);
        if (sheet->GetForm().byPortfolio) record.SetData(kMode, "true");
    }
    return lists;
}

AccountDataList::News CFamilyAccountList::AllRows() const {
    News lists = WholeLists();
    if (!m_hasAccounts) return lists;
    for (const auto& sheet : m_sheets) sheet->TellAll(m_allTokens, lists);
    return lists;
}

AccountDataList::News CFamilyAccountList::SetAccounts(const CDataTable& accounts) {
    m_accounts = {RowsOfFamily(accounts), {}};
    m_tokens.clear();
    m_groupTokens.clear();
    m_allTokens = CDataSet();
    const int id = FindAccountColumn(accounts, kAccountId);
    const int portfolios = m_accounts.rows.FindColumn("portfolios");
    for (int row = 0; row < m_accounts.rows.GetRowNumber(); ++row) {
        m_accounts.portfolios.push_back(ReadPortfolios(m_accounts.rows.GetItemText(row, portfolios)));
        const CDataSet tokens = TokensOf(m_accounts, row);
        InsertAll(tokens, m_allTokens);
        InsertAll(tokens, m_tokens[std::string(m_accounts.rows.GetItemText(row, id))]);
    }
    m_hasAccounts = true;
    m_money.Sort([this](const std::string& token) { return m_allTokens.Contains(token); });

    News news;
    for (const auto& sheet : m_sheets) sheet->SetAccounts(m_accounts, m_money, news);
    SetData(m_kinds.whole, _main().All());
    SetData(kTokens, m_allTokens);
    return news;
}

CDataTable CFamilyAccountList::RowsOfFamily(const CDataTable& accounts) const {
    const int tradeType = FindAccountColumn(accounts, kTradeType);
    CDataTable rows = accounts;
    for (int row = rows.GetRowNumber() - 1; row >= 0; --row) {
        if (!_isOfFamily(rows.GetItemText(row, tradeType))) rows.DeleteRow(row);
    }
    return rows;
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
    m_groupMembers.clear();
    m_groupTokens.clear();
    for (const auto& [groupId, group] : m_groups) InsertAll(group.members, m_groupMembers[group.name]);
    for (const auto& sheet : m_sheets) sheet->DropGroups();
}

AccountDataList::News CFamilyAccountList::SetFunds(std::string_view token, const CDataTable& funds) {
    AccountMoney& money = m_money.Of(token, m_allTokens.Contains(token));
    money.SetFunds(funds);
    return _showMoney(token, money);
}

AccountDataList::News CFamilyAccountList::SetPositions(std::string_view token, const CDataTable& positions) {
    AccountMoney& money = m_money.Of(token, m_allTokens.Contains(token));
    money.SetPositions(positions);
    return _showMoney(token, money);
}

AccountDataList::News CFamilyAccountList::_showMoney(std::string_view token, const AccountMoney& money) {
    News news;
    for (const auto& sheet : m_sheets) {
        if (sheet->SetMoney(token, money, news) && sheet == m_sheets.front())
            SetData(m_kinds.whole, sheet->All());
    }
    return news;
}

const CDataSet* CFamilyAccountList::_members(std::string_view group) const {
    const auto members = m_groupMembers.find(group);
    return members == m_groupMembers.end() ? nullptr : &members->second;
}

const CDataSet* CFamilyAccountList::_tokens(std::string_view group) const {
    if (group.empty()) return &m_allTokens;
    const auto made = m_groupTokens.find(group);
    if (made != m_groupTokens.end()) return &made->second;
    const CDataSet* const members = _members(group);
    if (!members) return nullptr;
    CDataSet tokens;
    for (const std::string& id : *members) {
        if (const auto found = m_tokens.find(id); found != m_tokens.end()) InsertAll(found->second, tokens);
    }
    return &m_groupTokens.emplace(group, std::move(tokens)).first->second;
}

AccountSheet& CFamilyAccountList::_sheet(std::string_view kind, bool byPortfolio) const {
    const bool byCurrency = !kind.empty() && kind == m_kinds.wholeByCurrency;
    for (const auto& sheet : m_sheets) {
        const AccountSheet::Form& form = sheet->GetForm();
        if (form.byCurrency == byCurrency && form.byPortfolio == byPortfolio) return *sheet;
    }
    m_sheets.push_back(std::make_unique<AccountSheet>(AccountSheet::Form{
        std::string(byCurrency ? m_kinds.wholeByCurrency : m_kinds.whole),
        std::string(byCurrency ? m_kinds.pushByCurrency : m_kinds.push), byPortfolio, byCurrency}));
    News unsaid;
    m_sheets.back()->SetAccounts(m_accounts, m_money, unsaid);
    return *m_sheets.back();
}

CDataTable CFamilyAccountList::_rows(AccountSheet& sheet, std::string_view group) const {
    if (group.empty()) return sheet.All();
    const CDataSet* const members = _members(group);
    if (members) return sheet.OfGroup(std::string(group), *members);
    CDataTable none;
    none.CopyHeader(sheet.All());
    return none;
}

}  // namespace luadui
