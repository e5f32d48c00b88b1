#include "page/quote_page.h"

#include <algorithm>
#include <memory>

#include "base/counters.h"
#include "base/data_set.h"
#include "page/page_exports.h"
#include "page/record_text.h"
#include "page/text_table.h"

namespace terminal {
namespace {

using luadui::CDataSet;
using luadui::CUIData;

constexpr char kHostMessage[] = "lua_subscribe";
constexpr char kQuotes[] = "hq", kBondQuotes[] = "hq_zq", kSingleQuote[] = "hq_quote";
constexpr int kShownRows = 40;  // as many as a screen has lines

// The named fields that the page keeps; the first ones are shown.
constexpr const char* kColumns[] = {
    "Zqdm",       "Market",      "Zqmc",        "PriceZxjg",   "Zdfd",       "PriceBuy1",
    "AmountBuy1", "PriceSell1",  "AmountSell1", "TotalAmount", "TotalMoney", "ZuiGao",
    "ZuiDi",      "KaiPan",      "PriceZrsp",   "PriceZtjg",   "PriceDtjg",  "XianShou",
    "PriceBuy2",  "AmountBuy2",  "PriceBuy3",   "AmountBuy3",  "PriceBuy4",  "AmountBuy4",
    "PriceBuy5",  "AmountBuy5",  "PriceSell2",  "AmountSell2", "PriceSell3", "AmountSell3",
    "PriceSell4", "AmountSell4", "PriceSell5",  "AmountSell5", "TPFlag",     "DateTime"};
constexpr int kShownColumns = 11;

const std::vector<luadui::HashedKey>& Columns() {
    static const std::vector<luadui::HashedKey> keys(std::begin(kColumns), std::end(kColumns));
    return keys;
}

std::string KindOf(std::string_view code) {
    return code.ends_with(":19") || code.ends_with(":35") ? kBondQuotes : kQuotes;
}

// The securities by the kind of their quotes.
std::map<std::string, std::string> ByKind(const std::vector<std::string>& codes) {
    std::map<std::string, std::string> lists;
    for (const std::string& code : codes) {
        std::string& list = lists[KindOf(code)];
        list += (list.empty() ? "" : ",") + code;
    }
    return lists;
}

}  // namespace

QuotePage::QuotePage(const luadui::PageInit& init) : TextPage(init), m_data(init.name) {
    for (const char* column : kColumns) m_quotes.AddColumn(column);
}

QuotePage* QuotePage::Create(const luadui::PageInit& init) {
    std::unique_ptr<QuotePage> page(new QuotePage(init));
    if (!page->m_data.Init() || !page->_open(init)) return nullptr;
    page->_start();
    return page.release();
}

TextPage* CreatePage(const luadui::PageInit& init) { return QuotePage::Create(init); }

void QuotePage::_start() {
    m_data.SetRequestSource("quotepage");
    m_data.SendLuaSync("page_register", "{}", "quotepage:" + m_name);
    m_data.RegisterNotify(GetHandle(), kHostMessage);
    _show(_parameter(m_info, "codes"));
    _changed();
}

void QuotePage::Sleep(bool asleep) {
    m_data.Sleep(asleep);
    TextPage::Sleep(asleep);
}

LRESULT QuotePage::HandleMessage(UINT message, WPARAM wParam, LPARAM lParam) {
    if (message == WM_DESTROY) {
        std::string all;
        for (const auto& [code, row] : m_rows) all += code + ",";
        _forget(all);
    }
    return TextPage::HandleMessage(message, wParam, lParam);
}

void QuotePage::_run(const CUIData& command) {
    const std::string what = command.GetDataString("do"), codes = command.GetDataString("codes");
    if (what == "show") return _show(codes);
    if (what == "forget") return _forget(codes);
    if (what == "single") return _ask(kSingleQuote, codes);
    if (what == "search") return _search(command);
    if (what == "close") return Close();
    luadui::CCounters::Add("page_command_unknown");
}

void QuotePage::_show(std::string_view codes) {
    std::vector<std::string> added;
    for (const std::string& code : NamesOf(codes))
        if (m_rows.try_emplace(code, m_quotes.GetRowNumber()).second) {
            m_quotes.AppendRow();
            added.push_back(code);
        }
    for (const auto& [kind, list] : ByKind(added)) _subscribe(kind, list, luadui::kSetSubscribe);
    _changed();
}

void QuotePage::_forget(std::string_view codes) {
    std::vector<std::string> dropped;
    for (const std::string& code : NamesOf(codes)) {
        const auto found = m_rows.find(code);
        if (found == m_rows.end()) continue;
        const int row = found->second;
        m_quotes.DeleteRow(row);
        m_rows.erase(found);
        for (auto& [other, place] : m_rows) place -= place > row ? 1 : 0;
        dropped.push_back(code);
    }
    for (const auto& [kind, list] : ByKind(dropped)) _subscribe(kind, list, luadui::kSetUnsubscribe);
    _changed();
}

CUIData QuotePage::_record(const std::string& kind, const std::string& codes) const {
    CUIData record(kind);
    record.SetData("handle", GetHandle());
    record.SetData("stock_code", codes);
    return record;
}

// A subscription brings what is known now, too.
void QuotePage::_subscribe(const std::string& kind, const std::string& codes, luadui::SET_DATA mode) {
    CUIData subscription = _record(kind, codes);
    m_data.SetData(&subscription, mode);
}

void QuotePage::_ask(const std::string& kind, const std::string& codes) {
    CUIData question = _record(kind, codes);
    ++m_count.queries;
    m_data.GetData(question, false, true);
}

void QuotePage::OnNotify(void* data) {
    const CUIData& record = *static_cast<CUIData*>(data);
    if (record.GetTypeText() == kHostMessage) return _run(record);
    _report(record, _take(record));
    _changed();
}

// News are of all securities that somebody shows; looking for the page's own among them costs as much as it shows. Answers
// how many of its own there were.
int QuotePage::_take(const CUIData& record) {
    if (record.GetDataLong("ret_code") != 0 || record.GetTypeText() == "error_msg") {
        ++m_count.errors;
        return -1;
    }
    ++m_count.answers;
    CDataSet codes;
    record.GetData("updatecode", codes);
    if (record.GetTypeText() == kSingleQuote) return static_cast<int>(codes.Size());
    int count = 0;
    for (const auto& [code, row] : m_rows) {
        CUIData quote;
        if (!codes.Contains(code) || !record.GetData(code, quote)) continue;
        _takeQuote(row, quote);
        ++count;
    }
    return count;
}

void QuotePage::_takeQuote(int row, const CUIData& quote) {
    int col = 0;
    for (const luadui::HashedKey& column : Columns()) {
        const std::string text = TextOf(quote.GetDataView(column));
        if (m_quotes.GetItemText(row, col) != std::string_view(text)) m_quotes.SetItemText(row, col, text);
        ++col;
    }
}

void QuotePage::_report(const CUIData& record, int rows) const {
    const bool isError = record.GetTypeText() == "error_msg";
    const bool isAnswer = record.GetDataLong("handle") == GetHandle();
    const bool isWake = record.GetDataText("sleep_refresh_request") == "true";
    _reportRecord({.kind = record.GetType(),
                   .why = isWake     ? "asked on waking"
                          : isAnswer ? "answer"
                                     : "push",
                   .rows = rows,
                   .code = record.GetDataLong("ret_code"),
                   .message = record.GetDataString(isError ? "error_msg" : "ret_message")});
}

void QuotePage::_search(const CUIData& command) {
    constexpr int64_t kMost = 1000;
    const auto max = static_cast<size_t>(std::clamp<int64_t>(command.GetDataLong("max"), 1, kMost));
    m_found = SearchSecurities(command.GetDataText("queries"), max);
    _reportRecord({.kind = "search", .why = "answer", .rows = m_found.candidates.GetRowNumber()});
    _changed();
}

void QuotePage::_addToView(CUIData& view) const {
    CUIData tables;
    tables.SetData("quotes", m_quotes);
    tables.SetData("candidates", m_found.candidates);
    tables.SetData("lookups", m_found.lookups);
    view.SetData("tables", tables);
}

std::string QuotePage::_text(size_t columns) const {
    TextTable shown;
    for (int col = 0; col < kShownColumns; ++col)
        shown.AddColumn(kColumns[col], col < 3 ? TextTable::Align::kLeft : TextTable::Align::kRight);
    const int rows = m_quotes.GetRowNumber();
    for (int row = 0; row < std::min(rows, kShownRows); ++row) {
        std::vector<std::string> cells;
        for (int col = 0; col < kShownColumns; ++col) cells.emplace_back(m_quotes.GetItemText(row, col));
        shown.AddRow(cells);
    }
    std::string text = shown.ToText(columns);
    if (rows > kShownRows) text += "... " + std::to_string(rows - kShownRows) + "\n";
    return text;
}

}  // namespace terminal
