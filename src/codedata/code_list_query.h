// Asking the host for the code list.
#pragma once

#include <algorithm>
#include <array>
#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

namespace luadui {

// The host's script and its function that runs the query against the terminal's market database.
inline constexpr std::string_view kCodeListScript = "\\LuaInterface\\marketdb.lua";
inline constexpr std::string_view kCodeListFunction = "GetCodeList";

// Hosts compare this text: not a blank may change, uneven as they are.
inline constexpr std::string_view kCodeListQuery =
    "select * from codelist where marketcode = '17' or marketcode ='33' or marketcode ='18' or marketcode "
    "='34' or "
    "marketcode ='19' or marketcode ='20' or marketcode ='35' or marketcode ='36' or marketcode ='22' or "
    "marketcode='153' or marketcode='156' or marketcode='73' or marketcode='76' or marketcode='21' or "
    "marketcode='37' or marketcode='145' or marketcode='146'";

// The markets that the query names, in its order, which is that of their weight: of securities with one code
// in several markets that of the first counts.
inline constexpr std::array<std::string_view, 17> kCodeListMarkets = {
    "17", "33", "18", "34", "19", "20", "35", "36", "22", "153", "156", "73", "76", "21", "37", "145", "146"};

// The place of a market in kCodeListMarkets; their number for any other.
constexpr size_t CodeListRank(std::string_view market) {
    return static_cast<size_t>(std::find(kCodeListMarkets.begin(), kCodeListMarkets.end(), market) -
                               kCodeListMarkets.begin());
}

// Asks the host and waits for it: the request-sync callback with REQTYPE 1502 and "Params" "cmd" "sync",
// "method" kCodeListFunction, "script" kCodeListScript, "params" kCodeListQuery and, unless empty, "path":
// the source of the list as it was given to init_keyfairy (code page 936). Answers the text of "result"
// (form: codedata/code_list.h); nothing when no callback is set, it failed or answered nothing (counted as
// "code_list_unanswered").
//
// Threads: any; the callback runs on the calling one and may call back into the library, so no lock may be
// held.
std::optional<std::string> QueryCodeList(std::string_view path);

}  // namespace luadui
