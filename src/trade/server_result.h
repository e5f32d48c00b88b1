// What the server says became of a request, in whichever of its ways it says it.
#pragma once

#include <string>

#include "base/json_object.h"
#include "base/ui_data.h"

namespace luadui {

struct ServerResult {
    int code = 0;  // 0: success
    std::string message;
};

// The fields of a response: "JsonData", an object or the text of one. False, and `fields` unchanged, when
// there are none; unreadable text is counted as "response_json_unreadable".
bool ReadJsonData(const CUIData& response, CJsonObject& fields);

// The code is the first of "retcode", "ret_code" and "error_code" in the response's fields, a number or its
// text; other text, and numbers beyond 32 bits, are -1. "code" is a security's in many answers: without one
// of the others it counts as a number beside a message, and in whatever form in a response whose "DATATYPE"
// is -1. Such a response has failed whatever it says: -1 if it says nothing. The message is the first of
// "message", "msg" and "ret_message" with text.
ServerResult ReadServerResult(const CUIData& response);
// The same for fields from elsewhere.
ServerResult ResultOf(const CJsonObject& fields, bool hasFailed = false);

}  // namespace luadui
