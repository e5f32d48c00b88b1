#include "accounts/account_request.h"

#include <algorithm>
#include <charconv>
#include <utility>
#include <vector>

#include "accounts/result_event.h"
#include "base/counters.h"
#include "base/secret_fields.h"
#include "base/text.h"
#include "messaging/guid.h"
#include "trade/server_result.h"

namespace luadui {
namespace {

constexpr std::string_view kPasswordColumns[] = {"password", "txpassword", "key_password"};

CUIData PickTexts(std::span<const std::string_view> names, const CUIData& values) {
    CUIData picked;
    for (const std::string_view name : names) picked.SetData(name, TextOf(values.GetDataView(name)));
    return picked;
}

CDataTable OneRow(const AccountOperation& operation, const CUIData& values) {
    CDataTable table = AccountTable(operation);
    const int row = table.AppendRow();
    for (size_t col = 0; col < operation.columns.size(); ++col)
        table.SetItemText(row, static_cast<int>(col), TextOf(values.GetDataView(operation.columns[col])));
    return table;
}

CQueueReqItem Envelope(const AccountOperation& operation, const CUIData& values, CUIData params) {
    CQueueReqItem request;
    request.SetData("REQTYPE", operation.type);
    const std::string uuid = values.GetDataString("UUID");
    request.SetData("UUID", uuid.empty() ? NewGuid() : uuid);
    request.SetData("log_source", kModuleAccountManager);
    params.SetData("log_source", kModuleAccountManager);
    request.SetData("Params", params);
    return request;
}

// The codes of the server come as texts or numbers; the latter are shown with three decimals, in every locale.
std::string ReasonText(const ValueView& value) {
    if (value.Kind() != kDataInteger && value.Kind() != kDataDouble) return std::string(value.AsText());
    char buffer[400];  // 1.8e308 has 309 digits before its point
    const auto end =
        std::to_chars(buffer, std::end(buffer), value.AsDouble(), std::chars_format::fixed, 3).ptr;
    return std::string(buffer, end);
}

ValueView FirstOf(const CJsonObject& json, std::string_view name, std::string_view other) {
    const DataKind kind = json.Kind(name);
    return json.Find(kind == kDataAbsent || kind == kDataNull ? other : name);
}

// A text takes the place of one of the same length. Numbers are changed in place as well.
template <class Values, class Put>
void Overwrite(Values& values, Put put) noexcept {
    try {
        std::vector<std::pair<std::string, size_t>> secrets;
        for (const auto [key, value] : values) {
            if (IsSecretField(key)) secrets.emplace_back(key, value.AsText().size());
        }
        for (const auto& [key, size] : secrets) put(key, std::string(size, '*'));
    } catch (...) {  // no memory
        CCounters::Add("account_passwords_not_wiped");
    }
}

}  // namespace

void WipePasswords(CUIData& values) noexcept {
    Overwrite(values, [&](const std::string& key, const std::string& text) { values.SetData(key, text); });
}

void WipePasswords(CJsonObject& values) noexcept {
    Overwrite(values, [&](const std::string& key, const std::string& text) { values.Set(key, text); });
}

CQueueReqItem MakeAccountRequest(const AccountOperation& operation, const CUIData& values) {
    if (operation.isTable) return MakeAccountRequest(operation, values, OneRow(operation, values));
    return Envelope(operation, values, PickTexts(operation.columns, values));
}

CQueueReqItem MakeAccountRequest(const AccountOperation& operation, const CUIData& values,
                                 const CDataTable& rows) {
    CUIData params = PickTexts(operation.beside, values);
    params.SetData("Table", rows);
    return Envelope(operation, values, params);
}

CDataTable AccountTable(const AccountOperation& operation) {
    CDataTable table;
    for (const std::string_view column : operation.columns) table.AddColumn(column);
    return table;
}

std::optional<CUIData> EncryptPasswords(const CUIData& values, const PasswordCipher& cipher) {
    if (!cipher) return std::nullopt;
    CUIData encrypted;
    for (const auto [key, value] : values) {
        if (std::ranges::count(kPasswordColumns, std::string_view(key)) == 0) {
            encrypted.SetData(std::string_view(key), value);
            continue;
        }
        const Secret clear = SecretOf(value);
        if (clear.IsEmpty()) continue;
        const auto text = cipher(clear.View());
        if (!text) return std::nullopt;
        encrypted.SetData(std::string_view(key), *text);
    }
    return encrypted;
}

CJsonObject AccountFailure::ToJson() const {
    CJsonObject json;
    json.Set("error_code", code);
    json.Set("msg", message);
    return json;
}

bool HasFailed(const CUIData& response) { return response.GetDataLong("DATATYPE") == -1; }

bool ReadReason(const CUIData& response, CJsonObject& reason) {
    return ReadJsonData(response, reason) && !reason.IsEmpty();
}

AccountFailure FailureOf(const CJsonObject& reason) {
    return {ReasonText(FirstOf(reason, "error_code", "code")), ReasonText(FirstOf(reason, "msg", "message"))};
}

AccountFailure LocalFailure(std::string_view message) { return {std::string(kLocalErrorCode), Gbk(message)}; }

AccountFailure MissingTable(const CUIData& response) {
    AccountFailure failure = LocalFailure("获取应答数据生成表格失败！原始数据：");
    failure.message += std::string_view(response.GetDataText("RawData"));
    return failure;
}

bool TableOf(const CUIData& response, CDataTable& table) { return response.GetData("Table", table); }

CUIData RequestParams(const CUIData& response) {
    CUIData request, params;
    if (response.GetData("Request", request)) request.GetData("Params", params);
    return params;
}

CDataTable RequestTable(const CUIData& response) {
    CDataTable table;
    RequestParams(response).GetData("Table", table);
    return table;
}

std::string RequestUuid(const CUIData& response) {
    std::string uuid = response.GetDataString("UUID");
    if (CUIData request; uuid.empty() && response.GetData("Request", request))
        uuid = request.GetDataString("UUID");
    return uuid;
}

Secret SecretOf(const ValueView& value) {
    if (value.Kind() == kDataString) return Secret(value.AsText());
    std::string digits = TextOf(value);
    Secret secret(digits);
    WipeMemory(digits.data(), digits.size());
    return secret;
}

std::string TextOf(const ValueView& value) {
    switch (value.Kind()) {
        case kDataString:
            return std::string(value.AsText());
        case kDataInteger:
            return LongText(value.AsLong());
        case kDataBoolean:
            return value.AsBool() ? "1" : "0";
        case kDataDouble:
            return DoubleText(value.AsDouble());
        default:
            return {};
    }
}

}  // namespace luadui
