// Requests about accounts and groups: what goes out, as one table, and how their answers read.
#pragma once

#include <functional>
#include <optional>
#include <span>
#include <string>
#include <string_view>

#include "base/data_table.h"
#include "base/json_object.h"
#include "base/ui_data.h"
#include "messaging/queue_data.h"

namespace luadui {

// A request and what is said about it. All literals are UTF-8: they go through Gbk() where they are used.
struct AccountOperation {
    int type;                                   // "REQTYPE"
    std::span<const std::string_view> columns;  // names of the values, in order
    bool isTable;  // they are columns of "Params"."Table"; otherwise keys of "Params"
    std::span<const std::string_view> beside;  // keys of "Params" that go beside the table
    std::string_view success, failure;         // events; empty where the answer decides or nobody waits
    // Ends of the log lines that begin with what it is about ("账户ID:1001"); empty: no line.
    std::string_view refused, sent, done;
    std::string_view unsent;  // message of the failure when the request could not be built or sent
    std::string_view failed;  // message of the failure when the server gives no reason
};

namespace account_columns {

inline constexpr std::string_view kBind[] = {"useraccount", "account_code", "product_id", "institution_id",
                                             "user_id"};
inline constexpr std::string_view kEdit[] = {"account_code", "trade_type",   "institution_id", "broker_id",
                                             "issimulate",   "account_mark", "alias",          "user_id"};
inline constexpr std::string_view kEditPassword[] = {
    "account_code", "trade_type",    "institution_id", "broker_id",        "issimulate",    "password",
    "txpassword",   "hardware_info", "version",        "trade_server",     "verification",  "qsflag",
    "token",        "user_id",       "key_password",   "key_account_code", "key_fund_token"};
inline constexpr std::string_view kLogout[] = {"fund_token", "client_user_id"};
inline constexpr std::string_view kMember[] = {"useraccount", "groupid", "accountid"};
inline constexpr std::string_view kQueryGroups[] = {"useraccount"};
inline constexpr std::string_view kAddGroup[] = {"useraccount", "groupid", "groupname", "grouptype",
                                                 "issimulate"};
inline constexpr std::string_view kDeleteGroup[] = {"useraccount", "groupid"};
inline constexpr std::string_view kQueryAccounts[] = {"useraccount", "institutionid", "req_from",
                                                      "PB_MODE",     "user_id",       "with_permission"};
inline constexpr std::string_view kAddAccount[] = {
    "user_id",       "institution_id", "product_id",    "portfolio_id", "account_code",
    "account_name",  "password",       "txpassword",    "broker_id",    "trade_type",
    "issimulate",    "user_key",       "alias",         "account_mark", "yyb_name",
    "yyb_id",        "broker_name",    "hardware_info", "version",      "trade_server",
    "verification",  "qsflag",         "token",         "key_password", "key_account_code",
    "key_fund_token"};
inline constexpr std::string_view kDeleteAccount[] = {"user_id",      "institution_id", "broker_id",
                                                      "account_code", "trade_type",     "issimulate",
                                                      "yyb_id",       "product_id"};
inline constexpr std::string_view kAddPortfolio[] = {
    "AccountKey", "portfolio_id", "portfolio_name", "portfolio_code", "remarks", "fund_token", "is_default"};
inline constexpr std::string_view kUpload[] = {
    "fund_token",   "hardware_info", "password",         "txpassword",    "version",
    "trade_server", "verification",  "qsflag",           "broker_id",     "token",
    "user_id",      "key_password",  "key_account_code", "key_fund_token"};
inline constexpr std::string_view kUploadBeside[] = {"selrefresh", "accountkeylist"};
inline constexpr std::string_view kSaveOrder[] = {"order", "user_id", "account_code", "institution_id",
                                                  "product_id"};
inline constexpr std::string_view kSaveOrderBeside[] = {"From", "Refresh", "action"};

}  // namespace account_columns

inline constexpr AccountOperation kBindAccount = {1036,
                                                  account_columns::kBind,
                                                  false,
                                                  {},
                                                  "bind_account_success",
                                                  "bind_account_failed",
                                                  "，已绑定！",
                                                  "，绑定请求已发送！",
                                                  "，绑定成功！",
                                                  "发送绑定账户请求失败！",
                                                  "绑定失败！"};
inline constexpr AccountOperation kUnbindAccount = {1037,
                                                    account_columns::kBind,
                                                    false,
                                                    {},
                                                    "unbind_account_success",
                                                    "unbind_account_failed",
                                                    "，未绑定！",
                                                    "，解绑请求已发送！",
                                                    "，解绑成功！",
                                                    "发送解绑账户请求失败！",
                                                    "解绑失败！"};
inline constexpr AccountOperation kEditAccount = {1049,
                                                  account_columns::kEdit,
                                                  true,
                                                  {},
                                                  "edit_account_success",
                                                  "edit_account_failed",
                                                  "",
                                                  "",
                                                  "，编辑成功！",
                                                  "发送编辑账户请求失败！",
                                                  "编辑失败！"};
inline constexpr AccountOperation kEditPassword = {1808,
                                                   account_columns::kEditPassword,
                                                   true,
                                                   {},
                                                   "edit_password_success",
                                                   "edit_password_failed",
                                                   "",
                                                   "",
                                                   "，重输密码成功！",
                                                   "发送重输密码请求失败！",
                                                   "重输密码失败！"};
inline constexpr AccountOperation kLogoutAccount = {1032,
                                                    account_columns::kLogout,
                                                    false,
                                                    {},
                                                    "logout_account_success",
                                                    "logout_account_failed",
                                                    "",
                                                    "",
                                                    "，注销成功！",
                                                    "发送注销账户请求失败！",
                                                    "注销失败！"};
inline constexpr AccountOperation kAddToGroup = {1040,
                                                 account_columns::kMember,
                                                 false,
                                                 {},
                                                 "add_account_ingroup_success",
                                                 "add_account_ingroup_failed",
                                                 "，已添加！",
                                                 "，添加请求已发送！",
                                                 "，添加成功！",
                                                 "发送添加组内账户请求失败！",
                                                 "添加失败！"};
inline constexpr AccountOperation kRemoveFromGroup = {1041,
                                                      account_columns::kMember,
                                                      false,
                                                      {},
                                                      "delete_account_ingroup_success",
                                                      "delete_account_ingroup_failed",
                                                      "，已删除！",
                                                      "，删除请求已发送！",
                                                      "，删除成功！",
                                                      "发送删除组内账户请求失败！",
                                                      "删除失败！"};
inline constexpr AccountOperation kQueryGroups = {1035,
                                                  account_columns::kQueryGroups,
                                                  false,
                                                  {},
                                                  "qry_accountgroup_success",
                                                  "qry_accountgroup_failed",
                                                  "",
                                                  "",
                                                  "",
                                                  "发送查询账户组请求失败！",
                                                  "查询失败！"};
inline constexpr AccountOperation kAddGroup = {1038,
                                               account_columns::kAddGroup,
                                               false,
                                               {},
                                               "add_accountgroup_success",
                                               "add_accountgroup_failed",
                                               "，已存在，添加失败！",
                                               "，添加请求已发送！",
                                               "，添加成功！",
                                               "发送添加账户组请求失败！",
                                               "添加失败！"};
inline constexpr AccountOperation kDeleteGroup = {1039,
                                                  account_columns::kDeleteGroup,
                                                  false,
                                                  {},
                                                  "delete_accountgroup_success",
                                                  "delete_accountgroup_failed",
                                                  "，不存在，删除失败！",
                                                  "",
                                                  "，删除成功！",
                                                  "发送删除账户组请求失败！",
                                                  "删除失败！"};
inline constexpr AccountOperation kQueryAccounts = {1033,
                                                    account_columns::kQueryAccounts,
                                                    false,
                                                    {},
                                                    "account_refresh_finished",
                                                    "account_refresh_failed",
                                                    "",
                                                    "",
                                                    "",
                                                    "发送查询账户请求失败！",
                                                    "查询失败！"};
inline constexpr AccountOperation kAddAccount = {1047,
                                                 account_columns::kAddAccount,
                                                 true,
                                                 {},
                                                 "add_account_success",
                                                 "add_account_failed",
                                                 "",
                                                 "",
                                                 "，添加成功！",
                                                 "发送添加账户请求失败！",
                                                 "添加失败！"};
inline constexpr AccountOperation kDeleteAccount = {1048,
                                                    account_columns::kDeleteAccount,
                                                    true,
                                                    {},
                                                    "delete_account_success",
                                                    "delete_account_failed",
                                                    "",
                                                    "",
                                                    "，删除成功！",
                                                    "发送删除账户请求失败！",
                                                    "删除失败！"};
inline constexpr AccountOperation kAddPortfolio = {1127,
                                                   account_columns::kAddPortfolio,
                                                   false,
                                                   {},
                                                   "add_portfolio_success",
                                                   "add_portfolio_failed",
                                                   "",
                                                   "",
                                                   "，添加成功！",
                                                   "发送添加单元请求失败！",
                                                   "添加失败！"};
inline constexpr AccountOperation kUploadAccounts = {1807,
                                                     account_columns::kUpload,
                                                     true,
                                                     account_columns::kUploadBeside,
                                                     "upload_actinfo_finished",
                                                     "upload_actinfo_failed",
                                                     "",
                                                     "",
                                                     "",
                                                     "发送登陆账户请求失败！",
                                                     "登陆失败！"};
inline constexpr AccountOperation kSaveAccountOrder = {
    1804, account_columns::kSaveOrder, true, account_columns::kSaveOrderBeside, "", "", "", "", "", "", ""};

// The code of failures that happen here, not at the server.
inline constexpr std::string_view kLocalErrorCode = "-8989";

// A request of the operation: "REQTYPE", a fresh "UUID" ("UUID" of `values` when it has one), "log_source" there and in
// "Params", and "Params" with the operation's values from `values`, absent ones empty, numbers as decimal text; for a table
// they are its one row, and the keys beside it are taken from `values` too.
CQueueReqItem MakeAccountRequest(const AccountOperation& operation, const CUIData& values);
// The same with a table of several rows, made from AccountTable(); `values` gives "UUID" and the keys beside it.
CQueueReqItem MakeAccountRequest(const AccountOperation& operation, const CUIData& values,
                                 const CDataTable& rows);
// A table without rows that has the operation's columns.
CDataTable AccountTable(const AccountOperation& operation);

// Encrypts a text; nothing when that failed. Empty where the terminal has no encryption.
using PasswordCipher = std::function<std::optional<std::string>(std::string_view)>;
// Replaces those of "password", "txpassword" and "key_password" that are in `values` and not empty by cipher text. False
// when there is no cipher or it fails: `values` then has none of the three.
bool EncryptPasswords(CUIData& values, const PasswordCipher& cipher);

// Reading answers. Nothing throws for what is missing or mistyped.

struct AccountFailure {
    std::string code, message;
    CJsonObject ToJson() const;  // {"error_code", "msg"}
};

// DATATYPE -1.
bool HasFailed(const CUIData& response);
// The server's reason, from "JsonData": "error_code" or, if absent, "code"; "msg" or, if absent, "message"; numbers with
// three decimals. Without "JsonData" both are empty.
AccountFailure FailureOf(const CUIData& response);
// The same for any record, such as a member of "JsonData".
AccountFailure FailureOf(const CJsonObject& json);
// A failure of this side: kLocalErrorCode and `message` (UTF-8 literal).
AccountFailure LocalFailure(std::string_view message);

// "Table"; false, and `table` unchanged, when there is none or it is something else.
bool TableOf(const CUIData& response, CDataTable& table);
// What was asked: "Request"."Params" and its "Table". Empty when the answer lost it.
CUIData RequestParams(const CUIData& response);
CDataTable RequestTable(const CUIData& response);
// "UUID"; where that is empty "Request"."UUID".
std::string RequestUuid(const CUIData& response);

// A text as it is, a number as decimal text; empty for everything else.
std::string TextOf(const ValueView& value);

}  // namespace luadui
