// The message that scripts send to the host's main window.
#pragma once

#include <cstdint>
#include <string>

#include "base/json_object.h"

namespace luadui {

// Arrives as window message 9529 with wParam = FrameMessage*. The receiver deletes it (`delete`; host and
// library share one C++ runtime). Texts are code page 936.
struct FrameMessage {
    int32_t code = 0;
    std::string target;
    std::string method;
    CJsonObject body;  // empty when the script's text was no JSON object
};

}  // namespace luadui
