// CUICommonData: the one manager of the data that all pages share.
#pragma once

#include "datamgr/quote_feed.h"
#include "datamgr/ui_data_manager.h"

namespace luadui {

// The manager of the page name "CommonData". Owned by CUIStockDataManager.
class LUADUI_API CUICommonData : public CUIDataManager {
  public:
    CUICommonData() { InitRunType(kTypeCommonData); }

    // Tells its own listeners, then the pages: the one of the window `handle`, or for news (handle -1) those
    // that subscribed to the kind. A record that names its asker reaches that page whatever its kind; news
    // only of common kinds.
    void ResponseNotify(CUIData* record, int handle, bool notifyOthers) override;

    // The quotes of all pages.
    QuoteFeed& Quotes() { return m_quotes; }

  protected:
    // A window that its page tells already is not told twice. Of orders and risks a page with a message center of
    // its own tells its windows itself, since its list hears of all of them; of requests that failed it
    // only knows its own, so those of others come from here.
    bool _isToldElsewhere(uint32_t listener, const CUIData& record, int64_t asker) const override;
    void _onTick() override;
    bool _findQuotes(CUIData& request) const override { return m_quotes.AnswerFrom(request); }

  private:
    QuoteFeed m_quotes{*this};
};

}  // namespace luadui
