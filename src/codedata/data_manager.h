// CDataManager: the code list - which securities there are, under which code, name and market - and the queue
// of records for the central log.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

#include "codedata/elk_queue.h"
#include "platform/export.h"

namespace luadui {

class CQueueLogElkItem;
class CUIData;

// The list is empty until a loader fills it; every lookup then answers as for an unknown security.
//
// Threads: any, but for SetElkSink and ShipELK, which belong to the UI thread.
class LUADUI_API CDataManager {
  public:
    static CDataManager& Instance();

    // Markets (data_manager_markets.cpp; the tables: codedata/market_map.h). Ids are texts such as "17". Until
    // InitMarketMap has run no market is known.
    static void InitMarketMap();
    // The short name; "NULL" when there is none.
    static std::string GetMarket(std::string_view id);
    // The market's type number; 900 when it has none.
    static int GetMarketNew(std::string_view id);
    // How many markets have a name.
    static int GetMarketMapSize();
    // The first code of the market's exchange ("1" Shenzhen, "2" Shanghai, "6" STAR); `id` itself when no exchange has it.
    static std::string GetMarketID(std::string_view id);

    // The records of the securities with just this code, one for each market of a family that lists it
    // (codedata/zqdm_info.h). Each goes into `out` under "code:market"; what else `out` holds stays. They answer how many
    // there were. A list that is being loaded is waited for as in the lookups below.
    static int GetCodeInfoFromList(std::string_view code, CUIData& out);      // every market
    static int GetCodeInfoFromListBase(std::string_view code, CUIData& out);  // shares: 17 18 33 34 145 146
    static int GetETFCodeInfoFromList(std::string_view code, CUIData& out);  // exchange-traded funds in 20 36
    static int GetGgtCodeInfoFromList(std::string_view code, CUIData& out);  // Stock Connect: 153 156 73 76
    static int GetHGgtCodeInfoFromList(std::string_view code, CUIData& out);  // by way of Shanghai: 153 156
    static int GetSGgtCodeInfoFromList(std::string_view code, CUIData& out);  // by way of Shenzhen: 73 76
    static int GetGzCodeInfoFromList(std::string_view code, CUIData& out);    // bonds and repo: 19 35

    // The host's word that its code list changed. Whatever it says changed, the whole list is asked for again in the
    // background, from where the last load had it; until that is there the old list answers.
    void Update_CodeList(uint16_t reason, uint32_t market, uint32_t first, uint32_t last);
    // Loads the list in the background from the script or file at `path`.
    void InitKeyFairy(const std::string& path);
    // How many entries the keyboard wizard's table holds.
    size_t KeyFairyCount() const;

    // The short name of a security; empty when there is none with this code in this market.
    std::wstring GetZqmcFromFairy(const std::wstring& code, const std::wstring& market) const;
    // The market id of the security with this code and short name; empty when there is none.
    std::wstring GetMarketByCodeAndZQMC(const std::wstring& code, const std::wstring& name) const;

    // Queues what the item holds for shipping; the item stays the caller's. What becomes of it when too many
    // wait: codedata/elk_queue.h.
    void PushELK(CQueueLogElkItem& item);
    // Whom ShipELK gives batches to; not owned. Null: nobody, items wait.
    void SetElkSink(ElkSink* sink) { m_elkSink = sink; }
    // Ships one batch; for a timer. Answers how many items left.
    size_t ShipELK();

  private:
    CDataManager() = default;
    ~CDataManager() = default;

    ElkQueue m_elkQueue;
    ElkSink* m_elkSink = nullptr;
};

}  // namespace luadui
