-- Lists of securities: reading them from CSV text, and growing them for load runs. Plain Lua, no terminal needed.
-- A security is {code =, name =, market =, pinyin =}, all UTF-8 text.
local securities = {}

local COLUMNS = {"code", "name", "market", "pinyin"}
local MAX_FIELD = 64 -- bytes

-- The fields of one CSV line; nil when a quotation mark is out of place.
local function fields_of(line)
    local fields, position = {}, 1
    while true do
        local field
        if line:sub(position, position) == '"' then
            local parts, from = {}, position + 1
            repeat -- a doubled quotation mark is one
                local close = line:find('"', from, true)
                if not close then return nil end
                parts[#parts + 1] = line:sub(from, close - 1)
                from = close + 1
                local doubled = line:sub(from, from) == '"'
                if doubled then
                    parts[#parts + 1] = '"'
                    from = from + 1
                end
            until not doubled
            field, position = table.concat(parts), from
        else
            local comma = line:find(",", position, true) or #line + 1
            field, position = line:sub(position, comma - 1), comma
            if field:find('"', 1, true) then return nil end
        end
        fields[#fields + 1] = field
        if position > #line then return fields end
        if line:sub(position, position) ~= "," then return nil end
        position = position + 1
        if position > #line then
            fields[#fields + 1] = ""
            return fields
        end
    end
end

local function is_utf8(text)
    local position = 1
    while position <= #text do
        local lead = text:byte(position)
        local more = lead < 0x80 and 0 or lead >= 0xC2 and lead < 0xE0 and 1 or lead >= 0xE0 and lead < 0xF0 and 2 or
                         lead >= 0xF0 and lead < 0xF5 and 3
        if not more or not text:find("^" .. ("[\128-\191]"):rep(more), position + 1) then return false end
        position = position + 1 + more
    end
    return true
end

-- Why a security cannot be taken; nil when it can.
local function fault_of(security)
    for _, column in ipairs(COLUMNS) do
        local text = security[column]
        if #text > MAX_FIELD then return column .. " is too long" end
        if text:find("%c") then return column .. " has a control character" end
        if not is_utf8(text) then return column .. " is not UTF-8" end
    end
    if not security.code:find("^%w+$") then return "the code is not letters and digits" end
    if not security.market:find("^%d+$") then return "the market is not a number" end
    if security.name == "" then return "the name is empty" end
end

local function trim(text) return (text:gsub("^%s+", ""):gsub("%s+$", "")) end

-- Reads CSV text whose first line names the columns code, name, market and pinyin, in any order. Answers the list and
-- an array of what was left out, each as "line 7: why"; of equal code and market the first counts. nil and a text when
-- the first line does not name the columns.
function securities.parse(text)
    text = text:gsub("^\239\187\191", "")
    local list, faults, known, place, number = {}, {}, {}, nil, 0
    for line in (text .. "\n"):gmatch("(.-)\r?\n") do
        number = number + 1
        local fields = fields_of(line)
        if not place then
            place = {}
            for index, name in ipairs(fields or {}) do place[trim(name):lower()] = index end
            for _, column in ipairs(COLUMNS) do
                if not place[column] then return nil, "the first line does not name the column " .. column end
            end
        elseif line:find("%S") then
            local security, fault = {}, not fields and "a quotation mark is out of place" or nil
            if fields then
                for _, column in ipairs(COLUMNS) do security[column] = trim(fields[place[column]] or "") end
                fault = fault_of(security)
                local key = security.code .. "|" .. security.market
                if not fault and known[key] then fault = "the code is there already" end
                if not fault then known[key] = true end
            end
            if fault then
                faults[#faults + 1] = "line " .. number .. ": " .. fault
            else
                list[#list + 1] = security
            end
        end
    end
    return list, faults
end

-- The ranges that made-up codes are taken from: market, first and last code, digits.
local RANGES = {
    {market = "17", first = 601000, last = 605999}, {market = "33", first = 1000, last = 3999},
    {market = "33", first = 300000, last = 301999}, {market = "145", first = 688000, last = 688999},
    {market = "20", first = 510000, last = 519999}, {market = "36", first = 159000, last = 159999},
    {market = "19", first = 110000, last = 119999}, {market = "35", first = 123000, last = 128999},
    {market = "17", first = 700000, last = 769999},
}
local SYLLABLES = {
    {"华", "H"}, {"东", "D"}, {"海", "H"}, {"天", "T"}, {"金", "J"}, {"新", "X"}, {"远", "Y"}, {"光", "G"}, {"明", "M"},
    {"达", "D"}, {"瑞", "R"}, {"安", "A"}, {"宏", "H"}, {"信", "X"}, {"泰", "T"}, {"科", "K"}, {"力", "L"}, {"源", "Y"},
    {"德", "D"}, {"通", "T"}, {"星", "X"}, {"河", "H"}, {"南", "N"}, {"北", "B"}, {"长", "C"}, {"永", "Y"}, {"兴", "X"},
}
local ENDINGS = {{"股份", "GF"}, {"科技", "KJ"}, {"集团", "JT"}, {"实业", "SY"}, {"医药", "YY"}, {"电子", "DZ"}}

-- Appends made-up securities until the list has `count`, the same ones for the same list. Codes that are there already
-- are left out. Answers the number of securities now in the list.
function securities.grow(list, count)
    local known, seed = {}, 20240101
    for _, security in ipairs(list) do known[security.code .. "|" .. security.market] = true end
    local function pick(choices)
        seed = (seed * 69069 + 1) % 2 ^ 32
        return choices[1 + math.floor(seed / 65536) % #choices]
    end
    for _, range in ipairs(RANGES) do
        for number = range.first, range.last do
            if #list >= count then return #list end
            local code = ("%06d"):format(number)
            if not known[code .. "|" .. range.market] then
                local first, second, ending = pick(SYLLABLES), pick(SYLLABLES), pick(ENDINGS)
                list[#list + 1] = {code = code, market = range.market, name = first[1] .. second[1] .. ending[1],
                                   pinyin = first[2] .. second[2] .. ending[2]}
            end
        end
    end
    return #list
end

return securities
