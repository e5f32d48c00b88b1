-- The prompt: the steps of the scenario by hand.
local tables, accounting = require "tables", require "accounting"
local prompt = {}

-- Words of a line; a part in double quotes is one word.
local function words_of(line)
    local words, position = {}, 1
    while true do
        position = line:find("%S", position)
        if not position then return words end
        local from, to, word = line:find('^"([^"]*)"', position)
        if not from then from, to, word = line:find("^(%S+)", position) end
        words[#words + 1] = word
        position = to + 1
    end
end

local function number_of(text, what)
    local number = tonumber(text)
    if not number then error({text = what .. " must be a number, not \"" .. text .. "\""}, 0) end
    return number
end

-- The failure of an operation, nil and a text, as an error of the command.
local function checked(result, reason)
    if not result then error({text = reason or "it failed"}, 0) end
    return result
end

local function check_page(session, page) checked(session.luadui.get_login_info(terminal.to_codepage(page)),
                                                 "there is no page " .. page) end

-- Each command: its arguments (those in brackets may be left out), what it does, and how. What it answers is printed.
local commands = {
    {"accounts", "", "the broker's accounts", function()
        for _, account in ipairs(terminal.books()) do
            print(("  %-8s  %s"):format(account.fund_token, account.customer))
        end
    end},
    {"open", "PAGE ACCOUNT [LIBRARY]", "open a page for an account", function(session, page, account, library)
        checked(session.open_page(page, account, library), "the page cannot be created; log/luadui.log says why")
        session.idle(200)
        return "page " .. page .. " is open; \"show " .. page .. "\" shows it"
    end},
    {"data", "PAGE KINDS ACCOUNTS [GROUP]", "open a page of data kinds, e.g. data 总览 fund,position 880001,880002",
     function(session, page, kinds, accounts, group)
        local info = ("kinds=%s;fund_token=%s;group=%s;hear=messagecenter"):format(kinds, accounts, group or "")
        checked(session.open_data_page(page, info), "the page cannot be created; log/luadui.log says why")
        session.idle(200)
        return "page " .. page .. " is open; what it receives is printed as it comes"
    end},
    {"ask", "PAGE KIND [fresh]", "let a data page ask for a kind", function(session, page, kind, fresh)
        check_page(session, page)
        session.command(page, {["do"] = "ask", kind = kind, refresh = fresh and 1 or 0})
        session.idle(200)
    end},
    {"show", "PAGE", "what a page shows", function(session, page)
        check_page(session, page)
        local view = checked(session.view(page), "the page has shown nothing yet")
        print(view.text)
        print(("  %s; %d queries, %d answers, %d errors, %d unreadable"):format(
                  view.asleep and "asleep" or "awake", view.queries, view.answers, view.errors, view.unreadable))
    end},
    {"sleep", "PAGE", "put a page to sleep (off the screen)", function(session, page)
        check_page(session, page)
        session.sleep(page, true)
        return "asleep: what changes now is asked for when it wakes"
    end},
    {"wake", "PAGE", "wake it", function(session, page)
        check_page(session, page)
        session.sleep(page, false)
        return "awake"
    end},
    {"focus", "TEXT", "focus the pages whose login information contains a text", function(session, text)
        session.luadui.on_setfocus(terminal.to_codepage(text))
        return "told to the pages"
    end},
    {"tell", "PAGE TEXT", "send a page a message from the host", function(session, page, text)
        check_page(session, page)
        session.tell(page, text)
        return "sent"
    end},
    {"trade", "ACCOUNT CODE SHARES", "buy (or, below 0, sell) at the broker: the account changes",
     function(_, account, code, shares)
        checked(terminal.trade(account, code, number_of(shares, "SHARES")))
        return "done: whoever asked for this account is told that it changed"
    end},
    {"order", "PAGE ACCOUNT CODE SHARES [PRICE]", "let a data page send an order (below 0: sell); at the last price if none is given",
     function(session, page, account, code, shares, price)
        check_page(session, page)
        local volume = number_of(shares, "SHARES")
        session.order(page, {fund_token = account, stock_code = code, entrust_type = volume < 0 and "sell" or "buy",
                             entrust_amount = ("%.0f"):format(math.abs(volume)), entrust_price = price})
        session.idle(200)
    end},
    {"cancel", "PAGE ACCOUNT ORDER", "let it take back an order, W1 for instance", function(session, page, account, order)
        check_page(session, page)
        session.cancel(page, account, order)
        session.idle(200)
    end},
    {"price", "CODE PRICE", "move the market: orders that it reaches are filled", function(_, code, price)
        checked(terminal.set_price(code, price))
        return "the last price of " .. code .. " is " .. price
    end},
    {"books", "", "what the broker's own books say", function()
        local lines = {}
        for i, books in ipairs(terminal.books()) do lines[i] = accounting.line(books.fund_token, books) end
        print(tables.text(accounting.columns, lines, "  "))
    end},
    {"search", "TEXT [MOST]", "find securities by a part of code, initials or name", function(session, text, most)
        local lookups, candidates = session.search({text}, number_of(most or "10", "MOST"))
        checked(lookups, "no answer of the page " .. session.search_page)
        print(tables.text({{"代码", "code"}, {"名称", "name"}, {"市场", "market"}, {"拼音", "phonetic"}, {"匹配", "match"},
                           {"", "matched"}}, candidates, "  "))
        local first = lookups[1]
        return first.found == "1" and ("first in key order: %s in market %s"):format(first.name, first.market) or
                   "nothing matches"
    end},
    {"quotes", "PAGE CODE...", "show quotes on a page, e.g. quotes 自选 600000:17,300750:33", function(session, page, codes)
        if not session.luadui.get_login_info(terminal.to_codepage(page)) then
            checked(session.open_quote_page(page), "the page cannot be created; log/luadui.log says why")
        end
        session.quote_command(page, {["do"] = "show", codes = codes})
        session.idle(200)
        return "\"feed 1000\" lets them move, \"show " .. page .. "\" shows them"
    end},
    {"feed", "ROWS", "let the broker push so many rows of quotes a second; 0 ends it", function(_, rows)
        terminal.feed_quotes(number_of(rows, "ROWS"))
        return "told to the broker"
    end},
    {"fault", "KIND [COUNT] [MS]", "the next answers: delay, error, failure, garbage, silence; none forgets them",
     function(_, kind, count, milliseconds)
        checked(terminal.fault(kind, number_of(count or "1", "COUNT"), number_of(milliseconds or "500", "MS")))
        return kind == "none" and "no faults are planned" or "planned"
    end},
    {"get", "KEY", "read a setting of user.cfg", function(session, key)
        session.use_settings(session.settings_file)
        local value = session.read_setting(key)
        return key .. " = " .. value
    end},
    {"set", "KEY VALUE", "write one", function(session, key, value)
        session.use_settings(session.settings_file)
        session.write_setting(key, value)
        return "written to " .. session.settings_file
    end},
    {"stats", "", "what the broker did, and what was dropped or refused", function()
        for _, record in ipairs({terminal.broker_stats(), terminal.counters()}) do
            local names = {}
            for name in pairs(record) do names[#names + 1] = name end
            table.sort(names)
            for _, name in ipairs(names) do print(("  %-28s %d"):format(name, record[name])) end
        end
    end},
}

local function usage(command) return command[1] .. (command[2] ~= "" and " " .. command[2] or "") end

local function help()
    for _, command in ipairs(commands) do print(("  %-34s %s"):format(usage(command), command[3])) end
    print(("  %-34s %s"):format("help", "this list"))
    print(("  %-34s %s"):format("quit", "end the terminal (or Ctrl-D)"))
end

local function find(name)
    for _, command in ipairs(commands) do if command[1] == name then return command end end
end

-- Runs one line; answers false when it is the last.
local function run_line(session, line)
    local words = words_of(line)
    local name = table.remove(words, 1)
    if not name then return true end
    if name == "quit" or name == "exit" then return false end
    if name == "help" then
        help()
        return true
    end
    local command = find(name)
    if not command then
        print("Unknown command \"" .. name .. "\". \"help\" lists the commands.")
        return true
    end
    local _, all = command[2]:gsub("%S+", "")
    local _, optional = command[2]:gsub("%[", "")
    if #words < all - optional or #words > all then
        print("Usage: " .. usage(command))
        return true
    end
    local done, answer = pcall(command[4], session, unpack(words))
    if not done then
        print("Error: " .. (type(answer) == "table" and answer.text or tostring(answer)))
    elseif answer then
        print("  " .. answer)
    end
    session.idle(50) -- what the command caused mostly arrives meanwhile
    for record in session.take_record do
        if record.why ~= "push" or not record.kind:find("^hq") then print("  " .. session.record_text(record)) end
    end
    return true
end

function prompt.run(session)
    local names = {"help", "quit"}
    for _, command in ipairs(commands) do names[#names + 1] = command[1] end
    local market = session.market and session.market.count .. " securities" or
                       "no market database (" .. session.market_fault .. ")"
    print("Sample terminal, " .. market .. ". Try: accounts, open 资金 880001, show 资金. \"help\" lists the commands.")
    repeat
        local line = terminal.read_line("terminal> ", table.concat(names, " "))
        local go_on = line and run_line(session, line)
    until not go_on
    local ended, reason = terminal.stop_ui()
    print(ended and "Ended." or "Error: " .. reason)
    return ended and 0 or 1
end

return prompt
