-- The part of the scenario with the code list: it is loaded, then searched by fragments, initials and names, each time with
-- what a walk over the list of securities finds.
local step = require("steps").step
local code_list = {}

local MOST = 10
-- The markets as the query for the code list names them.
local MARKETS = {}
for market in ("17 33 18 34 19 20 35 36 22 153 156 73 76 21 37 145 146"):gmatch("%d+") do
    MARKETS[#MARKETS + 1], MARKETS[market] = market, #MARKETS + 1
end
local MATCHES = {"code", "code...", "initials...", "name...", "inside"}

-- How well a security fits, an index of MATCHES; nil when it does not.
local function match_of(security, query)
    local function begins(text) return text:sub(1, #query) == query end
    if security.code == query then return 1 end
    if begins(security.code) then return 2 end
    if begins(security.pinyin) then return 3 end
    if begins(security.upper_name) then return 4 end
    if security.key:find(query, 1, true) then return 5 end
end

-- What the walk finds: the candidates, best first, and the first one in the order of keys.
local function walk(list, query)
    local found, first = {}, nil
    query = query:upper()
    for _, security in ipairs(list) do
        local match = match_of(security, query)
        if match then
            found[#found + 1] = {security = security, match = match}
            if not first or security.key < first.key then first = security end
        end
    end
    table.sort(found, function(a, b)
        if a.match ~= b.match then return a.match < b.match end
        local one, other = a.security, b.security
        if one.market ~= other.market then return MARKETS[one.market] < MARKETS[other.market] end
        return one.code < other.code
    end)
    return found, first
end

-- A part of the text's characters.
local function characters(text, from, to)
    local all = {}
    for character in text:gmatch("[%z\1-\127\194-\244][\128-\191]*") do all[#all + 1] = character end
    return table.concat(all, "", math.max(from, 1), math.min(to, #all))
end

-- The searches of each kind, made of securities from all over the list.
local function queries_of(list, kind)
    local make = {
        fragment = function(s) return {s.code, s.code:sub(1, 3), s.code:sub(3, 5), s.code:sub(-4)} end,
        initials = function(s) return {s.pinyin:lower(), s.pinyin:sub(1, 2), s.pinyin:sub(2, 3), s.pinyin:sub(-1)} end,
        name = function(s)
            return {s.name, characters(s.name, 1, 1), characters(s.name, 2, 3), s.code:sub(-2) .. characters(s.name, 1, 2)}
        end,
    }
    local queries = {}
    for i = 1, #list, math.max(1, math.floor(#list / 25)) do
        for _, query in ipairs(make[kind](list[i])) do
            if query ~= "" and not query:find("|", 1, true) then queries[#queries + 1] = query end
        end
    end
    queries[#queries + 1] = kind == "name" and "无此名" or "QQZZ9"
    return queries
end

function code_list.run(session)
    local list = {}
    for _, security in ipairs(session.securities) do
        if MARKETS[security.market] then
            local copy = {code = security.code, name = security.name, market = security.market,
                          pinyin = security.pinyin:upper(), upper_name = security.name:upper()}
            copy.key = copy.code .. copy.upper_name .. copy.pinyin
            list[#list + 1] = copy
        end
    end

    -- What differs, for people; at most three lines.
    local function compare(queries)
        local lookups, candidates = session.search(queries, MOST)
        if not lookups then return false, "no answer came" end
        local wrong, place, longest = {}, 1, 0
        local function fault(query, what, seen, expected)
            if seen ~= expected then
                wrong[#wrong + 1] = ("%s of \"%s\": %s, not %s"):format(what, query, tostring(seen), tostring(expected))
            end
        end
        for i, query in ipairs(queries) do
            local expected, first = walk(list, query)
            local lookup = lookups[i] or {}
            fault(query, "found", lookup.found, first and "1" or "0")
            fault(query, "first market", lookup.market, first and first.market or "")
            fault(query, "first name", lookup.name, first and first.name or "")
            longest = math.max(longest, tonumber(lookup.microseconds) or 0)
            for rank = 1, math.min(#expected, MOST) do
                local seen, wanted = candidates[place] or {}, expected[rank]
                local same = seen.query == query
                fault(query, "candidate " .. rank, same and ("%s:%s %s %s"):format(seen.code, seen.market, seen.name, seen.match),
                      ("%s:%s %s %s"):format(wanted.security.code, wanted.security.market, wanted.security.name,
                                             MATCHES[wanted.match]))
                fault(query, "match " .. rank, (seen.matched or ""):upper(), query:upper())
                place = place + 1
            end
        end
        fault("all", "candidates", #candidates, place - 1)
        local text = ("%d queries, %d candidates, at most %d us each"):format(#queries, #candidates, longest)
        if #wrong > 0 then
            text = text .. ("; %d differ:\n              "):format(#wrong) .. table.concat(wrong, "\n              ", 1, math.min(3, #wrong))
        end
        return #wrong == 0, text, candidates
    end

    step("The code list is loaded", "in the background, from the market database; a page finds every security of it", function()
        local lookups = session.search({list[1].code, list[#list].code}, MOST) or {}
        local name = terminal.security_name(list[1].code, list[1].market)
        local market = terminal.security_market(list[1].code, terminal.to_codepage(list[1].name))
        local expected = list[1].name .. ":" .. list[1].market
        return #lookups == 2 and lookups[1].code_name == list[1].name and
                   lookups[2].code_name ~= "" and name == expected and market == list[1].market,
               ("%d securities; get_securityname %s, get_marketbycodeandzqmc %s"):format(#list, name, market)
    end)

    for _, kind in ipairs({"fragment", "initials", "name"}) do
        step("Search by " .. kind, "as a walk over the list finds them: the first in key order, and the best ten with what matched",
             function()
            local queries = queries_of(list, kind)
            local good, text, candidates = compare(queries)
            local shown = {}
            for i = 1, math.min(3, #candidates) do
                local c = candidates[i]
                shown[i] = ("%s -> %s %s %s (%s)"):format(c.query, c.code, c.name, c.phonetic, c.match)
            end
            return good, text .. "\n              " .. table.concat(shown, "\n              ")
        end)
    end

    step("The code list is loaded again", "twice by init_keyfairy and once by a notice; searches in the meantime find the same", function()
        assert(terminal.load_code_list(""))
        assert(terminal.load_code_list(""))
        assert(terminal.code_list_changed())
        local good, text = compare({list[1].code, list[#list].pinyin, list[#list].name})
        return good, text
    end)
    while session.take_record() do end
end

return code_list
