#include "codedata/elk_item.h"

#include "base/secret_fields.h"

namespace luadui {
namespace {

void SetMasked(CUIData& fields, std::string_view name, std::string_view value) {
    fields.SetData(name, IsSecretField(name) ? kSecretMask : value);
}

}  // namespace

CQueueLogElkItem::CQueueLogElkItem(std::string_view traceId, std::string_view logSource,
                                   std::string_view module, std::string_view clientUser,
                                   std::string_view stage, const StringMap& fields)
    : CQueueLogElkItem() {
    SetData("TraceID", traceId);
    SetData("LogSource", logSource);
    SetData("Module", module);
    SetData("ClientUser", clientUser);
    SetData("Stage", stage);
    CUIData masked;
    for (const auto& [name, value] : fields) SetMasked(masked, name, value);
    SetData("Fields", masked);
}

const char* CQueueLogElkItem::ClassName() const { return "CQueueLogElkItem"; }

void CQueueLogElkItem::SetField(std::string_view name, std::string_view value) {
    CUIData fields;
    GetData("Fields", fields);
    Remove("Fields");  // held once, they are not copied
    SetMasked(fields, name, value);
    SetData("Fields", fields);
}

}  // namespace luadui
