#include <algorithm>
#include <iterator>
#include <utility>

#include "accounts/account_group.h"
#include "accounts/account_log.h"
#include "base/counters.h"
#include "base/data_list.h"

namespace luadui {
namespace {

struct InfoColumn {
    std::string_view name;  // in requests and tables
    std::string GroupInfo::*text;
};
constexpr InfoColumn kInfoColumns[] = {
    {"groupname", &GroupInfo::name},
    {"grouptype", &GroupInfo::type},
    {"issimulate", &GroupInfo::isSimulated},
};

constexpr std::string_view kNoGroup = "账户组不存在！";

CJsonObject AboutGroup(const CJsonObject& info) {
    CJsonObject payload;
    payload.Set("groupinfo", info);
    return payload;
}

}  // namespace

CAccountGroupList::CAccountGroupList(ResultEventSink& sink) : CAccountRequester(sink, kModuleGroupList) {}

CAccountGroup* CAccountGroupList::Find(std::string_view groupId) const {
    const auto found = m_groups.find(groupId);
    return found == m_groups.end() ? nullptr : found->second.get();
}

CDataList CAccountGroupList::ToJson() const {
    CDataList groups;
    for (const auto& [id, group] : m_groups) groups.Append(group->ToJson());
    return groups;
}

bool CAccountGroupList::Query(const CUIData& values) { return _request(kQueryGroups, values, false); }

bool CAccountGroupList::AddGroup(const CUIData& values) {
    return _request(kAddGroup, values, Find(TextOf(values.GetDataView("groupid"))) != nullptr);
}

bool CAccountGroupList::DeleteGroup(const CUIData& values) {
    return _request(kDeleteGroup, values, Find(TextOf(values.GetDataView("groupid"))) == nullptr);
}

bool CAccountGroupList::AddAccount(const CUIData& values) {
    CAccountGroup* const group = Find(TextOf(values.GetDataView("groupid")));
    return group && group->AddAccount(_withUser(values));
}

bool CAccountGroupList::RemoveAccount(const CUIData& values) {
    CAccountGroup* const group = Find(TextOf(values.GetDataView("groupid")));
    return group && group->RemoveAccount(_withUser(values));
}

bool CAccountGroupList::_request(const AccountOperation& operation, const CUIData& values, bool isRefused) {
    const bool isQuery = operation.type == kQueryGroups.type;
    const std::string groupId = TextOf(values.GetDataView("groupid"));
    if (isRefused) {
        LogAbout(GroupSubject(groupId), operation.refused);
        return false;
    }
    CQueueReqItem request = MakeAccountRequest(operation, _withUser(values));
    if (isQuery) m_queries.try_emplace(request.GetDataString("UUID"), _allChanges());
    _sendIf(isQuery || !groupId.empty(), operation, request, GroupSubject(groupId));
    return true;
}

CUIData CAccountGroupList::_withUser(const CUIData& values) const {
    CUIData complete = values;
    if (!values.Has("useraccount")) complete.SetData("useraccount", m_userAccount);
    return complete;
}

void CAccountGroupList::_onAnswer(const Answer& answer) {
    if (answer.operation.type == kQueryGroups.type) return _answerQuery(answer);
    if (HasFailed(answer.response)) return _failAsAnswered(answer);
    const std::string groupId = answer.params.GetDataString("groupid");
    const bool isAdded = answer.operation.type == kAddGroup.type;
    std::vector<ResultEvent> ended;
    const CJsonObject info = isAdded ? _create(answer.params) : _remove(groupId, ended);
    LogAbout(GroupSubject(groupId), answer.operation.done);
    const int32_t handle = GetHandle();
    _succeed(answer, AboutGroup(info));
    if (IsAlive(handle)) _tell(ended);
}

void CAccountGroupList::_tell(const std::vector<ResultEvent>& events) {
    const int32_t handle = GetHandle();
    for (const ResultEvent& event : events) {
        _sink().OnResultEvent(event);
        if (!IsAlive(handle)) return;
    }
}

void CAccountGroupList::_answerQuery(const Answer& answer) {
    const auto query = m_queries.extract(answer.uuid);
    if (HasFailed(answer.response)) return _failAsAnswered(answer);
    CDataTable rows;
    if (!TableOf(answer.response, rows) || rows.FindColumn("groupid") < 0)
        return _fail(answer, MissingTable(answer.response));
    if (query && query.mapped() != _allChanges()) {
        CCounters::Add("account_group_answer_outdated");
        CUIData values = answer.params;
        values.SetData("UUID", answer.uuid);
        Query(values);
        return;
    }
    const std::vector<ResultEvent> ended = _follow(rows);
    CJsonObject payload;
    payload.Set("clientgroups", ToJson());
    const int32_t handle = GetHandle();
    _succeed(answer, payload);
    if (IsAlive(handle)) _tell(ended);
}

std::vector<ResultEvent> CAccountGroupList::_follow(const CDataTable& rows) {
    std::set<std::string, std::less<>> named;
    for (int row = 0; row < rows.GetRowNumber(); ++row) {
        const std::string_view id = rows.GetItemText(row, "groupid");
        if (id.empty()) {
            CCounters::Add("account_group_refused");
            continue;
        }
        named.emplace(id);
        _takeRow(rows, row);
    }
    std::vector<ResultEvent> ended;
    std::erase_if(m_groups, [&](const auto& group) {
        if (named.contains(group.first)) return false;
        m_changes += group.second->Changes();  // the sum never falls
        std::ranges::move(group.second->Abandon(kNoGroup), std::back_inserter(ended));
        return true;
    });
    return ended;
}

void CAccountGroupList::_takeRow(const CDataTable& rows, int row) {
    CAccountGroup& group = _ensure(std::string(rows.GetItemText(row, "groupid")));
    GroupInfo info = group.Info();
    for (const InfoColumn& column : kInfoColumns) {
        const int col = rows.FindColumn(column.name);
        if (col >= 0) info.*column.text = std::string_view(rows.GetItemText(row, col));
    }
    group.SetInfo(std::move(info));
    const int members = rows.FindColumn("account");
    if (members >= 0) group.SetMembers(rows.GetItemText(row, members));
}

CAccountGroup& CAccountGroupList::_ensure(const std::string& groupId) {
    auto& group = m_groups[groupId];
    if (!group) group = std::make_unique<CAccountGroup>(_sink(), GroupInfo{groupId, {}, {}, {}});
    return *group;
}

CJsonObject CAccountGroupList::_create(const CUIData& params) {
    CAccountGroup& group = _ensure(params.GetDataString("groupid"));
    GroupInfo info = group.Info();
    for (const InfoColumn& column : kInfoColumns) info.*column.text = params.GetDataString(column.name);
    CJsonObject json = info.ToJson();
    group.SetInfo(std::move(info));
    ++m_changes;
    return json;
}

CJsonObject CAccountGroupList::_remove(const std::string& groupId, std::vector<ResultEvent>& ended) {
    const auto found = m_groups.find(groupId);
    if (found == m_groups.end()) return GroupInfo{groupId, {}, {}, {}}.ToJson();
    CJsonObject json = found->second->ToJson();
    m_changes += found->second->Changes() + 1;
    ended = found->second->Abandon(kNoGroup);
    m_groups.erase(found);
    return json;
}

uint64_t CAccountGroupList::_allChanges() const {
    uint64_t changes = m_changes;
    for (const auto& [id, group] : m_groups) changes += group->Changes();
    return changes;
}

}  // namespace luadui
