-- The part of the scenario that needs neither the market database nor pages of before.
local session = ...
require("data_pages").run(session, {pages = {}, orders = 0, shares = 12000})
return require("steps").finish()
