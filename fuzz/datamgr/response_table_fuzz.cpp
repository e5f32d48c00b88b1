// Answers and pushes for every route with fields, raw data and tables of any bytes, to one manager with all
// lists: what windows receive always says whom it is for and how it went, whatever the server calls its
// fields.
#include <cstdint>
#include <cstdlib>
#include <string>
#include <string_view>

#include "base/base_object.h"
#include "datamgr/answer_routes.h"
#include "datamgr/push_routes.h"
#include "datamgr/ui_registry.h"
#include "fuzz/input.h"
#include "tests/datamgr/traffic.h"

namespace luadui {
namespace {

void Require(bool holds) {
    if (!holds) std::abort();
}

class Window : public CBaseObject {
  public:
    void OnNotify(void* data) override {
        const CUIData& record = *static_cast<CUIData*>(data);
        if (record.GetTypeText() == "error_msg") return;
        int handle = 0, code = 0;
        Require(!record.GetTypeText().empty() && record.GetDataType("ret_message") == kDataString);
        Require(record.GetData("ret_code", code) && record.GetData("handle", handle));
        Require(handle == kNoHandle || handle == asker);
        const DataKind token = record.GetDataType("fund_token");
        Require(token == kDataAbsent || token == kDataString || token == kDataSet);
        Require(record.GetDataText("sleep_refresh_request").empty());
    }
    int32_t asker = kNoHandle;
};

CQueueRespData ReadResponse(Input& input) {
    CQueueRespData response;
    const uint8_t parts = input.Byte();
    response.SetData("JsonData", input.Text('\n'));
    response.SetData("RawData", input.Text('\n'));
    if ((parts & 1) != 0) response.SetData("Table", TableOf(input.Text('\n')));
    if ((parts & 2) != 0) response.SetData("DATATYPE", static_cast<int8_t>(input.Byte()));
    if ((parts & 4) != 0) response.SetData("FundToken", input.Text('\n'));
    return response;
}

}  // namespace
}  // namespace luadui

// Each run leaves requests with the ledger, which keeps them for a while: the fuzzer would search all memory
// for leaks after each one. The tests of the same code do that.
extern "C" int __lsan_is_turned_off();  // NOLINT(bugprone-reserved-identifier)
extern "C" int __lsan_is_turned_off() { return 1; }

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    using namespace luadui;
    TestManager manager;
    for (const char* page : {"ETF", "AUTO_ALGORITHM", "MULTIINST_DUI"}) manager.Lists().MakePageLists(page);
    Window listener, asker;
    listener.asker = asker.asker = asker.GetHandle();
    for (const PushRoute& route : PushRoutes()) {
        for (const auto kind : route.kinds)
            manager.RegisterNotify(static_cast<unsigned>(listener.GetHandle()), std::string(kind));
    }
    Input input(data, size);
    while (!input.IsEmpty()) {
        const uint8_t choice = input.Byte(), how = input.Byte();
        const std::string token(input.Text('\n'));
        if ((how & 1) != 0) {
            const PushRoute& route = PushRoutes()[choice % PushRoutes().size()];
            manager.Push(std::string(route.key) + token, ReadResponse(input));
            continue;
        }
        const KindType& asked = TypeCodes()[choice % TypeCodes().size()];
        TestManager::Ask ask{.type = asked.type, .kind = std::string(asked.kind), .fundToken = token};
        if ((how & 2) != 0) ask.handle = asker.GetHandle();
        const CQueueReqItem request = manager.Send(ask);
        const CQueueRespData response = ReadResponse(input);
        manager.Answer(request, response);
        if ((how & 4) != 0) manager.Answer(request, response);
    }
    return 0;
}
