#include "page/account_page.h"

#include <memory>

#include "base/text.h"
#include "page/page_exports.h"
#include "page/text_table.h"

namespace terminal {
namespace {

using luadui::CJsonObject;
using luadui::CQueueReqItem;
using luadui::CUIData;

constexpr int kLuaCall = 1502, kSubscribe = 1601;
constexpr size_t kMaxLines = 50;

std::string PageSign(const std::string& name) { return "accountpage:" + name; }

std::string PortfoliosOf(const CJsonObject& account) {
    std::string text;
    for (const auto [index, value] : account.GetArray("portfolios")) {
        CJsonObject portfolio;
        if (!value.Get(portfolio)) continue;
        text += (text.empty() ? "" : ",") + portfolio.GetString("portfolioname");
    }
    return text;
}

// "1001|8|1 alias [units] message", a "*" in front when the password is there.
std::string TextOfAccount(const CJsonObject& account) {
    std::string text = account.GetText("password").empty() ? "" : "*";
    text += account.GetString("accountkey") + " " + account.GetString("nickname");
    if (!account.GetText("accountmark").empty()) text += "(" + account.GetString("accountmark") + ")";
    if (account.GetText("bindstatus") == "1") text += " bound";
    return text + " [" + PortfoliosOf(account) + "] " + account.GetString("AccountMsg");
}

std::string TextOfGroup(const CJsonObject& group) {
    return group.GetString("groupid") + " " + group.GetString("groupname") + " " +
           group.GetString("accountlist");
}

std::string TextOfOrder(const CJsonObject& entry) {
    return entry.GetString("accountkey") + "=" + entry.GetString("order");
}

std::string Listed(const CJsonObject& news, const char* name, std::string (*textOf)(const CJsonObject&)) {
    std::string text;
    for (const auto [index, value] : news.GetArray(name)) {
        CJsonObject entry;
        if (value.Get(entry)) text += (text.empty() ? "" : "; ") + textOf(entry);
    }
    return text;
}

// What the answer to a question lists.
std::string TextOfLists(const CJsonObject& data) {
    return Listed(data, "clientaccounts", TextOfAccount) + Listed(data, "grouplist", TextOfGroup) +
           Listed(data, "AllAccountOrder", TextOfOrder);
}

std::string TextOf(std::string_view topic, const CJsonObject& news) {
    if (topic == "ClientAccountChanged") return Listed(news, "clientaccounts", TextOfAccount);
    if (topic == "CLIENT_ACCOUNTGROUP_CHANGED") return Listed(news, "clientgroups", TextOfGroup);
    if (topic == "ClientAccountOrderChanged") return Listed(news, "accountorder", TextOfOrder);
    if (topic == "CLIENT_MODIFY_ACCOUNT_STATUS")
        return news.GetString("accountkey") + " " + news.GetString("AccountStatus") + " " +
               news.GetString("AccountMsg");
    const CJsonObject result = news.GetSub("result");
    return result.GetString("code") + " " + result.GetString("message") + TextOfLists(result.GetSub("data"));
}

}  // namespace

AccountPage::AccountPage(const luadui::PageInit& init) : TextPage(init), m_data(init.name) {}

AccountPage* AccountPage::Create(const luadui::PageInit& init) {
    if (_parameter(init.info, "user").empty()) return nullptr;
    std::unique_ptr<AccountPage> page(new AccountPage(init));
    if (!page->m_data.Init() || !page->_open(init)) return nullptr;
    page->_start();
    return page.release();
}

TextPage* CreatePage(const luadui::PageInit& init) { return AccountPage::Create(init); }

void AccountPage::_start() {
    m_requests.SetRequestSource("accountpage");
    m_requests.SendLuaSync("page_register", "{}", PageSign(m_name));
    _subscribe(true);
    _signIn(_parameter(m_info, "user"), _parameter(m_info, "id"));
    _changed();
}

// The host's Lua side is told, and the library on the way there.
void AccountPage::_signIn(const std::string& user, const std::string& id) {
    CJsonObject login, whom;
    whom.Set("username", user);
    whom.Set("userid", id);
    whom.Set("version", "1.0");
    login.Set("g_user", whom);
    login.Set("userfolder", "\\qsclient\\users");
    CUIData params;
    params.SetData("method", "initLoginInfo");
    params.SetData("params", login.ToText());
    CQueueReqItem request;
    request.SetData("REQTYPE", kLuaCall);
    request.SetData("Params", params);
    m_data.Request(request);
}

void AccountPage::_subscribe(bool isOn) {
    const std::string topics = _parameter(m_info, "hear");
    for (const std::string_view topic : luadui::SplitText(topics, ',')) {
        luadui::StringMap params{{"key", std::string(topic)}};
        if (!isOn) params["unsub"] = "true";
        m_requests.SendQuery("", kSubscribe, params, false);
    }
}

LRESULT AccountPage::HandleMessage(UINT message, WPARAM wParam, LPARAM lParam) {
    if (message == WM_DESTROY) _subscribe(false);
    return TextPage::HandleMessage(message, wParam, lParam);
}

void AccountPage::Requests::OnResponse(const luadui::CQueueRespData* response) {
    if (response) m_page._onResponse(*response);
}

void AccountPage::_onResponse(const luadui::CQueueRespData& response) {
    const std::string topic = response.GetDataString("Topic");
    CJsonObject news;
    if (topic.empty()) {
        if (response.GetData("JsonData", news) && news.Has("user"))
            _signIn(news.GetString("user"), news.GetString("id"));
        return;
    }
    if (!news.Parse(response.GetDataText("RawData"))) {
        ++m_count.unreadable;
        return _changed();
    }
    ++m_count.answers;
    const std::string text = TextOf(topic, news);
    m_lines.push_back(topic + ": " + text);
    if (m_lines.size() > kMaxLines) m_lines.erase(m_lines.begin());
    _reportRecord({.kind = topic, .why = "news", .message = text});
    _changed();
}

std::string AccountPage::_text(size_t) const {
    std::string text;
    for (const std::string& line : m_lines) text += TextTable::Clean(line) + "\n";
    return text;
}

}  // namespace terminal
