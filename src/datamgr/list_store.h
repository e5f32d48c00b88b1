// The lists that a data manager owns, and the shared data under which pages find them.
#pragma once

#include <map>
#include <memory>
#include <string>
#include <string_view>

#include "base/ui_data.h"
#include "datalists/account_data_list.h"
#include "datalists/list_owner.h"
#include "datalists/message_center_list.h"
#include "datalists/muti_inst_cfg.h"
#include "datalists/token_table_list.h"

namespace luadui {

// The shared data hold every list and settings record by name; the lists live as long as the store. Lists of
// trading tables are made when their kind is first handled.
//
// Threads: the UI thread.
class ListStore {
  public:
    enum Family { kPlain, kCredit, kGGT, kFamilies };

    // Lists that ask, register or publish do it with the owner, which may be null.
    explicit ListStore(ListOwner* owner = nullptr) : m_owner(owner) {}

    // The lists that every manager of the shared data has: the three account data lists and the message
    // center.
    void MakeCommonLists();
    // The lists of the page with that name; every page has "trade". `config`: its settings from ReadInstConfig.
    void MakePageLists(const std::string& pageName, std::unique_ptr<CMutiInstCfg> config = nullptr);
    // Asks the host for the settings of instructions over several accounts; null for pages that have none.
    static std::unique_ptr<CMutiInstCfg> ReadInstConfig(const std::string& pageName);

    // The list of trading tables of that kind; null when there is none (yet).
    CTokenTableList* Find(std::string_view kind) const;
    // The same, made now when the kind is one of trading tables; null for other kinds.
    CTokenTableList* FindOrMake(std::string_view kind);
    // The list of that kind and class; null when there is none (yet).
    template <class List>
    List* Find(std::string_view kind) const {
        const auto list = m_lists.find(kind);
        return list == m_lists.end() ? nullptr : dynamic_cast<List*>(list->second.get());
    }
    // The same, made now when the kind is one of those that are made when first handled.
    template <class List>
    List* FindOrMake(std::string_view kind) {
        _make(kind);
        return Find<List>(kind);
    }
    // Puts the table that the list holds now into a record that tells the table of one account under the list's
    // kind. Records of failures, and all others, stay as they are.
    void KeepNewest(CUIData& record) const;
    // The list that a merged view ("entrustmulti") is made of; empty for other kinds.
    static std::string_view ListOfView(std::string_view kind);

    // Null in a page's store.
    AccountDataList* Accounts(Family family) const { return m_accounts[family].get(); }
    // The family of an account data list's kind or of its push kind; kFamilies for other kinds.
    static Family FamilyOf(std::string_view kind);
    // Null in most pages' stores.
    CMessageCenterList* MessageCenter() const { return m_messageCenter.get(); }

    // Everything by name.
    CUIData& Shared() { return m_shared; }
    const CUIData& Shared() const { return m_shared; }
    // How old the content of a shared record is (see RequestLedger); 0 when nobody said.
    uint64_t SharedAge(std::string_view name) const;
    void SetSharedAge(const std::string& name, uint64_t age) { m_sharedAges[name] = age; }

  private:
    template <class List>
    void _add(std::unique_ptr<List> list = std::make_unique<List>());
    // Makes the list of that kind, if there is one to make.
    void _make(std::string_view kind);

    ListOwner* const m_owner;  // not owned
    CUIData m_shared;
    std::map<std::string, uint64_t, std::less<>> m_sharedAges;
    std::map<std::string, std::unique_ptr<CUIData>, std::less<>>
        m_lists;  // every list that is no account data list, by name
    std::map<std::string, CTokenTableList*, std::less<>> m_tables;  // those of m_lists with tables by account
    std::unique_ptr<AccountDataList> m_accounts[kFamilies];
    std::unique_ptr<CMessageCenterList> m_messageCenter;
};

}  // namespace luadui
