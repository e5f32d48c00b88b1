// An account list of the user "user" before a service and a host that remembers passwords.
#pragma once

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

#include "accounts/account_list.h"
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

    // Asks for the accounts and answers.
    void Load(const Rows& rows) {
        list->Query();
        service.Answer(1033, MakeTable(kListColumns, rows));
    }
    void AnswerUpload(const Rows& rows) {
        service.Answer(
            1807, MakeTable({"fund_token", "account_name", "permission_code", "msg", "error_code"}, rows));
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
    static constexpr auto Values = ServiceProbe::Values;

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
