// CDataManager: the code list - which securities there are, under which code, name and market - and the queue
// of records for the central log.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "codedata/code_candidates.h"
#include "codedata/elk_queue.h"
#include "platform/duilib.h"
#include "platform/export.h"

namespace luadui {

class CDataTable;
class CQueueLogElkItem;
class CUIData;

// The list is empty until a loader fills it; every lookup then answers as for an unknown security.
//
// Threads: any, but for SetElkSink and ShipELK, which belong to the UI thread.
class LUADUI_API CDataManager {
  public:
    static CDataManager& Instance();

    // Markets (data_manager_markets.cpp; the tables: codedata/market_map.h). Ids are texts such as "17".
    // Until InitMarketMap has run no market is known.
    static void InitMarketMap();
    // The short name; "NULL" when there is none.
    static std::string GetMarket(std::string_view id);
    // The market's type number; 900 when it has none.
    static int GetMarketNew(std::string_view id);
    // How many markets have a name.
    static int GetMarketMapSize();
    // The first code of the market's exchange ("1" Shenzhen, "2" Shanghai, "6" STAR); `id` itself when no
    // exchange has it.
    static std::string GetMarketID(std::string_view id);

    // The records of the securities with just this code, one for each market of a family that lists it
    // (codedata/zqdm_info.h). Each goes into `out` under "code:market"; what else `out` holds stays. They
    // answer how many there were. A list that is being loaded is waited for as in the lookups below.
    static int GetCodeInfoFromList(std::string_view code, CUIData& out);      // every market
    static int GetCodeInfoFromListBase(std::string_view code, CUIData& out);  // shares: 17 18 33 34 145 146
    static int GetETFCodeInfoFromList(std::string_view code, CUIData& out);  // exchange-traded funds in 20 36
    static int GetGgtCodeInfoFromList(std::string_view code, CUIData& out);  // Stock Connect: 153 156 73 76
    static int GetHGgtCodeInfoFromList(std::string_view code, CUIData& out);  // by way of Shanghai: 153 156
    static int GetSGgtCodeInfoFromList(std::string_view code, CUIData& out);  // by way of Shenzhen: 73 76
    static int GetGzCodeInfoFromList(std::string_view code, CUIData& out);    // bonds and repo: 19 35

    // The host's word that its code list changed. Whatever it says changed, the whole list is asked for again
    // in the background, from where the last load had it; until that is there the old list answers.
    void Update_CodeList(uint16_t reason, uint32_t market, uint32_t first, uint32_t last);
    // Loading (codedata/code_loader.h).

    // Loads the list in the background from the source at `path` (code page 936; empty: the host's own).
    // Every call is a load of its own, one after the other. False when no thread could be started.
    static bool InitKeyFairy(const std::string& path);
    // Whether there is a list, or one is being loaded. Does not wait: whoever asks may hold what the loading
    // script needs.
    static bool HasKeyFairy();
    // Adds the exchange-traded funds of a table that a page got from the server, so that lookups and search
    // boxes find them: columns "stock_code" or "SecurityID", "stock_name" or "SecurityName", "stock_marketid"
    // or "Market", and, if there, "stock_phonetic". A market is an id or an exchange code, which stands for
    // the exchange's market of funds ("20" or "36"). Nothing that is there is replaced: what the list has,
    // now or after a later load, stays as it is. Answers how many were added; lookups find them some moments
    // later. Rows without a code and a market that a list may have (codedata/code_list.h) count as
    // "code_list_row_unusable".
    static int InitETFKeyFairy(const CDataTable& funds);

    // The keyboard wizard. What a search key is: codedata/code_book.h. A lookup waits for a load that
    // InitKeyFairy ordered (how long: codedata/code_loader.h); texts that are not found are empty.

    // 1 when some search key contains the upper-cased query, else 0. An empty query is in none.
    static int isFindCodeFromKeyFairy(const CDuiString& query);
    // The market of the first entry, in key order, whose key contains the upper-cased query.
    static CDuiString GetMarketFromKeyFairy(const CDuiString& query);
    static CDuiString GetMarketCodeFromKeyFairy(const CDuiString& query);
    // The short name of the first such entry whose market is exactly `market`.
    static CDuiString GetZqmcFromKeyFairy(const CDuiString& query, const CDuiString& market);
    // The short name of the security with just this code, upper and lower case being different, and its
    // market; of several that of the market that the code list query names first. `market` is unchanged when
    // there is none.
    static CDuiString GetZqmcFromZqdmFairy(const CDuiString& code, CDuiString& market);
    // How many entries there are.
    static int Get_KeyFairy_Size();
    // Up to `max` securities for a search box, best first, with what matched (codedata/code_candidates.h).
    // Does not wait.
    static std::vector<CodeCandidate> FindCandidates(const CDuiString& query, size_t max);

    // The short name of the security with this code in this market, which is an id or, when the code has no
    // entry with that id, an exchange code.
    static CDuiString GetZqmcFromFairy(const CDuiString& code, const CDuiString& market);
    // The market id of the security with this code and short name.
    static CDuiString GetMarketByCodeAndZQMC(const CDuiString& code, const CDuiString& name);
    // The same for texts of code page 936, which need no conversion.
    static std::string SecurityName(std::string_view code, std::string_view market);
    static std::string SecurityMarket(std::string_view code, std::string_view name);

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
