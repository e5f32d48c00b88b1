// The fields of an account and their names in JSON.
#pragma once

#include <cstddef>
#include <cstdint>
#include <iterator>
#include <string_view>

namespace luadui {

// In the order of the account's JSON (which begins with kAccountKey, though). All are texts.
enum class AccountField : uint8_t {
    kId,         // record id in the account service
    kAccountId,  // the account code, as shown
    kAccountName,
    kNickname,
    kAccountMark,
    kBrokerId,
    kBrokerName,
    kBranchId,
    kBranchName,
    kProductId,
    kProductName,
    kInstitutionId,
    kUserId,
    kIsSimulated,  // "1": a paper account
    kTradeType,    // "1" ordinary, "2" credit
    kUserKey,
    kPermissionCode,
    kBindStatus,  // "1": bound
    kAllowLogin,
    kAccountKey,  // account code, broker id and trade type, joined by "|"
    kMessage,     // the last state, as shown
    kFundToken,   // see CAccount::FundToken
    kSpare1,      // spare texts: values of one login, which the account service gives without a name
    kPassword,
    kTxPassword,
    kSpare2,
    kSpare3,
    kDynamicPassword,
    kSpare4,
    kCanUse,  // "1": logged in and usable
    kCount
};

struct AccountFieldInfo {
    AccountField field;
    std::string_view key;  // in JSON; empty: not written
    bool isSecret;         // held in a Secret, wiped when the account logs out

    constexpr bool IsSerialised() const { return !key.empty(); }
};

inline constexpr size_t kAccountFields = static_cast<size_t>(AccountField::kCount);

// Indexed by field.
inline constexpr AccountFieldInfo kAccountFieldTable[] = {
    {AccountField::kId, "id", false},
    {AccountField::kAccountId, "accountid", false},
    {AccountField::kAccountName, "accountname", false},
    {AccountField::kNickname, "nickname", false},
    {AccountField::kAccountMark, "accountmark", false},
    {AccountField::kBrokerId, "qsid", false},
    {AccountField::kBrokerName, "qsname", false},
    {AccountField::kBranchId, "yybid", false},
    {AccountField::kBranchName, "yybname", false},
    {AccountField::kProductId, "productid", false},
    {AccountField::kProductName, "productname", false},
    {AccountField::kInstitutionId, "institutionid", false},
    {AccountField::kUserId, "userid", false},
    {AccountField::kIsSimulated, "issimulate", false},
    {AccountField::kTradeType, "tradetype", false},
    {AccountField::kUserKey, "userkey", false},
    {AccountField::kPermissionCode, "PermissionCode", false},
    {AccountField::kBindStatus, "bindstatus", false},
    {AccountField::kAllowLogin, "allowlogin", false},
    {AccountField::kAccountKey, "accountkey", false},
    {AccountField::kMessage, "AccountMsg", false},
    {AccountField::kFundToken, "fund_token", false},
    {AccountField::kSpare1, "", false},
    {AccountField::kPassword, "password", true},
    {AccountField::kTxPassword, "txpassword", true},
    {AccountField::kSpare2, "", true},
    {AccountField::kSpare3, "", true},
    {AccountField::kDynamicPassword, "dynamicpassword", true},
    {AccountField::kSpare4, "", true},
    {AccountField::kCanUse, "canuse", false},
};

constexpr const AccountFieldInfo& InfoOf(AccountField field) {
    return kAccountFieldTable[static_cast<size_t>(field)];
}

namespace account_fields {

constexpr bool IsInOrder() {
    for (size_t i = 0; i < kAccountFields; ++i) {
        if (kAccountFieldTable[i].field != static_cast<AccountField>(i)) return false;
    }
    return std::size(kAccountFieldTable) == kAccountFields;
}
static_assert(IsInOrder(), "the table is indexed by field");

}  // namespace account_fields

}  // namespace luadui
