#include "datalists/message_center_list.h"

#include <algorithm>
#include <array>
#include <cstdio>
#include <initializer_list>
#include <utility>

#include "base/counters.h"
#include "base/data_list.h"
#include "base/json_object.h"
#include "base/secret_fields.h"
#include "base/text.h"
#include "codedata/data_manager.h"
#include "datalists/json_array.h"
#include "platform/win32.h"
#include "trade/server_result.h"

namespace luadui {
namespace {

constexpr char kRiskPush[] = "str_subkey_risk_push";
constexpr char kMessageCenter[] = "messagecenter";
constexpr char kLocalId[] = "LocalID";
constexpr char kWarningColor[] = "#FFFF0000";
constexpr size_t kMaxOrderText = 127;  // bytes of a risk message
constexpr int kMaxSecretRows = 100;    // of a request's table that are searched for secrets

struct Message {
    std::string localId, type, text, orderMessage;
};

std::string TimeText() {
    SYSTEMTIME now;
    GetLocalTime(&now);
    char text[32];
    std::snprintf(text, sizeof text, "%04d/%02d/%02d %02d:%02d", now.wYear, now.wMonth, now.wDay, now.wHour,
                  now.wMinute);
    return text;
}

CDataTable ToTable(const Message& message) {
    const std::string time = TimeText();
    const std::array<std::pair<const char*, std::string_view>, 7> cells = {
        {{kLocalId, message.localId},
         {"MsgTime", time},
         {"MsgType", message.type},
         {"Text", message.text},
         {"OrderMessage", message.orderMessage},
         {"MsgTypeContents", message.type},
         {"TextColor", kWarningColor}}};
    CDataTable table;
    const int row = table.AppendRow();
    for (const auto& [name, text] : cells) table.SetItemText(row, table.AddColumn(name), text);
    return table;
}

std::string Cut(std::string_view text, size_t maxBytes) {
    const std::string_view kept = CutAtCharacter(text, maxBytes);
    if (kept.size() < text.size()) CCounters::Add("message_text_cut");
    return std::string(kept);
}

std::string Join(std::initializer_list<std::string_view> parts) {
    std::string text;
    for (const std::string_view part : parts) text += part;
    return text;
}

// The first of the members that has a text or a number, as text.
std::string FirstOf(const CJsonObject& json, std::initializer_list<const char*> names) {
    for (const char* name : names) {
        const ValueView value = json.Find(name);
        if (value.Kind() == kDataInteger) return LongText(value.AsLong());
        if (value.Kind() == kDataDouble) return DoubleText(value.AsDouble());
        if (const TextView text = value.AsText(); !text.empty()) return text;
    }
    return {};
}

CDataTable TableOf(const CUIData& record) {
    CDataTable table;
    if (!record.GetData(record.GetTypeText(), table)) record.GetData("Table", table);
    return table;
}

// The rows of an account query: in the record as it is published, or as it is shared.
CDataTable AccountsOf(const CUIData& record, const char* kind) {
    CDataTable table;
    return record.GetData(kind, table) ? table : TableOf(record);
}

void Mask(std::string& text, std::string_view secret) {
    if (!secret.empty() && text.find(secret) != std::string::npos)
        text = ReplaceText(text, secret, kSecretMask);
}

// A server may repeat in its message what it was sent.
void MaskSecrets(std::string& text, const CUIData& params) {
    for (const auto& [key, value] : params) {
        if (IsSecretField(key)) Mask(text, value.AsText());
    }
    const CDataTable table = TableOf(params);
    for (int col = 0; col < table.GetColumnNumber(); ++col) {
        if (!IsSecretField(table.GetColumnProperty(col, "name"))) continue;
        for (int row = 0; row < std::min(table.GetRowNumber(), kMaxSecretRows); ++row)
            Mask(text, table.GetItemText(row, col));
    }
}

std::string_view Either(const CDataTable& table, int row, const char* name, const char* otherName) {
    const TextView text = table.GetItemText(row, name);
    return text.empty() ? table.GetItemText(row, otherName) : text;
}

// The name of the portfolio with that token; false when the account has none.
bool FindPortfolio(std::string_view json, std::string_view token, std::string& name) {
    CDataList portfolios;
    if (json.find(token) == std::string_view::npos || !ParseJsonArray(json, portfolios)) return false;
    for (const auto& [key, value] : portfolios) {
        CJsonObject portfolio;
        if (!value.Get(portfolio) || portfolio.GetText("fund_token") != token) continue;
        name = FirstOf(portfolio, {"portfolioname", "portfolio_name"});
        return true;
    }
    return false;
}

// How the user knows the account with that token; empty when it is not in the table.
std::string AccountName(const CDataTable& accounts, std::string_view token, bool isPortfolioMode) {
    const int tokens = accounts.FindColumn("fund_token");
    const int portfolios = accounts.FindColumn("portfolios");
    for (int row = 0; row < accounts.GetRowNumber(); ++row) {
        std::string portfolio;
        const bool hasPortfolio = FindPortfolio(accounts.GetItemText(row, portfolios), token, portfolio);
        if (!hasPortfolio && accounts.GetItemText(row, tokens) != token) continue;
        std::string name(Either(accounts, row, "accountname", "account_name"));
        if (name.empty()) name = Either(accounts, row, "accountid", "account_id");
        return isPortfolioMode && !portfolio.empty() ? Join({name, "-", portfolio}) : name;
    }
    return {};
}

// "account, request type 1101, error 17: message", as far as known.
std::string Describe(std::string_view account, int64_t type, std::string_view code,
                     std::string_view message) {
    static const auto* const words =
        new std::array{Gbk("账户"), Gbk("，"), Gbk("请求类型"), Gbk("，错误码"), Gbk("：")};
    const auto& [accountWord, comma, typeWord, codeWord, colon] = *words;
    std::string text;
    if (!account.empty()) text += Join({accountWord, account, comma});
    text += Join({typeWord, LongText(type)});
    if (!code.empty()) text += Join({codeWord, code});
    return text += Join({colon, message});
}

std::string SecurityName(std::string_view code, std::string_view market) {
    return WideToGbk(CDataManager::Instance().GetZqmcFromFairy(GbkToWide(code), GbkToWide(market)));
}

// "name（code），price元，account买入100股".
std::string RiskText(const CDataTable& push) {
    const auto cell = [&push](const char* column) { return std::string_view(push.GetItemText(0, column)); };
    const std::string_view code = cell("SecurityID");
    const std::string name = SecurityName(code, cell("MarketID"));
    const std::string side = cell("Side") == "0" ? Gbk("买入") : Gbk("卖出");
    return Cut(Join({name, Gbk("（"), code, Gbk("），"), cell("OrderPrice"), Gbk("元，"), cell("account"),
                     side, cell("OrderQty"), Gbk("股")}),
               kMaxOrderText);
}

}  // namespace

CMessageCenterList::CMessageCenterList(ListOwner* owner) : CUIData("instructionorder"), m_owner(owner) {
    if (m_owner) m_owner->RegisterNotify(static_cast<unsigned int>(GetHandle()), kRiskPush);
}

CMessageCenterList::~CMessageCenterList() = default;

const char* CMessageCenterList::ClassName() const { return "CMessageCenterList"; }

void CMessageCenterList::AddErrorMessage(const CUIData& response, const CUIData& accounts,
                                         const CUIData& creditAccounts, const std::string& user) {
    CUIData request, params;
    CJsonObject json;
    response.GetData("Request", request);
    request.GetData("Params", params);
    ReadJsonData(response, json);

    std::string token = response.GetDataString("FundToken");
    if (token.empty()) token = params.GetDataString("fund_token");
    std::string account;
    if (!token.empty()) {
        const bool isPortfolioMode = request.GetDataText("PB_MODE") == "true" ||
                                     params.GetDataText("PB_MODE") == "true" ||
                                     request.GetDataBool("PB_MODE");
        account = AccountName(AccountsOf(accounts, "account"), token, isPortfolioMode);
        if (account.empty())
            account = AccountName(AccountsOf(creditAccounts, "account_xy"), token, isPortfolioMode);
    }

    std::string said = FirstOf(json, {"message", "msg"});
    Mask(said, token);
    MaskSecrets(said, params);
    said = Cut(said, kMaxText);
    if (said.empty()) said = Gbk("请求失败");
    const std::string code = FirstOf(json, {"error_code", "code", "retcode"});
    const TextView uuid = response.GetDataText("UUID");

    Message message;
    message.localId = Join({uuid.empty() ? LongText(++m_lastNumber) : std::string(uuid), "_error"});
    message.type = Gbk("错误提示");
    message.text = said;
    message.orderMessage = Describe(account, response.GetDataLong("REQTYPE"), Cut(code, 32), said);
    _publish(ToTable(message), user);
}

void CMessageCenterList::OnNotify(void* data) {
    const auto* record = static_cast<const CUIData*>(data);
    if (!record || record->GetTypeText() != kRiskPush) return;
    const CDataTable push = TableOf(*record);
    if (push.GetRowNumber() == 0) return;

    Message message;
    message.localId = Join({push.GetItemText(0, kLocalId), "_risk"});
    message.type = Gbk("风控提示");
    message.text = Gbk("触发风控，请在触警查询中查看");
    message.orderMessage = RiskText(push);
    _publish(ToTable(message), {});
}

// The last thing that an operation does: receivers may close the page that this list belongs to.
void CMessageCenterList::_publish(const CDataTable& message, std::string_view user) {
    _remember(message);
    if (!m_owner) return;
    CUIData record(kMessageCenter);
    record.SetData(kMessageCenter, message);
    if (!user.empty()) record.SetData("user", user);
    m_owner->ResponseNotify(&record, kNoHandle, true);
}

void CMessageCenterList::_remember(const CDataTable& message) {
    CDataTable history;
    if (!GetDataShared(kMessageCenter, history)) {
        SetData(kMessageCenter, message);
        return;
    }
    const std::string_view localId = message.GetItemText(0, kLocalId);
    const int column = history.FindColumn(kLocalId);
    for (int row = 0; row < history.GetRowNumber(); ++row) {
        if (history.GetItemText(row, column) != localId) continue;
        for (int col = 0; col < message.GetColumnNumber(); ++col)
            history.SetItemText(row, col, message.GetItemText(0, col));
        return;
    }
    history.InsertTable(message);
    while (history.GetRowNumber() > kMaxHistory) history.DeleteRow(0);
}

}  // namespace luadui
