#include "luadui/module_log.h"

#include "base/text_log.h"
#include "luadui/host_folder.h"

namespace luadui {
void ModuleLog(std::string_view text) {
    static auto* const log =  // never destroyed: threads may log until the process ends
        new CTextLog(HostFolderPath() / "log", "luadui.log");
    log->Write(text);
}

}  // namespace luadui
