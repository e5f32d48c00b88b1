// The functions of the table "terminal" that are about securities and quotes.
#include <algorithm>

#include "base/text.h"
#include "host/function_steps.h"
#include "page/page_view.h"

namespace terminal {
namespace {

using luadui::CUIData;

// Lines "code<tab>market<tab>name", UTF-8; others are passed over.
std::vector<ListedSecurity> ParseSecurities(std::string_view text) {
    std::vector<ListedSecurity> securities;
    for (const std::string_view line : luadui::SplitText(text, '\n')) {
        const auto parts = luadui::SplitText(line, '\t');
        if (parts.size() == 3 && !parts[0].empty())
            securities.push_back({std::string(parts[0]), std::string(parts[1]), luadui::Utf8ToGbk(parts[2])});
    }
    return securities;
}

void AddSide(CUIData& record, const std::string& name, const Quote::Side& side) {
    for (size_t i = 0; i < side.size(); ++i) {
        record.SetData(name + std::to_string(i + 1), MillsText(side[i].price));
        record.SetData(name + "_volume" + std::to_string(i + 1), std::to_string(side[i].volume));
    }
}

CUIData RecordOf(const Quote& quote) {
    CUIData record;
    record.SetData("code", quote.security.code);
    record.SetData("market", quote.security.market);
    record.SetData("name", quote.security.name);
    record.SetData("previous_close", MillsText(quote.previousClose));
    record.SetData("limit_up", MillsText(quote.limitUp));
    record.SetData("limit_down", MillsText(quote.limitDown));
    record.SetData("open", MillsText(quote.open));
    record.SetData("high", MillsText(quote.high));
    record.SetData("low", MillsText(quote.low));
    record.SetData("last", MillsText(quote.last));
    record.SetData("volume", std::to_string(quote.volume));
    record.SetData("last_trade", std::to_string(quote.lastTrade));
    record.SetData("turnover", CentsText(quote.turnover));
    record.SetData("suspended", quote.isSuspended);
    AddSide(record, "buy", quote.buy);
    AddSide(record, "sell", quote.sell);
    return record;
}

int ListSecurities(lua_State* L) {
    size_t size = 0;
    const char* const text = luaL_checklstring(L, 1, &size);
    return Run(L, [=](Terminal& terminal, LuaAnswer& answer) {
        auto securities = ParseSecurities({text, size});
        answer.Add(static_cast<double>(securities.size()));
        terminal.GetBroker().ListSecurities(std::move(securities));
    });
}

int FeedQuotes(lua_State* L) {
    const auto rows = static_cast<int>(luaL_checkinteger(L, 1));
    luaL_argcheck(L, rows >= 0 && rows <= QuoteFeed::kMostRows, 1, "out of range");
    return Run(L, [=](Terminal& terminal, LuaAnswer&) { terminal.GetBroker().FeedQuotes(rows); });
}

int Quotes(lua_State* L) {
    return Run(L, [](Terminal& terminal, LuaAnswer& answer) {
        std::vector<CUIData> records;
        for (const Quote& quote : terminal.GetBroker().Quotes()) records.push_back(RecordOf(quote));
        answer.Add(std::move(records));
    });
}

int LoadCodeList(lua_State* L) {
    const char* const path = luaL_optstring(L, 1, nullptr);
    return Run(L, [=](Terminal& terminal, LuaAnswer& answer) {
        const auto load = terminal.GetLibrary().initKeyFairy;
        if (!load) return answer.Fail("the library is not attached");
        AddOutcome(answer, load(path) == 0, "no thread could be started");
    });
}

int CodeListChanged(lua_State* L) {
    return Run(L, [](Terminal& terminal, LuaAnswer& answer) {
        const auto tell = terminal.GetLibrary().handleKeyboard;
        if (!tell) return answer.Fail("the library is not attached");
        answer.Add(static_cast<double>(tell(0, 0, 0, 0)));
    });
}

// The exported functions that write a text: called for its length, then for the text.
using GetText = unsigned int (*)(const char*, char*, const char*, unsigned int);

int AnswerText(lua_State* L, GetText Library::*function) {
    const char* const code = luaL_checkstring(L, 1);
    const char* const other = luaL_checkstring(L, 2);
    return Run(L, [=](Terminal& terminal, LuaAnswer& answer) {
        const GetText get = terminal.GetLibrary().*function;
        if (!get) return answer.Fail("the library is not attached");
        std::string text(get(code, nullptr, other, 0), '\0');
        text.resize(
            std::min<size_t>(text.size(), get(code, text.data(), other, static_cast<unsigned>(text.size()))));
        answer.Add(luadui::GbkToUtf8(text));
    });
}

int SecurityName(lua_State* L) { return AnswerText(L, &Library::getSecurityName); }

int SecurityMarket(lua_State* L) { return AnswerText(L, &Library::getMarket); }

int ProbeUi(lua_State* L) {
    const auto window = static_cast<int>(luaL_checknumber(L, 1));
    return Run(L, [=](Terminal& terminal, LuaAnswer&) { terminal.Probe().Start(HandleOfNumber(window)); });
}

int Probed(lua_State* L) {
    return Run(L, [](Terminal& terminal, LuaAnswer& answer) {
        const UiProbe::Result result = terminal.Probe().Stop();
        CUIData record;
        record.SetData("probes", result.probes);
        record.SetData("longest", result.longest);
        record.SetData("above10", result.above10);
        answer.Add(record);
    });
}

constexpr luaL_Reg kFunctions[] = {
    {"list_securities", ListSecurities},
    {"feed_quotes", FeedQuotes},
    {"quotes", Quotes},
    {"load_code_list", LoadCodeList},
    {"code_list_changed", CodeListChanged},
    {"security_name", SecurityName},
    {"security_market", SecurityMarket},
    {"probe_ui", ProbeUi},
    {"probed", Probed},
};

}  // namespace

std::span<const luaL_Reg> QuoteFunctions() { return kFunctions; }

}  // namespace terminal
