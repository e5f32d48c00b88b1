// The functions of the table "terminal" that act on the broker.
#include "broker/books.h"
#include "host/function_steps.h"

namespace terminal {
namespace {

using luadui::CUIData;

// Shares as a script gives them; a Lua error when they are out of range.
Shares CheckShares(lua_State* L, int argument) {
    const lua_Number volume = luaL_checknumber(L, argument);
    luaL_argcheck(L, volume >= -1e9 && volume <= 1e9, argument, "out of range");
    return static_cast<Shares>(volume);
}

int Books(lua_State* L) {
    return Run(L, [](Terminal& terminal, LuaAnswer& answer) {
        std::vector<CUIData> books;
        for (const Account& account : terminal.GetBroker().Accounts()) books.push_back(TotalsOf(account));
        answer.Add(std::move(books));
    });
}

int Holdings(lua_State* L) {
    const char* fundToken = luaL_checkstring(L, 1);
    return Run(L, [=](Terminal& terminal, LuaAnswer& answer) {
        for (const Account& account : terminal.GetBroker().Accounts())
            if (account.fundToken == fundToken) return answer.Add(HoldingsOf(account));
        answer.Fail("no such account");
    });
}

int SetPrice(lua_State* L) {
    const char* code = luaL_checkstring(L, 1);
    const char* text = luaL_checkstring(L, 2);
    return Run(L, [=](Terminal& terminal, LuaAnswer& answer) {
        const auto price = ParsePrice(text);
        if (!price || *price == 0) return answer.Fail("the price is no price");
        AddOutcome(answer, terminal.GetBroker().SetPrice(code, *price), "no such security");
    });
}

int SetMarketVolume(lua_State* L) {
    const Shares volume = CheckShares(L, 1);
    luaL_argcheck(L, volume >= 0, 1, "out of range");
    return Run(L, [=](Terminal& terminal, LuaAnswer&) { terminal.GetBroker().SetMarketVolume(volume); });
}

int WarnOfRisk(lua_State* L) {
    const char* fundToken = luaL_checkstring(L, 1);
    const char* code = luaL_checkstring(L, 2);
    const Shares volume = CheckShares(L, 3);
    return Run(L, [=](Terminal& terminal, LuaAnswer& answer) {
        AddOutcome(answer, terminal.GetBroker().WarnOfRisk(fundToken, code, volume),
                   "no such account or security");
    });
}

int Replay(lua_State* L) {
    return Run(L, [](Terminal& terminal, LuaAnswer& answer) {
        answer.Add(static_cast<double>(terminal.GetBroker().Replay()));
    });
}

int Trade(lua_State* L) {
    const char* fundToken = luaL_checkstring(L, 1);
    const char* code = luaL_checkstring(L, 2);
    const Shares volume = CheckShares(L, 3);
    return Run(L, [=](Terminal& terminal, LuaAnswer& answer) {
        std::string error;
        AddOutcome(answer, terminal.GetBroker().Trade(fundToken, code, volume, error), error);
    });
}

int ComeOnline(lua_State* L) {
    const char* fundToken = luaL_checkstring(L, 1);
    return Run(L, [=](Terminal& terminal, LuaAnswer& answer) {
        AddOutcome(answer, terminal.GetBroker().ComeOnline(fundToken), "no such account");
    });
}

int PlanFault(lua_State* L) {
    const char* name = luaL_checkstring(L, 1);
    const auto count = static_cast<int>(luaL_optinteger(L, 2, 1));
    const auto delay = static_cast<int>(luaL_optinteger(L, 3, 0));
    luaL_argcheck(L, count >= 0 && count <= 1'000'000, 2, "out of range");
    luaL_argcheck(L, delay >= 0 && delay <= kMaxWait, 3, "0 to 60000 milliseconds");
    return Run(L, [=](Terminal& terminal, LuaAnswer& answer) {
        const auto fault = FaultByName(name);
        if (!fault) return answer.Fail("unknown fault: delay, error, failure, garbage, silence or none");
        terminal.GetBroker().PlanFault(*fault, count, std::chrono::milliseconds(delay));
        answer.Add(true);
    });
}

int BrokerStats(lua_State* L) {
    return Run(L, [](Terminal& terminal, LuaAnswer& answer) {
        const Broker::Stats stats = terminal.GetBroker().GetStats();
        CUIData record;
        record.SetData("requests", stats.requests);
        record.SetData("answers", stats.answers);
        record.SetData("notices", stats.notices);
        record.SetData("pushes", stats.pushes);
        record.SetData("quote_rows", stats.quoteRows);
        for (const auto& [type, count] : stats.requestsByType) record.SetData(std::to_string(type), count);
        answer.Add(record);
    });
}

constexpr luaL_Reg kFunctions[] = {
    {"books", Books},
    {"holdings", Holdings},
    {"trade", Trade},
    {"set_price", SetPrice},
    {"set_market_volume", SetMarketVolume},
    {"warn_of_risk", WarnOfRisk},
    {"replay", Replay},
    {"come_online", ComeOnline},
    {"fault", PlanFault},
    {"broker_stats", BrokerStats},
};

}  // namespace

std::span<const luaL_Reg> BrokerFunctions() { return kFunctions; }

}  // namespace terminal
