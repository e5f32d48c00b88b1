// CQueueLogElkItem: one record on its way to the central log.
#pragma once

#include <cstdint>
#include <string_view>

#include "messaging/host_types.h"
#include "messaging/queue_data.h"

namespace luadui {

// A task whose tag is the item type, with the text entries "TraceID", "LogSource", "Module", "ClientUser" and
// "Stage" and the record "Fields" of further texts by name. Texts are code page 936.
//
// Threads: as for every record, one at a time.
class CQueueLogElkItem : public CQueueTaskItem {
  public:
    static constexpr uint32_t kTraceRecord = 256;

    // An item of type kTraceRecord without any entry.
    CQueueLogElkItem() { SetTag(kTraceRecord); }
    // A trace record. `fields` go through SetField.
    CQueueLogElkItem(std::string_view traceId, std::string_view logSource, std::string_view module,
                     std::string_view clientUser, std::string_view stage, const StringMap& fields);
    const char* ClassName() const override;

    // Sets one of "Fields"; the value of a secret one (base/secret_fields.h) becomes "***".
    void SetField(std::string_view name, std::string_view value);
};

}  // namespace luadui
