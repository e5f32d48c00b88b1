#include "trade/server_result.h"

#include <optional>

#include "base/counters.h"
#include "base/text.h"

namespace luadui {
namespace {

constexpr int kDataFailed = -1;  // "DATATYPE"
constexpr int kUnreadable = -1;  // code

std::optional<int> CodeOf(const ValueView& value) {
    switch (value.Kind()) {
        case kDataString:
            if (TrimText(value.AsText()).empty()) return std::nullopt;
            break;
        case kDataInteger:
        case kDataDouble:
        case kDataBoolean:
            break;
        default:
            return std::nullopt;
    }
    int code = 0;
    if (!value.Get(code)) return kUnreadable;
    return code == 0 && value.AsDouble() != 0 ? kUnreadable : code;
}

std::optional<int> FirstCode(const CJsonObject& fields) {
    for (const char* name : {"retcode", "ret_code", "error_code"}) {
        if (const auto code = CodeOf(fields.Find(name))) return code;
    }
    return std::nullopt;
}

std::string FirstMessage(const CJsonObject& fields) {
    for (const char* name : {"message", "msg", "ret_message"}) {
        if (const TextView text = fields.GetText(name); !text.empty()) return text;
    }
    return {};
}

}  // namespace

bool ReadJsonData(const CUIData& response, CJsonObject& fields) {
    static const HashedKey kJsonDataKey("JsonData");
    const ValueView data = response.GetDataView(kJsonDataKey);
    if (data.Kind() != kDataString) return data.Get(fields);
    if (TrimText(data.AsText()).empty()) return false;
    CJsonObject parsed;
    if (!parsed.Parse(data.AsText())) {
        CCounters::Add("response_json_unreadable");
        return false;
    }
    fields = parsed;
    return true;
}

ServerResult ReadServerResult(const CUIData& response) {
    CJsonObject fields;
    ReadJsonData(response, fields);
    int dataType = 0;
    return ResultOf(fields, response.GetData("DATATYPE", dataType) && dataType == kDataFailed);
}

ServerResult ResultOf(const CJsonObject& fields, bool hasFailed) {
    ServerResult result;
    result.message = FirstMessage(fields);
    std::optional<int> code = FirstCode(fields);
    const ValueView plain = fields.Find("code");
    const bool isResult = plain.Kind() != kDataString && !result.message.empty();
    if (!code && (hasFailed || isResult)) code = CodeOf(plain);
    result.code = code.value_or(0);
    if (hasFailed && result.code == 0) result.code = kUnreadable;
    return result;
}

}  // namespace luadui
