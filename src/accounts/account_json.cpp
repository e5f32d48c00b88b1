#include "accounts/account_json.h"

#include "base/json_object.h"
#include "base/text.h"

namespace luadui {

// Only objects can be parsed and written: an array is the member of one.

std::optional<CDataList> ListOf(const ValueView& value) {
    CDataList list;
    if (value.Get(list)) return list;
    CJsonObject holder;
    if (!TrimText(value.AsText()).starts_with('[')) return std::nullopt;  // others are between ';'
    if (!holder.Parse("{\"\":" + std::string(value.AsText()) + '}') || holder.Kind("") != kDataList)
        return std::nullopt;
    return holder.GetArray("");
}

std::string ArrayText(const CDataList& list) {
    constexpr std::string_view kBefore = "{\"\":", kAfter = "}";
    CJsonObject holder;
    holder.Set("", list);
    const std::string text = holder.ToText();
    return text.substr(kBefore.size(), text.size() - kBefore.size() - kAfter.size());
}

std::string OrderOf(const CAccountList& accounts, const CAccount& account) {
    const auto number = accounts.Order().Find(account.Get(AccountField::kAccountKey));
    return number ? std::to_string(*number) : std::string();
}

std::string_view LoginState(std::string_view canUse) { return canUse == "1" ? "login" : "logout"; }

}  // namespace luadui
