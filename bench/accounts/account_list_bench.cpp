// What one answer of the account service costs the list alone.
#include <cstdlib>
#include <memory>
#include <string>

#include "bench/accounts/account_rows.h"
#include "bench/report.h"

namespace luadui::bench {
namespace {

class Ignore : public ResultEventSink {
    void OnResultEvent(const ResultEvent&) override {}
};

// Nobody listens and no host answers: what it costs is the list's own.
class Desk {
  public:
    explicit Desk(int accounts) : m_answer(AnswerWith(accounts)) { Start(); }

    void Start() { m_list = std::make_unique<CAccountList>(m_sink); }
    void Answer() {
        CUIData values;
        values.SetData("UUID", "one");
        m_list->Query(values);
        m_list->OnResponse(&m_answer);
        if (m_list->All().empty()) std::abort();
    }

  private:
    Ignore m_sink;
    CQueueRespData m_answer;
    std::unique_ptr<CAccountList> m_list;
};

LUADUI_REPORT(BuildingTheList) {
    Desk desk(kAccounts), small(kAccounts / 10);
    const auto first = [](Desk& each) {
        each.Start();
        each.Answer();
    };
    AtMost("accounts_5000_built_ms", Measure([&] { first(desk); }) * 1e3, 100);
    const auto linear = Compare([&] { first(desk); }, [&] { first(small); });
    AtMost("accounts_5000_vs_500_each", linear.CostRatio() / 10, 1.6);
    AtMost("accounts_5000_refreshed_ms", Measure([&] { desk.Answer(); }) * 1e3, 100);
}

}  // namespace
}  // namespace luadui::bench
