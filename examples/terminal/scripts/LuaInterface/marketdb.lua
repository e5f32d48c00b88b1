-- Reads the market database. Texts come and go in code page 936.
local luasql = require "luasql.sqlite3"

local marketdb = {}
local environment, connection = luasql.sqlite3(), nil

-- Opened at the first question, and only for questions.
local function database()
    if not connection then
        local path = terminal.data_folder .. "/market.db"
        local file = assert(io.open(path, "rb"))
        file:close()
        connection = assert(environment:connect(path))
        assert(connection:execute("PRAGMA query_only = 1"))
    end
    return connection
end

local function rows(query)
    local cursor = assert(database():execute(query))
    local row = {} -- one for all: a code list has many
    return function()
        local found = cursor:fetch(row, "a")
        if not found then cursor:close() end
        return found
    end
end

local function reference(character) return ("&#%03d;"):format(character:byte()) end

-- A field of the code list: in double quotes, or as a long string when it has one itself, or in double quotes written as
-- references when it could end that, too. Blanks are references, line breaks and the like are blanks.
local function quoted(value)
    local text = tostring(value or ""):gsub("&#", "&#038;#"):gsub("%c", " "):gsub(" ", reference)
    if not text:find('"', 1, true) then return '"' .. text .. '"' end
    if not text:find("]", 1, true) then return "[[" .. text .. "]]" end
    return '"' .. text:gsub('"', reference) .. '"'
end

-- Runs a query over the table "codelist" (stock_code, stock_name, marketcode, stock_phonetic) and answers one line a
-- security: "code","name","market","initials"
function marketdb.GetCodeList(query)
    local lines = {}
    for row in rows(terminal.to_utf8(query)) do
        lines[#lines + 1] = table.concat({quoted(row.stock_code), quoted(row.stock_name), quoted(row.marketcode),
                                          quoted(row.stock_phonetic)}, ",")
    end
    lines[#lines + 1] = ""
    return terminal.to_codepage(table.concat(lines, "\n"))
end

-- The security with this code in this market: {stock_code, stock_name, marketcode, stock_phonetic}, UTF-8; nil when
-- there is none.
function marketdb.find(code, market)
    local connected = database()
    return rows(("SELECT * FROM codelist WHERE stock_code = '%s' AND marketcode = '%s'"):format(
                    connected:escape(code), connected:escape(market)))()
end

return marketdb
