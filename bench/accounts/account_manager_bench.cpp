// What it costs to hear of accounts and to tell everybody: notifications and host calls as they leave, without the host's
// own time, beside building and writing the same texts with jsoncpp alone.
#include <json/json.h>

#include <cstdlib>
#include <memory>
#include <string>
#include <vector>

#include "accounts/account_manager.h"
#include "base/text.h"
#include "bench/accounts/account_rows.h"
#include "bench/report.h"
#include "messaging/handle_text.h"
#include "messaging/host_link.h"
#include "messaging/request_types.h"
#include "messaging/response_routing.h"

namespace luadui::bench {
namespace {

// A terminal in which everybody listens and nobody does anything.
class Desk : public AccountEvents {
  public:
    explicit Desk(int accounts) : m_answer(AnswerWith(accounts)) {
        CHostLink::Instance().SetPushCallback([](CQueueReqItem* request) {
            if (RequestTypeOf(*request) == kQueryAccounts.type) s_request = *request;
            return 0;
        });
        CHostLink::Instance().SetRequestSyncCallback([](CQueueReqItem* request) {
            CUIData params;
            request->GetData("Params", params);
            if (params.GetDataText("method") == "OnAccountChanged") Hear(params.GetDataText("params"));
            return 0;
        });
    }

    // From the answer of the account service to everything that follows from it.
    void Fill() {
        m_manager = std::make_unique<CAccountManager>(*this, PasswordEncryption(L""));
        m_manager->OnUser();
        _deliver(m_answer);
        if (m_manager->Accounts().All().empty()) std::abort();
    }
    // One account becomes unusable.
    void Lose() {
        CQueueRespData push;
        push.SetData("Topic", "subkey_session_event");
        push.SetData("RawData", R"({"accountkey":")" + m_manager->Accounts().All().begin()->first +
                                    R"(","code":"5","msg":"gone"})");
        m_manager->OnResponse(&push);
    }
    // The texts that everybody and the host got.
    std::vector<std::string> WhatFillTells() {
        s_isListening = true;
        Fill();
        s_isListening = false;
        return std::exchange(s_told, {});
    }

  private:
    void _deliver(const CQueueRespData& answer) {
        CQueueRespData response = answer;
        response.SetData("UUID", s_request.GetDataText("UUID"));
        DeliverResponse(HandleFromText(s_request.GetDataText("From")), response);
    }

    static void Hear(std::string_view text) {
        if (s_isListening) s_told.emplace_back(text);
    }

    AccountUser User() const override {
        AccountUser user;
        user.name = "user";
        return user;
    }
    void Subscribe(const std::string&, int32_t) override {}
    bool AnswerPage(const AccountAsker&, CQueueRespData&) override { return true; }
    bool Publish(CQueueReqItem& notification) override {
        CUIData params;
        notification.GetData("Params", params);
        Hear(params.GetDataText("_SEND_DATA"));
        return true;
    }
    void HandlePush(const CQueueRespData&) override {}
    bool StartTimer(uint32_t, uint32_t) override { return true; }
    bool StopTimer(uint32_t) override { return true; }

    static inline CQueueReqItem s_request;
    static inline bool s_isListening = false;
    static inline std::vector<std::string> s_told;
    CQueueRespData m_answer;
    std::unique_ptr<CAccountManager> m_manager;
};

// The members of a JSON text, without their structure: what is left to do is to build and to write it.
struct Told {
    using Members = std::vector<std::pair<std::string, std::string>>;
    struct Account {
        Members texts;
        std::vector<Members> portfolios;
    };
    std::string list;  // the name of the array
    std::vector<Account> accounts;

    explicit Told(const std::string& text) {
        CJsonObject json;
        if (!json.Parse(text)) std::abort();
        list = json.Has("clientaccounts") ? "clientaccounts" : "accountList";
        for (const auto [index, value] : json.GetArray(list)) {
            CJsonObject object;
            value.Get(object);
            Account& account = accounts.emplace_back();
            account.texts = _texts(object);
            for (const auto [place, portfolio] : object.GetArray("portfolios")) {
                CJsonObject unit;
                portfolio.Get(unit);
                account.portfolios.push_back(_texts(unit));
            }
        }
    }

    // With jsoncpp alone, from UTF-8 to UTF-8.
    std::string Write() const {
        Json::Value whole;
        Json::Value& array = whole[list] = Json::Value(Json::arrayValue);
        for (const Account& account : accounts) {
            Json::Value& json = array.append(_object(account.texts));
            Json::Value& portfolios = json["portfolios"] = Json::Value(Json::arrayValue);
            for (const Members& portfolio : account.portfolios) portfolios.append(_object(portfolio));
        }
        Json::StreamWriterBuilder builder;
        builder["indentation"] = "";
        builder["emitUTF8"] = true;
        return Json::writeString(builder, whole);
    }

  private:
    static Members _texts(const CJsonObject& json) {
        Members texts;
        for (const auto [name, value] : json) {
            if (value.Kind() == kDataString) texts.emplace_back(name, GbkToUtf8(value.AsText()));
        }
        return texts;
    }
    static Json::Value _object(const Members& texts) {
        Json::Value json;
        for (const auto& [name, text] : texts) json[name] = text;
        return json;
    }
};

LUADUI_REPORT(TellingOfAccounts) {
    Desk desk(kAccounts), small(kAccounts / 10), few(10);
    std::vector<Told> all;
    for (const std::string& text : desk.WhatFillTells()) all.emplace_back(text);
    if (all.size() != 3 || all[2].accounts.size() != kAccounts) std::abort();

    const auto withJsoncpp = [&] {
        for (const Told& told : all) Keep(told.Write());
    };
    const auto fill = Compare([&] { desk.Fill(); }, withJsoncpp);
    AtMost("accounts_5000_built_and_told_ms", fill.ours * 1e3, 100);
    AtMost("accounts_5000_built_and_told_vs_jsoncpp", fill.CostRatio(), 1);
    const auto linear = Compare([&] { desk.Fill(); }, [&] { small.Fill(); });
    AtMost("accounts_told_5000_vs_500_each", linear.CostRatio() / 10, 1.6);

    few.Fill();
    const auto one = Compare([&] { desk.Lose(); }, [&] { few.Lose(); });
    AtMost("account_lost_among_5000_vs_10", one.CostRatio(), 1.3);
}

}  // namespace
}  // namespace luadui::bench
