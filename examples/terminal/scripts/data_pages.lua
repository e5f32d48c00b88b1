-- The part of the scenario with data pages: three of them get data by name from the same accounts, two awake and one
-- asleep, while these accounts change. Each step says which page must get which record, and why.
local step = require("steps").step
local data_pages = {}

local ALL, CORE, BACK = "总览", "核心", "后台"

-- `before` is what the steps before left: their pages, and the orders of account 880001 and its shares of 600000.
function data_pages.run(session, before)
    -- Log records leave when they like.
    local function sent() return terminal.broker_stats().requests - session.requests(1466) end

    -- Does `act`, then collects what pages report: all that is expected, and whatever else comes within 200 ms. Answers
    -- whether it was exactly that, in whatever order, and says what came and how many requests left.
    local function check(expected, requests, act)
        local sent_before, seen, missing = sent(), {}, {}
        for _, text in ipairs(expected) do missing[text] = (missing[text] or 0) + 1 end
        local left, surplus = #expected, 0
        act()
        local function collect()
            for record in session.take_record do
                local text = session.record_text(record)
                seen[#seen + 1] = text
                if (missing[text] or 0) > 0 then
                    missing[text], left = missing[text] - 1, left - 1
                else
                    seen[#seen], surplus = text .. "  NOT EXPECTED", surplus + 1
                end
            end
            return left == 0
        end
        session.wait(collect)
        session.idle(200)
        collect()
        for text, count in pairs(missing) do
            for _ = 1, count do seen[#seen + 1] = text .. "  MISSING" end
        end
        local asked = sent() - sent_before
        table.insert(seen, 1, ("%d records, %d requests sent"):format(#seen, asked))
        return left == 0 and surplus == 0 and asked == requests, table.concat(seen, "\n              ")
    end

    -- What one page gets: "fund 880001, 3 rows (push)"...
    local function to(page, ...)
        local texts = {}
        for i, text in ipairs({...}) do texts[i] = page .. " <- " .. text end
        return texts
    end
    local function both(first, second)
        for _, text in ipairs(second) do first[#first + 1] = text end
        return first
    end
    -- A table of account 880001 with a row for each of its orders, of which there are so many more by now.
    local function rows(kind, more, why) return ("%s 880001, %d rows (%s)"):format(kind, before.orders + more, why) end
    local function order(page, account, code, volume)
        session.command(page, {["do"] = "send", kind = "create_entrust", fund_token = account, stock_code = code,
                               entrust_amount = volume, entrust_type = "buy"})
    end
    local function shows(page, pattern) return session.view(page).text:find(pattern) ~= nil end

    -- The pages of the steps before would ask, too.
    for _, page in ipairs(before.pages) do session.sleep(page, true) end
    session.idle(100)

    step("A page asks for accounts and the data of two of them",
         "an answer for each account; the account list is news to it, once for the accounts and once for the groups", function()
        return check(to(ALL, "account, 4 rows (answer)", "accountgroup, 2 rows (answer)",
                        "accountdatalist 880001,880002,880003, 3 rows (push)",
                        "accountdatalist 880001,880002,880003, 3 rows (push)", "fund 880001, 3 rows (answer)",
                        "fund 880002, 1 rows (answer)", "position 880001, 9 rows (answer)",
                        "position 880002, 2 rows (answer)", rows("entrust", 0, "answer"),
                        "entrust 880002, 0 rows (answer)"), 8, function()
            session.open_data_page(ALL, "kinds=account,accountgroup,fund,position,entrust;" ..
                                       "hear=accountdatalist,entrustpush,messagecenter;fund_token=880001,880002")
        end)
    end)

    step("A page of one account and a group", "what the first one asked for comes from the cache, the deals from the server",
         function()
        return check(to(CORE, "accountdatalist 880001, 1 rows (from the cache)", "fund 880001, 3 rows (from the cache)",
                        rows("deal", 0, "answer")), 1, function()
            session.open_data_page(CORE, "kinds=accountdatalist,fund,deal;fund_token=880001;group=核心")
        end)
    end)

    step("A third page, with data that are all there", "nothing is sent", function()
        return check(to(BACK, "accountdatalist 880001,880002,880003, 3 rows (from the cache)",
                        "fund 880001, 3 rows (from the cache)", "position 880001, 9 rows (from the cache)",
                        rows("deal", 0, "from the cache")), 0, function()
            session.open_data_page(BACK, "kinds=accountdatalist,fund,position,deal;fund_token=880001")
        end)
    end)

    step("The third page sleeps, the second one buys",
         "the buyer gets the answer; those awake hear of the order, which holds money, then of its deal; the one asleep of " ..
         "nothing. Positions come with each change of the funds, too, since their weights follow", function()
        session.sleep(BACK, true)
        return check(both(to(CORE, "create_entrust 880001 (answer)", "fund 880001, 3 rows (push)",
                             "fund 880001, 3 rows (push)", rows("deal", 1, "push")),
                          to(ALL, "entrustpush 880001, 1 rows (push)", rows("entrust", 1, "push"),
                             "messagecenter, 1 rows (push)", "fund 880001, 3 rows (push)", "position 880001, 9 rows (push)",
                             "entrustpush 880001, 1 rows (push)", rows("entrust", 1, "push"),
                             "messagecenter, 1 rows (push)", "position 880001, 9 rows (push)", "fund 880001, 3 rows (push)",
                             "position 880001, 9 rows (push)")), 1, function() order(CORE, "880001", "600000", "100") end)
    end)

    step("The other account trades", "deals of it were never asked for, so nobody hears of one", function()
        return check(both(to(CORE, "fund 880002, 1 rows (push of another account)"),
                          to(ALL, "entrustpush 880002, 1 rows (push)", "entrust 880002, 1 rows (push)",
                             "messagecenter, 1 rows (push)", "position 880002, 2 rows (push)", "fund 880002, 1 rows (push)",
                             "position 880002, 2 rows (push)")), 0, function() terminal.trade("880002", "601398", 100) end)
    end)

    step("The third page wakes", "it gets each kind that changed once, from the cache, and shows the newest numbers", function()
        local good, seen = check(to(BACK, "accountdatalist 880001,880002,880003, 3 rows (asked on waking)",
                                    rows("deal", 1, "asked on waking"),
                                    "fund 880001,880002, 4 rows (asked on waking)",
                                    "position 880001,880002, 11 rows (asked on waking)"), 0, function()
            session.sleep(BACK, false)
        end)
        return good and shows(BACK, ("\n600000 [^\n]* %d "):format(before.shares + 100)), seen
    end)

    step("The first page asks again, then wants fresh data",
         "the cache answers; then the server, and only the asker; all hear of the positions' weights", function()
        return check(both(to(ALL, "fund 880001,880002, 4 rows (from the cache)", "fund 880001, 3 rows (answer)",
                             "fund 880002, 1 rows (answer)", "position 880001, 9 rows (push)",
                             "position 880002, 2 rows (push)"),
                          to(BACK, "position 880001, 9 rows (push)",
                             "position 880002, 2 rows (push of another account)")), 2, function()
            session.command(ALL, {["do"] = "ask", kind = "fund"})
            session.command(ALL, {["do"] = "ask", kind = "fund", refresh = 1})
        end)
    end)

    step("The broker answers with an error", "the asker alone hears of it, and keeps its numbers", function()
        local busy = "柜台系统繁忙，请稍后再试"
        terminal.fault("error", 1)
        local good, seen = check(to(CORE, "error_msg (answer): " .. busy,
                                    "fund 880001 (answer): " .. busy), 1, function()
            session.command(CORE, {["do"] = "ask", kind = "fund", refresh = 1})
        end)
        return good and shows(CORE, "\nCNY "), seen
    end)

    step("An error that does not say of what data", "the asker hears of it all the same, the message center has a row more", function()
        local busy = "柜台系统繁忙，请稍后再试"
        terminal.fault("failure", 1)
        return check(both(to(CORE, "error_msg (answer): " .. busy, "deal 880001 (answer): " .. busy),
                          to(ALL, "messagecenter, 1 rows (push)")), 1, function()
            session.command(CORE, {["do"] = "ask", kind = "deal", refresh = 1})
        end)
    end)

    step("An order that cannot be filled", "the page that sent it hears why; nothing changed, so there is no news", function()
        return check(to(CORE, "error_msg (answer): not enough money",
                        "create_entrust 880001 (answer): not enough money"), 1, function()
            order(CORE, "880001", "600519", "100000")
        end)
    end)

    step("Data of a page's own", "the cash flow goes to the asker, the holidays stay with the page that has them", function()
        return check(both(to(CORE, rows("fund_detail", 1, "answer")),
                          to(ALL, "holidays (answer)", "holidays (from the cache)")), 2, function()
            session.command(CORE, {["do"] = "ask", kind = "fund_detail", fund_token = "880001"})
            session.command(ALL, {["do"] = "ask", kind = "holidays"})
            session.idle(100)
            session.command(ALL, {["do"] = "ask", kind = "holidays"})
        end)
    end)

    step("The trade calendar", "20260930 is a trade date, 20261001 a holiday; three trade dates on it is 20261012", function()
        local seen = {}
        for _, ask in ipairs({{kind = "is_trade_date", date = "20260930"}, {kind = "is_trade_date", date = "20261001"},
                              {kind = "trade_date", date = "20260930", shiftday = 3}}) do
            ask["do"] = "ask"
            session.command(ALL, ask)
            session.idle(100)
            seen[#seen + 1] = session.view(ALL).text:match("\n(" .. ask.kind .. ": [^\n]*)")
        end
        while session.take_record() do end
        local text = table.concat(seen, "\n              ")
        return text:find("is_trade_date=yes", 1, true) and text:find("is_trade_date=no", 1, true) and
                   text:find("tradeday=20261008,20261009,20261012", 1, true) ~= nil, text
    end)

    step("Views of both accounts", "made of what is there: the positions one below the other, and summed up", function()
        return check(to(ALL, "positionmulti 880001,880002, 11 rows (from the cache)",
                        "positionsum 880001,880002, 11 rows (from the cache)"), 0, function()
            session.command(ALL, {["do"] = "ask", kind = "positionmulti", fund_token = "880001,880002"})
            session.command(ALL, {["do"] = "ask", kind = "positionsum", fund_token = "880001,880002"})
        end)
    end)

    step("The second page no longer hears of funds", "it gets the deal only", function()
        return check(both(both(to(CORE, rows("deal", 2, "push")),
                               to(BACK, "position 880001, 9 rows (push)", "fund 880001, 3 rows (push)",
                                  "position 880001, 9 rows (push)", rows("deal", 2, "push"))),
                          to(ALL, "entrustpush 880001, 1 rows (push)", rows("entrust", 2, "push"),
                             "messagecenter, 1 rows (push)", "position 880001, 9 rows (push)", "fund 880001, 3 rows (push)",
                             "position 880001, 9 rows (push)")), 0, function()
            session.command(CORE, {["do"] = "unhear", kind = "fund"})
            session.idle(50)
            terminal.trade("880001", "600000", 100)
        end)
    end)

    step("An account logs in", "its row is news, and so are the lists of accounts; the host is asked to keep the account that " ..
         "came online (1903)", function()
        local asked = session.requests(1903)
        local every = "accountdatalist 880001,880002,880003, 3 rows (push)"
        local good, seen = check(both(both(to(ALL, "account 880002, 1 rows (push)", every), to(BACK, every)),
                                      to(CORE, "accountdatalist 880001, 1 rows (push)")), 1,
                                 function() terminal.come_online("880002") end)
        return good and session.requests(1903) == asked + 1, seen
    end)

    step("A question with a trace", "the log server gets its start and its end, in one batch (1466)", function()
        local shipped = session.requests(1466)
        local good, seen = check(to(ALL, rows("entrust", 2, "answer")), 1, function()
            session.command(ALL, {["do"] = "ask", kind = "entrust", fund_token = "880001", refresh = 1, TraceID = "T1"})
        end)
        local more = session.wait(function() return session.requests(1466) > shipped end)
        return good and more == true, seen .. "\n              log records " .. (more and "shipped" or "NOT SHIPPED")
    end)

    step("A page is closed while its answer is under way", "nobody gets that answer, and the page no news any more", function()
        return check(to(ALL, "entrustpush 880002, 1 rows (push)", "entrust 880002, 2 rows (push)",
                        "messagecenter, 1 rows (push)", "position 880002, 2 rows (push)", "fund 880002, 1 rows (push)",
                        "position 880002, 2 rows (push)"), 1, function()
            terminal.fault("delay", 1, 100)
            session.command(CORE, {["do"] = "ask", kind = "deal", refresh = 1})
            session.command(BACK, {["do"] = "close"})
            session.command(CORE, {["do"] = "close"})
            session.idle(50)
            terminal.trade("880002", "601398", 100)
        end)
    end)
end

return data_pages
