-- The scripted scenario: what a user or a server would do, step by step.
local session = ...
local FUNDS, POSITIONS = 1201, 1202
local ACCOUNT, PAGE = "880001", "资金持仓"
local steps = require "steps"
local step = steps.step

local function show(page)
    local view = session.view(page)
    local text = view and view.text or "(nothing)\n"
    print()
    for line in text:gmatch("([^\n]*)\n") do print(line == "" and "    |" or "    | " .. line) end
end

local function requests() return session.requests(FUNDS) + session.requests(POSITIONS) end

-- The page's view once `test(view)` holds.
local function view_when(test)
    return session.wait(function()
        local view = session.view(PAGE)
        return view and test(view) and view
    end)
end

local function volume_of(view, code) return view.text:match("\n" .. code .. " [^\n]- ([%d,]+)  ") end

print("Sample terminal: scripted scenario")

step("Start-up", "the UI thread runs, the library knows the host window, the market database is there", function()
    local window = session.luadui.on_get_hWnd()
    local market = session.market
    return window == terminal.window() and session.ui_thread > 0 and market and market.count > 200,
           ("UI thread %d after %d ms, host window %d, %s securities"):format(
               session.ui_thread, session.started_in, window, market and market.count or session.market_fault)
end)

require("code_list").run(session)

step("A page is created", "on_init answers true and the page knows its account", function()
    local created = session.open_page(PAGE, ACCOUNT)
    local info = session.luadui.get_login_info(terminal.to_codepage(PAGE))
    return created == true and info == "fund_token=880001;user=demo",
           ("page created: %s, login information: %s"):format(tostring(created), tostring(info))
end)

step("Its queries are sent", "one for funds (1201), one for positions (1202), to the simulated broker", function()
    session.wait(function() return requests() >= 2 end)
    return session.requests(FUNDS) == 1 and session.requests(POSITIONS) == 1,
           ("funds %d, positions %d"):format(session.requests(FUNDS), session.requests(POSITIONS))
end)

step("The answers are shown", "funds in three currencies, nine positions, initials from the market database", function()
    local view = view_when(function(view) return view.answers == 2 end)
    if not view then return false, "no answer was shown in time" end
    local _, lines = view.text:gsub("\n%d%d%d%d%d%d ", "")
    local _, initials = view.text:gsub("%s[A-Z][A-Z0-9]+\n", "")
    -- A list of securities from elsewhere need not have all of them.
    local known = initials == 9 or terminal.options().securities ~= ""
    return lines == 9 and known and view.text:find("贵州茅台", 1, true) and view.text:find("\nHKD", 1, true) and true,
           ("%d answers, %d positions, %d initials"):format(view.answers, lines, initials)
end)
show(PAGE)

step("The page goes to sleep and the account changes", "two trades cause four change notices (funds, positions); nothing is sent", function()
    session.sleep(PAGE, true)
    view_when(function(view) return view.asleep end)
    local before, notices = requests(), terminal.broker_stats().notices
    assert(terminal.trade(ACCOUNT, "600000", 1000))
    assert(terminal.trade(ACCOUNT, "600000", 2000))
    session.idle(300)
    local sent, told = requests() - before, terminal.broker_stats().notices - notices
    return sent == 0 and told == 4, ("%d notices for two trades, %d queries sent"):format(told, sent)
end)

step("The page wakes", "it asks once for each kind that changed, and shows 15,000 shares of 600000", function()
    local before = requests()
    session.sleep(PAGE, false)
    local view = view_when(function(view) return not view.asleep and volume_of(view, "600000") == "15,000" end)
    session.idle(200)
    local now = session.view(PAGE)
    return view ~= nil and requests() - before == 2,
           ("%d queries sent, %s shares shown"):format(requests() - before, now and volume_of(now, "600000") or "no")
end)
show(PAGE)

step("A change while the page is awake", "it asks at once and shows 14,500 shares", function()
    local before = requests()
    assert(terminal.trade(ACCOUNT, "600000", -500))
    local view = view_when(function(view) return volume_of(view, "600000") == "14,500" end)
    return view ~= nil and requests() - before == 2, ("%d queries sent, %s shares shown"):format(
               requests() - before, view and volume_of(view, "600000") or "other")
end)

step("A setting is written and read", "the value comes back and stands in the settings file", function()
    session.use_settings(session.settings_file)
    session.write_setting("skin", "black")
    session.write_setting("签名", "资金\\持仓|页")
    local skin, note = session.read_setting("skin"), session.read_setting("签名")
    local file = io.open(terminal.options().data .. "/qsclient/users/user.cfg", "rb")
    local text = file and file:read("*a") or ""
    if file then file:close() end
    return skin == "black" and note == "资金\\持仓|页" and text:find("skin=black\n", 1, true) ~= nil,
           ("skin = %s, 签名 = %s, %d bytes in the file"):format(skin, note, #text)
end)

step("A setting of a file outside the data folder", "it is refused: nothing is written, the value reads empty", function()
    session.use_settings("\\..\\..\\outside.cfg")
    session.write_setting("skin", "red")
    local value = session.read_setting("skin")
    session.use_settings(session.settings_file)
    local refused = terminal.counters().settings_name_refused or 0
    return value == "" and refused == 2, ("value \"%s\", %d refusals counted"):format(value, refused)
end)

step("The broker answers with an error", "the page shows the error and keeps its numbers", function()
    assert(terminal.fault("error", 1))
    assert(terminal.trade(ACCOUNT, "600519", -100))
    local view = view_when(function(view) return view.errors == 1 end)
    local message = view and view.text:match("(%[%-150%][^\n]*)")
    return message ~= nil and volume_of(view, "600000") == "14,500", message or "no error was shown in time"
end)

step("The broker answers with garbage", "the page counts four answers it cannot read and keeps its numbers", function()
    local before = session.view(PAGE).unreadable
    assert(terminal.fault("garbage", 4))
    assert(terminal.trade(ACCOUNT, "600519", -100))
    assert(terminal.trade(ACCOUNT, "600519", 100))
    local view = view_when(function(view) return view.unreadable == before + 4 end)
    return view ~= nil and volume_of(view, "600000") == "14,500",
           view and ("%d unreadable answers counted"):format(view.unreadable - before) or "they were not counted in time"
end)

step("The broker is slow, then silent", "the late answer is shown; the lost ones leave the old numbers", function()
    assert(terminal.fault("delay", 2, 1000))
    local before = session.view(PAGE).answers
    assert(terminal.trade(ACCOUNT, "600519", 100))
    session.idle(200)
    local early = session.view(PAGE).answers - before
    local late = view_when(function(view) return view.answers == before + 2 end)
    assert(terminal.fault("silence", 2))
    assert(terminal.trade(ACCOUNT, "600519", -100))
    session.idle(200)
    local lost = session.view(PAGE).answers - before - 2
    return early == 0 and late ~= nil and lost == 0,
           ("answers after 200 ms: %d, then: %d, of the silent broker: %d"):format(early, late and 2 or 0, lost)
end)

step("A page that cannot be loaded", "on_init answers false; the log says which file was looked for", function()
    local function log()
        local file = io.open(terminal.options().home .. os.date("/log/luadui-%Y%m%d.log"), "rb")
        local text = file and file:read("*a") or ""
        if file then file:close() end
        return text
    end
    local before = #log()
    local created = session.open_page("无此页", ACCOUNT, "/nosuchpage.dll")
    local line = log():sub(before + 1):match("[^\n]*nosuchpage[^\n]*")
    return created == false and line ~= nil,
           ("created: %s; log: %s"):format(tostring(created), line and terminal.to_utf8(line) or "no line")
end)

step("A page for an unknown account", "the broker's error is shown", function()
    local created = session.open_page("未知账号", "999999")
    local view = session.wait(function()
        local view = session.view("未知账号")
        return view and view.errors == 2 and view
    end)
    local message = view and view.text:match("(%[%-101%][^\n]*)")
    return created == true and message ~= nil, message or "no error was shown in time"
end)

step("A page created from another side", "create_dui_page answers a window; the page is fitted to the host window",
     function()
    local window = terminal.create_page(terminal.to_codepage("第二页"), session.fund_library, "fund_token=880002")
    local view = session.wait(function()
        local view = session.view("第二页")
        return view and view.answers == 2 and view
    end)
    return window > 0 and view ~= nil and view.width == 1200,
           ("window %d, %s"):format(window, view and view.width .. " x " .. view.height or "nothing shown")
end)
show("第二页")

step("The host script tells the page something", "the page shows the text", function()
    session.tell(PAGE, "行情服务器已切换")
    local view = view_when(function(view) return view.text:find("行情服务器已切换", 1, true) end)
    return view ~= nil, view and view.text:match("(消息[^\n]*)") or "it was not shown in time"
end)

step("A script sends a frame message", "it reaches the host window", function()
    session.luadui.send_frame(7, "main", "open", '{"page":"fund","n":[1,2]}')
    local frame = session.wait(terminal.take_frame)
    return frame ~= nil and frame.code == 7 and frame.method == "open" and frame.body == '{"page":"fund","n":[1,2]}',
           frame and ("%d %s.%s %s"):format(frame.code, frame.target, frame.method, frame.body) or "nothing came"
end)

require("data_pages").run(session, {pages = {PAGE, "第二页"}, orders = 8, shares = 14500})
require("trading").run(session, {pages = {"总览"}})
require("quotes").run(session, "交易")
require("accounts").run(session)

step("Clean end", "the UI thread ends within ten seconds and creates no page any more", function()
    local ended, reason = terminal.stop_ui()
    local created = session.open_page("过晚", ACCOUNT)
    return ended == true and created == false, ended and "UI thread ended, page created: " .. tostring(created) or reason
end)

return steps.finish()
