#include "accounts/pass_info.h"

#include <utility>

#include "accounts/account_log.h"
#include "accounts/account_request.h"
#include "accounts/account_user.h"
#include "accounts/result_event.h"
#include "base/json_object.h"
#include "base/json_text.h"
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

// Leaves no passwords in `json`.
PassInfos ReadPassInfos(CJsonObject json) {
    PassInfos infos;
    for (const auto [key, value] : json) {
        if (value.Kind() == kDataJson) infos.try_emplace(std::string(key));
    }
    for (auto& [key, info] : infos) {
        CJsonObject entry = json.GetSub(key);
        json.Remove(key);  // the entry has one owner now and can be wiped
        for (const Member& member : kMembers) info.*member.secret = SecretOf(entry.Find(member.name));
        WipePasswords(entry);
    }
    return infos;
}

std::string ToText(const AccountUser& user, const PassInfos& infos) {
    constexpr size_t kBytesOfEntry = 256;
    JsonText json(infos.size() * kBytesOfEntry);
    json.BeginObject();
    json.Member("useraccount", user.name);
    json.Name("accountList");
    json.BeginObject();
    for (const auto& [key, info] : infos) {
        json.Name(key);
        json.BeginObject();
        for (const Member& member : kMembers) json.Member(member.name, (info.*member.secret).View());
        json.EndObject();
    }
    json.EndObject();
    json.EndObject();
    return json.Take();
}

std::string CallHost(CRequestBase& asker, const std::string& method, const std::string& params) {
    return asker.SendLuaSync(method, params, std::string(kModuleAccountManager));
}

}  // namespace

std::optional<PassInfos> GetPassInfo(CRequestBase& asker, const AccountUser& user) {
    CJsonObject params;
    params.Set("UserName", user.name);
    params.Set("UserFloder", user.folder);
    std::string answer = CallHost(asker, "get_passInfo", params.ToText());
    CJsonObject json;
    const bool isRead = json.Parse(answer);
    Wipe(answer);
    if (isRead) return ReadPassInfos(std::move(json));
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
    std::string text = ToText(whom, infos);
    CallHost(asker, "save_passInfo", text);
    Wipe(text);
}

}  // namespace luadui
