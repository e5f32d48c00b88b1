#include "luadui/module_log.h"

#include "base/text_log.h"
#include "luadui/host_folder.h"
#include "platform/code_page.h"

namespace luadui {
namespace {

std::filesystem::path LogFolder() {
    const std::string folder = code_page::WideToUtf8(HostFolder());  // a wide path would depend on the locale
    return std::filesystem::path(std::u8string(folder.begin(), folder.end())) / "log";
}

}  // namespace

void ModuleLog(std::string_view text) {
    static auto* const log =  // never destroyed: threads may log until the process ends
        new CTextLog(LogFolder(), "luadui.log");
    log->Write(text);
}

}  // namespace luadui
