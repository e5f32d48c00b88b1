// ResultEvent: what became of a request about accounts or groups, on its way to the account manager.
#pragma once

#include <string>
#include <string_view>

#include "base/json_object.h"

namespace luadui {

// The modules that events name as their origin, and the one that all requests go out under ("log_source").
inline constexpr std::string_view kModuleAccount = "MODULE_ACCOUNT";
inline constexpr std::string_view kModuleGroup = "MODULE_GROUP";
inline constexpr std::string_view kModuleGroupList = "MODULE_ACCOUNTGROUP_LIST";
inline constexpr std::string_view kModuleAccountList = "MODULE_ACCOUNT_LIST";
inline constexpr std::string_view kModuleAccountManager = "MODULE_ACCOUNTMANAGER";

// Texts are code page 936. `payload` may hold passwords where it is an account's JSON: it is passed on to those who are
// to have it and neither logged nor kept.
struct ResultEvent {
    std::string_view name;    // "bind_account_success"; a literal
    std::string uuid;         // of the request
    std::string accountKey;   // of events about one account, otherwise empty
    CJsonObject payload;      // of a failure: what the server said, or {"error_code", "msg"}
    std::string code;         // of failures
    std::string message;      // of failures
    std::string_view module;  // one of those above
};

class ResultEventSink {
  public:
    // Gets every event once. May change or destroy any account or group, the one that reports too.
    virtual void OnResultEvent(const ResultEvent& event) = 0;

  protected:
    ~ResultEventSink() = default;
};

}  // namespace luadui
