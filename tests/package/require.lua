-- The module registers exactly its sixteen functions and survives the state that loaded it.
local names = {
    "send_frame", "on_set_hWnd", "on_get_hWnd", "on_error", "on_loop", "on_init_marketcodelist", "on_init", "on_size",
    "on_setfocus", "get_login_info", "on_switchtab", "get_version_list", "init_config", "get_config", "set_config",
    "start_VD_hwnd"
}
require "luadui"
local missing = {}
for _, name in ipairs(names) do
    assert(type(luadui[name]) == "function", name .. " is missing")
    missing[name] = true
end
for name in pairs(luadui) do
    assert(missing[name] or name:sub(1, 1) == "_", name .. " is unexpected")
end
print("loaded by " .. (jit and jit.version or _VERSION))
