#include "datalists/message_center_list.h"

#include <algorithm>
#include <array>
#include <initializer_list>
#include <utility>
#include <vector>

#include "base/counters.h"
#include "base/json_object.h"
#include "base/secret_fields.h"
#include "base/text.h"
#include "datalists/account_names.h"
#include "datalists/field_text.h"
#include "datalists/order_messages.h"
#include "datalists/portfolio_mode.h"
#include "trade/server_result.h"

namespace luadui {
namespace {

constexpr char kRiskPush[] = "str_subkey_risk_push";
// News of orders: those of accounts, of baskets, of instructions over several accounts and of conditional ones.
constexpr std::string_view kOrderPushes[] = {"order_push", "orderpush", "order_push_mutilist",
                                             "order_push_gradelist", "condition_order"};
constexpr char kMessageCenter[] = "messagecenter";
constexpr char kLocalId[] = "LocalID";
constexpr char kWarningColor[] = "#FFFF0000";
constexpr size_t kMaxOrderText = 127;  // bytes of a risk message
constexpr int kMaxSecretRows = 100;    // of a request's table that are searched for secrets

struct Message {
    std::string localId, type, text, orderMessage;
};

CDataTable ToTable(const Message& message) {
    const std::string time = MessageTimeText();
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

CDataTable TableOf(const CUIData& record) {
    CDataTable table;
    if (!record.GetData(record.GetTypeText(), table)) record.GetData("Table", table);
    return table;
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

// How the user knows the account with that token; empty when it is not among them.
std::string AccountText(const CUIData& accounts, const char* kind, std::string_view token,
                        bool isPortfolioMode) {
    const AccountNames names(accounts, kind);
    const AccountName* account = names.Find(token);
    if (!account) return {};
    return isPortfolioMode && !account->portfolio.empty() ? Join({account->Shown(), "-", account->portfolio})
                                                          : account->Shown();
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

std::string RiskText(const CDataTable& push) {
    const auto cell = [&push](const char* column) { return std::string_view(push.GetItemText(0, column)); };
    const std::string side = cell("Side") == "0" ? Gbk("买入") : Gbk("卖出");
    return Cut(OrderText({.code = cell("SecurityID"),
                          .market = cell("MarketID"),
                          .price = cell("OrderPrice"),
                          .account = cell("account"),
                          .side = side,
                          .quantity = cell("OrderQty"),
                          .name = {}}),
               kMaxOrderText);
}

const std::string& FailureType() {
    static const auto* const type = new std::string(Gbk("错误提示"));
    return *type;
}

// For every column of the history, which gets those that it lacks, where its text is in a message.
std::vector<int> MapColumns(CDataTable& history, const CDataTable& messages) {
    for (int col = 0; col < messages.GetColumnNumber(); ++col) {
        const TextView name = messages.GetColumnProperty(col, "name");
        if (history.FindColumn(name) >= 0) continue;
        if (history.GetColumnNumber() < CMessageCenterList::kMaxHistoryColumns) {
            history.AddColumn(name);
        } else {
            CCounters::Add("message_column_dropped");
        }
    }
    std::vector<int> sources;
    sources.reserve(static_cast<size_t>(history.GetColumnNumber()));
    for (int col = 0; col < history.GetColumnNumber(); ++col)
        sources.push_back(messages.FindColumn(history.GetColumnProperty(col, "name")));
    return sources;
}

}  // namespace

CMessageCenterList::CMessageCenterList(ListOwner* owner) : CUIData("instructionorder"), m_owner(owner) {
    if (!m_owner) return;
    const auto self = static_cast<unsigned int>(GetHandle());
    m_owner->RegisterNotify(self, kRiskPush);
    for (const auto kind : kOrderPushes) m_owner->RegisterNotify(self, std::string(kind));
}

CMessageCenterList::~CMessageCenterList() = default;

const char* CMessageCenterList::ClassName() const { return "CMessageCenterList"; }

bool CMessageCenterList::IsOfOrders(const CUIData& record) {
    CDataTable messages;
    return record.GetTypeText() == kMessageCenter && record.GetData(kMessageCenter, messages) &&
           messages.GetItemText(0, "MsgType") != FailureType();
}

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
        const bool isPortfolioMode = IsPortfolioMode(request) || IsPortfolioMode(params);
        account = AccountText(accounts, "account", token, isPortfolioMode);
        if (account.empty()) account = AccountText(creditAccounts, "account_xy", token, isPortfolioMode);
    }

    std::string said = FirstText(json, {"message", "msg"});
    Mask(said, token);
    MaskSecrets(said, params);
    said = Cut(said, kMaxText);
    if (said.empty()) said = Gbk("请求失败");
    const std::string code = FirstText(json, {"error_code", "code", "retcode"});
    const TextView uuid = response.GetDataText("UUID");

    Message message;
    message.localId = Join({uuid.empty() ? LongText(NextMessageNumber()) : std::string(uuid), "_error"});
    message.type = FailureType();
    message.text = said;
    message.orderMessage = Describe(account, response.GetDataLong("REQTYPE"), Cut(code, 32), said);
    _publish(ToTable(message), user, kNoHandle);
}

void CMessageCenterList::AddOrderMessages(const CUIData& push) {
    const CDataTable messages = OrderMessages(push);
    if (messages.GetRowNumber() != 0) _publish(messages, {}, GetHandle());
}

void CMessageCenterList::OnNotify(void* data) {
    const auto* record = static_cast<const CUIData*>(data);
    if (!record) return;
    const CDataTable push = TableOf(*record);
    if (push.GetRowNumber() == 0) return;
    if (record->GetTypeText() == kRiskPush) {
        _addRisk(push);
    } else if (std::ranges::find(kOrderPushes, std::string_view(record->GetTypeText())) !=
               std::end(kOrderPushes)) {
        CUIData orders = *record;
        orders.SetData("Table", push);
        AddOrderMessages(orders);
    }
}

void CMessageCenterList::_addRisk(const CDataTable& push) {
    Message message;
    const TextView id = push.GetItemText(0, kLocalId);
    message.localId = Join({id.empty() ? LongText(NextMessageNumber()) : std::string(id), "_risk"});
    message.type = Gbk("风控提示");
    message.text = Gbk("触发风控，请在触警查询中查看");
    message.orderMessage = RiskText(push);
    _publish(ToTable(message), {}, kNoHandle);
}

// The last thing that an operation does: receivers may close the page that this list belongs to.
void CMessageCenterList::_publish(const CDataTable& messages, std::string_view user, int handle) {
    _remember(messages);
    if (!m_owner) return;
    CUIData record(kMessageCenter);
    record.SetData(kMessageCenter, messages);
    if (!user.empty()) record.SetData("user", user);
    m_owner->ResponseNotify(&record, handle, true);
}

void CMessageCenterList::_remember(const CDataTable& messages) {
    CDataTable history;  // in place: one that the record and we both held would be copied for each message
    if (!GetDataShared(kMessageCenter, history)) {
        SetData(kMessageCenter, history);
        GetDataShared(kMessageCenter, history);
    }
    const std::vector<int> sources = MapColumns(history, messages);
    const int ids = messages.FindColumn(kLocalId);
    for (int row = 0; row < messages.GetRowNumber(); ++row) {
        const TableRow cells = messages.GetRow(row);
        const auto [place, isNew] =
            m_places.emplace(std::string(cells[ids]), m_forgotten + history.GetRowNumber());
        const int target = isNew ? history.AppendRow() : static_cast<int>(place->second - m_forgotten);
        for (size_t col = 0; col < sources.size(); ++col)
            history.SetItemText(target, static_cast<int>(col), cells[sources[col]]);
        if (history.GetRowNumber() > kMaxHistory) _forgetOldest(history);
    }
}

void CMessageCenterList::_forgetOldest(CDataTable& history) {
    m_places.erase(std::string(history.GetItemText(0, kLocalId)));
    history.DeleteRow(0);
    ++m_forgotten;
}

}  // namespace luadui
