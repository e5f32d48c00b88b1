// A page asks: answered from a list, beside a cache of strings that is copied out, and sent to the server, beside a JSON
// message of the same fields.
#include <json/json.h>

#include <map>
#include <memory>
#include <sstream>
#include <string>
#include <utility>
#include <vector>

#include "bench/datamgr/allocations.h"
#include "bench/datamgr/desk.h"
#include "messaging/request_types.h"

namespace luadui::bench {
namespace {

constexpr int kAccounts = 20, kOrders = 5'000, kColumns = 30;
constexpr double kLimitUs = 5;

class CachedAsk {
  public:
    explicit CachedAsk(int orders) {
        FillList("entrust", "OrderID", kAccounts, orders);
        for (int account = 0; account < kAccounts; ++account) m_tokens.push_back(Token(account));
        for (const std::string& token : m_tokens) m_all.Insert(token);
    }
    void operator()() {
        if (++m_account == kAccounts) m_account = 0;
        CUIData request = m_page.Ask("entrust", m_tokens[static_cast<size_t>(m_account)]);
        m_page.data.GetData(request, false, false);
    }
    void AskAll() {
        CUIData request = m_page.Ask("entrust", {});
        request.SetData("fund_token", m_all);
        m_page.data.GetData(request, false, false);
    }
    // How many of the list's tables the page receives as they are, sharing all rows: for an ask each, and for one ask.
    int SharedTables() {
        m_page.window.keeps = true;
        int shared = 0;
        for (int i = 0; i < kAccounts; ++i) {
            (*this)();
            shared += _isDelivered("entrust", m_tokens[static_cast<size_t>(m_account)]) ? 1 : 0;
        }
        AskAll();
        for (const std::string& token : m_tokens) shared += _isDelivered(token, token) ? 1 : 0;
        m_page.window.keeps = false;
        m_page.window.last = CUIData();
        return shared;
    }

  private:
    bool _isDelivered(const std::string& key, const std::string& token) const {
        CDataTable delivered, held;
        return Router().CommonData().Lists().Find("entrust")->GetTable(token, held) &&
               held.GetRowNumber() > 0 && m_page.window.last.GetData(key, delivered) &&
               delivered.SharesWith(held);
    }

    DeskPage m_page;
    std::vector<std::string> m_tokens;
    CDataSet m_all;
    int m_account = 0;
};

// The plainest cache: rows of strings by account, and an answer is a copy of them.
double CopyingCacheSeconds() {
    using OrderRows = std::vector<std::vector<std::string>>;
    std::map<std::string, OrderRows> cache;
    for (int account = 0; account < kAccounts; ++account) {
        cache[Token(account)] = OrderRows(kOrders, std::vector<std::string>(kColumns, "100000"));
    }
    const std::string token = Token(kAccounts / 2);
    return Measure([&] { Keep(OrderRows(cache.find(token)->second)); }, {.count = 3});
}

LUADUI_REPORT(CachedAsk) {
    const auto nothing = [] {};
    CachedAsk few(50);
    const AllocationsPerCall forFew = CountAllocations(few);
    CachedAsk ask(kOrders);
    AtLeast("cached_ask_tables_shared", ask.SharedTables(), 2 * kAccounts);
    const AllocationsPerCall allocations = CountAllocations(ask);
    AtMost("cached_ask_allocations", allocations.count, 4);
    AtMost("cached_ask_more_bytes_for_more_orders", allocations.bytes - forFew.bytes, 0);
    const CallTimes times = TimeCalls(nothing, ask, nothing);
    AtMost("cached_ask_median_us", times.median * 1e6, kLimitUs);
    AtMost("cached_ask_p99_us", times.p99 * 1e6, kLimitUs);
    const auto askAll = [&] { ask.AskAll(); };
    AtMost("cached_ask_all_accounts_allocations", CountAllocations(askAll).count, 4);
    AtMost("cached_ask_all_accounts_p99_us", TimeCalls(nothing, askAll, nothing).p99 * 1e6, kLimitUs);
    AtLeast("cached_ask_vs_copying_cache", CopyingCacheSeconds() / times.median, 100);
}

// Takes the last request from the push callback, as a host does that sends it later.
CQueueReqItem& LastSent() {
    static auto* const last = new CQueueReqItem;
    return *last;
}

// Asks that no list can answer. Each is answered before the next one, without rows: nothing gets into a list.
class ServerAsk {
  public:
    ServerAsk() {
        CHostLink::Instance().SetPushCallback([](CQueueReqItem* request) {
            LastSent() = *request;
            return 0;
        });
        for (int account = 0; account < kAccounts; ++account) m_tokens.push_back(Token(1000 + account));
    }
    ~ServerAsk() {
        CHostLink::Instance().SetPushCallback([](CQueueReqItem*) { return 0; });
    }
    void operator()() {
        if (++m_account == kAccounts) m_account = 0;
        CUIData request = m_page.Ask("entrust", m_tokens[static_cast<size_t>(m_account)]);
        request.SetData("market", "17");
        request.SetData("begin_date", "20240105");
        request.SetData("page_size", "500");
        m_page.data.GetData(request, false, false);
    }
    void Answer() {
        constexpr int kQueryData = 2003;
        const CQueueReqItem request = std::exchange(LastSent(), CQueueReqItem());
        CQueueRespData response;
        response.SetData("DATATYPE", kQueryData);
        response.SetData("REQTYPE", RequestTypeOf(request));
        response.SetData("UUID", request.GetDataText("UUID"));
        response.SetData("FundToken", request.GetDataText("FundToken"));
        response.SetData("Request", static_cast<const CUIData&>(request));
        Router().OnResponse(&response);
    }
    uint64_t Answered() const { return m_page.window.received; }

  private:
    DeskPage m_page;
    std::vector<std::string> m_tokens;
    int m_account = 0;
};

Json::Value ToJson(const CUIData& record) {
    Json::Value json;
    for (const auto [key, value] : record) {
        const std::string name(key);
        if (CUIData nested; value.Get(nested)) {
            json[name] = ToJson(nested);
        } else if (value.Kind() == kDataString) {
            json[name] = std::string(value.AsText());
        } else if (value.Kind() == kDataBoolean) {
            json[name] = value.AsBool();
        } else {
            json[name] = Json::Int64{value.AsLong()};
        }
    }
    return json;
}

LUADUI_REPORT(ServerAsk) {
    ServerAsk ask;
    ask();
    CQueueReqItem sample = LastSent();
    ask.Answer();
    AtLeast("server_ask_is_answered", static_cast<double>(ask.Answered()), 1);

    // Enough to fill what is remembered of requests, so that each one has to drop the oldest.
    for (size_t i = 0; i < RequestLedger::kMaxEntries + 1000; ++i) ask(), ask.Answer();
    const CallTimes times = TimeCalls([] {}, ask, [&] { ask.Answer(); });
    AtMost("server_ask_median_us", times.median * 1e6, kLimitUs);
    AtMost("server_ask_p99_us", times.p99 * 1e6, kLimitUs);

    // The same fields, set one by one from texts that are there, then written.
    const std::unique_ptr<Json::StreamWriter> writer(Json::StreamWriterBuilder().newStreamWriter());
    const CallTimes json = TimeCalls([] {},
                                     [&] {
                                         std::ostringstream text;
                                         writer->write(ToJson(sample), &text);
                                         Keep(text);
                                     },
                                     [] {}, 3);
    AtLeast("server_ask_vs_jsoncpp_message", json.median / times.median, 1);
}

}  // namespace
}  // namespace luadui::bench
