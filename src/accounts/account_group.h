// CAccountGroup and CAccountGroupList: named sets of accounts that the user made.
#pragma once

#include <cstdint>
#include <map>
#include <memory>
#include <set>
#include <string>
#include <string_view>
#include <vector>

#include "accounts/account_requester.h"

namespace luadui {

// What a group is, without its members. Texts are code page 936.
struct GroupInfo {
    std::string id, name, type, isSimulated;

    // {"groupid", "groupname", "grouptype", "issimulate"}
    CJsonObject ToJson() const;
};

// One group. Operations, threads and lifetime as for CAccount; events carry {"groupinfo": ToJson(), "accountid"}.
class CAccountGroup final : public CAccountRequester {
  public:
    CAccountGroup(ResultEventSink& sink, GroupInfo info);

    const GroupInfo& Info() const { return m_info; }
    void SetInfo(GroupInfo info) { m_info = std::move(info); }
    // Takes over a member list, a JSON array of account ids (numbers are taken as texts; empty text is an empty list).
    // False, and the members as they were, when the text is none ("account_group_members_unreadable").
    bool SetMembers(std::string_view text);

    bool HasMember(std::string_view accountId) const { return m_members.contains(accountId); }
    const std::set<std::string, std::less<>>& Members() const { return m_members; }
    const std::vector<std::string>& MembersAsAdded() const { return m_added; }
    // The member list as JSON array text: ["1001","1002"].
    const std::string& MemberText() const { return m_text; }
    // Info with "accountlist", the member text, at the end.
    CJsonObject ToJson() const;

    // `values` brings "accountid" and "useraccount", and "UUID" if the asker wants to know it. False when the account is
    // in the group already, or is not in it.
    bool AddAccount(const CUIData& values);
    bool RemoveAccount(const CUIData& values);

    // Grows with every member that an answer adds or removes.
    uint64_t Changes() const { return m_changes; }

  private:
    void _onAnswer(const Answer& answer) override;
    bool _request(const AccountOperation& operation, const CUIData& values, bool isRefused);
    void _add(const std::string& accountId);
    void _remove(const std::string& accountId);
    template <class Ids>
    void _writeText(const Ids& ids);

    GroupInfo m_info;
    std::set<std::string, std::less<>> m_members;
    std::vector<std::string> m_added;  // the same, in the order in which they were added
    std::string m_text = "[]";
    uint64_t m_changes = 0;
};

// All groups of the user. The answer to a query is the whole list: groups that are not in it go. Requests of a group that goes
// end as failed ("账户组不存在！"). An answer that may be
// older than a change that was confirmed while it was on its way is not followed: the query is sent again under its UUID
// ("account_group_answer_outdated").
//
// Operations, threads and lifetime as for CAccount. Events carry {"groupinfo": ...} where they are about one group, and
// {"clientgroups": ToJson()} after a query.
class CAccountGroupList final : public CAccountRequester {
  public:
    using Groups = std::map<std::string, std::unique_ptr<CAccountGroup>, std::less<>>;  // by id

    // The groups report to `sink` too.
    explicit CAccountGroupList(ResultEventSink& sink);

    // The signed-in user, who goes out as "useraccount" with all requests that do not bring one.
    void SetUserAccount(std::string_view user) { m_userAccount = user; }
    const std::string& UserAccount() const { return m_userAccount; }

    // The group; null when there is none. Look up again after every call out: answers and sinks remove groups.
    CAccountGroup* Find(std::string_view groupId) const;
    const Groups& All() const { return m_groups; }
    // An array of all groups' ToJson(), in the order of their ids.
    CDataList ToJson() const;

    bool Query(const CUIData& values = {});
    // `values` brings "groupid", "groupname", "grouptype", "issimulate". False when there is such a group.
    bool AddGroup(const CUIData& values);
    // `values` brings "groupid". False when there is no such group.
    bool DeleteGroup(const CUIData& values);
    // CAccountGroup's operations on the group "groupid" of `values`; false also when there is no such group.
    bool AddAccount(const CUIData& values);
    bool RemoveAccount(const CUIData& values);

  private:
    void _onAnswer(const Answer& answer) override;
    bool _request(const AccountOperation& operation, const CUIData& values, bool isRefused);
    CUIData _withUser(const CUIData& values) const;
    void _answerQuery(const Answer& answer);
    std::vector<ResultEvent> _follow(const CDataTable& rows);
    void _takeRow(const CDataTable& rows, int row);
    CAccountGroup& _ensure(const std::string& groupId);
    CJsonObject _create(const CUIData& params);
    CJsonObject _remove(const std::string& groupId, std::vector<ResultEvent>& ended);
    void _tell(const std::vector<ResultEvent>& events);
    uint64_t _allChanges() const;

    Groups m_groups;
    std::string m_userAccount;
    uint64_t m_changes = 0;  // groups that answers added or removed, and theirs that went
    std::map<std::string, uint64_t, std::less<>> m_queries;  // by UUID: _allChanges() when the query was sent
};

}  // namespace luadui
