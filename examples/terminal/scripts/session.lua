-- The terminal as scripts see it: started in the right order, with the library's Lua functions and the host's own side
-- by side. Texts in and out are UTF-8; the library takes code page 936.
local session = {
    settings_file = "\\qsclient\\users\\user.cfg",
    fund_library = "/fundpage.dll", -- a library's name, below the program's folder
    data_library = "/datapage.dll",
    account_library = "/accountpage.dll",
    luadui = nil, -- the library's Lua functions, once started
    default_count = 3000, -- securities, of the list that comes with the terminal
    search_page = "搜索",
    quote_library = "/quotepage.dll",
    securities = {}, -- those of the list: {code, name, market, pinyin}
    market = nil, -- what became of the market database: {count, made, left_out}, or nil
    market_fault = nil, -- and why not
    started_in = nil, -- milliseconds
}

local to_codepage, to_utf8 = terminal.to_codepage, terminal.to_utf8

-- The broker has quotes of what is in the list.
local function list_at_broker()
    local lines = {}
    for i, security in ipairs(session.securities) do
        lines[i] = security.code .. "\t" .. security.market .. "\t" .. security.name
    end
    if #lines > 0 then terminal.list_securities(table.concat(lines, "\n")) end
end

function session.start(options)
    local csv = options.securities ~= "" and options.securities or options.home .. "/data/securities_list.csv"
    local database = require "market_database"
    local count = options.securities_count
    if count == 0 and options.securities == "" then count = session.default_count end
    local read, fault = database.read(csv, count)
    session.market_fault = fault
    if read then
        session.securities = read.list
        session.market, session.market_fault = database.make(options.data .. "/market.db", read)
    end

    local began = terminal.ms()
    local loaded, luadui = pcall(require, "luadui")
    if not loaded then return nil, luadui end
    session.luadui = type(luadui) == "table" and luadui or package.loaded.luadui
    local attached, reason = terminal.attach()
    if not attached then return nil, reason end
    list_at_broker()
    local thread, why = terminal.start_ui()
    if not thread then return nil, why end
    session.ui_thread = thread
    session.luadui.on_set_hWnd(terminal.window())
    if session.market then session.luadui.on_init_marketcodelist("") end
    session.started_in = terminal.ms() - began
    return true
end

-- Serves the host window until `done()` answers something true, which it returns; nil after `limit` milliseconds.
function session.wait(done, limit)
    local finish = terminal.ms() + (limit or 5000)
    repeat
        terminal.pump(0)
        local result = done()
        if result then return result end
        terminal.pump(20)
    until terminal.ms() > finish
    return nil
end

-- Serves the host window for that many milliseconds.
function session.idle(milliseconds) session.wait(function() return false end, milliseconds) end

-- What the page shows: {text, asleep, focused, width, height, queries, answers, errors, unreadable}; nil while nothing.
function session.view(page)
    local view = terminal.page_view(to_codepage(page))
    if view then view.text = to_utf8(view.text) end
    return view
end

-- The rows of a table that a data page shows, each {column = text}: of a kind and an account, or of all accounts ("").
-- Nil when it has none.
function session.table_of(page, kind, account)
    local rows = terminal.page_table(to_codepage(page), account == "" and kind or kind .. " " .. account)
    for _, row in ipairs(rows or {}) do
        for column, text in pairs(row) do row[column] = to_utf8(text) end
    end
    return rows
end

-- Opens a page for an account; true when its window was created.
function session.open_page(page, fund_token, library)
    return session.luadui.on_init(to_codepage(page), library or session.fund_library,
                                  "fund_token=" .. fund_token .. ";user=demo", terminal.window(), 0, 0, 0, true)
end

-- Opens a page that gets data by name; `info` is its init string (see page/data_page.h).
function session.open_data_page(page, info)
    return session.luadui.on_init(to_codepage(page), session.data_library, to_codepage(info), terminal.window(), 0, 0, 0, true)
end

-- Opens a page of quotes and searches; `codes` are its first securities, "600000:17" each (see page/quote_page.h).
function session.open_quote_page(page, codes)
    return session.luadui.on_init(to_codepage(page), session.quote_library, "codes=" .. (codes or ""), terminal.window(), 0, 0,
                                  0, true)
end

-- What it is to do: {["do"] = "show", codes = "600000:17,600036:17"}...
function session.quote_command(page, command)
    session.luadui.on_error("quotepage:" .. to_codepage(page), to_codepage(session.json_of(command)))
end

-- Lets the page session.search_page search: answers its tables "lookups" and "candidates" (see page/security_search.h); nil
-- when nothing came in time. Opens the page when it is not there yet.
function session.search(queries, most)
    local page = session.search_page
    if not session.luadui.get_login_info(to_codepage(page)) then session.open_quote_page(page) end
    session.quote_command(page, {["do"] = "search", queries = table.concat(queries, "|"), max = most})
    local lookups = session.wait(function()
        local rows = session.table_of(page, "lookups", "")
        return rows and #rows == #queries and rows[1].query == queries[1] and rows[#rows].query == queries[#rows] and rows
    end)
    if lookups then return lookups, session.table_of(page, "candidates", "") or {} end
end

-- Opens the page that hears of accounts and signs its user in (see page/account_page.h).
function session.open_account_page(page, info)
    return session.luadui.on_init(to_codepage(page), session.account_library, to_codepage(info), terminal.window(), 0, 0, 0, true)
end

function session.sleep(page, asleep) session.luadui.on_switchtab(to_codepage(page), asleep and 1 or 0) end

-- An object of texts and numbers.
function session.json_of(fields)
    local members = {}
    for name, value in pairs(fields) do
        local text = type(value) == "number" and tostring(value) or
                         '"' .. value:gsub('[%c"\\]', function(c) return ("\\u%04x"):format(c:byte()) end) .. '"'
        members[#members + 1] = ('"%s":%s'):format(name, text)
    end
    return "{" .. table.concat(members, ",") .. "}"
end

-- The host's message to the page, through its page sign.
function session.tell(page, text)
    session.luadui.on_error("fundpage:" .. to_codepage(page), to_codepage(session.json_of({message = text})))
end

-- What a data page is to do: {["do"] = "ask", kind = "fund"...}.
function session.command(page, command)
    session.luadui.on_error("datapage:" .. to_codepage(page), to_codepage(session.json_of(command)))
end

-- A data page sends an order (1101): {fund_token, stock_code, entrust_type = "buy" or "sell", entrust_amount, entrust_price},
-- all texts; without a price it is one at the last price.
function session.order(page, fields)
    fields["do"], fields.kind = "send", "create_entrust"
    session.command(page, fields)
end

-- It takes back an order (1151).
function session.cancel(page, fund_token, order)
    session.command(page, {["do"] = "send", kind = "entrust_cancel", fund_token = fund_token, OrderID = order})
end

-- The next report of a record that a data page received, {page, kind, accounts, why, rows, code, message}; nil when there
-- is none.
function session.take_record()
    local record = terminal.take_record()
    if record then
        record.bytes = record.message -- as they came
        record.page, record.message = to_utf8(record.page), to_utf8(record.message)
    end
    return record
end

-- "page <- fund 880001, 3 rows (answer)"
function session.record_text(record)
    local text = ("%s <- %s"):format(record.page, record.kind)
    if record.accounts ~= "" then text = text .. " " .. record.accounts end
    if record.rows >= 0 then text = ("%s, %d rows"):format(text, record.rows) end
    text = ("%s (%s)"):format(text, record.why)
    return record.message == "" and text or text .. ": " .. record.message
end

-- Settings of the file that the library was told with use_settings, through the library. It prints what it does, in code
-- page 936; that comes back as the last result.
local function said() return (terminal.caught():gsub("%s+$", "")) end

function session.use_settings(file)
    terminal.catch_output()
    session.luadui.init_config(file)
    return said()
end

function session.write_setting(key, value)
    terminal.catch_output()
    session.luadui.set_config(to_codepage(key), to_codepage(value))
    return said()
end

function session.read_setting(key)
    terminal.catch_output()
    local value = session.luadui.get_config(to_codepage(key))
    return to_utf8(value), said()
end

-- How many requests of this type reached the broker.
function session.requests(request_type) return terminal.broker_stats()[tostring(request_type)] or 0 end

return session
