// The account data lists: the accounts of the user, by family and by group.
#pragma once

#include <map>
#include <string>
#include <string_view>
#include <vector>

#include "base/data_set.h"
#include "base/data_table.h"
#include "base/ui_data.h"

namespace luadui {

// One family's accounts, as the managers see them. A record: all rows of the family under the list's kind,
// all tokens under "fund_token".
//
// A group is named by its name; the empty name stands for all accounts of the family. Groups know account
// ids, so a group has in each family those of its accounts that belong there; groups of the same name count
// as one. The tokens of an account are its own "fund_token" and those of its portfolios; one that is not
// logged in has none.
//
// Threads: the UI thread.
class AccountDataList : public CUIData {
  public:
    using CUIData::CUIData;
    using CUIData::GetData;

    // Answers a page: puts the rows of the group "groupname" under the request's kind (the list's kind if the
    // request has none of the family's), their tokens as the set "usertoken_set" and the name as "groupname".
    // False, and nothing changed, while no accounts have been set.
    virtual bool GetData(CUIData& request) const = 0;
    // The tokens of a group; none, and false, when there is no such group.
    virtual bool GetGroupAccount(std::string_view group, CDataSet& tokens) const = 0;
    virtual bool IsInGroup(std::string_view group, std::string_view token) const = 0;
    // Whether row `row` of a table like that of SetAccounts is of an account of the group, logged in or not.
    virtual bool IsRowInGroup(std::string_view group, const CDataTable& accounts, int row) const = 0;

    // Replaces all accounts: a row each, with "account_id" or "accountid", "trade_type" or "tradetype",
    // "fund_token" and "portfolios" (JSON: an array of objects with "fund_token"). Rows of other families are
    // passed over; a missing column reads as empty; unreadable portfolios are counted as
    // "account_portfolios_unreadable".
    virtual void SetAccounts(const CDataTable& accounts) = 0;
    // Replaces all groups: a row each, with "groupid", "groupname" and "account" (JSON: an array of account
    // ids). A group whose ids are unreadable keeps those that it had, counted as "account_group_unreadable".
    virtual void SetGroups(const CDataTable& groups) = 0;
};

// What the families have in common. They differ in kind and in the accounts that belong to them.
class CFamilyAccountList : public AccountDataList {
  public:
    ~CFamilyAccountList() override;
    CFamilyAccountList(const CFamilyAccountList&) = delete;
    CFamilyAccountList& operator=(const CFamilyAccountList&) = delete;

    using AccountDataList::GetData;
    bool GetData(CUIData& request) const override;
    bool GetGroupAccount(std::string_view group, CDataSet& tokens) const override;
    bool IsInGroup(std::string_view group, std::string_view token) const override;
    bool IsRowInGroup(std::string_view group, const CDataTable& accounts, int row) const override;
    void SetAccounts(const CDataTable& accounts) override;
    void SetGroups(const CDataTable& groups) override;

  protected:
    explicit CFamilyAccountList(std::string_view kind) : AccountDataList(kind), m_kind(kind) {}
    // Whether accounts with this trade type belong here.
    virtual bool _isOfFamily(std::string_view tradeType) const = 0;
    // Whether requests of this kind are served here.
    virtual bool _serves(std::string_view kind) const { return kind == m_kind; }

  private:
    struct Group {
        std::string name;
        CDataSet members;  // account ids
    };
    // What pages get of a group.
    struct View {
        CDataTable rows;
        CDataSet tokens;
    };
    using Groups = std::map<std::string, Group, std::less<>>;
    using Members = std::map<std::string, CDataSet, std::less<>>;

    // Null when there is no such group.
    const View* _view(std::string_view group) const;
    View _makeView(const CDataSet& members) const;

    const std::string m_kind;
    bool m_hasAccounts = false;
    View m_all;
    std::vector<CDataSet> m_tokens;                               // of each row of m_all
    std::map<std::string, std::vector<int>, std::less<>> m_rows;  // account id -> rows of m_all
    Groups m_groups;                                              // by group id
    Members m_members;                                            // by group name
    mutable std::map<std::string, View, std::less<>> m_views;     // by group name, made when asked for
};

// Accounts whose trade type is "2" trade on credit; all others are ordinary ones, also those that do not say.
class CAccountDataList : public CFamilyAccountList {
  public:
    CAccountDataList() : CFamilyAccountList("accountdatalist") {}
    const char* ClassName() const override;

  protected:
    bool _isOfFamily(std::string_view tradeType) const override { return tradeType != "2"; }
    // The same accounts, where a page wants their money by currency.
    bool _serves(std::string_view kind) const override {
        return kind == "accountdatalist" || kind == "currency_accountdatalist";
    }
};

class CAccountDataListCredit : public CFamilyAccountList {
  public:
    CAccountDataListCredit() : CFamilyAccountList("accountdatalistcredit") {}
    const char* ClassName() const override;

  protected:
    bool _isOfFamily(std::string_view tradeType) const override { return tradeType == "2"; }
};

// Stock Connect has no trade type of its own: ordinary accounts trade there too.
class CAccountDataListGGT : public CFamilyAccountList {
  public:
    CAccountDataListGGT() : CFamilyAccountList("accountdatalist_ggt") {}
    const char* ClassName() const override;

  protected:
    bool _isOfFamily(std::string_view tradeType) const override { return tradeType != "2"; }
};

}  // namespace luadui
