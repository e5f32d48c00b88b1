-- The CSV reader and the generator. Usage: securities_test.lua SCRIPTS
package.path = arg[1] .. "/?.lua;" .. package.path
local securities = require "securities"
local checked, failed = 0, 0

local function check(what, seen, expected)
    checked = checked + 1
    if seen == expected then return end
    failed = failed + 1
    print(("FAILED %s: expected %s, seen %s"):format(what, tostring(expected), tostring(seen)))
end

local HEAD = "code,name,market,pinyin\n"
-- text; securities taken as "code/name/market/pinyin" joined by ";"; faults joined by ";" (or the refusal)
local cases = {
    {HEAD .. "600000,浦发银行,17,PFYH\n000001,平安银行,33,PAYH", "600000/浦发银行/17/PFYH;000001/平安银行/33/PAYH", ""},
    {"\239\187\191market,code,extra,pinyin,name\r\n17,600000,x,PFYH,浦发银行\r\n", "600000/浦发银行/17/PFYH", ""},
    {HEAD .. '600000,"a,""b""",17,\n', '600000/a,"b"/17/', ""},
    {HEAD .. "\n \n600000, 浦发 ,17,P\n", "600000/浦发/17/P", ""},
    {HEAD .. "600000,A,17,A\n600000,B,17,B\n600000,C,33,C\n", "600000/A/17/A;600000/C/33/C", "line 3: the code is there already"},
    {HEAD .. "600000,A\n", "", "line 2: the market is not a number"},
    {HEAD .. "600000,,17,A\n", "", "line 2: the name is empty"},
    {HEAD .. "600'--,A,17,A\n", "", "line 2: the code is not letters and digits"},
    {HEAD .. ",A,17,A\n", "", "line 2: the code is not letters and digits"},
    {HEAD .. "600000,A,-1,A\n", "", "line 2: the market is not a number"},
    {HEAD .. "600000,A\0B,17,A\n", "", "line 2: name has a control character"},
    {HEAD .. "600000,\198\214,17,A\n600001,\224\128,17,A\n", "", "line 2: name is not UTF-8;line 3: name is not UTF-8"},
    {HEAD .. "600000," .. ("A"):rep(65) .. ",17,A\n", "", "line 2: name is too long"},
    {HEAD .. '600000,"A,17,A\n600001,"A"B,17,A\n600002,A"B,17,A\n', "", "line 2: a quotation mark is out of place;" ..
        "line 3: a quotation mark is out of place;line 4: a quotation mark is out of place"},
    {HEAD, "", ""},
    {"", nil, "the first line does not name the column code"},
    {"600000,A,17,A\n", nil, "the first line does not name the column code"},
    {"code,name,market\n", nil, "the first line does not name the column pinyin"},
}
for index, case in ipairs(cases) do
    local list, faults = securities.parse(case[1])
    local seen = {}
    for _, s in ipairs(list or {}) do seen[#seen + 1] = ("%s/%s/%s/%s"):format(s.code, s.name, s.market, s.pinyin) end
    check("list of case " .. index, list and table.concat(seen, ";"), case[2])
    check("faults of case " .. index, type(faults) == "table" and table.concat(faults, ";") or faults, case[3])
end

-- A megabyte of one quoted field, and of separators: refused in no time.
local began = os.clock()
securities.parse(HEAD .. '"' .. ('""'):rep(500000) .. "\n" .. (","):rep(1000000) .. "\n")
check("hostile lines are quick", os.clock() - began < 2, true)

local file = assert(io.open(arg[1] .. "/../data/securities_list.csv", "rb"))
local text = file:read("*a")
file:close()
local list, faults = securities.parse(text)
check("faults of the list", table.concat(faults, ";"), "")
check("size of the list", #list > 200, true)
local markets = {}
for _, security in ipairs(list) do markets[security.market] = true end
for market in ("17 18 19 20 21 22 33 34 35 36 37 73 76 145 146 153 156"):gmatch("%d+") do
    check("market " .. market, markets[market], true)
end

local again = securities.parse(text)
check("grown to", securities.grow(list, 20000), 20000)
securities.grow(again, 20000)
local known, same, doubled = {}, true, 0
for index, security in ipairs(list) do
    local key = security.code .. "|" .. security.market
    doubled = doubled + (known[key] and 1 or 0)
    known[key] = true
    same = same and security.name == again[index].name and security.code == again[index].code
end
check("codes that were there", doubled, 0)
check("the same every time", same, true)
check("not grown below its size", securities.grow(list, 10), 20000)

print(("%d passed, %d failed"):format(checked - failed, failed))
os.exit(failed == 0 and 0 or 1)
