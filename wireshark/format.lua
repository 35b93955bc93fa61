-- What a frame holds, and how its bytes are read.
--
-- The reader makes one frame of each record that prints a line: a pseudo-header, and
-- then the record as in the log.
--
--   offset  bytes
--        0      1  format of this header: 1
--        1      1  why the log ends after this record, see REASONS; 0 if it does not
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

local byte, char, floor, format = string.byte, string.char, math.floor, string.format

local PSEUDO_HEADER_SIZE = 16
local PSEUDO_HEADER_FORMAT = 1
local RECORD_HEADER_SIZE = 16

-- Why a log ends after a record. For a wrong size, the type of the event is added.
local REASONS = {
  goes_on = 0, bad_magic = 1, bad_header_magic = 5, old_format = 6, unknown_hip_version = 7,
  new_format = 8, cut = 9, wrong_size = 16,
}

-- The patterns of the reports, by reason.
local reports = {}
for name, report in pairs(vocabulary.log_ends) do reports[REASONS[name]] = report end

-- The events by type and size. A type has a table, even if none of its sizes fits.
local events = {}
for _, event in ipairs(vocabulary.events) do
  event.has_line = event.text ~= ""
  events[event.type] = events[event.type] or {}
  events[event.type][event.size] = event
  reports[REASONS.wrong_size + event.type] = event.wrong_size
end

local first_hip_id, last_hip_id = vocabulary.log.first_hip_id, vocabulary.log.last_hip_id

-- Ids in this range are signals of the firmware, all others of the driver.
local function is_hip_id(id) return id >= first_hip_id and id <= last_hip_id end

local versions = vocabulary.versions
local version_of_packed = {}
for index, version in ipairs(versions) do
  version.index = index
  version.letter = char(byte("A") + index - 1)
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

local SIGNS = {[8] = 128, [16] = 32768, [32] = 2147483648}

local function to_signed(value, bits)
  local sign = SIGNS[bits]
  return value < sign and value or value - 2 * sign
end

local function u32_bytes(value)
  local a = value % 256
  value = (value - a) / 256
  local b = value % 256
  value = (value - b) / 256
  local c = value % 256
  return char(a, b, c, (value - c) / 256)
end

-- The report of a log's end as the tool has it, or nil.
local function describe_end(reason, value)
  local pattern = reports[reason]
  if not pattern then return nil end
  if reason == REASONS.unknown_hip_version then
    return format((pattern:gsub("%%u", "%%d")), floor(value / 16777216),
      floor(value / 65536) % 256, value % 65536)
  end
  return format(pattern, pattern:find("%d", 1, true) and to_signed(value, 32) or value)
end

return {
  PSEUDO_HEADER_SIZE = PSEUDO_HEADER_SIZE,
  PSEUDO_HEADER_FORMAT = PSEUDO_HEADER_FORMAT,
  RECORD_HEADER_SIZE = RECORD_HEADER_SIZE,
  HEADERS_SIZE = PSEUDO_HEADER_SIZE + RECORD_HEADER_SIZE,
  REASONS = REASONS,
  describe_end = describe_end,
  events = events,
  versions = versions,
  version_of_packed = version_of_packed,
  u16_at = u16_at,
  u32_at = u32_at,
  to_signed = to_signed,
  u32_bytes = u32_bytes,
  is_hip_id = is_hip_id,
}
