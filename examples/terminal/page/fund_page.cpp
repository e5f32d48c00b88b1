#include "page/fund_page.h"

#include <array>
#include <memory>

#include "base/json_object.h"
#include "base/text.h"
#include "page/page_exports.h"
#include "page/text_table.h"

namespace terminal {
namespace {

using luadui::CDataTable;
using luadui::CJsonObject;
using luadui::CQueueRespData;
using luadui::Gbk;

enum : int { kFunds = 1201, kPositions = 1202, kLuaCall = 1502, kHostMessage = 1603 };

std::string PageSign(const std::string& name) { return "fundpage:" + name; }

struct ShownColumn {
    const char* name;
    const char* heading;
    TextTable::Align align;
};
constexpr auto kLeft = TextTable::Align::kLeft;
constexpr auto kRight = TextTable::Align::kRight;

constexpr ShownColumn kFundColumns[] = {{"Currency", "币种", kLeft},
                                        {"TotalAssets", "总资产", kRight},
                                        {"AvailableValue", "可用资金", kRight},
                                        {"FrozenValue", "冻结资金", kRight},
                                        {"MarketValue", "证券市值", kRight}};
constexpr ShownColumn kPositionColumns[] = {{"SecurityID", "代码", kLeft},
                                            {"SecurityName", "名称", kLeft},
                                            {"Market", "市场", kLeft},
                                            {"StockBalance", "数量", kRight},
                                            {"AvailableStockBalance", "可卖", kRight},
                                            {"CostPrice", "成本价", kRight},
                                            {"LastPrice", "最新价", kRight},
                                            {"MarketValue", "市值", kRight},
                                            {"FloatProfit", "盈亏", kRight}};

std::string MarketName(std::string_view market) {
    static constexpr std::pair<std::string_view, const char*> kNames[] = {
        {"17", "沪A"}, {"18", "沪B"},  {"19", "沪债"}, {"20", "沪基"}, {"33", "深A"},
        {"34", "深B"}, {"35", "深债"}, {"36", "深基"}, {"145", "科创"}};
    for (const auto& [id, name] : kNames)
        if (id == market) return Gbk(name);
    return std::string(market);
}

template <class Columns>
bool HasColumns(const CDataTable& table, const Columns& columns) {
    for (const ShownColumn& column : columns)
        if (table.FindColumn(column.name) < 0) return false;
    return true;
}

template <class Columns>
TextTable ShownTable(const CDataTable& table, const Columns& columns) {
    TextTable shown;
    for (const ShownColumn& column : columns) shown.AddColumn(Gbk(column.heading), column.align);
    for (int row = 0; row < table.GetRowNumber(); ++row) {
        std::vector<std::string> cells;
        for (const ShownColumn& column : columns) {
            const std::string_view text = table.GetItemText(row, column.name);
            const bool isMarket = column.name == std::string_view("Market");
            cells.push_back(isMarket                 ? MarketName(text)
                            : column.align == kRight ? TextTable::Grouped(text)
                                                     : std::string(text));
        }
        shown.AddRow(cells);
    }
    return shown;
}

std::string SecurityKey(const CDataTable& positions, int row) {
    return positions.GetItemText(row, "SecurityID") + "|" + positions.GetItemText(row, "Market");
}

}  // namespace

bool FundPage::Requests::Request(luadui::CQueueReqItem& request) {
    if (request.GetDataLong("REQTYPE") != kLuaCall) ++m_page.m_count.queries;
    m_page._changed();
    return CRequestObject::Request(request);
}

void FundPage::Requests::OnResponse(const CQueueRespData* response) {
    if (response) m_page._onResponse(*response);
}

FundPage::FundPage(const luadui::PageInit& init, std::string fundToken)
    : TextPage(init), m_fundToken(std::move(fundToken)) {}

FundPage* FundPage::Create(const luadui::PageInit& init) {
    std::string fundToken = _parameter(init.info, "fund_token");
    if (fundToken.empty()) return nullptr;
    std::unique_ptr<FundPage> page(new FundPage(init, std::move(fundToken)));
    if (!page->_open(init)) return nullptr;
    page->_start();
    return page.release();
}

TextPage* CreatePage(const luadui::PageInit& init) { return FundPage::Create(init); }

void FundPage::_start() {
    m_requests.SetRequestSource("fundpage");
    m_requests.SendLuaSync("page_register", "{}", PageSign(m_name));
    for (const int type : {kFunds, kPositions})
        m_requests.SendQuery(m_fundToken, type, {{"isSub", "true"}}, true);
}

void FundPage::Sleep(bool asleep) {
    m_requests.Sleep(asleep);
    TextPage::Sleep(asleep);
}

LRESULT FundPage::HandleMessage(UINT message, WPARAM wParam, LPARAM lParam) {
    if (message == WM_DESTROY)
        for (const int type : {kFunds, kPositions})
            m_requests.SendQuery(m_fundToken, type, {{"unsub", "true"}}, false);
    return TextPage::HandleMessage(message, wParam, lParam);
}

void FundPage::_onResponse(const CQueueRespData& response) {
    const int type = static_cast<int>(response.GetDataLong("REQTYPE"));
    CJsonObject json;
    const bool hasJson = response.GetData("JsonData", json);
    if (type == kHostMessage) {
        m_hostMessage = json.GetString("message");
    } else if (hasJson && json.Has("retcode")) {
        ++m_count.errors;
        m_errors[type] = std::string("[").append(std::to_string(json.GetLong("retcode"))).append("] ") +
                         json.GetString("message");
    } else if (response.GetDataText("FundToken") == m_fundToken && _takeTable(type, response)) {
        ++m_count.answers;
        m_errors.erase(type);
    } else {
        ++m_count.unreadable;
        m_errors[type] = Gbk("应答无法识别");
    }
    _changed();
}

bool FundPage::_takeTable(int type, const CQueueRespData& response) {
    CDataTable table;
    if (!response.GetData("Table", table)) return false;
    if (type == kFunds && HasColumns(table, kFundColumns)) {
        m_funds = table;
        return true;
    }
    if (type == kPositions && HasColumns(table, kPositionColumns)) {
        m_positions = table;
        _askInitials();
        return true;
    }
    return false;
}

// The initials come from the host's market database, once for each security.
void FundPage::_askInitials() {
    CJsonObject asked;
    for (int row = 0; row < m_positions.GetRowNumber(); ++row) {
        if (!m_initials.try_emplace(SecurityKey(m_positions, row)).second) continue;
        CJsonObject security;
        security.Set("code", m_positions.GetItemText(row, "SecurityID"));
        security.Set("market", m_positions.GetItemText(row, "Market"));
        asked.Append("codes", security);
    }
    CJsonObject answer;
    if (asked.IsEmpty() ||
        !answer.Parse(m_requests.SendLuaSync("get_initials", asked.ToText(), PageSign(m_name))))
        return;
    for (const auto [key, value] : answer.GetSub("initials")) m_initials[std::string(key)] = value.AsText();
}

std::string FundPage::_text(size_t columns) const {
    std::string text = Gbk("资金账号 ") + TextTable::Clean(m_fundToken) + "\n\n";
    text += _fundText(columns) + "\n" + _positionText(columns);
    for (const auto& [type, error] : m_errors)
        text += Gbk("\n错误 ") + std::to_string(type) + ": " + TextTable::Clean(error) + "\n";
    if (!m_hostMessage.empty()) text += Gbk("\n消息: ") + TextTable::Clean(m_hostMessage) + "\n";
    return text;
}

std::string FundPage::_fundText(size_t columns) const {
    return ShownTable(m_funds, kFundColumns).ToText(columns);
}

std::string FundPage::_positionText(size_t columns) const {
    CDataTable positions = m_positions;
    positions.AddColumn("Initials");
    for (int row = 0; row < positions.GetRowNumber(); ++row) {
        const auto found = m_initials.find(SecurityKey(positions, row));
        if (found != m_initials.end()) positions.SetItemText(row, "Initials", found->second);
    }
    std::array<ShownColumn, std::size(kPositionColumns) + 1> shown;
    std::copy(std::begin(kPositionColumns), std::end(kPositionColumns), shown.begin());
    shown.back() = {"Initials", "拼音", kLeft};
    return ShownTable(positions, shown).ToText(columns);
}

}  // namespace terminal
