-- Compares what a data page shows with the broker's own books, to the cent.
local tables = require "tables"
local accounting = {}

local OPEN = {["未成交"] = true, ["部分成交"] = true}

-- Sums of a column; a cell that is no number makes it fail.
local function sum(rows, column, parse)
    local total = 0
    for _, row in ipairs(rows) do
        total = total + (parse(row[column]) or error(("no number in %s: %s"):format(column, tostring(row[column])), 0))
    end
    return total
end

-- What tables of orders, deals and positions add up to, under the names of the broker's totals.
local function totals_of(orders, deals, positions)
    local open = 0
    for _, order in ipairs(orders) do if OPEN[order.OrderStatus] then open = open + 1 end end
    return {
        orders = #orders,
        open_orders = open,
        order_volume = sum(orders, "OrderQty", tonumber),
        dealt_volume = sum(orders, "DealVolume", tonumber),
        deals = #deals,
        deal_volume = sum(deals, "TradeVolume", tonumber),
        turnover = sum(deals, "BusinessAmount", tables.cents),
        positions = #positions,
    }
end
local COUNTS = {"orders", "open_orders", "order_volume", "dealt_volume", "deals", "deal_volume", "turnover", "positions"}

local MONEY = {available = "AvailableValue", frozen = "FrozenValue", market_value = "MarketValue", assets = "TotalAssets",
               day_profit = "DayProfit"}

-- Adds the money that rows of funds, or of account data, say by currency.
local function add_money(totals, rows)
    for _, row in ipairs(rows) do
        for name, column in pairs(MONEY) do totals[row.Currency .. "_" .. name] = tables.cents(row[column]) end
    end
end

-- Notes where `seen` is not what `books` say; all of `names`, or all that the books have.
local function differences(found, what, seen, books, names)
    if not names then
        names = {}
        for name, value in pairs(books) do if type(value) == "number" then names[#names + 1] = name end end
    end
    for _, name in ipairs(names) do
        if seen[name] ~= books[name] then
            found[#found + 1] = ("%s: %s is %s, the broker's books say %s"):format(what, name, tostring(seen[name]),
                                                                                    tostring(books[name]))
        end
    end
end

-- Each position's part of the total assets, in percent, with three decimals; the assets are those of the first currency.
local function check_weights(found, token, positions, assets)
    local held = {}
    for _, holding in ipairs(terminal.holdings(token)) do held[holding.code] = holding end
    for _, row in ipairs(positions) do
        local holding = held[row.SecurityID]
        local thousandths = holding and math.floor((holding.market_value * 200000 + assets) / (2 * assets))
        local weight = holding and ("%d.%03d"):format(math.floor(thousandths / 1000), thousandths % 1000)
        differences(found, token .. " " .. row.SecurityID,
                    {volume = tonumber(row.StockBalance), available = tonumber(row.AvailableStockBalance),
                     market_value = tables.cents(row.MarketValue), weight = row.MarketValueRate},
                    {volume = holding and holding.volume, available = holding and holding.available,
                     market_value = holding and holding.market_value, weight = weight},
                    {"volume", "available", "market_value", "weight"})
    end
end

local KINDS = {
    [false] = {fund = "fund", position = "position", entrust = "entrust", deal = "deal", data = "currency_accountdatalist"},
    [true] = {fund = "credit_fund", position = "positioncredit", entrust = "entrustcredit", deal = "dealcredit",
              data = "accountdatalistcredit"},
}

-- The page's totals of each account as texts for print(), and all differences from the books. The page must show orders,
-- deals, positions and funds of all accounts, the merged views of all but credit accounts, and the account data.
function accounting.compare(session, page)
    local found, lines = {}, {}
    local function rows(kind, account)
        local shown = session.table_of(page, kind, account)
        if not shown then found[#found + 1] = ("no table %s %s"):format(kind, account) end
        return shown or {}
    end
    local whole, books_whole = totals_of(rows("entrustmulti", ""), rows("dealmulti", ""), rows("positionmulti", "")), {}
    for _, books in ipairs(terminal.books()) do
        local token, kinds = books.fund_token, KINDS[books.credit]
        local positions = rows(kinds.position, token)
        local seen = totals_of(rows(kinds.entrust, token), rows(kinds.deal, token), positions)
        add_money(seen, rows(kinds.fund, token))
        differences(found, token, seen, books)
        check_weights(found, token, positions, books.CNY_assets)

        local of_account = {}
        for _, row in ipairs(rows(kinds.data, "")) do
            if row.fund_token == token then of_account[#of_account + 1] = row end
        end
        local data, of_books = {}, {}
        add_money(data, of_account)
        for name, value in pairs(books) do if name:match("^%u%u%u_") then of_books[name] = value end end
        differences(found, token .. " account data", data, of_books)

        for _, name in ipairs(books.credit and {} or COUNTS) do books_whole[name] = (books_whole[name] or 0) + books[name] end
        lines[#lines + 1] = accounting.line(token .. " page", seen)
        lines[#lines + 1] = accounting.line(token .. " broker", books)
    end
    differences(found, "merged views", whole, books_whole, COUNTS)
    lines[#lines + 1] = accounting.line("merged page", whole)
    lines[#lines + 1] = accounting.line("the three broker", books_whole)
    return found, lines
end

function accounting.line(who, totals)
    local line = {who = who}
    for name, value in pairs(totals) do
        line[name] = (name == "turnover" or name:match("^%u%u%u_")) and tables.money(value) or tostring(value)
    end
    return line
end

accounting.columns = {
    {"", "who"}, {"orders", "orders", "right"}, {"open", "open_orders", "right"}, {"ordered", "order_volume", "right"},
    {"dealt", "dealt_volume", "right"}, {"deals", "deals", "right"}, {"turnover", "turnover", "right"},
    {"CNY available", "CNY_available", "right"}, {"frozen", "CNY_frozen", "right"},
    {"market value", "CNY_market_value", "right"}, {"assets", "CNY_assets", "right"},
    {"day profit", "CNY_day_profit", "right"},
}

return accounting
