// Making requests about accounts and groups, and reading their answers.
#pragma once

#include <functional>
#include <optional>
#include <string>
#include <string_view>

#include "accounts/account_operations.h"
#include "accounts/secret.h"
#include "base/data_table.h"
#include "base/json_object.h"
#include "base/ui_data.h"
#include "messaging/queue_data.h"

namespace luadui {

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
// Overwrites the passwords in a record or JSON object, by the names of their fields, where they lie. To be called before one
// that nobody else holds is freed; for one that is shared it is in vain, since what others hold does not change.
void WipePasswords(CUIData& values) noexcept;
void WipePasswords(CJsonObject& values) noexcept;
// Does so at the end of a block.
template <class Values>
class WipedAtEnd {
  public:
    explicit WipedAtEnd(Values& values) noexcept : m_values(values) {}
    ~WipedAtEnd() { WipePasswords(m_values); }
    WipedAtEnd(const WipedAtEnd&) = delete;
    WipedAtEnd& operator=(const WipedAtEnd&) = delete;

  private:
    Values& m_values;
};
// `values` with cipher text in the place of those of "password", "txpassword" and "key_password" that are not empty; made
// anew, so that no clear text stays in its memory. Nothing when there is no cipher or it fails.
std::optional<CUIData> EncryptPasswords(const CUIData& values, const PasswordCipher& cipher);

// Reading answers. Nothing throws for what is missing or mistyped.

struct AccountFailure {
    std::string code, message;
    CJsonObject ToJson() const;  // {"error_code", "msg"}
};

// DATATYPE -1.
bool HasFailed(const CUIData& response);
// What the server says of it: "JsonData", an object or the text of one. False when it says nothing.
bool ReadReason(const CUIData& response, CJsonObject& reason);
// "error_code" or, if absent, "code"; "msg" or, if absent, "message"; numbers with three decimals.
AccountFailure FailureOf(const CJsonObject& reason);
// A failure of this side: kLocalErrorCode and `message` (UTF-8 literal).
AccountFailure LocalFailure(std::string_view message);
// The same for an answer without the table that it should have; the message tells its "RawData".
AccountFailure MissingTable(const CUIData& response);

// "Table"; false, and `table` unchanged, when there is none or it is something else.
bool TableOf(const CUIData& response, CDataTable& table);
// What was asked: "Request"."Params" and its "Table". Empty when the answer lost it.
CUIData RequestParams(const CUIData& response);
CDataTable RequestTable(const CUIData& response);
// "UUID"; where that is empty "Request"."UUID".
std::string RequestUuid(const CUIData& response);

// A text as it is, a number as decimal text, a flag as "1" or "0"; empty for everything else.
std::string TextOf(const ValueView& value);
// The same without leaving copies in memory.
Secret SecretOf(const ValueView& value);

}  // namespace luadui
