// A broker's books, all that is under way between them and a page, and what the page must never see.
#include <gtest/gtest.h>

#include <algorithm>
#include <functional>
#include <map>
#include <random>
#include <set>

#include "base/counters.h"
#include "datalists/order_status.h"
#include "datamgr/ui_page_data.h"
#include "datamgr/ui_stock_data_manager.h"
#include "messaging/request_types.h"
#include "tests/datamgr/traffic.h"
#include "tests/fakes/fake_host.h"

namespace luadui {
namespace {

enum KindIndex { kOrders, kDeals, kFunds, kPositions, kKinds };
struct Kind {
    std::string table, view, rows;  // an account's table, that of several accounts, rows that were pushed
    int type;
    std::string topic, message;  // pushes of one account, of any
    std::string columns;         // the key first, the account last
} const g_kinds[kKinds] = {
    {"entrust", "entrustmulti", "entrustpush", 1204, "Entrust|", "entrustret",
     "OrderID,OrderStatus,DealVolume,OrderQty,OrderPrice,fund_token"},
    {"deal", "dealmulti", "dealpush", 1203, "Trade|", "traderet",
     "ExecID,OrderID,DealVolume,Turnover,fund_token"},
    {"fund", "", "", 1201, "Fund|", "", "Currency,TotalAssets,AvailableValue,fund_token"},
    {"position", "positionmulti", "", 1202, "Position|", "", "SecurityID,Market,MarketValue,fund_token"},
};

using Rows = std::vector<std::string>;  // cells of the columns above, separated by commas

Rows RowsOf(const Kind& kind, const CDataTable& table) {
    Rows rows(static_cast<size_t>(table.GetRowNumber()));
    for (int row = 0; row < table.GetRowNumber(); ++row) {
        std::string& text = rows[static_cast<size_t>(row)];
        for (const auto name : SplitText(kind.columns, ','))
            text += std::string(table.GetItemText(row, name)) + ',';
        text.pop_back();
    }
    return rows;
}
CDataTable TableWith(const Kind& kind, const Rows& rows) {
    std::string text = kind.columns;
    for (const std::string& row : rows) text += ';' + row;
    return TableOf(text);
}
int64_t SumOf(const CDataTable& table, const char* column) {
    int64_t sum = 0;
    for (int row = 0; row < table.GetRowNumber(); ++row) sum += *ParseLong(table.GetItemText(row, column));
    return sum;
}
// In percent with three decimals, rounded half up.
std::string WeightOf(int64_t value, int64_t assets) {
    const int64_t weight = assets > 0 ? (200'000 * value + assets) / (2 * assets) : 0;
    return std::to_string(weight / 1000) + '.' + std::to_string(1000 + weight % 1000).substr(1);
}

class World {
  public:
    // Where pushes are lost, only a query repairs what is shown.
    World(unsigned seed, bool losesPushes) : m_losesPushes(losesPushes), m_random(seed) {
        m_router.StartCommonData();
        m_page.Init();
        m_host.onPush = [this](const CQueueReqItem& item) {
            const auto kind = std::ranges::find(g_kinds, RequestTypeOf(item), &Kind::type) - g_kinds;
            if (kind < kKinds) m_queries.push_back({item, KindIndex(kind), item.GetDataString("FundToken")});
        };
        for (const Kind& kind : g_kinds) {
            for (const std::string& name : {kind.table, kind.view, kind.rows})
                m_page.RegisterNotify(static_cast<unsigned>(m_window.GetHandle()), name);
        }
        for (int i = 0; i < 5; ++i) {
            m_tokens.push_back("B" + std::to_string(s_runs) + '_' + std::to_string(i));
            for (const char* currency : {"CNY", "HKD"}) _write(kFunds, m_tokens.back(), currency, "1,1");
        }
    }

    // Empty when all went well. Every `period` steps all that is under way arrives.
    std::string Run(int steps, int period) {
        for (int step = 0; step < steps; ++step) {
            _trade(m_tokens[_number(m_tokens.size())]);
            if (_chance(40)) _ask();
            // The way is free at times, and full at others.
            const unsigned most = step / 20 % 2 ? 8 : 2;
            for (unsigned i = _number(most); i > 0; --i) {
                _deliver(true);
                _read();
                if (_chance(50)) _answer(true);
            }
            if (step % period == 0) _settle(step % 250 > 200);
            if (!m_error.empty()) return "step " + std::to_string(step) + ": " + m_error;
        }
        return "";
    }
    std::map<std::string, int> happened;

  private:
    struct Order {
        int64_t price, quantity, dealt = 0;
        bool isOpen = true;
    };
    struct Account {
        std::vector<Order> orders;
        int64_t deals = 0, volume = 0, turnover = 0;
        std::map<std::string, std::string> books[kKinds];  // rows by key
    };
    struct Push {
        KindIndex kind;
        std::string token;  // empty: rows of several accounts
        Rows rows;
        bool isMessage, isSilent;  // silent: positions do not follow
    };
    struct Query {
        CQueueReqItem item;
        KindIndex kind;
        std::string token;
        bool isRead = false;  // the broker has looked into its books
        CDataTable table = CDataTable();
    };
    struct Window : CBaseObject {
        explicit Window(World* world) : world(world) {}
        void OnNotify(void* data) override { world->_hear(*static_cast<CUIData*>(data)); }
        World* const world;
    };

    unsigned _number(size_t below) { return static_cast<unsigned>(m_random() % below); }
    bool _chance(unsigned percent) { return _number(100) < percent; }
    const std::string& _stranger() const { return m_tokens.back(); }  // nobody asks for it
    void _check(bool isGood, const std::string& fault) {
        if (!isGood && m_error.empty()) m_error = fault;
    }
    CTokenTableList& _list(KindIndex kind) {
        return *m_router.CommonData().Lists().FindOrMake(g_kinds[kind].table);
    }
    CDataTable _held(KindIndex kind, const std::string& token) {
        CDataTable table;
        _list(kind).GetTable(token, table);
        return table;
    }

    // The broker.
    std::string _write(KindIndex kind, const std::string& token, const std::string& key,
                       const std::string& cells) {
        const std::string row = key + ',' + cells + ',' + token;
        m_versions.insert(row);
        return m_accounts[token].books[kind][key] = row;
    }
    Rows _rows(KindIndex kind, const std::string& token) {
        Rows rows;
        for (const auto& [key, row] : m_accounts[token].books[kind]) rows.push_back(row);
        return rows;
    }
    void _post(KindIndex kind, const std::string& token, const Rows& rows, bool isSilent = false) {
        if (m_losesPushes && _chance(10)) return;
        m_pushes.push_back({kind, token, rows, kind < kFunds && _chance(40), isSilent});
    }
    void _trade(const std::string& token) {
        auto& orders = m_accounts[token].orders;
        if (orders.empty() || _chance(20))
            orders.push_back({.price = 1 + _number(50), .quantity = 1 + _number(9)});
        const size_t number = orders.size() - 1 - _number(std::min<size_t>(orders.size(), 9));
        Order& order = orders[number];
        if (!order.isOpen) return;
        const unsigned dice = _number(100);
        if (dice > 25)
            _deal(token, "O" + std::to_string(number), order,
                  1 + _number(static_cast<size_t>(order.quantity - order.dealt)));
        const bool isDone = order.dealt == order.quantity;
        order.isOpen = !isDone && dice > 12;
        const char* status = order.dealt ? "部分成交" : "未成交";
        if (isDone) status = "全部成交";
        if (!isDone && !order.isOpen)
            status = order.dealt ? (dice % 2 ? "部分撤单" : "部成部撤") : dice % 3 ? "全部撤单" : "废单";
        _post(kOrders, token,
              {_write(kOrders, token, "O" + std::to_string(number),
                      Gbk(status) + ',' + std::to_string(order.dealt) + ',' + std::to_string(order.quantity) +
                          ',' + std::to_string(order.price))});
    }
    void _deal(const std::string& token, const std::string& id, Order& order, int64_t volume) {
        Account& account = m_accounts[token];
        order.dealt += volume;
        account.volume += volume;
        account.turnover += order.price * volume;
        _post(kDeals, token,
              {_write(kDeals, token, "D" + std::to_string(++account.deals),
                      id + ',' + std::to_string(volume) + ',' + std::to_string(order.price * volume))});
        const std::string security = "60000" + id.substr(id.size() - 1);
        if (_chance(85) || !account.books[kPositions].erase(security))
            _write(kPositions, token, security, "17," + std::to_string(_number(50'000)));
        _post(kPositions, token, _rows(kPositions, token));
        Rows funds;
        for (const char* currency : {"CNY", "HKD"}) {
            const std::string totals[] = {"0", "0.00001", "200000", std::to_string(1 + _number(1'000'000))};
            funds.push_back(_write(kFunds, token, currency,
                                   totals[std::min(3U, _number(8))] + ',' + std::to_string(_number(1000))));
            if (_chance(50)) break;
        }
        _post(kFunds, token, funds, _chance(15));
    }

    // The way.
    void _event(const std::function<void()>& act) {
        m_paid.clear();
        m_weighed.clear();
        m_wholeTables = 0;
        act();
        for (const std::string& token : m_paid) {
            const bool isWeighable =
                _list(kFunds).Holds(token) && _held(kPositions, token).GetRowNumber() != 0;
            _check(m_weighed.contains(token) == isWeighable, "positions and funds of " + token);
        }
        _check(std::ranges::includes(m_paid, m_weighed), "positions are news for no reason");
    }
    void _hand(CQueueRespData response) {
        response.SetData("DATATYPE", 2004);
        _event([&] { m_router.OnResponse(&response); });
    }
    void _hand(const Push& push) {
        const Kind& kind = g_kinds[push.kind];
        CQueueRespData response;
        CUIData fields;
        if (push.isSilent) fields.SetData("Push_Source", "AssetManager_Thread");
        response.SetData("MapData", fields);
        response.SetData("Topic", push.isMessage ? kind.message : kind.topic + push.token);
        response.SetData("Table", TableWith(kind, push.rows));
        const uint64_t before = CCounters::Get("push_for_unqueried_account");
        _hand(response);
        if (push.token != _stranger()) return;
        ++happened["push of a stranger"];
        _check(CCounters::Get("push_for_unqueried_account") == before + 1, "a push of a stranger");
    }
    void _deliver(bool mayComeLater) {
        if (m_pushes.empty()) return;
        const Push& chosen = m_pushes[_number(m_pushes.size())];
        // Funds and positions come in the order in which they were sent.
        const auto at = std::ranges::find_if(m_pushes, [&](const Push& each) {
            return &each == &chosen ||
                   (each.kind >= kFunds && each.kind == chosen.kind && each.token == chosen.token);
        });
        Push push = *at;
        m_pushes.erase(at);
        if (mayComeLater && push.kind < kFunds && _chance(20)) m_pushes.push_back(push);
        const auto other = std::ranges::find(m_pushes, push.kind, &Push::kind);
        if (push.isMessage && other != m_pushes.end() && other->token != push.token && _chance(40)) {
            push.token.clear();
            push.rows.insert(push.rows.end(), other->rows.begin(), other->rows.end());
            m_pushes.erase(other);
        }
        _hand(push);
        if (!_chance(20)) return;
        const std::string before = Describe(_list(push.kind));
        _hand(push);
        _check(before == Describe(_list(push.kind)), "a push changed something again");
        _check(!push.isMessage || m_wholeTables == 0, "a message was news again");
        ++happened["push that came again"];
    }
    void _ask() {
        const Kind& kind = g_kinds[_number(kKinds)];
        const bool isView = !kind.view.empty() && _chance(50);
        CDataSet tokens;
        do tokens.Insert(m_tokens[_number(m_tokens.size() - 1)]);
        while (isView && _chance(60));
        m_asked.insert({tokens.begin(), tokens.end()});
        do _ask(isView ? kind.view : kind.table, tokens, _chance(50));
        while (_chance(40));
    }
    void _ask(const std::string& kind, const CDataSet& tokens, bool refresh) {
        CUIData request(kind);
        request.SetData("fund_token", tokens);
        request.SetData("handle", m_window.GetHandle());
        if (refresh) request.SetData("refresh", 1);
        _event([&] { m_page.GetData(request, false, _chance(50)); });
    }
    // The queries of a table are read in their order; the answers may overtake each other.
    void _read() {
        if (m_queries.empty()) return;
        const Query& chosen = m_queries[_number(m_queries.size())];
        for (Query& query : m_queries) {
            const bool isSame = query.kind == chosen.kind && query.token == chosen.token;
            if (isSame && !std::exchange(query.isRead, true))
                query.table = TableWith(g_kinds[query.kind], _rows(query.kind, query.token));
            if (&query == &chosen) break;
        }
    }
    void _answer(bool mayFail) {
        const auto first = m_queries.begin() + _number(m_queries.size() + 1);
        const auto at = std::find_if(first, m_queries.end(), [](const Query& query) { return query.isRead; });
        if (at == m_queries.end()) return;
        const Query query = *at;
        m_queries.erase(at);
        if (mayFail && _chance(4)) return;  // it never comes
        const bool fails = mayFail && _chance(10);
        CQueueRespData response = ResponseOf(fails ? R"({"retcode":7})" : "");
        if (!fails || _chance(50))
            response.SetData("Table", fails ? TableWith(g_kinds[query.kind], {}) : query.table);
        for (const char* key : {"REQTYPE", "UUID", "FundToken"})
            response.SetData(key, query.item.GetDataView(key));
        response.SetData("Request", static_cast<const CUIData&>(query.item));
        _hand(response);
        // What was pushed meanwhile is forgotten where an account's first query fails.
        if (fails && query.kind == kOrders && !_list(kOrders).Holds(query.token))
            std::erase_if(m_seen, [&](const auto& seen) { return seen.first.ends_with(query.token); });
        if (fails || query.kind != kDeals) return;
        Rows read = RowsOf(g_kinds[kDeals], query.table),
             held = RowsOf(g_kinds[kDeals], _held(kDeals, query.token));
        std::ranges::sort(read);
        std::ranges::sort(held);
        _check(std::ranges::includes(held, read), "an answer was lost");
    }

    // The page.
    void _hear(const CUIData& record) {
        const std::string name = record.GetType(), token = record.GetDataString("fund_token");
        const auto* const found = std::ranges::find_if(g_kinds, [&](const Kind& each) {
            return name == each.table || name == each.view || name == each.rows;
        });
        CDataTable table;
        if (found == std::end(g_kinds) || !record.GetData(name, table)) return;
        ++happened[name];
        const auto kind = KindIndex(found - g_kinds);
        for (const std::string& row : RowsOf(*found, table)) _see(kind, row);
        CDataSet tokens;
        if (record.GetData("fund_token", tokens)) {
            _check(m_asked.contains({tokens.begin(), tokens.end()}), "a view that nobody asked for");
            _seeTables(kind, tokens, table);
        } else if (name == found->table && (kind < kFunds || _list(kind).Holds(token)) &&
                   record.GetDataLong("ret_code") == 0) {
            tokens.Insert(token);
            _seeTables(kind, tokens, table);
            ++m_wholeTables;
        }
        const bool isNewsOfFunds = record.GetDataText("update_user") == token;
        _check(kind != kFunds || isNewsOfFunds || record.GetDataLong("handle") > 0,
               "funds without their user");
        if (isNewsOfFunds && record.GetDataText("Push_Source").empty()) m_paid.insert(token);
        if (record.GetDataText("update_type") != "fund") return;
        m_weighed.insert(token);
        _checkWeights(token, table);
    }
    // Every row is one that the broker once had, and no order goes back.
    void _see(KindIndex kind, const std::string& row) {
        _check(m_versions.contains(row), "a row that never was: " + row);
        _check(!row.ends_with(',' + _stranger()), "a row of a stranger");
        if (kind != kOrders) return;
        const auto cells = SplitText(row, ',');
        auto& [isFinal, dealt] = m_seen[std::string(cells[0]).append(cells.back())];
        const bool isFinalNow = OrderStateOf(cells[1]) == OrderState::kFinal;
        const int64_t dealtNow = *ParseLong(cells[2]);
        _check(isFinalNow >= isFinal && dealtNow >= dealt, "an order went back: " + row);
        isFinal = isFinalNow;
        dealt = dealtNow;
    }
    // The table is all that the list holds of the accounts, which lose no deal.
    void _seeTables(KindIndex kind, const CDataSet& tokens, const CDataTable& table) {
        Rows all;
        for (const std::string& token : tokens) {
            _check(_list(kind).Holds(token), g_kinds[kind].table + " without " + token);
            const Rows rows = RowsOf(g_kinds[kind], _held(kind, token));
            all.insert(all.end(), rows.begin(), rows.end());
            const std::set<std::string> deals(rows.begin(), rows.end());
            if (kind == kDeals)
                _check(std::ranges::includes(deals, std::exchange(m_deals[token], deals)),
                       "deals disappeared");
        }
        _check(RowsOf(g_kinds[kind], table) == all, g_kinds[kind].table + " is not what the list holds");
    }
    void _checkWeights(const std::string& token, const CDataTable& positions) {
        ++happened["weights"];
        const int64_t assets = *ParseLong(_held(kFunds, token).GetItemText(0, "TotalAssets"));
        for (int row = 0; row < positions.GetRowNumber(); ++row) {
            const int64_t value = *ParseLong(positions.GetItemText(row, "MarketValue"));
            _check(positions.GetItemText(row, "MarketValueRate") == WeightOf(value, assets), "weight");
        }
    }

    // All that is under way arrives.
    void _drain() {
        while (m_error.empty() && (!m_pushes.empty() || !m_queries.empty())) {
            _deliver(false);
            _read();
            _answer(false);
        }
    }
    void _settle(bool asks) {
        _drain();
        if (!m_losesPushes) _compare(false);
        if (!asks) return;
        for (size_t i = 0; i + 1 < m_tokens.size(); ++i) {
            CDataSet token;
            token.Insert(m_tokens[i]);
            for (const Kind& kind : g_kinds) _ask(kind.table, token, true);
        }
        _drain();
        _compare(true);
        for (const auto& token : m_tokens) _checkWeights(token, _held(kPositions, token));
    }
    void _compare(bool areAllAsked) {
        for (const auto& [token, account] : m_accounts) {
            for (const KindIndex kind : {kOrders, kDeals, kFunds, kPositions}) {
                const bool isHeld = _list(kind).Holds(token);
                _check(token == _stranger() ? !isHeld : isHeld || !areAllAsked, "who is known");
                if (!isHeld) continue;
                const CDataTable table = _held(kind, token);
                Rows rows = RowsOf(g_kinds[kind], table), truth = _rows(kind, token);
                std::ranges::sort(rows);
                std::ranges::sort(truth);
                _check(rows == truth, g_kinds[kind].table + " is not that of the broker");
                _check(kind >= kFunds || SumOf(table, "DealVolume") == account.volume, "volume");
                _check(kind != kDeals || SumOf(table, "Turnover") == account.turnover, "turnover");
            }
        }
    }

    static inline int s_runs = 0;
    const bool m_losesPushes;
    std::mt19937 m_random;
    Rows m_tokens;
    std::string m_error;

    std::map<std::string, Account> m_accounts;
    std::set<std::string> m_versions;  // every row that a book ever had
    std::vector<Push> m_pushes;
    std::vector<Query> m_queries;

    std::set<std::set<std::string>> m_asked;                 // accounts
    std::map<std::string, std::pair<bool, int64_t>> m_seen;  // of orders: final, dealt volume
    std::map<std::string, std::set<std::string>> m_deals;
    std::set<std::string> m_paid, m_weighed;  // accounts, in this event
    int m_wholeTables = 0;                    // in this event

    FakeHost m_host;
    CUIStockDataManager& m_router = CUIStockDataManager::get_mutable_instance();
    Window m_window{this};
    CUIPageData m_page{"books" + std::to_string(++s_runs)};
};

TEST(TradingBooksTest, ThePageNeverSeesWhatContradictsTheBooks) {
    const char* const chosen = std::getenv("TRADING_BOOKS_SEED");
    const uint64_t refused = CCounters::Get("push_row_refused"),
                   older = CCounters::Get("older_answer_ignored");
    for (unsigned i = 0; i < 12; ++i) {
        const unsigned seed = chosen ? static_cast<unsigned>(std::atoi(chosen)) : 20260 + i;
        World world(seed, i % 2 == 1);
        ASSERT_EQ(world.Run(750, 6 + static_cast<int>(i / 2) * 10), "") << "seed " << seed;
        EXPECT_EQ(world.happened.size(), 12U);
        for (const auto& [what, times] : world.happened) EXPECT_GT(times, 25) << what;
    }
    EXPECT_GT(CCounters::Get("push_row_refused"), refused + 50);
    EXPECT_GT(CCounters::Get("older_answer_ignored"), older + 50);
}

}  // namespace
}  // namespace luadui
