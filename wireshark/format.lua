-- What a frame holds, and how its bytes are read.
--
-- The reader makes one frame of each record that prints a line: a pseudo-header, and
-- then the record as in the log.
--
--   offset  bytes
--        0      1  format of this header: 1
--        1      1  why the log ends after this record, see LOG_ENDS; 0 if it does not
--        2      2  zero
--        4      4  HIP version
--        8      4  clock reference in seconds
--       12      4  the value that was wrong, for some reasons at offset 1
--       16         the record, with its header of 16 bytes
--
-- So a frame contains all that the dissector needs, and a capture file that was saved
-- from a log shows the same as the log. The version could have been kept in
-- the link type instead, but only 16 link types are free for private use.
--
-- All integers are little-endian. The code runs in Lua 5.2 and in Lua 5.4, so it
-- has no bitwise operators, no integer division and no string.unpack.

local vocabulary = ...

local byte, char = string.byte, string.char

local PSEUDO_HEADER_SIZE = 16
local PSEUDO_HEADER_FORMAT = 1
local RECORD_HEADER_SIZE = 16

local HEADERS_SIZE = PSEUDO_HEADER_SIZE + RECORD_HEADER_SIZE

local HEADER_MAGIC = 0x1289ABEF
local FORMAT_VERSION = 6
local EVENT_MAGIC = 0x13572467
local SIGNAL_MAGIC = 0x13572468
local TIME_REF, LOAD, UNLOAD = 0, 1, 2

-- Ids in this range are signals of the firmware, all others of the driver.
local function is_hip_id(id) return id >= 0x0065 and id <= 0x9FFF end

local LOG_GOES_ON = 0
local CUT = 9
-- Why a log ends before its last byte. Each text takes the value that was wrong.
local LOG_ENDS = {
  [1] = "bad magic number 0x%08X in place of a record",
  [2] = "a clock reference has %d bytes, not 4 or 8",
  [3] = "a Load event has %d bytes, not 0",
  [4] = "an Unload event has %d bytes, not 0",
  [5] = "bad magic number 0x%08X in the header after a reload",
  [6] = "format version %d in the header after a reload",
  [7] = "HIP version 0x%08X in the header after a reload is unknown or older",
  [CUT] = "the next record is cut short",
}

local versions = vocabulary.versions
local version_of_packed = {}
for index, version in ipairs(versions) do
  version.index = index
  version.letter = char(byte("A") + index - 1)
  version.is_old = version.packed < 0x0E000000
  version_of_packed[version.packed] = version
end

-- Offsets count from 0, as in the documents.
local function u16_at(bytes, offset)
  local low, high = byte(bytes, offset + 1, offset + 2)
  return low + high * 256
end

local function u32_at(bytes, offset)
  local a, b, c, d = byte(bytes, offset + 1, offset + 4)
  return a + b * 256 + c * 65536 + d * 16777216
end

local function to_signed(value, width)
  local sign = width == 16 and 32768 or 2147483648
  if value >= sign then return value - 2 * sign end
  return value
end

local function u32_bytes(value)
  local a = value % 256
  value = (value - a) / 256
  local b = value % 256
  value = (value - b) / 256
  local c = value % 256
  return char(a, b, c, (value - c) / 256)
end

return {
  PSEUDO_HEADER_SIZE = PSEUDO_HEADER_SIZE,
  PSEUDO_HEADER_FORMAT = PSEUDO_HEADER_FORMAT,
  RECORD_HEADER_SIZE = RECORD_HEADER_SIZE,
  HEADERS_SIZE = HEADERS_SIZE,
  HEADER_MAGIC = HEADER_MAGIC,
  FORMAT_VERSION = FORMAT_VERSION,
  EVENT_MAGIC = EVENT_MAGIC,
  SIGNAL_MAGIC = SIGNAL_MAGIC,
  TIME_REF = TIME_REF,
  LOAD = LOAD,
  UNLOAD = UNLOAD,
  LOG_GOES_ON = LOG_GOES_ON,
  CUT = CUT,
  LOG_ENDS = LOG_ENDS,
  versions = versions,
  version_of_packed = version_of_packed,
  u16_at = u16_at,
  u32_at = u32_at,
  to_signed = to_signed,
  u32_bytes = u32_bytes,
  is_hip_id = is_hip_id,
}
