-- The collector's settings.
--
-- Each item of a tree is an object that Lua has to collect. In Lua 5.2 the collector is
-- fastest while the garbage fits into the processor's cache, so it starts early and finishes
-- quickly: this takes two thirds of the time that its defaults take. Other plugins share the
-- collector, so their settings come back when a function ends. Lua 5.4 does well with its
-- defaults, and slows down a hundredfold with these settings.

local collect = collectgarbage

local function restore(pause, speed, ...)
  collect("setpause", pause)
  collect("setstepmul", speed)
  return ...
end

-- Returns the function, made to run with these settings.
local function tune(run)
  if _VERSION ~= "Lua 5.2" then return run end
  return function(...)
    local pause, speed = collect("setpause", 100), collect("setstepmul", 1000)
    return restore(pause, speed, run(...))
  end
end

return {tune = tune}
