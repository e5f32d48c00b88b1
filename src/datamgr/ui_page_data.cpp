#include "datamgr/ui_page_data.h"

#include <algorithm>
#include <utility>

#include "base/counters.h"
#include "datamgr/ui_registry.h"
#include "datamgr/ui_stock_data_manager.h"

namespace luadui {
namespace {

constexpr char kCommonData[] = "CommonData";
constexpr char kCommonModule[] = "module_commondata";
constexpr char kOnWaking[] = "sleep_refresh_request";

CUIStockDataManager& Router() { return CUIStockDataManager::get_mutable_instance(); }

// Kinds that the common data manager publishes although they are no common kinds: its own listeners alone
// hear of them.
bool IsHeardThere(std::string_view kind) {
    constexpr std::string_view kKinds[] = {"messagecenter",       "str_subkey_risk_push", "orderpush",
                                           "order_push_mutilist", "condition_order",      "positionsum",
                                           "entrustsubpush",      "dealsubpush"};
    return std::ranges::find(kKinds, kind) != std::end(kKinds);
}

// Whether someone asked for this record, so that it must reach him.
bool IsAsked(const CUIData& record, int handle) {
    return handle > 0 || record.GetDataText(kOnWaking) == "true";
}

// A question needs accounts or securities to ask for, unless it is for all accounts of a group.
bool CanBeAsked(std::string_view kind, const CUIData& record) {
    return ListStore::FamilyOf(kind) != ListStore::kFamilies || record.Has("fund_token") ||
           record.Has("updatecode");
}

using InGroup = bool (AccountDataList::*)(std::string_view group, const CDataTable& accounts, int row) const;

CDataTable RowsOf(const CDataTable& table, const AccountDataList& accounts, std::string_view group,
                  InGroup isInGroup) {
    CDataTable rows = table;
    for (int row = table.GetRowNumber() - 1; row >= 0; --row) {
        if (!(accounts.*isInGroup)(group, table, row)) rows.DeleteRow(row);
    }
    return rows;
}

CDataSet TokensOf(const CDataTable& rows) {
    CDataSet tokens;
    const int column = rows.FindColumn("fund_token");
    for (int row = 0; row < rows.GetRowNumber(); ++row) {
        if (const TextView token = rows.GetItemText(row, column); !token.empty()) tokens.Insert(token);
    }
    return tokens;
}

CDataSet Intersection(const CDataSet& a, const CDataSet& b) {
    CDataSet both;
    for (const std::string& text : a) {
        if (b.Contains(text)) both.Insert(text);
    }
    return both;
}

}  // namespace

CUIPageData::CUIPageData(std::string pageName) : m_name(std::move(pageName)) { InitRunType(kTypePageData); }

CUIPageData::~CUIPageData() {
    if (!m_isRegistered) return;
    for (const std::string& kind : m_notify.Kinds()) {
        _kindUnwanted(kind);
        if (!IsHeardThere(kind)) continue;
        for (const uint32_t handle : m_notify.Handles(kind)) {
            for (const auto reason : {NotifyTable::kRegistered, NotifyTable::kSubscribed})
                Router().CommonData().Listen(handle, kind, reason, false);
        }
    }
    Router().UnRegisterPage(m_name);
    _leaveQuotes();
}

bool CUIPageData::Init() {
    if (m_isRegistered) return true;
    m_isRegistered = Router().RegisterPage(m_name, this) == CUIStockDataManager::kDone;
    if (!m_isRegistered) return false;
    const int32_t self = GetHandle();
    CUIDataManager::Init(m_name);
    if (CBaseObject::Find(self) != this) return false;
    for (const std::string& kind : m_notify.Kinds()) {
        _kindWanted(kind);
        for (const uint32_t handle : m_notify.Handles(kind)) _ownWindow(handle);
    }
    return true;
}

bool CUIPageData::_adopt(CUIData& record) {
    if (!m_isRegistered) {
        CCounters::Add("page_not_registered");
        return false;
    }
    record.SetData("pageName", m_name);
    Router().SaveHandle2Page(record);
    return true;
}

void CUIPageData::_ownWindow(unsigned int handle) {
    CUIData window;
    window.SetData("handle", handle);
    window.SetData("pageName", m_name);
    Router().SaveHandle2Page(window);
}

bool CUIPageData::GetData(CUIData& request, bool cacheOnly, bool flag) {
    if (!_adopt(request)) return false;
    if (!cacheOnly && _takeQuoteQuery(request)) return false;
    const auto family = ListStore::FamilyOf(request.GetTypeText());
    if (family != ListStore::kFamilies) {
        SaveCurAccountGroup(request, family);
        if (m_groups[family].ofPortfolios) request.SetData("PB_MODE", "true");
        CDataSet tokens;
        _groupTokens(family, tokens);
        request.SetData("usertoken_set", tokens);
    }
    if (!IsCommonKind(request.GetTypeText())) return CUIDataManager::GetData(request, cacheOnly, flag);
    return Router().GetUIData(request, cacheOnly, flag, kCommonData);
}

CUIData CUIPageData::GetData(const std::string& kind) {
    return IsCommonKind(kind) ? Router().GetUIData(kind, kCommonData) : CUIDataManager::GetData(kind);
}

bool CUIPageData::GetData(const std::string& kind, CUIData& out) {
    return IsCommonKind(kind) ? Router().CommonData().GetData(kind, out) : CUIDataManager::GetData(kind, out);
}

bool CUIPageData::GetData(unsigned int handle, std::string kind, CDataSet& tokens, CUIData& out) {
    return CUIDataManager::GetData(handle, std::move(kind), tokens, out);
}

bool CUIPageData::GetData(unsigned int handle, std::string kind, std::string fundToken, CUIData& out) {
    return CUIDataManager::GetData(handle, std::move(kind), std::move(fundToken), out);
}

bool CUIPageData::GetData(unsigned int handle, std::string kind, std::string fundToken, CDataTable& out) {
    return IsCommonKind(kind)
               ? Router().CommonData().GetData(handle, std::move(kind), std::move(fundToken), out)
               : CUIDataManager::GetData(handle, std::move(kind), std::move(fundToken), out);
}

bool CUIPageData::GetDataShared(const std::string& kind, CUIData& out) {
    return IsCommonKind(kind) ? Router().CommonData().GetDataShared(kind, out)
                              : CUIDataManager::GetDataShared(kind, out);
}

void CUIPageData::SetData(CUIData* record, SET_DATA mode) {
    if (!record || !_adopt(*record)) return;
    const bool isSubscription = mode == kSetSubscribe || mode == kSetUnsubscribe;
    if (isSubscription && IsQuoteKind(record->GetTypeText())) return _setQuoteSubscription(record, mode);
    if (mode == kSetRequest && _takeQuoteQuery(*record)) return;
    _send(record, mode);
}

void CUIPageData::_send(CUIData* record, SET_DATA mode) {
    if (record->GetDataText("force_sendmoudle") == kCommonModule) {
        Router().CommonData().SetData(record, mode);
    } else {
        CUIDataManager::SetData(record, mode);
    }
}

void CUIPageData::RegisterNotify(unsigned int handle, std::string kind) {
    if (m_isRegistered) _ownWindow(handle);
    CUIDataManager::RegisterNotify(handle, std::move(kind));
}

void CUIPageData::UnRegisterNotify(unsigned int handle, std::string kind) {
    CUIDataManager::UnRegisterNotify(handle, kind);
    if (IsQuoteKind(kind) && !Wants(handle, kind)) Router().CommonData().Quotes().Leave(kind, handle);
}

void CUIPageData::Listen(uint32_t window, const std::string& kind, NotifyTable::Reason reason, bool wants) {
    if (IsHeardThere(kind)) Router().CommonData().Listen(window, kind, reason, wants);
    CUIDataManager::Listen(window, kind, reason, wants);
    _noteListening(window, kind);
}

void CUIPageData::_kindWanted(const std::string& kind) {
    if (m_isRegistered && IsCommonKind(kind)) Router().RegisterSubscribe(m_name, kind);
}

void CUIPageData::_kindUnwanted(const std::string& kind) {
    if (m_isRegistered) Router().UnRegisterSubscribe(m_name, kind);
}

// Sleeping and waking.

void CUIPageData::Sleep(bool asleep) {
    const bool isWaking = !asleep && !isActive();
    if (asleep || isWaking) m_pushToQuery = asleep;
    const int32_t self = GetHandle();
    CRequestBase::Sleep(asleep);
    if (!isWaking || CBaseObject::Find(self) != this) return;
    ResumeNotify();
    if (CBaseObject::Find(self) == this) _sendNoted();
}

void CUIPageData::ResumeNotify() {
    const int32_t self = GetHandle();
    for (const auto family : {ListStore::kPlain, ListStore::kCredit, ListStore::kGGT}) {
        if (m_groups[family].isChosen) _askAccountData(family);
        if (CBaseObject::Find(self) != this) return;
    }
}

void CUIPageData::_askAccountData(ListStore::Family family) {
    const Group group = m_groups[family];
    m_requeries.Drop(group.kind);
    CUIData request(group.kind);
    CDataSet tokens;
    _groupTokens(family, tokens);
    request.SetData("groupname", group.name);
    request.SetData("fund_token", tokens);
    if (group.ofPortfolios) request.SetData("PB_MODE", "true");
    _ask(std::move(request));
}

void CUIPageData::_ask(CUIData request) {
    request.SetData(kOnWaking, "true");
    request.SetData("handle", GetHandle());
    GetData(request, false, true);
}

void CUIPageData::_sendNoted() {
    const int32_t self = GetHandle();
    for (CUIData& request : m_requeries.Take()) {
        if (!_dropUnshown(request)) continue;
        _ask(std::move(request));
        if (CBaseObject::Find(self) != this) return;
    }
}

void CUIPageData::_onTick() {
    if (isActive()) _sendNoted();
}

// What is published passes here first.

bool CUIPageData::PreHandleNotify(const CUIData* record, int handle, bool flag) {
    if (!record || !CUIStockDataManager::IsCommonData(record)) return false;
    if (!IsAsked(*record, handle) && _showsNone(*record)) {
        CCounters::Add("quotes_not_shown");
        return true;
    }
    bool isNoted = false;
    if (m_pushToQuery && !IsAsked(*record, handle)) TransPushData2Query(record, isNoted);
    if (isNoted) CCounters::Add("record_noted_for_query");
    return isNoted || HandleNotifyAccountData(record, handle, flag);
}

bool CUIPageData::TransPushData2Query(const CUIData* record, bool& isNoted) {
    if (!record || record->GetTypeText().empty()) return false;
    const std::string_view kind = record->GetTypeText();
    if (IsNeverConverted(kind)) return false;
    const std::string_view query = QueryKindOfPush(kind);
    isNoted = !query.empty() && CanBeAsked(query, *record) && _noteForQuery(query, *record);
    return true;
}

bool CUIPageData::HandleNotifyAccountData(const CUIData* record, int handle, bool flag) {
    const std::string kind = record->GetType();
    const auto family = ListStore::FamilyOf(kind);
    if (family == ListStore::kFamilies) return false;
    const bool isAsked = IsAsked(*record, handle);
    if (record->GetDataType("fund_token") == kDataString) {
        if (isAsked || IsCurrentGroup(family, record->GetDataText("fund_token"))) return false;
        CCounters::Add("record_outside_group");
        return true;
    }
    if (record->GetDataType("fund_token") != kDataSet) return false;
    if (!isAsked && record->Has(kind) && IsPortfolioMode(*record) != m_groups[family].ofPortfolios) {
        CCounters::Add("record_of_other_mode");
        return true;
    }
    CUIData own = *record;
    // A whole list says also that the group has no account any more.
    const bool isWhole = record->Has(kind) && kind.find("_push") == std::string::npos;
    if (FilterMultiAccountPush(own, kind) || isWhole || isAsked) {
        ResponseNotify(&own, handle, flag);
    } else {
        CCounters::Add("record_outside_group");
    }
    return true;
}

bool CUIPageData::FilterMultiAccountPush(CUIData& record, const std::string& kind) const {
    const auto family = ListStore::FamilyOf(kind);
    const AccountDataList* const accounts = _accounts(family);
    // An account that has gone is in no list any more; its rows tell what is for this page.
    const bool isGone = record.GetDataText("operate") == "delete" && record.GetDataType(kind) == kDataTable;
    CDataTable rows;
    if (accounts && record.GetData(kind, rows)) {
        rows = RowsOf(rows, *accounts, m_groups[family].name,
                      isGone ? &AccountDataList::WasRowInGroup : &AccountDataList::IsRowInGroup);
        record.SetData(kind, rows);
    }
    CDataSet group, tokens;
    if (isGone) {
        group = TokensOf(rows);
    } else {
        _groupTokens(family, group);
    }
    for (const char* key : {"fund_token", "all_update_account"}) {
        CDataSet named;
        if (!record.GetData(key, named)) continue;
        named = Intersection(named, group);
        record.SetData(key, named);
        if (tokens.IsEmpty()) tokens = named;
    }
    return !tokens.IsEmpty() || rows.GetRowNumber() != 0;
}

// The page's current groups.

void CUIPageData::SaveCurAccountGroup(const CUIData& record, ListStore::Family family) {
    Group& group = m_groups[family];
    group.ofPortfolios = IsPortfolioMode(record) || (group.ofPortfolios && !record.Has("groupname"));
    if (!record.Has("groupname")) return;
    group.isChosen = true;
    group.kind = record.GetType();
    group.name = record.GetDataString("groupname");
}

const AccountDataList* CUIPageData::_accounts(ListStore::Family family) {
    return Router().CommonData().Lists().Accounts(family);
}

void CUIPageData::_groupTokens(ListStore::Family family, CDataSet& tokens) const {
    const AccountDataList* const accounts = _accounts(family);
    if (accounts) accounts->GetGroupAccount(m_groups[family].name, tokens);
}

bool CUIPageData::IsCurrentGroup(ListStore::Family family, std::string_view fundToken) const {
    const AccountDataList* const accounts = _accounts(family);
    return accounts && accounts->IsInGroup(m_groups[family].name, fundToken);
}

}  // namespace luadui
