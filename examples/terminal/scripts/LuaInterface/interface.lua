-- The Lua interface: what pages and the library may call by name and wait for. It runs in a state of its own (see
-- host/lua_interface.h), so nothing of the host's scripts is visible here.
--
-- A method gets one text, code page 936, and answers one. Pages send JSON and get JSON.
local marketdb = require "LuaInterface.marketdb"
local json = require "cjson"

local methods = {}

-- The text is the query itself.
methods.GetCodeList = marketdb.GetCodeList

-- {"codes": [{"code": "600000", "market": "17"}...]} is answered by {"initials": {"600000|17": "PFYH"...}}; what is
-- not in the market database is left out.
function methods.get_initials(params)
    local initials = {}
    for _, asked in ipairs(json.decode(terminal.to_utf8(params)).codes) do
        local security = marketdb.find(asked.code, asked.market)
        if security then initials[asked.code .. "|" .. asked.market] = security.stock_phonetic end
    end
    return terminal.to_codepage(json.encode({initials = initials}))
end

-- The user's products.
function methods.get_ProductInfo() return '{"products":[{"product_id":"CP01"}]}' end

-- What pages and the library tell: somebody signed in, accounts or groups changed. The host keeps the calls, see
-- terminal.take_host_call.
for _, name in ipairs({"initLoginInfo", "OnAccountChanged", "OnAccountGroupChanged"}) do
    methods[name] = function() return "" end
end

return function(method, params)
    local call = methods[method]
    if not call then error("no method " .. method, 0) end
    return call(params)
end
