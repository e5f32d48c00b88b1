-- Makes the market database, an SQLite file with the table "codelist". Texts in it are UTF-8.
local securities = require "securities"

local market_database = {}

local SCHEMA = {
    "CREATE TABLE codelist (stock_code TEXT NOT NULL, stock_name TEXT NOT NULL, marketcode TEXT NOT NULL, " ..
        "stock_phonetic TEXT NOT NULL, PRIMARY KEY (stock_code, marketcode))",
    "CREATE INDEX codelist_market ON codelist (marketcode)",
    "CREATE TABLE source (name TEXT NOT NULL)",
}

local function read_file(path)
    local file, reason = io.open(path, "rb")
    if not file then return nil, reason end
    local text = file:read("*a")
    file:close()
    return text
end

-- The source that the database was made of; nil when there is no usable database.
local function source_of(environment, path)
    local file = io.open(path, "rb")
    if not file then return nil end
    file:close()
    local connection = environment:connect(path)
    if not connection then return nil end
    local cursor = connection:execute("SELECT name FROM source")
    local source = cursor and cursor:fetch()
    if cursor then cursor:close() end
    connection:close()
    return source
end

local function fill(connection, list, source)
    local function run(statement) assert(connection:execute(statement)) end
    local function quoted(text) return "'" .. connection:escape(text) .. "'" end
    for _, statement in ipairs(SCHEMA) do run(statement) end
    for _, security in ipairs(list) do
        run(("INSERT INTO codelist VALUES (%s, %s, %s, %s)"):format(quoted(security.code), quoted(security.name),
                                                                   quoted(security.market), quoted(security.pinyin)))
    end
    run(("INSERT INTO source VALUES (%s)"):format(quoted(source)))
end

-- The securities of the CSV file `csv`, grown to `count` (0: as they are): {list =, left_out = {text...}, source =}, the last
-- a text that says what they are made of. Nil and a text when there are none.
function market_database.read(csv, count)
    local text, reason = read_file(csv)
    if not text then return nil, "the list of securities cannot be read: " .. reason end
    local list, left_out = securities.parse(text)
    if not list then return nil, csv .. ": " .. left_out end
    securities.grow(list, count)
    return {list = list, left_out = left_out, source = ("%s, %d bytes, %d securities"):format(csv, #text, #list)}
end

-- Makes the database at `path` of what `read` answered, unless it was made of just that before. Answers what was done:
-- {count =, made =, left_out = {text...}}, or nil and a text.
function market_database.make(path, read)
    local found, luasql = pcall(require, "luasql.sqlite3")
    if not found then return nil, "the SQLite binding of Lua is not installed" end
    local list, source = read.list, read.source
    local environment = luasql.sqlite3()
    local answer = {count = #list, made = false, left_out = read.left_out}
    if source_of(environment, path) == source then
        environment:close()
        return answer
    end
    -- Made beside its place, so that a start that is broken off leaves no half list behind.
    local new = path .. ".new"
    os.remove(new)
    local connection, fault = environment:connect(new)
    if not connection then return nil, fault end
    connection:setautocommit(false)
    local done, failure = pcall(fill, connection, list, source)
    if done then connection:commit() end
    connection:close()
    environment:close()
    if not done then return nil, failure end
    os.remove(path)
    local renamed, why = os.rename(new, path)
    if not renamed then return nil, why end
    answer.made = true
    return answer
end

return market_database
