-- The reader: a FileHandler that opens a log and makes its frames.
--
-- It stays one record ahead of Wireshark. When a record is given out, the reader
-- has already tried to read the next one, so it can say in the frame why the log
-- ends there. There is no frame for that alone, because each frame has a record.
--
-- Wireshark reads a record again at its offset alone. The version and the clock
-- reference that hold there come from `spans`, a list with one entry for each
-- change.

local vocabulary, parts = ...
local frame_format = parts.format
local u16_at, u32_at, to_signed = frame_format.u16_at, frame_format.u32_at, frame_format.to_signed
local u32_bytes, version_of_packed = frame_format.u32_bytes, frame_format.version_of_packed
local RECORD_HEADER_SIZE, HEADERS_SIZE = frame_format.RECORD_HEADER_SIZE, frame_format.HEADERS_SIZE
local PSEUDO_HEADER_FORMAT = frame_format.PSEUDO_HEADER_FORMAT
local log, event_types, events = vocabulary.log, vocabulary.event_types, frame_format.events
local EVENT_MAGIC, SIGNAL_MAGIC = log.event_magic, log.signal_magic
local REASONS = frame_format.REASONS
local is_hip_id = frame_format.is_hip_id

local char, floor, min = string.char, math.floor, math.min

-- The largest frame that Wireshark accepts. A longer record is cut to this size.
local MAX_FRAME_SIZE = 262144
local MAX_PAYLOAD_SIZE = MAX_FRAME_SIZE - HEADERS_SIZE

local ENCAPSULATION = wtap_encaps.USER1
local PACKET = wtap_rec_types.PACKET
local PRESENT = wtap_presence_flags.TS + wtap_presence_flags.CAP_LEN

local Reader = {}
Reader.__index = Reader

-- Returns all `size` bytes, or nil at the end of the log. `cut` is set if there
-- were some bytes, but not all.
function Reader:read_bytes(file, size)
  local bytes = file:read(size)
  if bytes and #bytes == size then
    self.position = self.position + size
    return bytes
  end
  self.cut = bytes ~= nil and #bytes > 0
  return nil
end

function Reader:end_log(reason, value)
  self.end_reason, self.end_value = reason, value or 0
  return nil
end

-- At the end of the stream. A log that ends after a whole record is complete.
function Reader:end_of_file(in_record)
  return self:end_log((in_record or self.cut) and REASONS.cut or REASONS.goes_on)
end

function Reader:begin_span()
  local span = {
    offset = self.position,
    version = self.version,
    clock = self.clock,
    pseudo_header = char(PSEUDO_HEADER_FORMAT, REASONS.goes_on, 0, 0)
      .. u32_bytes(self.version.packed) .. u32_bytes(self.clock) .. u32_bytes(0),
  }
  self.spans[#self.spans + 1] = span
  self.span = span
end

-- Reads a header. After a reload the version may stay or move up, never down.
function Reader:read_header(file)
  local words = self:read_bytes(file, 8)
  if not words then return self:end_of_file() end
  local format_version = u32_at(words, 4)
  if format_version < log.format_version then
    return self:end_log(REASONS.old_format, format_version)
  end
  local word = self:read_bytes(file, 4)
  if not word then return self:end_of_file(true) end
  if u32_at(words, 0) ~= log.header_magic then
    return self:end_log(REASONS.bad_header_magic, u32_at(words, 0))
  end
  if format_version ~= log.format_version then
    return self:end_log(REASONS.new_format, format_version)
  end
  local version = version_of_packed[u32_at(word, 0)]
  if not version or self.version and version.index < self.version.index then
    return self:end_log(REASONS.unknown_hip_version, u32_at(word, 0))
  end
  self.version = version
  self:begin_span()
  return true
end

-- Reads `length` bytes of payload, and returns the first of them up to what
-- Wireshark accepts.
function Reader:read_payload(file, length)
  if length == 0 then return "" end
  local payload = self:read_bytes(file, min(length, MAX_PAYLOAD_SIZE))
  if not payload then return self:end_of_file(true) end
  if length > MAX_PAYLOAD_SIZE then
    -- A length is valid if the file contains the record's last byte.
    self.position = self.position + length - MAX_PAYLOAD_SIZE
    local last = file:seek("set", self.position - 1) and file:read(1)
    if not last or #last == 0 then return self:end_of_file(true) end
  end
  return payload
end

-- What events do, by type, beside their line.
local effects = {
  [event_types.time_ref] = function(reader, payload) reader.clock = u32_at(payload, 0) end,
  [event_types.load] = function(reader)
    reader.header_follows = reader.unloaded
    reader.unloaded = false
  end,
  [event_types.unload] = function(reader) reader.unloaded = true end,
}

-- This and read_signal return the payload if the record makes a frame, true if it does not, nil
-- at the end of the log.
function Reader:read_event(file, head)
  local event_type, size = u32_at(head, 8), u32_at(head, 12)
  -- The size of an unknown event is not used: the next record follows at once.
  if not events[event_type] then return true end
  local event = events[event_type][size]
  if not event then return self:end_log(REASONS.wrong_size + event_type, size) end
  local payload = self:read_payload(file, size)
  if not payload then return nil end
  local effect = effects[event_type]
  if effect then effect(self, payload) end
  return event.has_line and payload or true
end

function Reader:read_signal(file, head)
  local payload = self:read_payload(file, u32_at(head, 8))
  if not payload then return nil end
  local id = u16_at(payload .. "\0\0", 0)
  -- A driver-side signal between Unload and Load cancels the Unload.
  if not is_hip_id(id) then self.unloaded = false end
  return payload
end

-- Moves to the next record that makes a frame. Returns nil at the end of the log.
function Reader:advance(file)
  while true do
    if self.header_follows then
      self.header_follows = false
      if not self:read_header(file) then return nil end
    end
    local offset = self.position
    local head = self:read_bytes(file, RECORD_HEADER_SIZE)
    if not head then return self:end_of_file() end
    local magic = u32_at(head, 0)
    local clock = self.clock
    local payload
    if magic == EVENT_MAGIC then
      payload = self:read_event(file, head)
    elseif magic == SIGNAL_MAGIC then
      payload = self:read_signal(file, head)
    else
      return self:end_log(REASONS.bad_magic, magic)
    end
    if not payload then return nil end
    if self.clock ~= clock then
      -- The record that sets the clock counts from the new reference.
      local position = self.position
      self.position = offset
      self:begin_span()
      self.position = position
    end
    if payload ~= true then
      self.offset, self.frame_span, self.head, self.payload = offset, self.span, head, payload
      return true
    end
  end
end

-- Seconds wrap as the stamp's do; the milliseconds are exact, so that a negative
-- time is in the second before.
local function frame_time(clock, time_word)
  local time = to_signed(time_word, 32)
  local seconds = floor(time / 1000)
  local wrapped = (clock + seconds + 2147483648) % 4294967296 - 2147483648
  return NSTime.new(wrapped, (time - seconds * 1000) * 1000000)
end

function Reader:fill_frame(frame, offset, span, head, payload)
  local pseudo_header = span.pseudo_header
  if offset == self.last_offset then
    pseudo_header = char(PSEUDO_HEADER_FORMAT, self.end_reason) .. pseudo_header:sub(3, 12)
      .. u32_bytes(self.end_value)
  end
  local data = pseudo_header .. head .. payload
  local length = #data
  if u32_at(head, 0) == SIGNAL_MAGIC then
    length = HEADERS_SIZE + u32_at(head, 8)
  end
  frame.encap = ENCAPSULATION
  frame.rec_type = PACKET
  frame.flags = PRESENT
  frame.time = frame_time(span.clock, u32_at(head, 4))
  frame.data = data  -- before the lengths, which it would set as well
  frame.captured_length = #data
  frame.original_length = min(length, 0xFFFFFFFF)
end

local function open_log(file)
  local reader = setmetatable({
    position = 0,
    clock = 0,
    unloaded = false,
    spans = {},
  }, Reader)
  if not reader:read_header(file) then return nil end
  reader.has_next = reader:advance(file)
  return reader
end

-- The span that holds at this offset.
local function span_at(spans, offset)
  local low, high = 1, #spans
  while low < high do
    local middle = floor((low + high + 1) / 2)
    if spans[middle].offset <= offset then low = middle else high = middle - 1 end
  end
  return spans[low]
end

local log_reader = FileHandler.new("WLAN driver UDI log", "udi",
  "The log of the signals between a WLAN driver and its firmware", "rm")
log_reader.extensions = "udi"

function log_reader.read_open(file, capture)
  local reader = open_log(file)
  if not reader then return false end
  capture.private_table = reader
  capture.encap = wtap_encaps.USER1
  capture.time_precision = wtap_tsprecs.MSEC
  return true
end

function log_reader.read(file, capture, frame)
  local reader = capture.private_table
  if not reader.has_next then return false end
  local offset, span, head, payload = reader.offset, reader.frame_span, reader.head, reader.payload
  reader.has_next = reader:advance(file)
  local has_ended = not reader.has_next and reader.end_reason ~= REASONS.goes_on
  if has_ended then reader.last_offset = offset end
  reader:fill_frame(frame, offset, span, head, payload)
  return offset
end

function log_reader.seek_read(file, capture, frame, offset)
  local reader = capture.private_table
  if not file:seek("set", offset) then return false end
  local head = file:read(RECORD_HEADER_SIZE)
  if not head or #head < RECORD_HEADER_SIZE then return false end
  local is_signal = u32_at(head, 0) == SIGNAL_MAGIC
  local size = is_signal and min(u32_at(head, 8), MAX_PAYLOAD_SIZE) or u32_at(head, 12)
  local payload = size > 0 and file:read(size) or ""
  if not payload or #payload < size then return false end
  reader:fill_frame(frame, offset, span_at(reader.spans, offset), head, payload)
  return true
end

function log_reader.read_close(_, capture) capture.private_table = nil end

-- Wireshark still reads single frames after it has read all of them.
function log_reader.seq_read_close() end

register_filehandler(log_reader)
