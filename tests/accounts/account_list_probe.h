// An account list of the user "user" before a service and a host that remembers passwords.
#pragma once

#include <gtest/gtest.h>

#include <algorithm>
#include <memory>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

#include "accounts/account_list.h"
#include "messaging/request_types.h"
#include "tests/accounts/service_probe.h"

namespace luadui {

inline const std::vector<std::string> kListColumns = {"account_id", "account_code", "account_name",
                                                      "alias",      "broker_id",    "broker_name",
                                                      "trade_type", "bind_status",  "portfolios"};

// The account "1001|7|1" with the token "T1001"; "1001|7|2" with "T1001c".
inline std::vector<std::string> ListRow(const std::string& code, const std::string& tradeType = "1") {
    const std::string token = "T" + code + (tradeType == "1" ? "" : "c");
    return {"id" + code, code, "N" + code,
            "A" + code,  "7",  "B",
            tradeType,   "1",  R"([{"portfolio_id":"p1","fund_token":")" + token + R"("}])"};
}

class AccountListProbe : public testing::Test {
  protected:
    AccountListProbe() {
        service.host.onAsk = [this](CQueueReqItem& request) { _ask(request); };
        MakeList(L"accounts_test_cipher.dll");
    }

    void MakeList(const wchar_t* cipher, bool isPbMode = false) {
        list = std::make_unique<CAccountList>(service, PasswordEncryption(cipher));
        list->SetUser({"user", "u1", "i1", "tok", "v1", "folder", isPbMode});
    }

    // The last request of the type.
    CQueueReqItem Sent(int type) const {
        const auto& all = service.host.pushed;
        const auto found = std::find_if(all.rbegin(), all.rend(),
                                        [&](const auto& each) { return RequestTypeOf(each) == type; });
        return found == all.rend() ? throw std::runtime_error("no request of that type") : *found;
    }
    auto CountSent(int type) const { return std::ranges::count(service.host.pushed, type, RequestTypeOf); }
    static CDataTable RowsOf(const CQueueReqItem& request) {
        CDataTable table;
        FakeHost::Params(request).GetData("Table", table);
        return table;
    }

    void Answer(const CQueueReqItem& request, const CDataTable& table) {
        const CQueueRespData answer = ServiceProbe::WithTable(ServiceProbe::AnswerTo(request), table);
        list->OnResponse(&answer);
    }
    void AnswerJson(const CQueueReqItem& request, const std::string& text, bool isGood = true) {
        CQueueRespData answer = ServiceProbe::AnswerTo(request, isGood);
        CJsonObject json;
        json.Parse(Gbk(text));
        answer.SetData("JsonData", json);
        list->OnResponse(&answer);
    }
    // To the account that sent the last request of the type, when it is still there.
    void AnswerAccount(int type, const CDataTable& table = CDataTable()) {
        const CQueueReqItem request = Sent(type);
        const CQueueRespData answer = ServiceProbe::WithTable(ServiceProbe::AnswerTo(request), table);
        CBaseObject* const object = CBaseObject::Find(std::stol(request.GetDataString("From")));
        if (auto* const asker = dynamic_cast<CRequestBase*>(object)) asker->OnResponse(&answer);
    }
    // Asks for the accounts and answers.
    void Load(const Rows& rows) {
        list->Query();
        AnswerAccount(1033, MakeTable(kListColumns, rows));
    }
    void AnswerUpload(const Rows& rows) {
        Answer(Sent(1807),
               MakeTable({"fund_token", "account_name", "permission_code", "msg", "error_code"}, rows));
    }
    // "1001|7|1:1正常" each, in the order of keys.
    std::vector<std::string> States() const {
        std::vector<std::string> states;
        for (const auto& [key, account] : list->All()) {
            const std::string state(account->Get(AccountField::kCanUse));
            states.push_back(GbkToUtf8(key + ':' + state) + GbkToUtf8(account->Get(AccountField::kMessage)));
        }
        return states;
    }
    static CUIData Values(const std::vector<std::pair<std::string, std::string>>& texts) {
        CUIData values;
        for (const auto& [name, text] : texts) values.SetData(name, Gbk(text));
        return values;
    }

    ServiceProbe service;
    std::string passInfo =
        R"({"1001|7|1":{"Password":"pw1","TxPassword":"tx1"},"1002|7|1":{"Password":"pw2"}})";
    std::string orderText;              // of the settings file
    std::vector<std::string> luaCalls;  // "method params"
    std::function<void(const CUIData& params)> onAsk = [](const CUIData&) {};
    std::unique_ptr<CAccountList> list;

  private:
    void _ask(CQueueReqItem& request) {
        const CUIData params = FakeHost::Params(request);
        const std::string method = params.GetDataString("method");
        if (RequestTypeOf(request) == kReqConfigRead) request.SetData("result", orderText);
        if (method == "get_passInfo") request.SetData("result", passInfo);
        if (method == "get_ProductInfo") request.SetData("result", "[\"products\"]");
        if (!method.empty()) luaCalls.push_back(method + ' ' + params.GetDataString("params"));
        onAsk(params);
    }
};

}  // namespace luadui
