// The requests about accounts and groups, and what is said about them: one row each.
#pragma once

#include <span>
#include <string_view>

namespace luadui {

// All literals are UTF-8: those that may hold Chinese go through Gbk() where they are used.
struct AccountOperation {
    int type;                                   // "REQTYPE"
    std::span<const std::string_view> columns;  // names of the values, in order
    bool isTable = false;  // they are columns of "Params"."Table", otherwise keys of "Params"
    std::span<const std::string_view> beside = {};  // keys of "Params" that go beside the table
    // Events; empty where nobody waits for one.
    std::string_view success = {}, failure = {};
    // Ends of the log lines that begin with what it is about ("账户ID:1001"); empty: no line.
    std::string_view refused = {}, sent = {}, done = {};
    std::string_view unsent = {};  // message of the failure when the request could not be built or sent
    std::string_view failed = {};  // message of the failure when the server gives no reason
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

// clang-format off
inline constexpr AccountOperation kBindAccount = {
    .type = 1036, .columns = account_columns::kBind,
    .success = "bind_account_success", .failure = "bind_account_failed",
    .refused = "，已绑定！", .sent = "，绑定请求已发送！", .done = "，绑定成功！",
    .unsent = "发送绑定账户请求失败！", .failed = "绑定失败！"};
inline constexpr AccountOperation kUnbindAccount = {
    .type = 1037, .columns = account_columns::kBind,
    .success = "unbind_account_success", .failure = "unbind_account_failed",
    .refused = "，未绑定！", .sent = "，解绑请求已发送！", .done = "，解绑成功！",
    .unsent = "发送解绑账户请求失败！", .failed = "解绑失败！"};
inline constexpr AccountOperation kEditAccount = {
    .type = 1049, .columns = account_columns::kEdit, .isTable = true,
    .success = "edit_account_success", .failure = "edit_account_failed",
    .done = "，编辑成功！",
    .unsent = "发送编辑账户请求失败！", .failed = "编辑失败！"};
inline constexpr AccountOperation kEditPassword = {
    .type = 1808, .columns = account_columns::kEditPassword, .isTable = true,
    .success = "edit_password_success", .failure = "edit_password_failed",
    .done = "，重输密码成功！",
    .unsent = "发送重输密码请求失败！", .failed = "重输密码失败！"};
inline constexpr AccountOperation kLogoutAccount = {
    .type = 1032, .columns = account_columns::kLogout,
    .success = "logout_account_success", .failure = "logout_account_failed",
    .done = "，注销成功！",
    .unsent = "发送注销账户请求失败！", .failed = "注销失败！"};
inline constexpr AccountOperation kAddToGroup = {
    .type = 1040, .columns = account_columns::kMember,
    .success = "add_account_ingroup_success", .failure = "add_account_ingroup_failed",
    .refused = "，已添加！", .sent = "，添加请求已发送！", .done = "，添加成功！",
    .unsent = "发送添加组内账户请求失败！", .failed = "添加失败！"};
inline constexpr AccountOperation kRemoveFromGroup = {
    .type = 1041, .columns = account_columns::kMember,
    .success = "delete_account_ingroup_success", .failure = "delete_account_ingroup_failed",
    .refused = "，已删除！", .sent = "，删除请求已发送！", .done = "，删除成功！",
    .unsent = "发送删除组内账户请求失败！", .failed = "删除失败！"};
inline constexpr AccountOperation kQueryGroups = {
    .type = 1035, .columns = account_columns::kQueryGroups,
    .success = "qry_accountgroup_success", .failure = "qry_accountgroup_failed",
    .unsent = "发送查询账户组请求失败！", .failed = "查询失败！"};
inline constexpr AccountOperation kAddGroup = {
    .type = 1038, .columns = account_columns::kAddGroup,
    .success = "add_accountgroup_success", .failure = "add_accountgroup_failed",
    .refused = "，已存在，添加失败！", .sent = "，添加请求已发送！", .done = "，添加成功！",
    .unsent = "发送添加账户组请求失败！", .failed = "添加失败！"};
inline constexpr AccountOperation kDeleteGroup = {
    .type = 1039, .columns = account_columns::kDeleteGroup,
    .success = "delete_accountgroup_success", .failure = "delete_accountgroup_failed",
    .refused = "，不存在，删除失败！", .done = "，删除成功！",
    .unsent = "发送删除账户组请求失败！", .failed = "删除失败！"};
inline constexpr AccountOperation kQueryAccounts = {
    .type = 1033, .columns = account_columns::kQueryAccounts,
    .success = "account_refresh_finished", .failure = "account_refresh_failed",
    .unsent = "发送查询账户请求失败！", .failed = "查询失败！"};
inline constexpr AccountOperation kAddAccount = {
    .type = 1047, .columns = account_columns::kAddAccount, .isTable = true,
    .success = "add_account_success", .failure = "add_account_failed",
    .done = "，添加成功！",
    .unsent = "发送添加账户请求失败！", .failed = "添加失败！"};
inline constexpr AccountOperation kDeleteAccount = {
    .type = 1048, .columns = account_columns::kDeleteAccount, .isTable = true,
    .success = "delete_account_success", .failure = "delete_account_failed",
    .done = "，删除成功！",
    .unsent = "发送删除账户请求失败！", .failed = "删除失败！"};
inline constexpr AccountOperation kAddPortfolio = {
    .type = 1127, .columns = account_columns::kAddPortfolio,
    .success = "add_portfolio_success", .failure = "add_portfolio_failed",
    .done = "，添加成功！",
    .unsent = "发送添加单元请求失败！", .failed = "添加失败！"};
inline constexpr AccountOperation kUploadAccounts = {
    .type = 1807, .columns = account_columns::kUpload, .isTable = true, .beside = account_columns::kUploadBeside,
    .success = "upload_actinfo_finished", .failure = "upload_actinfo_failed",
    .unsent = "发送登陆账户请求失败！", .failed = "登陆失败！"};
inline constexpr AccountOperation kSaveAccountOrder = {
    .type = 1804, .columns = account_columns::kSaveOrder, .isTable = true, .beside = account_columns::kSaveOrderBeside};
// clang-format on

}  // namespace luadui
