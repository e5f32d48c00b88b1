// The simulated broker: takes requests, has orders matched, answers from its books and tells when data changed, all on
// a thread of its own, as a connection to real servers would.
#pragma once

#include <chrono>
#include <condition_variable>
#include <deque>
#include <filesystem>
#include <fstream>
#include <functional>
#include <map>
#include <mutex>
#include <set>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include "base/ui_data.h"
#include "broker/account_desk.h"
#include "broker/exchange.h"
#include "broker/fault_plan.h"
#include "broker/quotes/quote_feed.h"

namespace terminal {

// What the broker reads and writes; empty paths where it is to do without.
struct BrokerFiles {
    std::filesystem::path passwordKey = {};  // PEM: the private key of the passwords that the terminal sends
    std::filesystem::path traffic = {};      // a line for every request that came, some 64 MB at most
};

// Threads:   operations from any thread; `deliver` is called on the broker's own, without a lock held.
// Lifetime:  Stop (also the destructor) ends the thread after the step it is in; what waits is dropped.
// Ownership: requests are copied; a record that was delivered is not touched again.
//
// A query whose "Params" "isSub" is "true" also subscribes its sender to change notices of that request type and
// account; "unsub" = "true" ends that and is not answered. Whatever changes an account is pushed to the client as well:
// the rows of its orders and deals ("Entrust|", "Trade|"), each of them as a report ("entrustret", "traderet"), its
// positions and its funds. Orders are matched in steps of kStep, as long as deals are made (see Exchange). Requests for
// quotes go to the quote server (see QuoteFeed) and have no planned faults.
class Broker {
  public:
    using Deliver = std::function<void(luadui::CUIData& record)>;
    static constexpr std::chrono::milliseconds kStep{20};
    static constexpr std::chrono::milliseconds kQuoteStep{20};

    explicit Broker(Deliver deliver, const BrokerFiles& files = {});
    ~Broker();

    void Start();
    void Stop();

    // Takes a request. False, counted as "broker_inbox_full", when too many wait.
    bool Submit(const luadui::CUIData& request);
    // The following wait for the broker's thread and are followed by notices to the subscribers and pushes.
    // See Exchange::Trade.
    bool Trade(const std::string& fundToken, const std::string& code, Shares volume, std::string& error);
    // The market moves. False when there is no such security.
    bool SetPrice(const std::string& code, Mills price);
    // See Exchange::SetMarketVolume.
    void SetMarketVolume(Shares volume);
    // Risk control objects to an order for this account: pushed to the client. False when there is no such account or
    // security.
    bool WarnOfRisk(const std::string& fundToken, const std::string& code, Shares volume);
    // What a server does that comes back: pushes all orders and deals of the day again, from the first to the last state
    // of each (the last kMaxJournal pushes). Returns how many pushes that were.
    int Replay();
    // The securities that there are quotes of, instead of those before. Subscriptions end.
    void ListSecurities(std::vector<ListedSecurity> securities);
    // From now on so many rows of quotes a second are pushed, of those that somebody subscribed to, at most
    // QuoteFeed::kMostRows; 0: none.
    void FeedQuotes(int rows);
    // Tells the client that this account logged in. False when there is none. Waits for the broker's thread.
    bool ComeOnline(const std::string& fundToken);
    // See AccountDesk::ChangePassword.
    bool ChangePassword(const std::string& user, const std::string& key, const std::string& password);
    // See FaultPlan::Add.
    void PlanFault(Fault fault, int count, std::chrono::milliseconds delay);

    // The books as they are; empty when the broker does not run.
    std::vector<Account> Accounts();
    std::vector<Quote> Quotes();
    // What the account service knows of a user; empty for one that it does not know.
    DeskUser Desk(const std::string& user);
    struct Stats {
        uint64_t requests = 0;
        uint64_t answers = 0;
        uint64_t notices = 0;
        uint64_t pushes = 0;
        uint64_t quoteRows = 0;  // in them
        std::map<int, uint64_t> requestsByType;
    };
    Stats GetStats() const;

  private:
    static constexpr size_t kMaxJournal = 10'000;
    static constexpr size_t kMaxTraffic = 64 << 20;
    using Clock = std::chrono::steady_clock;
    using Task = std::function<void()>;
    using Subscription = std::pair<int, std::string>;  // request type, fund token

    void _run();
    bool _post(Task task, std::chrono::milliseconds delay = {});
    bool _call(const Task& task);  // runs it on the thread and waits; false when the thread does not run
    // The rest runs on the broker's thread.
    void _handle(const luadui::CUIData& request);
    luadui::CUIData _answer(const luadui::CUIData& request, const Account* account);
    luadui::CUIData _fault(const luadui::CUIData& request, Fault fault);
    void _write(const luadui::CUIData& request);  // to the traffic file
    void _subscribe(const luadui::CUIData& request);
    void _unsubscribe(const luadui::CUIData& request);
    void _tellChanges();  // and goes on matching
    void _tell(const AccountChange& change);
    void _tellOrders(const AccountChange& change);
    void _tellDeals(const AccountChange& change);
    void _push(const luadui::CUIData& push, bool isKept);
    void _step();
    void _planStep();
    void _feedQuotes();
    void _planQuotes();
    void _followQuotes(std::string_view code);
    void _pushQuotes(const std::vector<luadui::CUIData>& pushes);
    void _notify(int type, const std::string& fundToken);
    void _deliver(luadui::CUIData record, uint64_t Stats::*counter);

    const Deliver m_deliver;
    Exchange m_exchange;
    AccountDesk m_desk;
    QuoteFeed m_quotes{m_exchange};
    bool m_isQuoteStepPlanned = false;
    Clock::time_point m_quoteStep;  // when it was
    std::ofstream m_traffic;
    bool m_isStepPlanned = false;
    FaultPlan m_faults;
    std::deque<luadui::CUIData> m_journal;                        // pushes about orders and deals, for Replay
    std::map<Subscription, std::set<std::string>> m_subscribers;  // -> senders ("From")
    unsigned m_garbage = 0;

    mutable std::mutex m_mutex;
    std::condition_variable m_wake;
    std::multimap<Clock::time_point, Task> m_tasks;  // by due time; guarded by m_mutex
    bool m_running = false;                          // guarded by m_mutex
    Stats m_stats;                                   // guarded by m_mutex
    std::thread m_thread;
};

}  // namespace terminal
