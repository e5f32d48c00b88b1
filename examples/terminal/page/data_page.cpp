#include "page/data_page.h"

#include <algorithm>
#include <iterator>
#include <memory>
#include <vector>

#include "base/counters.h"
#include "base/text.h"
#include "page/page_exports.h"
#include "page/record_text.h"
#include "page/text_table.h"

namespace terminal {
namespace {

using luadui::CDataSet;
using luadui::CDataTable;
using luadui::CUIData;
using luadui::Gbk;

constexpr char kHostMessage[] = "lua_subscribe";
constexpr char kMessages[] = "messagecenter";
constexpr char kLocalId[] = "LocalID";
constexpr const char* kMessageColumns[] = {kLocalId,         "MsgTime", "MsgType",
                                           "InstrctionType", "Text",    "OrderMessage"};

// Kinds with a table for each account.
constexpr std::string_view kKindsOfAccounts[] = {"fund", "position", "deal", "entrust"};
// Entries of a record that every one has, so that they say nothing about its data.
constexpr std::string_view kCommonEntries[] = {"handle",      "pageName",  "fund_token", "ret_code",
                                               "ret_message", "groupname", "refresh"};

template <class Names>
bool IsOneOf(std::string_view name, const Names& names) {
    return std::ranges::find(names, name) != std::end(names);
}

CDataSet SetOf(std::string_view list) {
    CDataSet names;
    for (const std::string& name : NamesOf(list)) names.Insert(name);
    return names;
}

CDataSet AccountsOf(const CUIData& record) {
    CDataSet accounts;
    if (!record.GetData("fund_token", accounts) && !record.GetData("usertoken_set", accounts))
        accounts = SetOf(record.GetDataText("fund_token"));
    return accounts;
}

std::string Joined(const CDataSet& names) {
    std::string text;
    for (const std::string& name : names) text += (text.empty() ? "" : ",") + name;
    return text;
}

// "entrustpush" is news of the list "entrust".
std::string ListOf(std::string_view kind) {
    constexpr std::string_view kPush = "push";
    if (kind.ends_with(kPush)) kind.remove_suffix(kPush.size());
    return std::string(kind);
}

// -1 without a table.
int RowsOf(const CUIData& record) {
    int rows = -1;
    for (const auto [name, value] : record) {
        CDataTable table;
        if (value.Get(table)) rows = std::max(rows, 0) + table.GetRowNumber();
    }
    return rows;
}

// The entries that are no tables, "name=value" separated by blanks.
std::string FieldsOf(const CUIData& record) {
    std::string text;
    for (const auto [name, value] : record) {
        const std::string shown = TextOf(value);
        if (!shown.empty() && !IsOneOf(name, kCommonEntries))
            text.append(text.empty() ? "" : " ").append(name).append("=").append(shown);
    }
    return text;
}

bool IsAmount(std::string_view text) { return text.find('.') != text.npos; }

std::string TextOf(const CDataTable& table, size_t columns) {
    TextTable shown;
    for (int col = 0; col < table.GetColumnNumber(); ++col)
        shown.AddColumn(table.GetColumnProperty(col, "name"), IsAmount(table.GetItemText(0, col))
                                                                  ? TextTable::Align::kRight
                                                                  : TextTable::Align::kLeft);
    for (int row = 0; row < table.GetRowNumber(); ++row) {
        std::vector<std::string> cells;
        for (int col = 0; col < table.GetColumnNumber(); ++col) {
            const std::string_view text = table.GetItemText(row, col);
            cells.push_back(IsAmount(text) ? TextTable::Grouped(text) : std::string(text));
        }
        shown.AddRow(cells);
    }
    return shown.ToText(columns);
}

}  // namespace

DataPage::DataPage(const luadui::PageInit& init)
    : TextPage(init),
      m_data(init.name),
      m_accounts(SetOf(_parameter(init.info, "fund_token"))),
      m_moreAccounts(SetOf(_parameter(init.info, "more"))),
      m_group(_parameter(init.info, "group")) {}

DataPage* DataPage::Create(const luadui::PageInit& init) {
    if (NamesOf(_parameter(init.info, "kinds")).empty()) return nullptr;
    std::unique_ptr<DataPage> page(new DataPage(init));
    if (!page->m_data.Init() || !page->_open(init)) return nullptr;
    page->_start();
    return page.release();
}

TextPage* CreatePage(const luadui::PageInit& init) { return DataPage::Create(init); }

void DataPage::_start() {
    m_data.SetRequestSource("datapage");
    m_data.SendLuaSync("page_register", "{}", "datapage:" + m_name);
    const auto kinds = NamesOf(_parameter(m_info, "kinds"));
    m_data.RegisterNotify(GetHandle(), kHostMessage);
    for (const std::string& kind : kinds) m_data.RegisterNotify(GetHandle(), kind);
    for (const std::string& kind : NamesOf(_parameter(m_info, "hear")))
        m_data.RegisterNotify(GetHandle(), kind);
    for (const std::string& kind : kinds) {
        // An ask for groups never goes to the server.
        kind == "accountgroup" ? _send(CUIData(kind)) : _ask(CUIData(kind));
    }
    _changed();
}

void DataPage::Sleep(bool asleep) {
    m_data.Sleep(asleep);
    TextPage::Sleep(asleep);
}

// Asking.

void DataPage::_run(const CUIData& command) {
    const std::string what = command.GetDataString("do");
    const std::string kind = command.GetDataString("kind");
    CUIData record = command;
    record.SetType(kind);
    for (const char* name : {"do", "kind", "ret_code", "ret_message"}) record.Remove(name);
    if (record.GetDataText("fund_token").find(',') != std::string_view::npos)
        record.SetData("fund_token", AccountsOf(record));
    if (what == "ask") return _ask(std::move(record));
    if (what == "send") return _send(std::move(record));
    if (what == "hear") return m_data.RegisterNotify(GetHandle(), kind);
    if (what == "unhear") return m_data.UnRegisterNotify(GetHandle(), kind);
    if (what == "close") return Close();
    luadui::CCounters::Add("page_command_unknown");
}

void DataPage::_complete(CUIData& record) const {
    const std::string_view kind = record.GetTypeText();
    record.SetData("handle", GetHandle());
    if (!record.Has("fund_token") && !m_accounts.IsEmpty() && IsOneOf(kind, kKindsOfAccounts))
        record.SetData("fund_token", m_accounts);
    if (kind.find("accountdatalist") != kind.npos) record.SetData("groupname", m_group);
}

void DataPage::_ask(CUIData record) {
    _complete(record);
    ++m_count.queries;
    m_isAsking = true;
    m_data.GetData(record, false, true);
    m_isAsking = false;
    _changed();
}

void DataPage::_send(CUIData record) {
    _complete(record);
    ++m_count.queries;
    m_data.SetData(&record, luadui::kSetRequest);
    _changed();
}

// Taking what comes.

void DataPage::OnNotify(void* data) {
    const CUIData& record = *static_cast<CUIData*>(data);
    if (record.GetTypeText() == kHostMessage) return _run(record);
    _report(record, _whyOf(record));
    _take(record);
    _changed();
}

std::string DataPage::_whyOf(const CUIData& record) const {
    if (record.GetDataText("sleep_refresh_request") == "true") return "asked on waking";
    if (record.GetDataLong("handle") == GetHandle()) return m_isAsking ? "from the cache" : "answer";
    const CDataSet accounts = AccountsOf(record);
    const bool isShown = accounts.IsEmpty() || std::ranges::any_of(accounts, [this](const auto& account) {
                             return _shows(account);
                         });
    return isShown ? "push" : "push of another account";
}

bool DataPage::_shows(std::string_view account) const {
    return m_accounts.IsEmpty() || m_accounts.Contains(account) || m_moreAccounts.Contains(account);
}

void DataPage::_take(const CUIData& record) {
    const std::string kind = record.GetType();
    if (kind == "error_msg" || record.GetDataLong("ret_code") != 0) {
        ++m_count.errors;
        m_errors[kind] = record.GetDataString(kind == "error_msg" ? "error_msg" : "ret_message");
        return;
    }
    ++m_count.answers;
    m_errors.erase(kind);
    if (const std::string fields = FieldsOf(record); !fields.empty()) m_fields[kind] = fields;
    _takeTables(record);
}

// The table of one account, or of all, has the name of the kind; those of several accounts have the accounts' names. Others
// are shown under their own.
void DataPage::_takeTables(const CUIData& record) {
    const std::string kind = record.GetType();
    const CDataSet accounts = AccountsOf(record);
    CDataTable table;
    for (const auto [name, value] : record) {
        if (!value.Get(table)) continue;
        if (name == kind) {
            const std::string account = record.GetDataString("fund_token");
            if (account.empty() || _shows(account)) _takeTable(record, account, table);
        } else if (!accounts.Contains(name)) {
            m_tables[{kind, std::string(name)}] = table;
        } else if (_shows(name)) {
            _takeTable(record, std::string(name), table);
        }
    }
}

// Pushes may have the new rows only; the manager has them all.
void DataPage::_takeTable(const CUIData& record, const std::string& account, CDataTable table) {
    if (record.GetTypeText() == kMessages) return _takeMessages(table);
    const std::string list = ListOf(record.GetTypeText());
    if (!account.empty()) m_data.GetData(GetHandle(), list, account, table);
    m_tables[{list, account}] = table;
}

void DataPage::_takeMessages(const CDataTable& messages) {
    CDataTable& kept = m_tables[{kMessages, ""}];
    if (kept.GetColumnNumber() == 0)
        for (const char* column : kMessageColumns) kept.AddColumn(column);
    for (int message = 0; message < messages.GetRowNumber(); ++message) {
        int row = 0;
        while (row < kept.GetRowNumber() &&
               kept.GetItemText(row, 0) != messages.GetItemText(message, kLocalId))
            ++row;
        if (row == kept.GetRowNumber()) kept.AppendRow();
        for (const char* column : kMessageColumns)
            kept.SetItemText(row, column, messages.GetItemText(message, column));
    }
}

void DataPage::_addToView(CUIData& view) const {
    CUIData tables;
    for (const auto& [name, table] : m_tables)
        tables.SetData(name.second.empty() ? name.first : name.first + " " + name.second, table);
    view.SetData("tables", tables);
}

void DataPage::_report(const CUIData& record, const std::string& why) const {
    const bool isError = record.GetTypeText() == "error_msg";
    _reportRecord({.kind = record.GetType(),
                   .why = why,
                   .accounts = Joined(AccountsOf(record)),
                   .rows = RowsOf(record),
                   .code = record.GetDataLong("ret_code"),
                   .message = record.GetDataString(isError ? "error_msg" : "ret_message")});
}

std::string DataPage::_text(size_t columns) const {
    std::string text;
    for (const auto& [name, table] : m_tables)
        text += name.first + " " + TextTable::Clean(name.second) + "\n" + TextOf(table, columns) + "\n";
    for (const auto& [kind, fields] : m_fields)
        text += TextTable::Clean(kind) + ": " + TextTable::Clean(fields) + "\n";
    for (const auto& [kind, error] : m_errors)
        text += Gbk("错误 ") + TextTable::Clean(kind) + ": " + TextTable::Clean(error) + "\n";
    return text;
}

}  // namespace terminal
