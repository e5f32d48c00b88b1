-- The parts of the scenario that need neither the market database nor pages of before.
local session = ...
require("data_pages").run(session, {pages = {}, orders = 0, shares = 12000})
require("trading").run(session, {pages = {"总览"}})
require("quotes").run(session, "交易")
return require("steps").finish()
