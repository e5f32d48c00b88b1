// Types at the border to the host that page plug-ins see too.
#pragma once

#include <map>
#include <string>

struct tag_SrvAddr;     // the host's; passed on untouched
struct tag_login_user;  // the host's; passed on untouched

namespace luadui {

using StringMap = std::map<std::string, std::string>;
using ServerMap = std::map<int, tag_SrvAddr>;

}  // namespace luadui
