// CDataManager: the code list - which securities there are, under which code, name and market - and the queue
// of records for the central log.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>

#include "codedata/elk_queue.h"
#include "platform/export.h"

namespace luadui {

class CQueueLogElkItem;

// The list is empty until a loader fills it; every lookup then answers as for an unknown security.
//
// Threads: any, but for SetElkSink and ShipELK, which belong to the UI thread.
class LUADUI_API CDataManager {
  public:
    static CDataManager& Instance();

    // The host's word that its code list changed.
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
