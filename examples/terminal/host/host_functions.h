// The functions of the table "terminal" for the host's scripts.
#pragma once

#include "host/line_input.h"
#include "host/lua_answer.h"
#include "host/lua_state.h"
#include "host/output_capture.h"

namespace terminal {

class Terminal;

// Each answers nil and a text when it fails. Texts are UTF-8 unless said otherwise.
//
//   start-up
//     attach()                   finds the library's functions, registers the callbacks, starts the broker
//     start_ui() stop_ui()       the UI thread; start_ui answers its id
//     options()                  {home, data, securities, securities_count, scenario}
//     window()                   the handle of the main window
//   host thread
//     pump(ms)                   serves window messages, or waits up to `ms` for one
//     read_line(prompt, words)   a line typed by the user, nil at the end; `words`, separated by blanks, complete on tab
//     is_interactive()           whether a person sits in front of it
//     ms()                       milliseconds since the system started
//     catch_output() caught()    catches what the library prints itself; caught() answers it
//   pages and library
//     page_view(page)            what it shows (see page/page_view.h); nil while nothing; `page` in code page 936
//     page_table(page, name)     the rows of one of its tables, each {column = text}, all in code page 936; nil when it has
//                                none of that name
//     take_frame()               the oldest frame message: {code, target, method, body}; nil when there is none
//     take_record()              the oldest report of a record that a page received (see page/page_view.h), texts in code
//                                page 936; nil when there is none
//     create_page(name, library, info, asynchronous)   through the exported function, under the main window
//     counters()                 {name = value}: what was dropped or refused, and how often
//   broker
//     books()                    array of totals by account, money as whole cents: see broker/books.h
//     holdings(fund_token)       array of positions: see broker/books.h
//     trade(fund_token, code, volume)   a deal at once, outside the market; orders are sent by pages
//     set_price(code, price)     the market moves; `price` is a text
//     set_market_volume(shares)  how many the market takes from an order, or gives it, in a step; 5,000 at first
//     warn_of_risk(fund_token, code, volume)   risk control objects to such an order
//     replay()                   pushes the orders and deals of the day again; answers how many pushes that were
//     come_online(fund_token)    the account logs in
//     fault(kind, count, ms)
//     broker_stats()             {requests, answers, notices, pushes, quote_rows}, and by request type {["1201"] = requests}
//   securities and quotes
//     load_code_list(path)       lets the library load its code list, in the background (see init_keyfairy)
//     code_list_changed()        tells it that the list is another one
//     security_name(code, market)   "name:market"
//     security_market(code, name)   the market id; `name` in code page 936
//     list_securities(text)      what the broker has quotes of: lines "code<tab>market<tab>name"; answers how many
//     feed_quotes(rows)          the broker pushes so many rows of quotes a second; 0: none
//     quotes()                   array of the broker's quotes: prices and counts as texts, names in code page 936
//     probe_ui(window)           measures how long the thread of that window is busy, until
//     probed()                   answers {probes, longest, above10}: milliseconds, and the part of the probes above 10 ms
class HostFunctions {
  public:
    explicit HostFunctions(Terminal& terminal) : m_terminal(terminal) {}
    // This object outlives the state.
    void Register(LuaState& state);

    Terminal& GetTerminal() { return m_terminal; }
    LuaAnswer& Answer() { return m_answer; }
    LineInput& Input() { return m_input; }
    OutputCapture& Capture() { return m_capture; }

  private:
    Terminal& m_terminal;
    LuaAnswer m_answer;
    LineInput m_input;
    OutputCapture m_capture;
};

}  // namespace terminal
