-- Numbers and tables as text.
local tables = {}

-- The whole number of hundredths that a text such as "-1234.5" says; nil when it says none.
function tables.cents(text)
    local sign, whole, part = tostring(text):match("^(%-?)(%d+)%.?(%d*)$")
    if not whole or #part > 2 then return nil end
    local cents = tonumber(whole) * 100 + tonumber((part .. "00"):sub(1, 2))
    return sign == "-" and -cents or cents
end

-- "12345.60" as "12,345.60"; what is no number stays as it is.
function tables.grouped(text)
    local sign, whole, rest = text:match("^(%-?)(%d+)(%.?%d*)$")
    if not whole then return text end
    return sign .. whole:reverse():gsub("(%d%d%d)", "%1,"):reverse():gsub("^,", "") .. rest
end

-- Hundredths as "12,345.60".
function tables.money(cents)
    local size = math.abs(cents)
    return tables.grouped(("%s%.0f.%02d"):format(cents < 0 and "-" or "", math.floor(size / 100), size % 100))
end

local function width(text) return #terminal.to_codepage(text) end

-- A table of texts: `columns` are {heading, key, align} ("right" or nothing), `rows` have their cells under the keys.
-- Numbers are grouped.
function tables.text(columns, rows, indent)
    local lines = {{}, {}}
    local widths = {}
    for i, column in ipairs(columns) do lines[1][i], widths[i] = column[1], width(column[1]) end
    for _, row in ipairs(rows) do
        local cells = {}
        for i, column in ipairs(columns) do
            local text = tostring(row[column[2]] or "")
            cells[i] = column[3] == "right" and tables.grouped(text) or text
            widths[i] = math.max(widths[i], width(cells[i]))
        end
        lines[#lines + 1] = cells
    end
    for i in ipairs(columns) do lines[2][i] = ("-"):rep(widths[i]) end
    local texts = {}
    for _, cells in ipairs(lines) do
        local parts = {}
        for i, column in ipairs(columns) do
            local fill = (" "):rep(widths[i] - width(cells[i]))
            parts[i] = column[3] == "right" and fill .. cells[i] or cells[i] .. fill
        end
        texts[#texts + 1] = indent .. table.concat(parts, "  "):gsub("%s+$", "")
    end
    return table.concat(texts, "\n")
end

return tables
