// Which securities the windows of a page show.
#pragma once

#include <cstddef>
#include <cstdint>
#include <map>
#include <set>
#include <string>
#include <string_view>
#include <vector>

#include "base/data_set.h"
#include "base/text_map.h"

namespace luadui {

// Of one kind of quotes. What counts is what the windows named that listen for the kind: each names securities (see
// datamgr/quote_names.h) when it asks for them or subscribes to them, before or after it begins to listen. A window
// that listens and never named any, or that subscribed without naming any, takes all. One that took back all that it
// named takes none.
//
// Threads: the UI thread.
class QuoteInterest {
  public:
    void Name(uint32_t window, const std::vector<std::string>& securities);
    void Unname(uint32_t window, const std::vector<std::string>& securities);
    // The window subscribed to the kind as a whole, or no longer.
    void SetTakesAll(uint32_t window, bool takesAll);
    // The window listens from now on, or no longer: then what it named is forgotten.
    void SetListening(uint32_t window, bool listens);

    // Whether somebody takes one of the quotes with these keys. The cost is the smaller of their number and that of the
    // securities named.
    bool Meets(const CDataSet& keys);
    // Those of the securities whose quotes somebody takes, be they named with or without their market.
    std::vector<std::string> Taken(std::vector<std::string> securities);
    // What to ask for when these have changed: the securities that somebody takes, as they were named; the keys
    // themselves where somebody takes all.
    CDataSet Met(const CDataSet& keys);
    // The windows that named something, or listen.
    std::vector<uint32_t> Windows() const;

    // A window that names more takes all from then on, counted as "quote_interest_full".
    static constexpr size_t kMaxNames = 20'000;
    static constexpr size_t kKept = 64;  // windows that are not worth looking for those that have gone

  private:
    struct Window {
        std::set<std::string, std::less<>> prefixes;  // of the keys
        bool listens = false;
        bool hasNamed = false;
        bool takesAll = false;

        bool IsTakingAll() const { return listens && (takesAll || !hasNamed); }
    };

    template <class Change>
    void _change(uint32_t window, Change&& change);
    void _count(const std::string& prefix, bool isMore);
    void _forget(const Window& window);
    void _dropGone();
    template <class Visit>
    bool _visit(const CDataSet& keys, Visit&& visit) const;

    std::map<uint32_t, Window> m_windows;
    TextMap<size_t> m_shown;  // prefix -> number of windows that listen and named it
    size_t m_takingAll = 0;   // windows
    size_t m_allowed = kKept;
};

}  // namespace luadui
