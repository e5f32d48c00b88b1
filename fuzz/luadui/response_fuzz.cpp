// Records as a hostile host might hand over, and JSON text for pages: through the exported function and Lua to the UI
// thread, and, to read back what arrived, through the same routing to a receiver of our own.
#include <cstdlib>
#include <lua.hpp>

#include "base/data_list.h"
#include "base/data_set.h"
#include "base/data_table.h"
#include "base/json_object.h"
#include "fuzz/input.h"
#include "luadui/luadui.h"
#include "messaging/page_sign_registry.h"
#include "messaging/request_object.h"
#include "messaging/response_routing.h"

namespace luadui {
namespace {

constexpr const char* kKeys[] = {"DATATYPE", "REQTYPE", "IsLast",  "UUID",      "RawData",  "FundToken",
                                 "To",       "Topic",   "TraceID", "SrcServer", "JsonData", "Table",
                                 "Request",  "MapData", "Params",  ""};

// An operation a byte, then its text up to a zero byte.
// Kind in the high half of a byte, key in the low one; an entry of kind 12 and above ends the record.
CUIData BuildRecord(Input& input, int depth) {
    CUIData record;
    CDataTable table;
    CJsonObject json;
    CDataList list;
    while (!input.IsEmpty()) {
        const uint8_t operation = input.Byte();
        const char* const key = kKeys[operation % 16];
        switch (operation / 16) {
            case 0:
                record.SetData(key, static_cast<int>(input.Byte()) * 1005);
                break;
            case 1:
                record.SetData(key, input.Text('\0'));
                break;
            case 2:
                record.SetData(input.Text('\0'), input.Text('\0'));
                break;
            case 3:
                record.SetData(key, input.Byte() % 2 == 1);
                break;
            case 4:
                record.SetData(key, 1e300 * input.Byte());
                break;
            case 5:
                json.Parse(input.Text('\0'));
                record.SetDataShared(key, json);
                break;
            case 6:
                table.AddColumn(input.Text('\0'));
                table.SetItemText(table.AppendRow(), 0, input.Text('\0'));
                record.SetDataShared(key, table);
                break;
            case 7:
                if (depth < 50) record.SetData(key, BuildRecord(input, depth + 1));
                break;
            case 8:
                record.SetData(key, CDataSet());
                break;
            case 9:
                list.Append(record);
                record.SetData(key, list);
                break;
            case 10:
                record.Remove(key);
                break;
            case 11:
                record.SetData(key, 2010);
                break;
            default:
                return record;
        }
    }
    return record;
}

// Reads everything that it is given.
class Receiver : public CRequestObject {
  public:
    void OnResponse(const CQueueRespData* response) override {
        size_t bytes = 0;
        for (const auto [key, value] : *response) bytes += key.size() + std::string(value.AsText()).size();
        CDataTable table;
        if (response->GetData("Table", table)) bytes += table.GetItemText(0, 0).size();
        CJsonObject json;
        if (response->GetData("JsonData", json)) bytes += json.ToText().size();
        read += bytes;
    }
    size_t read = 0;
};

struct Host {
    Host() {
        luaL_openlibs(L);
        lua_cpcall(L, luaopen_luadui, nullptr);
        start_dui_thread();
        CPageSignRegistry::Instance().Register("sign", "2147483647");
    }
    void SendScriptMessage(std::string_view json) {
        lua_getglobal(L, "luadui");
        lua_getfield(L, -1, "on_error");
        lua_pushliteral(L, "sign");
        lua_pushlstring(L, json.data(), json.size());
        if (lua_pcall(L, 2, 2, 0) != 0) std::abort();
        lua_settop(L, 0);
    }
    lua_State* const L = luaL_newstate();
    Receiver receiver;
};

}  // namespace
}  // namespace luadui

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    using namespace luadui;  // NOLINT(google-build-using-namespace): one function
    static auto& host = *new Host;
    Input input(data, size);
    CUIData record = BuildRecord(input, 0);
    handle_response_callback(&record);
    host.SendScriptMessage({reinterpret_cast<const char*>(data), size});

    auto response = std::make_unique<CQueueRespData>();
    if (CQueueRespData::IsChangeNotice(record)) {
        response->CopyNoticeFrom(record);
    } else {
        response->CopyFrom(record);
    }
    response->SetData("To", std::to_string(host.receiver.GetHandle()));
    if (RouteResponse(std::move(response)) != 1) std::abort();
    return 0;
}
