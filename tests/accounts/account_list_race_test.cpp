// Answers in any order, some of them twice: in the end the list shows what the broker holds.
#include <gmock/gmock.h>

#include <map>
#include <random>

#include "accounts/account_operations.h"
#include "tests/accounts/account_list_probe.h"

namespace luadui {
namespace {

using testing::ElementsAre;

// Does what it is asked at once; its answers are delivered by hand.
class Broker {
  public:
    explicit Broker(const Rows& accounts) {
        for (const auto& row : accounts) m_isOnline[row[1]] = false;
    }

    CQueueRespData Handle(const CQueueReqItem& request) {
        const CUIData params = FakeHost::Params(request);
        CDataTable asked, answer;
        params.GetData("Table", asked);
        const std::string code = asked.GetItemText(0, "account_code");
        CQueueRespData response = ServiceProbe::AnswerTo(request);
        CJsonObject json;
        switch (RequestTypeOf(request)) {
            case kQueryAccounts.type: {
                Rows rows;
                for (const auto& [each, isOnline] : m_isOnline) rows.push_back(ListRow(each));
                response.SetData("Table", MakeTable(kListColumns, rows));
                break;
            }
            case kUploadAccounts.type:
                response.SetData("Table", _login(asked));
                break;
            case kLogoutAccount.type:
                if (const auto found = m_isOnline.find(params.GetDataString("fund_token").substr(1));
                    found != m_isOnline.end())
                    found->second = false;
                break;
            case kDeleteAccount.type:
                m_isOnline.erase(code);
                break;
            case kAddAccount.type:
                m_isOnline[code] = true;
                json.Parse(R"({"return_info":{"error_code":"0","portfolios":)" + ListRow(code).back() + "}}");
                response.SetData("JsonData", json);
                break;
        }
        return response;
    }

    std::vector<std::string> States() const {
        std::vector<std::string> states;
        for (const auto& [code, isOnline] : m_isOnline) states.push_back(code + (isOnline ? " on" : " off"));
        return states;
    }

  private:
    CDataTable _login(const CDataTable& asked) {
        Rows rows;
        for (int row = 0; row < asked.GetRowNumber(); ++row) {
            const std::string token = asked.GetItemText(row, "fund_token");
            const auto found = m_isOnline.find(token.substr(1));
            if (found == m_isOnline.end()) continue;
            found->second = true;
            rows.push_back({token, "0"});
        }
        return MakeTable({"fund_token", "error_code"}, rows);
    }

    std::map<std::string, bool> m_isOnline;  // by account code
};

class AccountListRace : public AccountListProbe {
  protected:
    AccountListRace() {
        passInfo = "{";
        for (int code = 1000; code < 1006; ++code)
            passInfo += (code > 1000 ? ",\"" : "\"") + KeyOf(code) + R"(":{"Password":"pw"})";
        passInfo += '}';
    }
    static std::string KeyOf(int code) { return std::to_string(code) + "|7|1"; }

    // A user who does not ask twice for what is under way.
    void Step(std::mt19937& random) {
        const int code = 1000 + static_cast<int>(random() % 6);
        const std::string key = KeyOf(code);
        const CUIData values = Values({{"accountkey", key},
                                       {"accountkeylist", key},
                                       {"selrefresh", "true"},
                                       {"account_code", std::to_string(code)},
                                       {"broker_id", "7"},
                                       {"trade_type", "1"},
                                       {"password", "pw"}});
        const bool isFree = busy.insert(key).second;
        switch (random() % 8) {
            case 0:
                return void(list->Query());
            case 1:
                return void(list->Upload());
            case 2:
                return void(list->Upload(values));
            case 3:
                return void(list->Logout(values));
            case 4:
                if (isFree && list->Find(key)) list->DeleteAccount(values);
                return;
            case 5:
                if (isFree && !list->Find(key)) list->AddAccount(values);
                return;
            default:
                return Deliver(random);
        }
    }

    void Deliver(std::mt19937& random) {
        Collect();
        if (answers.empty()) return busy.clear();
        const size_t at = random() % answers.size();
        const CQueueRespData answer = answers[at];
        if (random() % 4 != 0)
            answers.erase(answers.begin() + static_cast<std::ptrdiff_t>(at));  // or comes again
        DeliverResponse(HandleFromText(answer.GetDataText("To")), answer);
    }

    // Lets the broker work on what was sent since the last call.
    void Collect() {
        for (; handled < service.host.pushed.size(); ++handled) {
            const CQueueReqItem& request = service.host.pushed[handled];
            answers.push_back(broker.Handle(request));
            answers.back().SetData("To", request.GetDataString("From"));
        }
    }

    std::vector<std::string> Shown() const {
        std::vector<std::string> states;
        for (const auto& [key, account] : list->All())
            states.push_back(key.substr(0, 4) + (account->CanUse() ? " on" : " off"));
        return states;
    }

    Broker broker{{ListRow("1000"), ListRow("1001"), ListRow("1002")}};
    std::vector<CQueueRespData> answers;
    size_t handled = 0;
    std::set<std::string> busy;
};

TEST_F(AccountListRace, EndsInTheBrokersState) {
    for (unsigned seed = 1; seed <= 300; ++seed) {
        SCOPED_TRACE(seed);
        std::mt19937 random(seed);
        for (int step = 0; step < 40; ++step) Step(random);
        Collect();
        while (!answers.empty()) Deliver(random);
        EXPECT_EQ(Shown(), broker.States());
        std::map<std::string, int> reports;
        for (const ResultEvent& event : service.events) {
            const bool isOutcome = event.name.ends_with("_finished") || event.name.ends_with("_success");
            EXPECT_LE(reports[event.uuid] += isOutcome, 1) << event.name;
        }
        service.events.clear();
        if (HasFailure()) return;
    }
}

// The sink deletes accounts, and the list, whatever it is told.
TEST_F(AccountListRace, TheSinkMayEndItAll) {
    for (unsigned seed = 1; seed <= 60; ++seed) {
        std::mt19937 random(seed);
        MakeList(L"accounts_test_cipher.dll");
        size_t left = seed % 20;
        service.onEvent = [&](const ResultEvent&) {
            if (left-- == 0) list.reset();
        };
        for (int step = 0; step < 60 && list; ++step) {
            Step(random);
            if (list) Deliver(random);
        }
        EXPECT_EQ(list, nullptr);
        service.onEvent = [](const ResultEvent&) {};
        answers.clear();
    }
}

}  // namespace
}  // namespace luadui
