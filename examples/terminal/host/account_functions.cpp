// The functions of the table "terminal" that are about accounts.
#include "host/function_steps.h"

namespace terminal {
namespace {

using luadui::CUIData;

constexpr char kCommands[] = "cmd_accountmanager";

int AccountCommand(lua_State* L) {
    size_t size = 0;
    const char* const text = luaL_checklstring(L, 1, &size);
    return Run(L, [=](Terminal& terminal, LuaAnswer&) {
        terminal.GetNews().Tell(kCommands, std::string(text, size));
    });
}

int TakeHostCall(lua_State* L) {
    return Run(L, [](Terminal& terminal, LuaAnswer& answer) {
        const auto call = terminal.GetInterface().TakeCall();
        if (!call) return answer.AddNil();
        CUIData record;
        record.SetData("method", call->method);
        record.SetData("params", call->params);
        answer.Add(record);
    });
}

int DeskAccounts(lua_State* L) {
    const char* user = luaL_checkstring(L, 1);
    return Run(L, [=](Terminal& terminal, LuaAnswer& answer) {
        std::vector<CUIData> records;
        for (const DeskAccount& account : terminal.GetBroker().Desk(user).accounts) {
            CUIData record;
            record.SetData("key", account.code + "|" + account.broker + "|" + account.tradeType);
            record.SetData("code", account.code);
            record.SetData("alias", account.alias);
            record.SetData("mark", account.mark);
            record.SetData("order", account.order);
            record.SetData("bound", account.isBound);
            record.SetData("online", account.isOnline);
            record.SetData("portfolios", static_cast<int>(account.portfolios.size()));
            records.push_back(record);
        }
        answer.Add(std::move(records));
    });
}

int DeskGroups(lua_State* L) {
    const char* user = luaL_checkstring(L, 1);
    return Run(L, [=](Terminal& terminal, LuaAnswer& answer) {
        std::vector<CUIData> records;
        for (const DeskGroup& group : terminal.GetBroker().Desk(user).groups) {
            std::string members;
            for (const std::string& member : group.members) members += (members.empty() ? "" : ",") + member;
            CUIData record;
            record.SetData("id", group.id);
            record.SetData("name", group.name);
            record.SetData("members", members);
            records.push_back(record);
        }
        answer.Add(std::move(records));
    });
}

int ChangePassword(lua_State* L) {
    const char* const user = luaL_checkstring(L, 1);
    const char* const key = luaL_checkstring(L, 2);
    const char* const password = luaL_checkstring(L, 3);
    return Run(L, [=](Terminal& terminal, LuaAnswer& answer) {
        AddOutcome(answer, terminal.GetBroker().ChangePassword(user, key, password), "no such account");
    });
}

constexpr luaL_Reg kFunctions[] = {
    {"account_command", AccountCommand}, {"take_host_call", TakeHostCall},    {"desk_accounts", DeskAccounts},
    {"desk_groups", DeskGroups},         {"change_password", ChangePassword},
};

}  // namespace

std::span<const luaL_Reg> AccountFunctions() { return kFunctions; }

}  // namespace terminal
