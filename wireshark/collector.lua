-- The collection of garbage.
--
-- Each item of a tree is an object that Lua has to collect. In Lua 5.2 that is fastest while
-- the garbage fits into the processor's cache, so some is collected every few frames. The
-- collector's settings stay as they are, because other plugins share them. If much is in
-- use, as after millions of frames, such a step takes longer than it saves. Lua 5.4 is
-- fastest if it is left alone.

local collect = collectgarbage

local FRAMES = 32
local STEP = 2000     -- in kB
local MAX_USED = 8000 -- in kB

local frames_left = FRAMES

-- Is called after each frame of a log.
local function collect_some()
  frames_left = frames_left - 1
  if frames_left > 0 then return end
  frames_left = FRAMES
  if collect("count") < MAX_USED then collect("step", STEP) end
end

if _VERSION ~= "Lua 5.2" then collect_some = function() end end

return {collect_some = collect_some}
