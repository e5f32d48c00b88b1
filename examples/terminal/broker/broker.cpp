#include "broker/broker.h"

#include <algorithm>
#include <future>
#include <memory>

#include "base/counters.h"
#include "base/guard.h"
#include "base/json_object.h"
#include "base/text.h"
#include "broker/account_tables.h"
#include "broker/answers.h"
#include "broker/services.h"
#include "settings/safe_file.h"

namespace terminal {
namespace {

using luadui::CUIData;
using luadui::Gbk;

constexpr size_t kMaxWaiting = 100'000;
constexpr size_t kMaxKey = 1 << 16;
constexpr size_t kMaxSubscriptions = 10'000;

int TypeOf(const CUIData& request) { return static_cast<int>(request.GetDataLong("REQTYPE")); }

int DataTypeOf(const CUIData& request) {
    const Service* const service = FindService(TypeOf(request));
    return service ? service->dataType : kDataOfPage;
}

std::string TopicOf(const Account& account, const std::string& name) {
    return name + (account.isCredit ? "Credit|" : "|");
}

// Empty when there is no such file.
std::string KeyText(const std::filesystem::path& file) {
    std::string text;
    if (!file.empty()) ReadFile(file, kMaxKey, text);
    return text;
}

// One line of all entries, those of records and the rows of tables within.
template <class Entries>
void AppendText(const Entries& entries, std::string& text) {
    for (const auto [name, value] : entries) {
        CUIData record;
        luadui::CDataTable table;
        luadui::CJsonObject json;
        text.append(" ").append(name).append("=");
        if (value.Get(record)) {
            text += "{";
            AppendText(record, text);
            text += " }";
        } else if (value.Get(table)) {
            for (int row = 0; row < table.GetRowNumber(); ++row)
                for (int col = 0; col < table.GetColumnNumber(); ++col)
                    text.append(col == 0 ? " [" : "|").append(table.GetItemText(row, col));
        } else if (value.Get(json)) {
            text += json.ToText();
        } else {
            text += value.Kind() == luadui::kDataInteger ? std::to_string(value.AsLong())
                                                         : std::string(value.AsText());
        }
    }
}

bool IsSet(const CUIData& params, const char* key) { return params.GetDataText(key) == "true"; }

}  // namespace

Broker::Broker(Deliver deliver, const BrokerFiles& files)
    : m_deliver(std::move(deliver)), m_desk(KeyText(files.passwordKey)) {
    if (files.traffic.empty()) return;
    std::filesystem::create_directories(files.traffic.parent_path());
    m_traffic.open(files.traffic, std::ios::binary);
}

Broker::~Broker() { Stop(); }

void Broker::Start() {
    std::lock_guard lock(m_mutex);
    if (m_running) return;
    m_running = true;
    m_thread = std::thread([this] { _run(); });
}

void Broker::Stop() {
    {
        std::lock_guard lock(m_mutex);
        m_running = false;
        m_wake.notify_all();
    }
    if (m_thread.joinable()) m_thread.join();
    std::lock_guard lock(m_mutex);
    m_tasks.clear();
}

void Broker::_run() {
    std::unique_lock lock(m_mutex);
    while (m_running) {
        if (m_tasks.empty()) {
            m_wake.wait(lock);
            continue;
        }
        const auto due = m_tasks.begin()->first;
        if (Clock::now() < due) {
            m_wake.wait_until(lock, due);
            continue;
        }
        auto task = m_tasks.extract(m_tasks.begin());
        lock.unlock();
        luadui::Guarded("broker_task_threw", task.mapped());
        task.mapped() = nullptr;
        lock.lock();
    }
}

bool Broker::_post(Task task, std::chrono::milliseconds delay) {
    std::lock_guard lock(m_mutex);
    if (!m_running) return false;
    if (m_tasks.size() >= kMaxWaiting) {
        luadui::CCounters::Add("broker_inbox_full");
        return false;
    }
    m_tasks.emplace(Clock::now() + delay, std::move(task));
    m_wake.notify_all();
    return true;
}

bool Broker::_call(const Task& task) {
    auto job = std::make_shared<std::packaged_task<void()>>(task);
    std::future<void> done = job->get_future();
    if (!_post([job] { (*job)(); })) return false;
    job.reset();  // a broker that stops first drops the job, and the wait ends with an error
    try {
        done.get();
        return true;
    } catch (const std::exception&) {
        return false;
    }
}

bool Broker::Submit(const CUIData& request) {
    return _post([this, request] { _handle(request); });
}

bool Broker::Trade(const std::string& fundToken, const std::string& code, Shares volume, std::string& error) {
    bool done = false;
    const bool ran = _call([&] {
        done = m_exchange.Trade(fundToken, code, volume, error);
        _tellChanges();
    });
    if (!ran) error = "the broker does not run";
    return ran && done;
}

bool Broker::SetPrice(const std::string& code, Mills price) {
    bool done = false;
    _call([&] {
        done = m_exchange.SetPrice(code, price);
        _tellChanges();
        _followQuotes(code);
        _planStep();
    });
    return done;
}

void Broker::SetMarketVolume(Shares volume) {
    _call([&] {
        m_exchange.SetMarketVolume(volume);
        _planStep();
    });
}

bool Broker::WarnOfRisk(const std::string& fundToken, const std::string& code, Shares volume) {
    bool done = false;
    _call([&] {
        const Account* const account = m_exchange.Book().Find(fundToken);
        const Security* const security = m_exchange.Book().FindSecurity(code);
        done = account && security;
        if (done) _push(MakeRiskPush(fundToken, RiskTable(*account, *security, volume)), false);
    });
    return done;
}

int Broker::Replay() {
    int count = 0;
    _call([&] {
        for (const CUIData& push : m_journal) _deliver(push, &Stats::pushes);
        count = static_cast<int>(m_journal.size());
    });
    return count;
}

void Broker::ListSecurities(std::vector<ListedSecurity> securities) {
    _call([&] { m_quotes.List(std::move(securities)); });
}

void Broker::FeedQuotes(int rows) {
    _call([&] {
        m_quotes.SetRate(std::clamp(rows, 0, QuoteFeed::kMostRows));
        m_quoteStep = Clock::now();
        _planQuotes();
    });
}

std::vector<Quote> Broker::Quotes() {
    std::vector<Quote> quotes;
    _call([&] { quotes.assign(m_quotes.Quotes().begin(), m_quotes.Quotes().end()); });
    return quotes;
}

bool Broker::ComeOnline(const std::string& fundToken) {
    bool done = false;
    _call([&] {
        const Account* const account = m_exchange.Book().Find(fundToken);
        done = account != nullptr;
        if (done) _deliver(MakeOnlineNotice(fundToken, AccountTable(*account)), &Stats::pushes);
    });
    return done;
}

bool Broker::ChangePassword(const std::string& user, const std::string& key, const std::string& password) {
    bool done = false;
    _call([&] { done = m_desk.ChangePassword(user, key, password); });
    return done;
}

void Broker::PlanFault(Fault fault, int count, std::chrono::milliseconds delay) {
    _call([&] { m_faults.Add(fault, count, delay); });
}

std::vector<Account> Broker::Accounts() {
    std::vector<Account> accounts;
    _call([&] { accounts = m_exchange.Book().Accounts(); });
    return accounts;
}

DeskUser Broker::Desk(const std::string& user) {
    DeskUser copy;
    _call([&] {
        if (const DeskUser* const found = m_desk.Find(user)) copy = *found;
    });
    return copy;
}

Broker::Stats Broker::GetStats() const {
    std::lock_guard lock(m_mutex);
    return m_stats;
}

void Broker::_handle(const CUIData& request) {
    {
        std::lock_guard lock(m_mutex);
        ++m_stats.requests;
        ++m_stats.requestsByType[TypeOf(request)];
    }
    _write(request);
    if (QuoteFeed::IsAsked(request)) {
        if (CUIData answer; m_quotes.Take(request, answer)) _deliver(answer, &Stats::answers);
        return;
    }
    CUIData params;
    request.GetData("Params", params);
    if (IsSet(params, "unsub")) return _unsubscribe(request);
    if (IsSet(params, "isSub")) _subscribe(request);
    const Service* const service = FindService(TypeOf(request));
    if (service && !service->serve) return;
    const FaultPlan::Step step = m_faults.Take();
    if (step.fault == Fault::kSilence) return;
    const Account* const account = m_exchange.Book().Find(request.GetDataText("FundToken"));
    const bool isServed = step.fault == Fault::kNone || step.fault == Fault::kDelay;
    const CUIData answer = isServed ? _answer(request, account) : _fault(request, step.fault);
    if (step.fault == Fault::kDelay) {
        _post([this, answer] { _deliver(answer, &Stats::answers); }, step.delay);
    } else {
        _deliver(answer, &Stats::answers);
    }
    _tellChanges();
}

CUIData Broker::_answer(const CUIData& request, const Account* account) {
    if (AccountDesk::IsAsked(request)) return m_desk.Answer(request);
    const Service* const service = FindService(TypeOf(request));
    if (!service) return MakeError(request, kDataOfPage, -102, "不支持的请求类型");
    if (service->ofAccount && !account) return MakeError(request, service->dataType, -101, "资金账号不存在");
    CUIData answer = MakeAnswer(request, service->dataType);
    std::string error;
    if (!service->serve(request, m_exchange, account, answer, error))
        return MakeError(request, service->dataType, -110, error);
    return answer;
}

CUIData Broker::_fault(const CUIData& request, Fault fault) {
    const int dataType = DataTypeOf(request);
    if (fault == Fault::kGarbage) return MakeGarbage(request, dataType, m_garbage++);
    return MakeError(request, fault == Fault::kFailure ? kDataFailed : dataType, -150,
                     "柜台系统繁忙，请稍后再试");
}

void Broker::_write(const CUIData& request) {
    if (!m_traffic.is_open() || static_cast<size_t>(m_traffic.tellp()) > kMaxTraffic) return;
    std::string line;
    AppendText(request, line);
    m_traffic << line << std::endl;
}

void Broker::_subscribe(const CUIData& request) {
    // Only what can change is kept, so that requests for anything else do not fill the memory.
    const int type = TypeOf(request);
    const std::string fundToken = request.GetDataString("FundToken");
    const Service* const service = FindService(type);
    if (!m_exchange.Book().Find(fundToken) || !service || !service->isTradedWith) return;
    std::set<std::string>& senders = m_subscribers[{type, fundToken}];
    if (senders.size() >= kMaxSubscriptions) return luadui::CCounters::Add("broker_subscription_refused");
    senders.insert(request.GetDataString("From"));
}

void Broker::_unsubscribe(const CUIData& request) {
    const auto found = m_subscribers.find({TypeOf(request), request.GetDataString("FundToken")});
    if (found != m_subscribers.end()) found->second.erase(request.GetDataString("From"));
}

void Broker::_tellChanges() {
    const auto changes = m_exchange.TakeChanges();
    for (const AccountChange& change : changes) _tell(change);
    for (const AccountChange& change : changes)
        for (const size_t row : change.orders) _followQuotes(change.account->orders[row].code);
    if (!changes.empty()) _planStep();
}

// The funds come last: shares of the total assets are made of them and of the positions.
void Broker::_tell(const AccountChange& change) {
    const std::string& token = change.account->fundToken;
    for (const Service& service : Services())
        if (service.isTradedWith) _notify(service.type, token);
    if (!change.orders.empty()) _tellOrders(change);
    if (!change.deals.empty()) _tellDeals(change);
    if (change.positions)
        _push(MakePush(TopicOf(*change.account, "Position"), token, PositionTable(*change.account)), false);
    _push(MakePush(TopicOf(*change.account, "Fund"), token, FundTable(*change.account)), false);
}

void Broker::_tellOrders(const AccountChange& change) {
    const Account& account = *change.account;
    _push(MakePush(TopicOf(account, "Entrust"), account.fundToken, OrderTable(account, change.orders)), true);
    for (const size_t row : change.orders) {
        const Order& order = account.orders[row];
        _push(MakeReport({"entrustret", account.fundToken, account.id, order.localId, order.instance,
                          order.task, StatusTextOf(order)},
                         OrderTable(account, {&row, 1})),
              true);
    }
}

void Broker::_tellDeals(const AccountChange& change) {
    const Account& account = *change.account;
    _push(MakePush(TopicOf(account, "Trade"), account.fundToken, DealTable(account, change.deals)), true);
    for (const size_t row : change.deals) {
        const Deal& deal = account.deals[row];
        const auto order = std::ranges::find(account.orders, deal.orderId, &Order::id);
        _push(MakeReport({"traderet", account.fundToken, account.id, order->localId, deal.instance, deal.task,
                          Gbk("成交")},
                         DealTable(account, {&row, 1})),
              true);
    }
}

void Broker::_push(const CUIData& push, bool isKept) {
    _deliver(push, &Stats::pushes);
    if (!isKept) return;
    m_journal.push_back(push);
    if (m_journal.size() > kMaxJournal) m_journal.pop_front();
}

void Broker::_planStep() {
    if (!m_isStepPlanned) m_isStepPlanned = _post([this] { _step(); }, kStep);
}

void Broker::_step() {
    m_isStepPlanned = false;
    m_exchange.Step();
    _tellChanges();
}

void Broker::_planQuotes() {
    if (m_quotes.Rate() > 0 && !m_isQuoteStepPlanned)
        m_isQuoteStepPlanned = _post([this] { _feedQuotes(); }, kQuoteStep);
}

// A step is as long as it took: the rate holds when the thread is late, unless it is very late.
void Broker::_feedQuotes() {
    constexpr auto kLongest = std::chrono::microseconds(200'000);
    m_isQuoteStepPlanned = false;
    const auto now = Clock::now();
    const auto passed = std::chrono::duration_cast<std::chrono::microseconds>(now - m_quoteStep);
    m_quoteStep = now;
    _pushQuotes(m_quotes.Step(std::min(passed, kLongest)));
    _planQuotes();
}

void Broker::_followQuotes(std::string_view code) { _pushQuotes(m_quotes.Follow(code)); }

void Broker::_pushQuotes(const std::vector<CUIData>& pushes) {
    for (const CUIData& push : pushes) _deliver(push, &Stats::pushes);
    std::lock_guard lock(m_mutex);
    m_stats.quoteRows = m_quotes.RowCount();
}

void Broker::_notify(int type, const std::string& fundToken) {
    const auto found = m_subscribers.find({type, fundToken});
    if (found == m_subscribers.end()) return;
    for (const std::string& sender : found->second)
        _deliver(MakeChangeNotice(type, fundToken, sender), &Stats::notices);
}

void Broker::_deliver(CUIData record, uint64_t Stats::*counter) {
    m_deliver(record);
    std::lock_guard lock(m_mutex);
    ++(m_stats.*counter);
}

}  // namespace terminal
