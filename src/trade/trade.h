// CTrade: the rules of trading that several parts of the system share.
#pragma once

#include <string>

namespace luadui {

class CUIData;

// Threads: any.
class CTrade {
  public:
    // Whether a response says that the server failed (see trade/server_result.h). `errorText` then becomes
    // what the user reads: the server's message, or, when it sent none, one with the code; otherwise it is
    // unchanged.
    static bool HandleResponseError(const CUIData& response, std::string& errorText);
};

}  // namespace luadui
