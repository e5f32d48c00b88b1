// The records that travel between pages, the library and the host: a task, a request on its way out, a
// response or push on its way in. All are key/value records; the keys are the contract.
//
// Threads: a record is used by one thread at a time and may be handed over.
#pragma once

#include <cstdint>
#include <string>

#include "base/ui_data.h"
#include "platform/export.h"

namespace luadui {

class TESSEL_API CQueueTaskItem : public CUIData {
  public:
    CQueueTaskItem() = default;
    const char* ClassName() const override;

    // A 32-bit field for whoever queues the task; 0 at first. Not one of the record's keys.
    uint32_t Tag() const { return m_tag; }
    void SetTag(uint32_t tag) { m_tag = tag; }

  protected:
    explicit CQueueTaskItem(const CUIData& content) : CUIData(content) {}

  private:
    uint32_t m_tag = 0;
};

// A request. Fresh, it holds "REQTYPE" 0, "CreateTime" (GetTickCount() now), "CheckTimeout" true, "Refresh",
// "PassThrough" and "Processed" false, and an empty record "Params": text values by key, what the server
// sees.
class TESSEL_API CQueueReqItem : public CQueueTaskItem {
  public:
    CQueueReqItem();
    const char* ClassName() const override;
};

// A response or push. Fresh, it holds "DATATYPE" 2001, "REQTYPE" 1, "IsLast" true and the empty records
// "MapData" and "TableIndex".
class TESSEL_API CQueueRespData : public CQueueTaskItem {
  public:
    CQueueRespData();
    const char* ClassName() const override;

    // Becomes a fresh response with the known keys of a host's record: integers, "IsLast", texts (missing:
    // empty), "JsonData" and "Table" (an entry that the host attached shared stays the same object), and the
    // records "Request", "MapData" and "TableIndex" where present. Nothing is copied cell by cell.
    void CopyFrom(const CUIData& host);

    // True when further parts of this answer follow: "IsLast" is false, and not only because the host did not say.
    bool IsPart() const { return m_saysWhetherLast && !GetDataBool("IsLast"); }

    // True for "the server's data of this kind changed": DATATYPE 2010 without a sub-record "Request".
    static bool IsChangeNotice(const CUIData& record);
    // The short form of CopyFrom for such a notice: besides the defaults only DATATYPE, REQTYPE, FundToken and To.
    void CopyNoticeFrom(const CUIData& host);

  private:
    bool m_saysWhetherLast = true;
};

}  // namespace luadui
