-- The life of accounts: from the first query to logout, with groups, units and orders, on the way wrong passwords, and a
-- desk that trades on credit.
local steps = require "steps"
local json = require "cjson"
local step = steps.step

local accounts = {}
local PAGE, KEY, ORDER_PAGE = "账户", "demo_answer", "账户排序"
local LI, WANG, CHEN = "1001|8|1", "1002|8|1", "1003|8|1"

-- They are searched for afterwards, by what all have in common, and must be found nowhere.
local PASSWORD = {li = "Plant3d-Li#7", tx = "Plant3d-Tx!2", wang = "Plant3d-Wang#4", chen = "Plant3d-Chen#9",
                  credit = "Plant3d-Credit#3", new = "Plant3d-New|8", zhao = "Plant3d-Zhao#5", wrong = "Plant3d-wrong"}
local CREDIT, ZHAO = "1001|8|2", "2002|8|2"
local ALL, GROUPS, ORDER, STATUS = "ClientAccountChanged: ", "CLIENT_ACCOUNTGROUP_CHANGED: ",
    "ClientAccountOrderChanged: ", "CLIENT_MODIFY_ACCOUNT_STATUS: "

function accounts.run(session)
    local last_bytes = "" -- of the last list of accounts, in code page 936
    local to_codepage, to_utf8, object = terminal.to_codepage, terminal.to_utf8, session.json_of

    local function command(name, params)
        terminal.account_command(to_codepage(object({cmd = name, params = object(params or {}), key = KEY, uuid = name})))
    end

    -- "host addaccount: 1001|8|1=login"
    local function call_text(call)
        local params = json.decode(to_utf8(call.params))
        if call.method == "OnAccountGroupChanged" then
            local group = params.groupInfo
            return ("host %s: %s %s %s"):format(params.action, group.groupid, group.groupname, group.accountList)
        end
        if call.method ~= "OnAccountChanged" then return nil end
        local list = {}
        for i, account in ipairs(params.accountList) do
            list[i] = (account.accountkey or account.fund_token) .. "=" .. account.state
        end
        return ("host %s: %s"):format(params.action, table.concat(list, ","))
    end

    -- Does `act`, then collects what the page and the host are told: each of the texts must be the beginning of one thing
    -- told, and nothing else may come within 300 ms. Answers whether it was exactly that, and says what came.
    local function check(expected, act)
        local seen, missing, good = {}, {}, true
        for i, text in ipairs(expected) do missing[i] = text end
        local function take(text)
            for i, wanted in ipairs(missing) do
                if text:sub(1, #wanted) == wanted then
                    seen[#seen + 1] = text
                    return table.remove(missing, i)
                end
            end
            seen[#seen + 1], good = text .. "  NOT EXPECTED", false
        end
        local function collect()
            for record in session.take_record do
                local kind = record.kind == KEY and "answer" or record.kind
                if record.kind .. ": " == ALL then last_bytes = record.bytes end
                if record.page == PAGE then take(kind .. ": " .. record.message) end
            end
            for call in terminal.take_host_call do
                local text = call_text(call)
                if text then take(text) end
            end
            return #missing == 0
        end
        act()
        session.wait(collect)
        session.idle(300)
        collect()
        for _, text in ipairs(missing) do seen[#seen + 1] = text .. "  MISSING" end
        return good and #missing == 0, table.concat(seen, "\n              ")
    end

    local function at_broker(user, key)
        for _, account in ipairs(terminal.desk_accounts(user)) do
            if account.key == key then return account end
        end
        return {}
    end
    local function group_at_broker(id)
        for _, group in ipairs(terminal.desk_groups("demo")) do
            if group.id == id then return to_utf8(group.members) end
        end
    end

    while session.take_record() do end
    while terminal.take_host_call() do end

    step("A user signs in", "accounts and groups are asked for; no password is remembered, so nobody is logged in",
         function()
        local unknown = ALL .. "1001|8|1 李明_样例证券 [默认单元] 密码为空; 1002|8|1 王芳_样例证券 [默认单元] 密码为空"
        return check({GROUPS .. '1 核心 ["1001"]', unknown, unknown, "host login: 1001|8|1=logout,1002|8|1=logout"},
                     function()
            session.open_account_page(PAGE, "user=demo;id=1;hear=ClientAccountChanged,CLIENT_ACCOUNTGROUP_CHANGED," ..
                                          "ClientAccountOrderChanged,CLIENT_MODIFY_ACCOUNT_STATUS," .. KEY)
        end)
    end)

    step("A wrong password", "the broker decrypts it and refuses it; nothing changes", function()
        local good, seen = check({"answer: 301 登陆账户密码错误"}, function()
            command("editPassword", {accountkey = LI, password = PASSWORD.wrong, txpassword = PASSWORD.tx})
        end)
        return good and at_broker("demo", LI).online == false, seen
    end)

    step("The right one", "the account is logged in, here and at the broker; the host remembers the passwords", function()
        local good, seen = check({"answer: 0", ALL .. "*1001|8|1 李明_样例证券 [默认单元] 正常; 1002",
                                  STATUS .. "1001|8|1 login 正常", "host login: 1001|8|1=login"}, function()
            command("editPassword", {accountkey = LI, password = PASSWORD.li, txpassword = PASSWORD.tx})
        end)
        return good and at_broker("demo", LI).online == true, seen
    end)

    local new = {account_code = "1003", broker_id = "8", trade_type = "1", broker_name = "样例证券", account_name = "陈静"}
    step("An account is added, at first with a wrong password", "the broker refuses it, then it is there and logged in",
         function()
        local good, seen = check({"answer: 301 添加账户密码错误"}, function()
            new.password = PASSWORD.wrong
            command("addAccount", new)
        end)
        local added, more = check({"answer: 0", ALL .. "*1001", "host addaccount: 1003|8|1=login",
                                   ORDER .. "1001|8|1=1; 1002|8|1=2; 1003|8|1=3"}, function()
            new.password = PASSWORD.chen
            command("addAccount", new)
        end)
        return good and added and at_broker("demo", CHEN).online == true, seen .. "\n              " .. more
    end)

    step("An account is bound, edited and unbound", "a second unbinding is refused without asking the broker", function()
        local good, seen = check({"answer: 0", ALL .. "*1001|8|1 李明_样例证券 [默认单元] 正常; 1002|8|1 王芳_样例证券 bound"},
                                 function() command("bindAccount", {accountkey = WANG}) end)
        local bound = at_broker("demo", WANG).bound
        local edited, seen2 = check({"answer: 0", ALL .. "*1001|8|1 李明_样例证券 [默认单元] 正常; 1002|8|1 王芳一号(自营) bound"},
                                    function()
            command("editAccount", {accountkey = WANG, accountmark = "自营", nickname = "王芳一号"})
        end)
        local unbound, seen3 = check({"answer: 0", ALL .. "*1001|8|1 李明_样例证券 [默认单元] 正常; 1002|8|1 王芳一号(自营) ["},
                                     function() command("unbindAccount", {accountkey = WANG}) end)
        local refused, seen4 = check({"answer: -8989 解绑账户，未绑定！"}, function()
            command("unbindAccount", {accountkey = WANG})
        end)
        local account = at_broker("demo", WANG)
        return good and edited and unbound and refused and bound == true and account.bound == false and
                   to_utf8(account.mark) == "自营", table.concat({seen, seen2, seen3, seen4}, "\n              ")
    end)

    step("A group is made and filled", "an answer at once, then one for each account; the host hears of each", function()
        local good, seen = check({"answer: 0", GROUPS .. '1 核心 ["1001"]; 9 打新 []', "host addgroup: 9 打新 []"}, function()
            command("addAccountGroup", {groupid = "9", groupname = "打新", grouptype = "1", issimulate = "0"})
        end)
        local filled, seen2 = check({"answer: 0 操作成功！", "answer: 0", "answer: 0",
                                     GROUPS .. '1 核心 ["1001"]; 9 打新 ["1001"]', "host addaccount: 9 打新 [\"1001\"]",
                                     GROUPS .. '1 核心 ["1001"]; 9 打新 ["1001","1003"]',
                                     "host addaccount: 9 打新 [\"1001\",\"1003\"]"}, function()
            command("addAccountToGroup", {groupid = "9", accountlist = '["1001","1003"]'})
        end)
        return good and filled and group_at_broker("9") == "1001,1003", seen .. "\n              " .. seen2
    end)

    step("The group is put in order, emptied by one and deleted", "the broker follows", function()
        local good, seen = check({"answer: 0", GROUPS .. '1 核心 ["1001"]; 9 打新 ["1003","1001"]'}, function()
            command("modifyOrderInGroup", {curGroupID = "9", GrpAccountOrder = "[1003|8|1=1;1001|8|1=2;]"})
        end)
        local emptied, seen2 = check({"answer: 0 操作成功！", "answer: 0", GROUPS .. '1 核心 ["1001"]; 9 打新 ["1003"]',
                                      "host delaccount: 9 打新 [\"1003\"]"}, function()
            command("deleteAccountFromGroup", {groupid = "9", accountlist = '["1001"]'})
        end)
        local members = group_at_broker("9")
        local deleted, seen3 = check({"answer: 0", GROUPS .. '1 核心 ["1001"]', "host delgroup: 9 打新"}, function()
            command("deleteAccountGroup", {groupid = "9"})
        end)
        return good and emptied and deleted and members == "1003" and group_at_broker("9") == nil,
               table.concat({seen, seen2, seen3}, "\n              ")
    end)

    step("A unit is added to an account", "the account has two, at the broker too", function()
        local good, seen = check({"answer: 0", ALL .. "*1001|8|1 李明_样例证券 [默认单元,量化单元]"}, function()
            command("add_portfolio", {accountkey = LI, portfolio_name = "量化单元"})
        end)
        return good and at_broker("demo", LI).portfolios == 2, seen
    end)

    step("The accounts get another order", "pages hear of it when told so; the settings have it, and soon the broker", function()
        local good, seen = check({"answer: 0 操作成功！"}, function()
            command("modifyAccountOrder", {accountorder = "[1003|8|1=1;1001|8|1=2;1002|8|1=3;]"})
        end)
        local told, seen2 = check({"answer: 0 操作成功！", ORDER .. "1003|8|1=1; 1001|8|1=2; 1002|8|1=3"}, function()
            command("notifyOrderToPage")
        end)
        local saved = session.wait(function() return at_broker("demo", WANG).order == "3" end)
        local file = io.open(terminal.options().data .. "/qsclient/users/order.cfg", "rb")
        local text = file and file:read("*a") or ""
        if file then file:close() end
        return good and told and saved == true and text:find("1003|8|1", 1, true) ~= nil,
               table.concat({seen, seen2, "order.cfg: " .. text:gsub("%s+$", ""), "at the broker: " .. tostring(saved)},
                            "\n              ")
    end)

    step("An account is logged out, then in again", "its password is wiped, and comes back from the host", function()
        local good, seen = check({"answer: 0", ALL .. "*1003|8|1 陈静_样例证券 [默认单元] 正常; 1001|8|1 李明",
                                  STATUS .. "1001|8|1 logout 手动注销", "host logout: 1001|8|1=logout"}, function()
            command("logoutAccount", {accountkey = LI})
        end)
        local out = at_broker("demo", LI).online
        local back, seen2 = check({"answer: 0", ALL .. "*1003|8|1 陈静_样例证券 [默认单元] 正常; *1001|8|1 李明",
                                   "host refresh: "}, function()
            command("refreshSelAccountList", {accountkeys = LI})
        end)
        return good and back and out == false and at_broker("demo", LI).online == true, seen .. "\n              " .. seen2
    end)

    step("Pages ask", "for the accounts, the groups and the order: as commands, and the order as data (1801); nothing is sent",
         function()
        local before = terminal.broker_stats().requests - session.requests(1466)
        local order = "1003|8|1=1; 1001|8|1=2; 1002|8|1=3"
        local good, seen = check({"answer: 0 *1003|8|1 陈静_样例证券 [默认单元] 正常; *1001|8|1 李明_样例证券 " ..
                                      "[默认单元,量化单元] 正常; 1002|8|1 王芳一号(自营) [默认单元] 密码为空",
                                  'answer: 0 1 核心 ["1001"]', "answer: 0 " .. order}, function()
            for _, name in ipairs({"getAccountList", "getGroupList", "queryOrderFromPage"}) do command(name) end
        end)
        session.open_data_page(ORDER_PAGE, "kinds=all_account_order")
        local rows = session.wait(function() return session.table_of(ORDER_PAGE, "all_account_order", "") end) or {}
        local texts = {}
        for i, row in ipairs(rows) do texts[i] = row.AccountKey .. "=" .. row.AccountOrder end
        local sent = terminal.broker_stats().requests - session.requests(1466) - before
        local text = table.concat(texts, "; ")
        return good and text == order and sent == 0, ("%s\n              1801: %s; %d requests sent"):format(seen, text, sent)
    end)

    step("A password that was changed elsewhere", "the accounts are refreshed (1807): the broker refuses the old one, in its own " ..
         "bytes; the other account stays; the new one logs in again", function()
        assert(terminal.change_password("demo", LI, PASSWORD.new))
        local good, seen = check({"answer: 0", ALL .. "*1003|8|1 陈静_样例证券 [默认单元] 正常; *1001|8|1 李明_样例证券 " ..
                                      "[默认单元,量化单元] 密码错误", "host refresh: 1003|8|1=login,1001|8|1=logout"}, function()
            command("refreshSelAccountList", {accountkeys = LI .. ";" .. CHEN})
        end)
        local as_bytes = last_bytes:find("\195\220\194\235\180\237\206\243;", 1, true) ~= nil
        local out, other = at_broker("demo", LI).online, at_broker("demo", CHEN).online
        local back, seen2 = check({"answer: 0", ALL .. "*1003|8|1 陈静_样例证券 [默认单元] 正常; *1001|8|1 李明_样例证券 " ..
                                       "[默认单元,量化单元] 正常", STATUS .. "1001|8|1 login 正常",
                                   "host login: 1001|8|1=login"}, function()
            command("editPassword", {accountkey = LI, password = PASSWORD.new, txpassword = PASSWORD.tx})
        end)
        return good and back and out == false and other == true and as_bytes and at_broker("demo", LI).online == true,
               seen .. "\n              " .. seen2
    end)

    step("An account is deleted", "pages, host and broker follow", function()
        local good, seen = check({"answer: 0", ALL .. "*1001|8|1", "host delaccount: 1003|8|1=logout"}, function()
            command("deleteAccount", {accountkey = CHEN})
        end)
        return good and at_broker("demo", CHEN).key == nil, seen
    end)

    step("A desk signs in that trades for others (PB_MODE)", "the accounts and groups of the user before are gone, then come those of the desk", function()
        session.use_settings("\\qsclient\\system\\systemset.cfg")
        session.write_setting("RunMode", "PB_MODE")
        session.use_settings(session.settings_file)
        local unknown = ALL .. "1001|8|1 李明_样例证券 [默认单元] 密码为空; 1001|8|2"
        return check({ALL, GROUPS, GROUPS, unknown, unknown, "host login: "}, function()
            session.luadui.on_error("accountpage:" .. to_codepage(PAGE), object({user = "desk", id = "2"}))
        end)
    end)

    step("Credit accounts, with and without the ordinary one", "the one goes out with both passwords and is logged in; " ..
         "the other is refused here", function()
        local seen, good = {}, true
        for _, login in ipairs({{LI, "li"}, {CREDIT, "credit"}, {ZHAO, "zhao"}}) do
            local key, password = unpack(login)
            local fine, text = check({"answer: 0", ALL, STATUS .. key .. " login 正常", "host login: "}, function()
                command("editPassword", {accountkey = key, password = PASSWORD[password], txpassword = PASSWORD.tx})
            end)
            good, seen[#seen + 1] = good and fine, text
        end
        local fine, text = check({STATUS .. ZHAO .. " logout 未获取到信用账户对应的普通账户", "host modifystatus: ", "answer: 0",
                                  ALL, "host refresh: "}, function()
            command("refreshSelAccountList", {accountkeys = LI .. ";" .. CREDIT .. ";" .. ZHAO})
        end)
        seen[#seen + 1] = text
        return good and fine and at_broker("desk", CREDIT).online == true, table.concat(seen, "\n              ")
    end)
end

return accounts
