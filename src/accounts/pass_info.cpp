#include "accounts/pass_info.h"

#include <utility>

#include "accounts/account_log.h"
#include "accounts/account_request.h"
#include "accounts/account_user.h"
#include "accounts/result_event.h"
#include "base/json_object.h"
#include "messaging/request_base.h"

namespace luadui {
namespace {

struct Member {
    std::string_view name;
    Secret PassInfo::*secret;
};
constexpr Member kMembers[] = {{"Password", &PassInfo::password},
                               {"TxPassword", &PassInfo::txPassword},
                               {"DynamicPassword", &PassInfo::dynamicPassword}};

void Wipe(std::string& text) { WipeMemory(text.data(), text.size()); }

PassInfos ReadPassInfos(const CJsonObject& json) {
    PassInfos infos;
    for (const auto [key, value] : json) {
        CJsonObject entry;
        if (!value.Get(entry)) continue;
        PassInfo& info = infos[std::string(key)];
        for (const Member& member : kMembers) info.*member.secret = SecretOf(entry.Find(member.name));
    }
    return infos;
}

CJsonObject ToJson(const PassInfos& infos) {
    CJsonObject json;
    for (const auto& [key, info] : infos) {
        CJsonObject entry;
        for (const Member& member : kMembers) entry.Set(member.name, (info.*member.secret).View());
        json.Set(key, entry);
    }
    return json;
}

std::string CallHost(CRequestBase& asker, const std::string& method, const CJsonObject& params) {
    std::string text = params.ToText();
    std::string answer = asker.SendLuaSync(method, text, std::string(kModuleAccountManager));
    Wipe(text);
    return answer;
}

}  // namespace

std::optional<PassInfos> GetPassInfo(CRequestBase& asker, const AccountUser& user) {
    CJsonObject params;
    params.Set("UserName", user.name);
    params.Set("UserFloder", user.folder);
    std::string answer = CallHost(asker, "get_passInfo", params);
    CJsonObject json;
    const bool isRead = json.Parse(answer);
    Wipe(answer);
    if (isRead) return ReadPassInfos(json);
    LogAccountError("parse password error!", "InitPassword:: parse password error!");
    return std::nullopt;
}

void SavePassInfo(CRequestBase& asker, const AccountUser& user, const std::string& key, PassInfo info,
                  Remembered before) {
    const AccountUser whom = user;  // may go with the asker
    const int32_t handle = asker.GetHandle();
    PassInfos infos = GetPassInfo(asker, whom).value_or(PassInfos());
    if (!CBaseObject::Find(handle)) return;
    PassInfo& remembered = infos[key];
    for (const auto& [name, secret] : kMembers) {
        if (before == Remembered::kReplaced || !(info.*secret).IsEmpty())
            remembered.*secret = std::move(info.*secret);
    }
    CJsonObject params;
    params.Set("useraccount", whom.name);
    params.Set("accountList", ToJson(infos));
    CallHost(asker, "save_passInfo", params);
}

}  // namespace luadui
