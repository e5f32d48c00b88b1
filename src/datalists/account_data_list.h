// The account data lists: the accounts of the user, by family and by group.
#pragma once

#include <deque>
#include <map>
#include <memory>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "base/data_set.h"
#include "base/data_table.h"
#include "base/ui_data.h"
#include "datalists/account_money.h"
#include "datalists/account_sheet.h"
#include "datalists/account_units.h"
#include "datalists/portfolio_mode.h"

namespace luadui {

// One family's accounts with their money, as the managers see them. A record: the rows of all accounts of the family
// under the list's kind, all tokens under "fund_token".
//
// Rows have the columns of kAccountColumnNames, then the server's others. They stand for an account each, in portfolio
// mode for a portfolio each; under "currency_accountdatalist" for one of its currencies.
//
// A group is named by its name; the empty name stands for all accounts of the family. Groups know account
// ids, so a group has in each family those of its accounts that belong there; groups of the same name count
// as one. The tokens of an account are its own "fund_token" and those of its portfolios; one that is not
// logged in has none.
//
// Changes return the news of them, records to be published (see AccountSheet): in the list's main form, and in the
// others as soon as somebody has asked for them.
//
// Threads: the UI thread.
class AccountDataList : public CUIData {
  public:
    using CUIData::CUIData;
    using CUIData::GetData;
    using News = std::vector<CUIData>;

    // Answers a page: puts the rows of the group "groupname" under the request's kind (the list's kind if the
    // request has none of the family's), their tokens as the set "usertoken_set" and the name as "groupname".
    // False, and nothing changed, while no accounts have been set.
    virtual bool GetData(CUIData& request) const = 0;
    // The tokens of a group; none, and false, when there is no such group.
    virtual bool GetGroupAccount(std::string_view group, CDataSet& tokens) const = 0;
    virtual bool IsInGroup(std::string_view group, std::string_view token) const = 0;
    // Whether row `row` of a table like that of SetAccounts is of an account of the group, logged in or not.
    virtual bool IsRowInGroup(std::string_view group, const CDataTable& accounts, int row) const = 0;
    // The same for rows of accounts that have gone, which only groups still know.
    virtual bool WasRowInGroup(std::string_view group, const CDataTable& accounts, int row) const = 0;
    // The rows of all accounts, as records of the kinds and modes that were asked for.
    virtual News WholeLists() const = 0;
    // The same, and again as updates for those who take the push kinds only.
    virtual News AllRows() const = 0;

    // Replaces all accounts: a row each, with the columns that FindAccountColumn knows and "portfolios" (see
    // ReadPortfolios). Rows of other families are passed over; a missing column reads as empty.
    virtual News SetAccounts(const CDataTable& accounts) = 0;
    // The rows of those accounts that belong to the family, as the server sent them.
    virtual CDataTable RowsOfFamily(const CDataTable& accounts) const = 0;
    // Replaces all groups: a row each, with "groupid", "groupname" and "account" (JSON: an array of account
    // ids). A group whose ids are unreadable keeps those that it had, counted as "account_group_unreadable".
    virtual void SetGroups(const CDataTable& groups) = 0;
    // Replaces the funds, or the positions, of an account or portfolio (see AccountMoney). What comes before its
    // account is kept for it.
    virtual News SetFunds(std::string_view token, const CDataTable& funds) = 0;
    virtual News SetPositions(std::string_view token, const CDataTable& positions) = 0;

    // News wait here until they are told, so that pages hear of changes in their order, also of those that pages
    // cause while they are told of others. Beyond kMaxUntold records (somebody who is told takes his time) AllRows() take
    // the place of all that wait, counted as "account_news_replaced".
    static constexpr size_t kMaxUntold = 4'096;
    void Queue(News news);
    // False when somebody tells them already: he goes on until there are none.
    bool BeginTelling() { return !std::exchange(m_isTelling, true); }
    // Takes the oldest. False, and the end of telling, when there is none.
    bool TakeUntold(CUIData& record);

  private:
    std::deque<CUIData> m_untold;
    bool m_isTelling = false;
};

// What the families have in common. They differ in kinds and in the accounts that belong to them.
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
    bool WasRowInGroup(std::string_view group, const CDataTable& accounts, int row) const override;
    News WholeLists() const override;
    News AllRows() const override;
    News SetAccounts(const CDataTable& accounts) override;
    CDataTable RowsOfFamily(const CDataTable& accounts) const override;
    void SetGroups(const CDataTable& groups) override;
    News SetFunds(std::string_view token, const CDataTable& funds) override;
    News SetPositions(std::string_view token, const CDataTable& positions) override;

  protected:
    struct Kinds {
        std::string_view whole, push;
        std::string_view wholeByCurrency = {}, pushByCurrency = {};  // empty: there is none
    };

    explicit CFamilyAccountList(const Kinds& kinds);
    // Whether accounts with this trade type belong here.
    virtual bool _isOfFamily(std::string_view tradeType) const = 0;

  private:
    struct Group {
        std::string name;
        CDataSet members;  // account ids
    };
    using Groups = std::map<std::string, Group, std::less<>>;
    using Sets = std::map<std::string, CDataSet, std::less<>>;
    using Sheets = std::vector<std::unique_ptr<AccountSheet>>;

    // Null when there is no such group.
    const CDataSet* _members(std::string_view group) const;
    const CDataSet* _tokens(std::string_view group) const;
    AccountSheet& _main() const { return *m_sheets.front(); }
    // The one of that form, made now if nobody has asked for it so far.
    AccountSheet& _sheet(std::string_view kind, bool byPortfolio) const;
    CDataTable _rows(AccountSheet& sheet, std::string_view group) const;
    News _showMoney(std::string_view token, const AccountMoney& money);

    const Kinds m_kinds;
    bool m_hasAccounts = false;
    FamilyAccounts m_accounts;
    AccountMoneyBook m_money;
    mutable Sheets m_sheets;  // the main one in front
    CDataSet m_allTokens;
    Sets m_tokens;               // by account id
    Groups m_groups;             // by group id
    Sets m_groupMembers;         // account ids by group name
    mutable Sets m_groupTokens;  // by group name, made when asked for
};

// Accounts whose trade type is "2" trade on credit; all others are ordinary ones, also those that do not say.
class CAccountDataList : public CFamilyAccountList {
  public:
    CAccountDataList()
        : CFamilyAccountList({"accountdatalist", "accountdatalist_push", "currency_accountdatalist",
                              "currency_accountdatalist_push"}) {}
    const char* ClassName() const override;

  protected:
    bool _isOfFamily(std::string_view tradeType) const override { return tradeType != "2"; }
};

class CAccountDataListCredit : public CFamilyAccountList {
  public:
    CAccountDataListCredit() : CFamilyAccountList({"accountdatalistcredit", "accountdatalist_push_credit"}) {}
    const char* ClassName() const override;

  protected:
    bool _isOfFamily(std::string_view tradeType) const override { return tradeType == "2"; }
};

// Stock Connect has no trade type of its own: ordinary accounts trade there too.
class CAccountDataListGGT : public CFamilyAccountList {
  public:
    CAccountDataListGGT() : CFamilyAccountList({"accountdatalist_ggt", "accountdatalist_ggt_push"}) {}
    const char* ClassName() const override;

  protected:
    bool _isOfFamily(std::string_view tradeType) const override { return tradeType != "2"; }
};

}  // namespace luadui
