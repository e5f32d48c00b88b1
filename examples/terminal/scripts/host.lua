-- The host script: starts the terminal, then runs the scenario or the prompt. What it returns is the exit code.
local options = terminal.options()
local session = require "session"

local ok, reason = session.start(options)
if not ok then
    io.stderr:write("terminal: ", reason, "\n")
    return 2
end
if options.scenario ~= "" then
    local scenario = assert(loadfile(options.scenario))
    return scenario(session)
end
return require("prompt").run(session)
