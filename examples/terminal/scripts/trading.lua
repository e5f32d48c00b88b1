-- The part of the scenario with orders: a page sends them for three accounts, the broker matches them, and after each step
-- what the page shows is compared with the broker's own books.
local step = require("steps").step
local tables, accounting = require "tables", require "accounting"
local trading = {}

local PAGE = "交易"
local A, B, C = "880001", "880002", "880003"
local ALL = A .. "," .. B .. "," .. C
local CREDIT = "990001"

local ORDER_COLUMNS = {
    {"合同", "OrderID"}, {"代码", "SecurityID"}, {"名称", "SecurityName"}, {"方向", "SideName"}, {"委托价", "OrderPrice", "right"},
    {"委托量", "OrderQty", "right"}, {"成交量", "DealVolume", "right"}, {"均价", "AvgPx", "right"}, {"状态", "OrderStatusMsg"}}
local DEAL_COLUMNS = {
    {"成交编号", "ExecID"}, {"合同", "OrderID"}, {"代码", "SecurityID"}, {"名称", "SecurityName"}, {"方向", "SideName"},
    {"价格", "TradePrice", "right"}, {"数量", "TradeVolume", "right"}, {"金额", "BusinessAmount", "right"}}
local POSITION_COLUMNS = {
    {"代码", "SecurityID"}, {"名称", "SecurityName"}, {"数量", "StockBalance", "right"}, {"可卖", "AvailableStockBalance", "right"},
    {"现价", "LastPrice", "right"}, {"市值", "MarketValue", "right"}, {"占比%", "MarketValueRate", "right"},
    {"当日盈亏", "DayProfit", "right"}}
local ACCOUNT_COLUMNS = {
    {"账号", "accountid"}, {"户名", "accountname"}, {"币种", "Currency"}, {"总资产", "TotalAssets", "right"},
    {"可用", "AvailableValue", "right"}, {"冻结", "FrozenValue", "right"}, {"市值", "MarketValue", "right"},
    {"当日盈亏", "DayProfit", "right"}}
local MESSAGE_COLUMNS = {{"类型", "MsgType"}, {"业务", "InstrctionType"}, {"内容", "Text"}, {"委托", "OrderMessage"}}

function trading.run(session, before)
    -- Until nothing was sent, answered or pushed for 200 ms.
    local function calm()
        local last, since
        session.wait(function()
            local stats = terminal.broker_stats()
            local now = stats.requests + stats.answers + stats.pushes
            if now ~= last then last, since = now, terminal.ms() end
            while session.take_record() do end
            return terminal.ms() - since >= 200
        end, 10000)
    end
    local function order(local_id, account, side, code, volume, price, basket)
        session.order(PAGE, {fund_token = account, stock_code = code, entrust_type = side, entrust_amount = tostring(volume),
                             entrust_price = price, LocalID = local_id, InstanceID = basket, TaskID = basket and "1"})
    end
    local function row_of(local_id, account)
        for _, row in ipairs(session.table_of(PAGE, "entrust", account) or {}) do
            if row.LocalID == local_id then return row end
        end
        return {}
    end
    -- "S1 全部成交 2000/2000, S2 ..."
    local function states(...)
        local texts = {}
        for i, pair in ipairs({...}) do
            local row = row_of(pair[1], pair[2])
            texts[i] = ("%s %s %s/%s"):format(pair[1], row.OrderStatus, row.DealVolume, row.OrderQty)
        end
        return table.concat(texts, ", ")
    end
    local function refresh()
        for _, kind in ipairs({"entrustmulti", "dealmulti", "positionmulti", "currency_accountdatalist"}) do
            session.command(PAGE, {["do"] = "ask", kind = kind, fund_token = ALL})
        end
        session.command(PAGE, {["do"] = "ask", kind = "accountdatalistcredit"})
        calm()
    end
    -- Whether page and books agree; what does not comes with the text.
    local function agrees(text)
        refresh()
        local found = accounting.compare(session, PAGE)
        return #found == 0, #found == 0 and text .. "; all totals are those of the broker's books" or
                   text .. "\n              " .. table.concat(found, "\n              ")
    end
    local function messages_of(order_id)
        local texts = {}
        for _, row in ipairs(session.table_of(PAGE, "messagecenter", "") or {}) do
            if (row.OrderMessage .. "，"):find("合同编号" .. order_id .. "，", 1, true) then texts[#texts + 1] = row.Text end
        end
        return table.concat(texts, ", ")
    end
    local function shows(expected, seen)
        local same, text = agrees(seen)
        return same and seen == expected, text
    end

    for _, page in ipairs(before.pages) do session.sleep(page, true) end
    calm()

    step("A page of all three accounts and a credit account", "funds, positions, orders and deals of each, and the three's merged views",
         function()
        local opened = session.open_data_page(PAGE, "kinds=account,fund,position,entrust,deal;fund_token=" .. ALL ..
            ";more=" .. CREDIT .. ";hear=entrustpush,dealpush,messagecenter,accountdatalist")
        for _, kind in ipairs({"credit_fund", "positioncredit", "entrustcredit", "dealcredit"}) do
            session.command(PAGE, {["do"] = "hear", kind = kind})
            session.command(PAGE, {["do"] = "ask", kind = kind, fund_token = CREDIT})
        end
        calm()
        local same, text = agrees("page created: " .. tostring(opened))
        return opened == true and same, text
    end)

    step("An order above the market", "880001 offers 2,000 shares at 10.40, the market pays 10.36: the order waits", function()
        order("S1", A, "sell", "600000", 2000, "10.40")
        calm()
        return shows("S1 未成交 0/2000", states({"S1", A}))
    end)

    step("Another account buys", "9,000 shares at up to 10.42: 5,000 of the market at 10.36, then the 2,000 of 880001 " ..
         "at 10.40, then the market again", function()
        order("S2", C, "buy", "600000", 9000, "10.42")
        calm()
        local seen = states({"S1", A}, {"S2", C})
        local said = messages_of(row_of("S2", C).OrderID)
        local same, text = shows("S1 全部成交 2000/2000, S2 全部成交 9000/9000", seen)
        return same and said == "委托成功, 部分成交, 全部成交", text .. "\n              message center: " .. said
    end)

    step("An order far below the market, taken back", "its money is held until it is cancelled (1151)", function()
        order("S3", B, "buy", "600000", 1000, "9.50")
        calm()
        local held = session.table_of(PAGE, "fund", B)[1].FrozenValue
        local waiting = states({"S3", B})
        session.cancel(PAGE, B, row_of("S3", B).OrderID)
        calm()
        local same, text = agrees(("%s, %s frozen; then %s, %s frozen"):format(
            waiting, held, states({"S3", B}), session.table_of(PAGE, "fund", B)[1].FrozenValue))
        return same and held == "9500.00" and text:find("全部撤单 0/1000, 0.00 frozen", 1, true) ~= nil, text
    end)

    step("Partly filled, then taken back", "nobody but 880001 sells: 500 of 800 shares are dealt", function()
        terminal.set_market_volume(0)
        order("S4", A, "sell", "510300", 500, "3.99")
        calm()
        order("S5", C, "buy", "510300", 800, "3.99")
        calm()
        local waiting = states({"S5", C})
        session.cancel(PAGE, C, row_of("S5", C).OrderID)
        calm()
        terminal.set_market_volume(5000)
        calm()
        local same, text = shows("S4 全部成交 500/500, S5 部分撤单 500/800", states({"S4", A}, {"S5", C}))
        return same and waiting == "S5 部分成交 500/800", "S5 before: " .. waiting .. "; " .. text
    end)

    step("Orders that cannot be", "one is refused (not enough money), one the exchange rejects (beyond the daily limit)", function()
        order("S6", B, "buy", "600519", 100)
        calm()
        local error_text = session.view(PAGE).text:match("错误 create_entrust: ([^\n]*)") or "no error"
        order("S7", A, "buy", "600519", 100, "1700")
        calm()
        local same, text = shows("S7 废单 0/100", states({"S7", A}))
        return same and not row_of("S6", B).OrderID and error_text == "not enough money" and
                   messages_of(row_of("S7", A).OrderID) ~= "", text .. "; S6: " .. error_text
    end)

    step("A credit account sells", "its tables are of their own kinds, the pushes of their own topics", function()
        order("S9", CREDIT, "sell", "600036", 5000, "44.00")
        calm()
        local row = session.table_of(PAGE, "entrustcredit", CREDIT)[1] or {}
        local same, text = agrees(("S9 %s %s/%s"):format(tostring(row.OrderStatus), tostring(row.DealVolume), tostring(row.OrderQty)))
        return same and row.OrderStatus == "全部成交", text
    end)

    step("The market moves", "600000 rises to 10.88: market values, profits and weights of all who hold it follow", function()
        local function weight()
            for _, row in ipairs(session.table_of(PAGE, "position", C)) do
                if row.SecurityID == "600000" then return row.MarketValueRate end
            end
        end
        local from = weight()
        assert(terminal.set_price("600000", "10.88"))
        calm()
        local same, text = agrees(("weight of 600000 in 880003: %s %%, then %s %%"):format(from, weight()))
        return same and tonumber(weight()) > tonumber(from), text
    end)

    step("Pushes overtake an answer", "orders of 880001 are asked for, the answer comes late; meanwhile it buys", function()
        terminal.fault("delay", 1, 400)
        session.command(PAGE, {["do"] = "ask", kind = "entrust", fund_token = A, refresh = 1})
        session.idle(100)
        order("S8", A, "buy", "000333", 6000, "72.50")
        session.idle(600)
        calm()
        return shows("S8 全部成交 6000/6000", states({"S8", A}))
    end)

    step("The server pushes everything again", "orders in their old states, deals for the second time: nothing changes", function()
        terminal.replay() -- brings messages from before the page was there
        calm()
        local rows = #session.table_of(PAGE, "messagecenter", "")
        local count = terminal.replay()
        calm()
        local same, text = agrees(("%d pushes of orders and deals"):format(count))
        local more = #session.table_of(PAGE, "messagecenter", "") - rows
        return same and count > 40 and more == 0, text .. ("; messages: %d, %d more than before"):format(rows + more, more)
    end)

    step("Risk control objects", "the message center says so", function()
        assert(terminal.warn_of_risk(A, "300750", 5000))
        calm()
        local rows = session.table_of(PAGE, "messagecenter", "")
        local last = rows[#rows]
        return last.MsgType == "风控提示" and last.OrderMessage:find("300750", 1, true) ~= nil, last.MsgType .. ": " .. last.OrderMessage
    end)

    step("A basket", "its orders and deals in both accounts, asked for by its instance and task (1228)", function()
        order("K1", B, "buy", "000001", 1000, "11.60", "BK1")
        order("K2", C, "buy", "000001", 7000, "11.60", "BK1")
        order("K3", C, "buy", "601398", 1000, "6.30", "BK1")
        calm()
        session.command(PAGE, {["do"] = "ask", kind = "order", InstanceID = "BK1", TaskID = "1"})
        calm()
        local same, text = shows("K1 全部成交 1000/1000, K2 全部成交 7000/7000, K3 未成交 0/1000",
                                 states({"K1", B}, {"K2", C}, {"K3", C}))
        local orders = session.table_of(PAGE, "order", "basket_pending_table") or {}
        local deals = session.table_of(PAGE, "order", "basket_deal_table") or {}
        return same and #orders == 3 and #deals == 3, text .. ("; basket: %d orders, %d deals"):format(#orders, #deals)
    end)

    -- What the page computes for an order that is being entered: the fields of the answer as "name=value".
    local function compute(kind, fields)
        fields["do"], fields.kind = "ask", kind
        session.command(PAGE, fields)
        calm()
        return (session.view(PAGE).text:match("\n" .. kind .. ": ([^\n]*)") or "no answer") .. " "
    end

    step("What can be bought and sold", "600036 at 44.52 in lots of 100 for the money of all accounts; 600000 of all positions",
         function()
        local lots, shares = 0, 0
        for _, books in ipairs(terminal.books()) do
            if not books.credit then
                lots = lots + math.floor(books.CNY_available / (4452 * 100)) * 100
                for _, holding in ipairs(terminal.holdings(books.fund_token)) do
                    if holding.code == "600000" then shares = shares + holding.available end
                end
            end
        end
        local buy = compute("stock_available", {fund_token = ALL, stock_code = "600036", stock_marketid = "17",
                                                stock_price = "44.52", entrust_type = "buy", currency = "CNY"})
        local sell = compute("stock_available", {fund_token = ALL, stock_code = "600000", stock_marketid = "17",
                                                 stock_price = "10.88", entrust_type = "sell"})
        local bought, sold = buy:match("stock_available=(%d+) "), sell:match("stock_available=(%d+) ")
        return bought == ("%.0f"):format(lots) and sold == ("%.0f"):format(shares),
               ("%s and %s; by the broker's books %.0f and %.0f"):format(bought, sold, lots, shares)
    end)

    step("Prices of an order", "the day's limits of 300750 are 20 % from 246.05; a Hong Kong price of 380 moves by 0.2 (131087)",
         function()
        local limits = compute("limit_price", {stock_code = "300750", stock_marketid = "33", previous_close = "246.05"})
        session.command(PAGE, {["do"] = "ask", kind = "tb_price_spred_ggt"})
        calm()
        local spread = compute("price_spread", {Market = "76", stock_price = "380"})
        local up, down, by = limits:match("limit_up=(%S+)"), limits:match("limit_down=(%S+)"), spread:match("price_spread=(%S+)")
        return up == "295.26" and down == "196.84" and tonumber(by) == 0.2, ("%s to %s; %s"):format(down, up, by)
    end)

    step("An amount divided among accounts", "10,000 shares in equal parts, whole lots, the rest to the largest", function()
        local answer = compute("allocate", {fund_token = A .. "," .. C, alloc_type = "0", amount = "10000", stock_code = "601398",
                                            stock_marketid = "17", stock_price = "6.87", entrust_type = "buy", currency = "CNY"})
        local rows = session.table_of(PAGE, "allocate", "") or {}
        local total, texts = 0, {}
        for i, row in ipairs(rows) do
            total, texts[i] = total + tonumber(row.Amount), row.fund_token .. " " .. row.Amount
        end
        return total == 10000 and #rows == 2, table.concat(texts, ", ") .. (#rows == 0 and answer or "")
    end)

    trading.show(session)
    step("Page and broker", "every account's totals, and those of the merged views, are equal to the cent", function()
        local found, lines = accounting.compare(session, PAGE)
        return #found == 0, "\n" .. tables.text(accounting.columns, lines, "    | ") ..
                   (#found > 0 and "\n" .. table.concat(found, "\n") or "\n    no differences")
    end)
end

local function of_accounts(columns) return {{"资金账号", "fund_token"}, unpack(columns)} end

-- What the page shows at the end.
function trading.show(session)
    local function print_table(title, kind, account, columns)
        print("\n    " .. title)
        print(tables.text(columns, session.table_of(PAGE, kind, account) or {}, "    | "))
    end
    for _, account in ipairs({A, B, C}) do
        print_table("Orders of " .. account, "entrust", account, ORDER_COLUMNS)
        print_table("Deals of " .. account, "deal", account, DEAL_COLUMNS)
    end
    print_table("Orders of the credit account " .. CREDIT, "entrustcredit", CREDIT, ORDER_COLUMNS)
    print_table("Orders of all accounts, merged", "entrustmulti", "", of_accounts(ORDER_COLUMNS))
    print_table("Deals of all accounts, merged", "dealmulti", "", of_accounts(DEAL_COLUMNS))
    print_table("Positions of all accounts, merged", "positionmulti", "", of_accounts(POSITION_COLUMNS))
    print_table("Accounts, by currency", "currency_accountdatalist", "", ACCOUNT_COLUMNS)
    print_table("Credit accounts", "accountdatalistcredit", "", ACCOUNT_COLUMNS)
    print_table("Message center", "messagecenter", "", MESSAGE_COLUMNS)
end

return trading
