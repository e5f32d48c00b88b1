-- The steps of a scenario: each does something, says what was expected and what was seen, and fails when that differs or
-- does not come in time.
local steps = {}
local failed, number = 0, 0

-- `act` answers whether what was expected came, and the text of what was seen.
function steps.step(title, expected, act)
    number = number + 1
    print(("\n%2d  %s"):format(number, title))
    print("    expected  " .. expected)
    local began = terminal.ms()
    local ran, good, seen = pcall(act)
    if not ran then good, seen = false, good end
    print("    seen      " .. tostring(seen))
    print(("    %s  (%d ms)"):format(good and "ok" or "FAILED", terminal.ms() - began))
    if not good then failed = failed + 1 end
end

-- Says how it went; answers the exit code of the program.
function steps.finish()
    local names = {}
    for name in pairs(terminal.counters()) do names[#names + 1] = name end
    table.sort(names)
    print("\nCounted during the scenario (what was dropped, refused or unreadable, and quotes):")
    for _, name in ipairs(names) do print(("    %-28s %d"):format(name, terminal.counters()[name])) end
    print(failed == 0 and ("\nAll %d steps passed."):format(number) or ("\n%d of %d steps FAILED."):format(failed, number))
    return failed == 0 and 0 or 1
end

return steps
