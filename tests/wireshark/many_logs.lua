-- Opens a file that holds many logs, each after its length in 4 bytes, as one
-- capture: the plugin's reader reads each log by itself. A process that opens one
-- small log takes most of its time to start.
--
-- The plugin is loaded from here, with a stand-in for what registers its reader.

local MAGIC = "many logs\n"

local reader
do
  local real_file_handler, real_register = FileHandler, register_filehandler
  _G.FileHandler = {new = function() return {} end}
  _G.register_filehandler = function(handler) reader = handler end
  dofile("udi.lua")
  _G.FileHandler, _G.register_filehandler = real_file_handler, real_register
end

-- A log in memory, with the methods of a file that the reader uses. As with files,
-- a read at the end returns nil.
local Memory = {}
Memory.__index = Memory

function Memory:read(size)
  if self.position >= #self.bytes then return nil end
  local bytes = self.bytes:sub(self.position + 1, self.position + size)
  self.position = self.position + #bytes
  return bytes
end

function Memory:seek(_, offset)
  self.position = offset
  return offset
end

-- Returns the next log that the reader opens.
local function open_next(file)
  while true do
    local size = file:read(4)
    if not size then return nil end
    local a, b, c, d = size:byte(1, 4)
    local length = a + b * 256 + c * 65536 + d * 16777216
    local bytes = length > 0 and file:read(length) or ""
    local log = {file = setmetatable({bytes = bytes, position = 0}, Memory), capture = {}}
    if reader.read_open(log.file, log.capture) then return log end
  end
end

local handler = FileHandler.new("many UDI logs", "many_udi", "UDI logs for a test", "rm")

function handler.read_open(file, capture)
  if file:read(#MAGIC) ~= MAGIC then return false end
  capture.private_table = {frames = {}, log = open_next(file)}
  capture.encap = wtap_encaps.USER1
  capture.time_precision = wtap_tsprecs.MSEC
  return true
end

function handler.read(file, capture, frame)
  local state = capture.private_table
  while state.log do
    local log = state.log
    local offset = reader.read(log.file, log.capture, frame)
    if offset then
      state.frames[#state.frames + 1] = {log = log, offset = offset}
      return #state.frames
    end
    state.log = open_next(file)
  end
  return false
end

function handler.seek_read(_, capture, frame, number)
  local place = capture.private_table.frames[number]
  return reader.seek_read(place.log.file, place.log.capture, frame, place.offset)
end

register_filehandler(handler)
