// CUIPageData: the data manager that a page owns.
#pragma once

#include <string>
#include <string_view>

#include "datamgr/quote_interest.h"
#include "datamgr/quote_names.h"
#include "datamgr/requery_store.h"
#include "datamgr/ui_data_manager.h"

namespace luadui {

// A page creates one under its name and asks it; what all pages share comes from the common data manager.
// What is published there reaches the page filtered to its current account group.
//
// While the page sleeps (or asked for it with SetPushToQuery), news of data that it can ask for again are not
// delivered but noted, and asked once, when it wakes.
//
// Threads:  the UI thread.
// Lifetime: registers itself with CUIStockDataManager when it is initialised, unregisters when it is
//           destroyed. May be destroyed inside any notification.
class LUADUI_API CUIPageData : public CUIDataManager {
  public:
    explicit CUIPageData(std::string pageName);
    ~CUIPageData() override;

    // Registers the page, then does what every manager does. False when the name is empty or taken: this
    // manager then sends and hears nothing; also when the host destroyed it meanwhile. Further calls do
    // nothing.
    bool Init();
    const std::string& getName() const { return m_name; }

    using CUIDataManager::GetData;
    bool GetData(CUIData& request, bool cacheOnly, bool flag) override;
    CUIData GetData(const std::string& kind) override;
    bool GetData(const std::string& kind, CUIData& out) override;
    bool GetData(unsigned int handle, std::string kind, CDataSet& tokens, CUIData& out) override;
    bool GetData(unsigned int handle, std::string kind, std::string fundToken, CUIData& out) override;
    bool GetData(unsigned int handle, std::string kind, std::string fundToken, CDataTable& out) override;
    bool GetDataShared(const std::string& kind, CUIData& out) override;
    // A record whose "force_sendmoudle" is "module_commondata" is sent by the common data manager.
    void SetData(CUIData* record, SET_DATA mode) override;
    void RegisterNotify(unsigned int handle, std::string kind) override;
    void UnRegisterNotify(unsigned int handle, std::string kind) override;
    void Listen(uint32_t window, const std::string& kind, NotifyTable::Reason reason, bool wants) override;

    // Whether the window gets news of the kind.
    bool Wants(uint32_t handle, std::string_view kind) const { return m_notify.Has(handle, kind); }

    // Puts the page to sleep or wakes it; a page that wakes asks for what it missed.
    void Sleep(bool asleep);
    // Asks again for the account data of the page's current groups.
    void ResumeNotify();
    // Lets news be noted and asked at the next tick instead of delivered, also while the page is awake. What
    // was noted is asked even when this is off again by then.
    void SetPushToQuery(bool on) { m_pushToQuery = on; }

    // What a published record passes before ResponseNotify. True when it is done with: noted to be asked
    // again, delivered in part, or not meant for this page.
    bool PreHandleNotify(const CUIData* record, int handle, bool flag);

  protected:
    void _kindWanted(const std::string& kind) override;
    void _kindUnwanted(const std::string& kind) override;
    void _onTick() override;

  private:
    bool _adopt(CUIData& record);
    void _send(CUIData* record, SET_DATA mode);
    // Quotes (ui_page_quotes.cpp)
    QuoteInterest* _interestIn(std::string_view kind);
    // Notes what a request names. True when nothing is left to be asked (see QuoteFeed::TakeQuery), or the page has
    // gone.
    bool _takeQuoteQuery(CUIData& record);
    bool _takeQuoteQuery(CUIData& request, int32_t window);
    void _setQuoteSubscription(CUIData* record, SET_DATA mode);
    void _noteListening(uint32_t window, std::string_view kind);
    void _leaveQuotes();
    // Whether the record tells of quotes, but of none that the page's windows show.
    bool _showsNone(const CUIData& record);
    // Notes what the page is to ask again; of quotes what it shows.
    bool _noteForQuery(std::string_view query, const CUIData& record);
    // Takes the securities out of a query for quotes that are shown no longer. False when none is left.
    bool _dropUnshown(CUIData& query);
    void _ownWindow(unsigned int handle);
    // What the record is to be asked as. False for kinds that never are; `isNoted`: it is in the store now.
    bool TransPushData2Query(const CUIData* record, bool& isNoted);
    bool HandleNotifyAccountData(const CUIData* record, int handle, bool flag);
    bool FilterMultiAccountPush(CUIData& record, const std::string& kind) const;
    void SaveCurAccountGroup(const CUIData& record, ListStore::Family family);
    // The accounts that all pages share; null before the common data manager is set up.
    static const AccountDataList* _accounts(ListStore::Family family);
    void _groupTokens(ListStore::Family family, CDataSet& tokens) const;
    bool IsCurrentGroup(ListStore::Family family, std::string_view fundToken) const;
    void _askAccountData(ListStore::Family family);
    void _ask(CUIData request);
    void _sendNoted();

    struct Group {
        bool isChosen = false;
        std::string kind;  // under which the page asked
        std::string name;
        bool ofPortfolios = false;  // the page shows portfolios in the place of accounts
    };

    const std::string m_name;
    bool m_isRegistered = false;
    bool m_pushToQuery = false;
    Group m_groups[ListStore::kFamilies];
    RequeryStore m_requeries;
    QuoteInterest m_quotes[kQuoteKindCount];
};

}  // namespace luadui
