-- The calls of Wireshark's own dissectors.
--
-- A dissector reports a malformed frame in the tree and ends with an error in Lua. In
-- Wireshark 4.0, some errors leave Lua unnoticed instead, for example a frame that is not
-- captured whole: the code after the call never runs, and the call's place on Lua's stack is
-- lost. After 99 such errors nothing written in Lua runs any more.

local MAX_ESCAPES = 50

local is_running, escapes = false, 0

-- Calls a dissector, and returns the bytes that it took, or nil after an error.
local function call(dissector, tvb, pinfo, root)
  is_running = true
  local has_ended, size = pcall(dissector.call, dissector, tvb, pinfo, root)
  is_running = false
  return has_ended and size or nil
end

-- Returns whether the last call was left by such an error, and counts it. To be called for
-- each frame, before its first call.
local function has_escaped()
  if not is_running then return false end
  is_running = false
  escapes = escapes + 1
  return true
end

local function is_safe() return escapes < MAX_ESCAPES end

return {call = call, has_escaped = has_escaped, is_safe = is_safe}
