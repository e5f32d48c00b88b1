-- The part of the scenario with quotes: pages that show all securities or a few, awake and asleep, while the broker pushes
-- several thousand rows a second. What a page shows is compared with the broker's own quotes, field by field.
local step = require("steps").step
local tables = require "tables"
local quotes = {}

local ALL, FEW, ASLEEP = "行情", "自选", "后台行情"
-- What the exchange trades for its accounts.
local TRADED = {"600000:17", "600036:17", "601398:17", "000333:33", "688981:145"}
local RATE, DURATION = 5000, 4000 -- rows a second, milliseconds

-- Page field -> broker's, compared as numbers.
local FIELDS = {PriceZxjg = "last", PriceZrsp = "previous_close", KaiPan = "open", ZuiGao = "high", ZuiDi = "low",
                PriceZtjg = "limit_up", PriceDtjg = "limit_down", TotalAmount = "volume", TotalMoney = "turnover",
                XianShou = "last_trade"}
for level = 1, 5 do
    FIELDS["PriceBuy" .. level], FIELDS["AmountBuy" .. level] = "buy" .. level, "buy_volume" .. level
    FIELDS["PriceSell" .. level], FIELDS["AmountSell" .. level] = "sell" .. level, "sell_volume" .. level
end

-- What differs between what a page shows of a security and what the broker says.
local function differences(row, quote)
    local found = {}
    local function fault(field, seen, expected)
        found[#found + 1] = ("%s %s: %s, not %s"):format(quote.code, field, tostring(seen), tostring(expected))
    end
    for field, name in pairs(FIELDS) do
        if tonumber(row[field]) ~= tonumber(quote[name]) then fault(field, row[field], quote[name]) end
    end
    if row.Zqmc ~= quote.name then fault("Zqmc", row.Zqmc, quote.name) end
    if (row.TPFlag == "yes") ~= quote.suspended then fault("TPFlag", row.TPFlag, quote.suspended) end
    local close = tonumber(quote.previous_close)
    local change = (tonumber(quote.last) - close) / close * 100
    local shown = tonumber((row.Zdfd:gsub("%%", "")))
    if not shown or math.abs(shown - change) > 0.0050006 then fault("Zdfd", row.Zdfd, change) end
    return found
end

-- `page` of orders: a data page of account 880003.
function quotes.run(session, page)
    local codes = {}
    for i, security in ipairs(session.securities) do codes[i] = security.code .. ":" .. security.market end
    local count = #codes
    local left, favourites = {}, {}
    for _, code in ipairs(codes) do left[code] = true end
    local function favour(code)
        if left[code] then favourites[#favourites + 1], left[code] = code, nil end
    end
    for _, code in ipairs(TRADED) do favour(code) end
    local traded = favourites[1] -- none: a list of others
    for i = 1, count, math.max(1, math.floor(count / 4)) do favour(codes[i]) end

    local function quote_of(code)
        for _, quote in ipairs(terminal.quotes()) do
            if quote.code .. ":" .. quote.market == code then return quote end
        end
    end
    local function show(name, list) session.quote_command(name, {["do"] = "show", codes = table.concat(list, ",")}) end

    local function rows_of(name)
        local rows = {}
        for _, row in ipairs(session.table_of(name, "quotes", "") or {}) do rows[row.Zqdm .. ":" .. row.Market] = row end
        return rows
    end
    -- Whether the page shows the broker's quotes of these securities, and what differs, at most three.
    local function agrees(name, list)
        local wanted, rows, wrong, compared = {}, rows_of(name), {}, 0
        for _, code in ipairs(list) do wanted[code] = true end
        for _, quote in ipairs(terminal.quotes()) do
            local code = quote.code .. ":" .. quote.market
            quote.name = terminal.to_utf8(quote.name)
            if wanted[code] then
                compared = compared + 1
                local found = rows[code] and differences(rows[code], quote) or {code .. " is not shown"}
                for _, text in ipairs(found) do wrong[#wrong + 1] = text end
            end
        end
        local text = ("%s: %d quotes"):format(name, compared)
        if #wrong == 0 then return compared == #list, text .. " equal" end
        return false, ("%s, %d fields differ: %s"):format(text, #wrong, table.concat(wrong, "; ", 1, math.min(3, #wrong)))
    end

    local told -- page -> {records, rows, kinds}
    local function listen() told = {} end
    local function collect()
        for record in session.take_record do
            local seen = told[record.page] or {records = 0, rows = 0, why = {}}
            seen.records, seen.rows = seen.records + 1, seen.rows + math.max(record.rows, 0)
            seen.why[record.why] = (seen.why[record.why] or 0) + 1
            told[record.page] = seen
        end
    end
    local function told_of(name) return told[name] or {records = 0, rows = 0, why = {}} end
    -- Serves the window, and collects what pages report, until `test()`.
    local function wait(test, limit)
        return session.wait(function()
            collect()
            return test()
        end, limit)
    end
    local function idle(milliseconds) wait(function() return false end, milliseconds) end
    -- Two ticks: whatever was pushed is published by then.
    local function settle() idle(1200) end

    listen()
    step("A page of all securities", "asked for in one question for each kind (1051, bonds 1058); it shows the broker's quotes",
         function()
        local asked = session.requests(1051) + session.requests(1058)
        session.open_quote_page(ALL)
        show(ALL, codes)
        wait(function() return told_of(ALL).rows >= count end)
        idle(100)
        local same, text = agrees(ALL, codes)
        asked = session.requests(1051) + session.requests(1058) - asked
        return same and asked == 2, ("%s; %d questions"):format(text, asked)
    end)

    step("Quotes are pushed", ("%s rows a second for %d seconds, changes only; one page shows all, one a few, one is asleep"):format(
        tables.grouped(tostring(RATE)), DURATION / 1000), function()
        session.open_quote_page(FEW)
        show(FEW, favourites)
        session.open_quote_page(ASLEEP)
        show(ASLEEP, codes)
        wait(function() return told_of(FEW).rows >= #favourites and told_of(ASLEEP).rows >= count end)
        session.sleep(ASLEEP, true)
        idle(100)
        listen()
        local rows = terminal.broker_stats().quote_rows
        local published_before = terminal.counters().quotes_published or 0
        terminal.probe_ui(session.view(ALL).window)
        terminal.feed_quotes(RATE)
        idle(DURATION)
        terminal.feed_quotes(0)
        settle()
        local probed = terminal.probed()
        rows = terminal.broker_stats().quote_rows - rows
        local all, few, asleep = told_of(ALL), told_of(FEW), told_of(ASLEEP)
        local published = terminal.counters().quotes_published - published_before
        local same, text = agrees(ALL, codes)
        local same_few, text_few = agrees(FEW, favourites)
        print(("    %s rows pushed, %s records published, pages told %d times (%s: %d, %s: %d, %s: %d), UI thread busy at most " ..
                  "%.1f ms (%.1f %% of %d probes above 10 ms)"):format(
                  tables.grouped(tostring(rows)), tables.grouped(tostring(published)), all.records + few.records + asleep.records, ALL,
                  all.records, FEW, few.records, ASLEEP, asleep.records, probed.longest, probed.above10 * 100, probed.probes))
        local enough = rows > RATE * DURATION / 1000 * 0.8
        return same and same_few and enough and all.rows == published and asleep.records == 0 and few.rows <= few.records * #favourites,
               text .. "; " .. text_few .. ("; %s told %d quotes; asleep: %d records"):format(ALL, all.rows, asleep.records)
    end)

    step("The sleeping page wakes", "it asks for what changed, and shows the broker's quotes", function()
        local stale = agrees(ASLEEP, codes)
        listen()
        session.sleep(ASLEEP, false)
        wait(function() return told_of(ASLEEP).rows > 0 end)
        idle(300)
        local same, text = agrees(ASLEEP, codes)
        local seen = told_of(ASLEEP)
        return same and not stale and seen.why["asked on waking"] == seen.records,
               ("%s; %d records, %d quotes"):format(text, seen.records, seen.rows)
    end)

    step("It sleeps and wakes while quotes come", "nothing between the answers and the pushes is lost", function()
        terminal.feed_quotes(RATE)
        for _ = 1, 3 do
            session.sleep(ASLEEP, true)
            idle(400)
            session.sleep(ASLEEP, false)
            idle(400)
        end
        terminal.feed_quotes(0)
        settle()
        local same, text = agrees(ASLEEP, codes)
        local same_all, text_all = agrees(ALL, codes)
        return same and same_all, text .. "; " .. text_all
    end)

    step("The market moves, an order waits", "both are in the quote; it follows when the order is taken back", function()
        if not traded then return true, "nothing of the list is traded" end
        local last = tonumber(quote_of(traded).last)
        local price, bid = ("%.2f"):format(last + 0.05), ("%.2f"):format(last + 0.03)
        local code = traded:match("^%d+")
        assert(terminal.set_price(code, price))
        session.order(page, {fund_token = "880003", stock_code = code, entrust_type = "buy", entrust_amount = "700",
                             entrust_price = bid, LocalID = "Q1"})
        settle()
        local row, place = rows_of(FEW)[traded], nil
        for i = 1, 5 do
            if tonumber(row["PriceBuy" .. i]) == tonumber(bid) and tonumber(row["AmountBuy" .. i]) >= 700 then place = i end
        end
        local same, text = agrees(FEW, favourites)
        for _, order in ipairs(session.table_of(page, "entrust", "880003") or {}) do
            if order.LocalID == "Q1" then session.cancel(page, "880003", order.OrderID) end
        end
        settle()
        local gone = agrees(FEW, favourites)
        return same and gone and place ~= nil and tonumber(row.PriceZxjg) == tonumber(price),
               ("%s at %s, buy %s: %s x %s; %s"):format(code, row.PriceZxjg, tostring(place), bid,
                                                       place and row["AmountBuy" .. place] or "?", text)
    end)

    step("Prices of an order, by the book", "for another page, of the quotes that are current, without asking", function()
        local code, market = favourites[1]:match("^(%w+):(%d+)$")
        local quote, sent, seen, good = quote_of(favourites[1]), session.requests(1051), {}, true
        for _, level in ipairs({{"S1", "sell1"}, {"B3", "buy3"}, {"ZT", "limit_up"}, {"0", "last"}}) do
            session.command(page, {["do"] = "ask", kind = "price_level", price_level = level[1], stock_code = code,
                                   stock_marketid = market})
            idle(100)
            local price = (session.view(page).text:match("\nprice_level: ([^\n]*)") or ""):match("%f[%w]price=(%S+)")
            good = good and tonumber(price) == tonumber(quote[level[2]])
            seen[#seen + 1] = ("%s %s"):format(level[1], tostring(price))
        end
        return good and session.requests(1051) == sent, table.concat(seen, ", ")
    end)

    step("A single quote (1055)", "the asker gets it", function()
        listen()
        session.quote_command(FEW, {["do"] = "single", codes = favourites[1]})
        local answered = wait(function() return told_of(FEW).why.answer end)
        return answered == 1 and told_of(ALL).records == 0, ("%d answers"):format(answered or 0)
    end)

    step("Securities are forgotten, a page is closed", "the one hears of no quote any more; the other gets only its own", function()
        session.quote_command(FEW, {["do"] = "forget", codes = table.concat(favourites, ",", 2)})
        session.quote_command(ALL, {["do"] = "close"})
        session.quote_command(ASLEEP, {["do"] = "close"})
        idle(300)
        listen()
        local rows = terminal.broker_stats().quote_rows
        terminal.feed_quotes(200)
        idle(1500)
        terminal.feed_quotes(0)
        settle()
        rows = terminal.broker_stats().quote_rows - rows
        local few = told_of(FEW)
        local same, text = agrees(FEW, {favourites[1]})
        return same and told_of(ALL).records + told_of(ASLEEP).records == 0 and few.records > 0 and few.rows == few.records,
               ("%s; %d rows pushed, %d records of %d quotes"):format(text, rows, few.records, few.rows)
    end)
end

return quotes
