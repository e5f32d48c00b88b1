// What the terminal has subscribed to at the quote server, and which quotes are current because of it.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <map>
#include <set>
#include <string>
#include <string_view>
#include <vector>

#include "base/text_map.h"
#include "base/ui_data.h"
#include "datamgr/quote_names.h"

namespace luadui {

class CHqData;
class CUIDataManager;

// The server pushes the securities that somebody here holds, and nobody asks it twice: the first holder of a security
// lets a query with "isSub" = "true" leave, and when the last one lets go of it, or has gone, a query with "unsub" =
// "true" does. Securities are named as pages name them (see datamgr/quote_names.h).
//
// A quote is current from the answer that follows the subscription until the subscription ends. Current quotes answer
// whoever asks for them; all others may be old, and are asked of the server.
//
// Threads: the UI thread. What is sent and told may end any page.
class QuoteFeed {
  public:
    // `manager` is not owned: it sends, tells, and holds the lists of quotes.
    // `now` counts milliseconds.
    explicit QuoteFeed(CUIDataManager& manager, uint32_t (*now)() = TickCount)
        : m_manager(manager), m_now(now) {}

    // `holder`: the handle of the window, or of the page. It is told what is current now, and when the server answers,
    // the rest.
    void Subscribe(std::string_view kind, const std::vector<std::string>& securities, uint32_t holder);
    void Unsubscribe(std::string_view kind, const std::vector<std::string>& securities, uint32_t holder);
    // The same for a query of the holder's own with "isSub" or "unsub", so that the server hears neither from a
    // second holder. True when that is all, or the holder's subscription brings the answer already; false when the
    // request is to go on, as it is then.
    bool TakeQuery(CUIData& request, uint32_t holder);
    // Ends all that the holder subscribed to of that kind.
    void Leave(std::string_view kind, uint32_t holder);

    // The server answered: `asked` are the securities that it was asked for, `keys` those of the quotes that came;
    // `isSub`: the query was one that subscribes.
    void Answered(std::string_view kind, const std::vector<std::string>& asked, const CDataSet& keys,
                  bool isSub);
    // It failed at a query that subscribes: the next subscription tries again.
    void Refused(std::string_view kind, const std::vector<std::string>& asked);

    // Puts the quotes that the record asks for into it, as an answer has them. False, and nothing changed, when one of
    // them is not current.
    bool AnswerFrom(CUIData& request) const;
    // The quote of a security for use at once: when it is current, or was answered less than kFreshTime ago. `market`
    // may be empty where the security was subscribed to without one and is quoted in one market.
    bool FindCurrent(std::string_view code, std::string_view market, CUIData& quote) const;

    // Publishes what was pushed since the last tick.
    void Tick();

    static uint32_t TickCount();

    // A subscription that is not answered for so long was lost: whoever subscribes next tries again.
    static constexpr uint32_t kPatience = 10'000;  // ms
    static constexpr uint32_t kFreshTime = 5'000;  // ms
    static constexpr size_t kMaxSecurities =
        200'000;  // further ones are refused, "quote_subscription_refused"
    static constexpr unsigned kTicksBetweenLooks = 16;  // for holders that have gone

  private:
    using Names = std::vector<std::string>;
    struct Security {
        size_t holders = 0;
        bool isAtServer = false;
        uint32_t asker = 0;    // who gets the answer to the query that subscribed, while that is under way
        uint32_t askedAt = 0;  // since when
        Names keys;            // of its quotes; none before the answer
    };
    struct Kind {
        TextMap<Security> securities;
        std::map<uint32_t, std::set<std::string>> holders;
        TextMap<uint32_t> answered;  // key -> when
        size_t answersAllowed = 1024;
    };

    // What became of securities when they got a holder.
    struct Held {
        Names fresh;    // the server is to hear of them
        Names pending;  // the holder gets their answer
        Names current;
        Names others;  // not answered yet, or answered without them
    };

    Held _hold(Kind& kind, const Names& securities, uint32_t holder);
    Names _release(Kind& kind, const Names& securities, uint32_t holder);
    void _send(std::string_view kind, const Names& securities, uint32_t holder, const char* flag);
    void _leaveGone();
    static Names _currentKeys(const Kind& kind, std::string_view security);
    bool _isFresh(const Kind& kind, std::string_view key) const;
    const CHqData* _list(size_t kind) const;

    CUIDataManager& m_manager;
    uint32_t (*const m_now)();
    std::array<Kind, kQuoteKindCount> m_kinds;
    unsigned m_ticks = 0;
};

}  // namespace luadui
