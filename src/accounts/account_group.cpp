#include "accounts/account_group.h"

#include <algorithm>
#include <optional>
#include <utility>

#include "accounts/account_log.h"
#include "base/counters.h"
#include "base/json_text.h"
#include "base/text.h"

namespace luadui {
namespace {

// As JSON writes it: the quotes, and before what must not stand in a string a backslash.
std::string Quoted(std::string_view text) {
    JsonText json;
    json.Text(text);
    return json.Take();
}

// The texts of a JSON array of texts and numbers, each once; nothing when the text is something else.
std::optional<std::vector<std::string>> ReadMembers(std::string_view text) {
    std::vector<std::string> ids;
    text = TrimText(text);
    if (text.empty()) return ids;
    CJsonObject json;
    if (text.front() != '[' || !json.Parse("{\"ids\":" + std::string(text) + '}')) return std::nullopt;
    std::set<std::string> seen;
    for (const auto [name, value] : json.GetArray("ids")) {
        std::string id = TextOf(value);
        if (id.empty()) {
            CCounters::Add("account_group_member_refused");
        } else if (seen.insert(id).second) {
            ids.push_back(std::move(id));
        }
    }
    return ids;
}

}  // namespace

CJsonObject GroupInfo::ToJson() const {
    CJsonObject json;
    json.Set("groupid", id);
    json.Set("groupname", name);
    json.Set("grouptype", type);
    json.Set("issimulate", isSimulated);
    return json;
}

CAccountGroup::CAccountGroup(ResultEventSink& sink, GroupInfo info)
    : CAccountRequester(sink, kModuleGroup), m_info(std::move(info)) {}

bool CAccountGroup::SetMembers(std::string_view text) {
    auto ids = ReadMembers(text);
    if (!ids) {
        CCounters::Add("account_group_members_unreadable");
        return false;
    }
    m_added = std::move(*ids);
    m_members = {m_added.begin(), m_added.end()};
    _writeText(m_added);
    return true;
}

CJsonObject CAccountGroup::ToJson() const {
    CJsonObject json = m_info.ToJson();
    json.Set("accountlist", m_text);
    return json;
}

bool CAccountGroup::AddAccount(const CUIData& values) {
    return _request(kAddToGroup, values, HasMember(TextOf(values.GetDataView("accountid"))));
}

bool CAccountGroup::RemoveAccount(const CUIData& values) {
    return _request(kRemoveFromGroup, values, !HasMember(TextOf(values.GetDataView("accountid"))));
}

bool CAccountGroup::_request(const AccountOperation& operation, const CUIData& values, bool isRefused) {
    const std::string accountId = TextOf(values.GetDataView("accountid"));
    if (isRefused) {
        LogAbout(AccountSubject(accountId), operation.refused);
        return false;
    }
    CUIData complete = values;
    complete.SetData("groupid", m_info.id);
    CQueueReqItem request = MakeAccountRequest(operation, complete);
    _sendIf(!accountId.empty(), operation, request, AccountSubject(accountId));
    return true;
}

void CAccountGroup::_onAnswer(const Answer& answer) {
    if (HasFailed(answer.response)) return _failAsAnswered(answer);
    const std::string accountId = answer.params.GetDataString("accountid");
    if (answer.operation.type == kAddToGroup.type) {
        _add(accountId);
    } else {
        _remove(accountId);
    }
    LogAbout(AccountSubject(accountId), answer.operation.done);
    CJsonObject payload;
    payload.Set("groupinfo", ToJson());
    payload.Set("accountid", accountId);
    _succeed(answer, payload);
}

void CAccountGroup::_add(const std::string& accountId) {
    if (accountId.empty() || !m_members.insert(accountId).second) return;
    m_added.push_back(accountId);
    m_text.pop_back();
    m_text += (m_text == "[" ? "" : ",") + Quoted(accountId) + ']';
    ++m_changes;
}

void CAccountGroup::_remove(const std::string& accountId) {
    if (m_members.erase(accountId) == 0) return;
    std::erase(m_added, accountId);
    _writeText(m_members);
    ++m_changes;
}

template <class Ids>
void CAccountGroup::_writeText(const Ids& ids) {
    JsonText json(m_text.size());
    json.BeginArray();
    for (const std::string& id : ids) json.Text(id);
    json.EndArray();
    m_text = json.Take();
}

}  // namespace luadui
