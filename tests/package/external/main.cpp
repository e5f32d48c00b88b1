// Uses something of the base and of a layer above it, linked by the one name.
#include "base/ui_data.h"
#include "luadui/luadui.h"

int main() {
    luadui::CQueueReqItem request;
    request.SetData("REQTYPE", 1051);
    return request.GetDataLong("REQTYPE") == 1051 && get_securityname("", nullptr, "", 0) == 1 ? 0 : 1;
}
