#include "accounts/account_log.h"

#include "accounts/result_event.h"
#include "base/counters.h"
#include "base/text.h"
#include "codedata/data_manager.h"
#include "codedata/elk_item.h"

namespace luadui {
namespace {

void Log(std::string_view source, std::string_view text, std::string_view detail) noexcept {
    try {
        CQueueLogElkItem item("", source, kModuleAccountManager, "", "", {});
        item.SetField("message", text);
        if (!detail.empty()) item.SetField("detail", detail);
        CDataManager::Instance().PushELK(item);
    } catch (...) {  // no memory: the line is lost, what it tells of is not
        CCounters::Add("elk_dropped");
    }
}

}  // namespace

void LogAccount(std::string_view text, std::string_view detail) noexcept {
    Log("client@_account", text, detail);
}

void LogAccountError(std::string_view text, std::string_view detail) noexcept {
    Log("client@_error", text, detail);
}

std::string AccountSubject(std::string_view accountId) { return Gbk("账户ID:") + std::string(accountId); }

std::string GroupSubject(std::string_view groupId) { return Gbk("账户组ID:") + std::string(groupId); }

void LogAbout(std::string_view subject, std::string_view end) {
    if (!end.empty()) LogAccount(std::string(subject) + Gbk(end));
}

}  // namespace luadui
