-- Opens UDI logs in Wireshark and tshark, and shows each signal with its fields.
--
-- Two parts work together. The reader (a FileHandler) opens a log and makes one
-- frame of each record that prints a line. The dissector shows a frame: the line
-- as the tool prints it, and each field as a tree item and a filter field.
--
-- A frame holds a pseudo-header and then the record as in the log:
--
--   offset  bytes
--        0      1  format of this header: 1
--        1      1  why the log ends after this record, see LOG_ENDS; 0 if it goes on
--        2      2  zero
--        4      4  HIP version
--        8      4  clock reference in seconds
--       12      4  the value that was wrong, for some reasons at offset 1
--       16         the record, with its header of 16 bytes
--
-- So a frame needs nothing that only the log knows, and a capture file that was
-- saved from a log shows the same as the log. The version could have been kept in
-- the link type instead, but only 16 link types are free for private use.
--
-- All integers are little-endian. The code runs in Lua 5.2 and in Lua 5.4, so it
-- has no bitwise operators, no integer division and no string.unpack.
--
-- The build writes the table `vocabulary` in front of this text, see
-- generate_vocabulary.cc.

-- A copy in the plugin folder and one on the command line may both be loaded.
-- Wireshark allows each protocol only once.
if pcall(Dissector.get, "udi") and Dissector.get("udi") then return end

local byte, char, format = string.byte, string.char, string.format
local concat = table.concat
local floor, max, min = math.floor, math.max, math.min

local PSEUDO_HEADER_SIZE = 16
local PSEUDO_HEADER_FORMAT = 1
local RECORD_HEADER_SIZE = 16

local HEADERS_SIZE = PSEUDO_HEADER_SIZE + RECORD_HEADER_SIZE

local HEADER_MAGIC = 0x1289ABEF
local FORMAT_VERSION = 6
local EVENT_MAGIC = 0x13572467
local SIGNAL_MAGIC = 0x13572468
local TIME_REF, LOAD, UNLOAD = 0, 1, 2

-- The largest frame that Wireshark accepts. A longer record is cut to this size.
local MAX_FRAME_SIZE = 262144
local MAX_PAYLOAD_SIZE = MAX_FRAME_SIZE - HEADERS_SIZE

-- Ids in this range are signals of the firmware, all others of the driver.
local FIRST_HIP_ID, LAST_HIP_ID = 0x0065, 0x9FFF

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
local BAD_RECORD_MAGIC, BAD_TIME_REF, BAD_LOAD, BAD_UNLOAD = 1, 2, 3, 4
local BAD_HEADER_MAGIC, BAD_FORMAT_VERSION, BAD_HIP_VERSION = 5, 6, 7

local versions = vocabulary.versions
local version_of_packed = {}
for index, version in ipairs(versions) do
  version.index = index
  version.letter = char(byte("A") + index - 1)
  -- In versions 13.x a field with an unlabelled value has no blank before it.
  version.gap = version.packed < 0x0E000000 and "" or " "
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

-- ---------------------------------------------------------------------------
-- The reader.
--
-- It stays one record ahead of Wireshark. When a record is given out, the reader
-- has already tried to read the next one, so it can say in the frame why the log
-- ends there. A frame of its own for that would be a frame without a record.
--
-- Wireshark reads a record again at its offset alone. The version and the clock
-- reference that hold there come from `spans`, a list with one entry for each
-- change.

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
  return self:end_log((in_record or self.cut) and CUT or LOG_GOES_ON)
end

function Reader:begin_span()
  local span = {
    offset = self.position,
    version = self.version,
    clock = self.clock,
    pseudo_header = char(PSEUDO_HEADER_FORMAT, LOG_GOES_ON, 0, 0)
      .. u32_bytes(self.version.packed) .. u32_bytes(self.clock) .. u32_bytes(0),
  }
  -- A log may set the clock for each record and then have no frame between.
  local last = self.spans[#self.spans]
  self.spans[last and last.offset == span.offset and #self.spans or #self.spans + 1] = span
  self.span = span
end

-- Reads a header. After a reload the version may stay or move up, never down.
function Reader:read_header(file)
  local words = self:read_bytes(file, 8)
  if not words then return self:end_of_file() end
  local format_version = u32_at(words, 4)
  if format_version < FORMAT_VERSION then
    return self:end_log(BAD_FORMAT_VERSION, format_version)
  end
  local word = self:read_bytes(file, 4)
  if not word then return self:end_of_file(true) end
  if u32_at(words, 0) ~= HEADER_MAGIC then
    return self:end_log(BAD_HEADER_MAGIC, u32_at(words, 0))
  end
  if format_version ~= FORMAT_VERSION then
    return self:end_log(BAD_FORMAT_VERSION, format_version)
  end
  local version = version_of_packed[u32_at(word, 0)]
  if not version or self.version and version.index < self.version.index then
    return self:end_log(BAD_HIP_VERSION, u32_at(word, 0))
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
    -- A length is true if the record's last byte is there.
    self.position = self.position + length - MAX_PAYLOAD_SIZE
    local last = file:seek("set", self.position - 1) and file:read(1)
    if not last or #last == 0 then return self:end_of_file(true) end
  end
  return payload
end

-- Each of these reads what follows the record's header, and returns the payload
-- if the record makes a frame, true if it does not, nil at the end of the log.
local event_readers = {
  [TIME_REF] = function(reader, file, size)
    if size ~= 4 and size ~= 8 then return reader:end_log(BAD_TIME_REF, size) end
    local payload = reader:read_bytes(file, size)
    if not payload then return reader:end_of_file(true) end
    reader.clock = u32_at(payload, 0)
    return size == 8 and payload or true
  end,
  [LOAD] = function(reader, _, size)
    if size ~= 0 then return reader:end_log(BAD_LOAD, size) end
    reader.header_follows = reader.unloaded
    reader.unloaded = false
    return ""
  end,
  [UNLOAD] = function(reader, _, size)
    if size ~= 0 then return reader:end_log(BAD_UNLOAD, size) end
    reader.unloaded = true
    return ""
  end,
}

function Reader:read_event(file, head)
  local read = event_readers[u32_at(head, 8)]
  -- The size of an unknown event is not used: the next record follows at once.
  if not read then return true end
  return read(self, file, u32_at(head, 12))
end

function Reader:read_signal(file, head)
  local payload = self:read_payload(file, u32_at(head, 8))
  if not payload then return nil end
  local id = u16_at(payload .. "\0\0", 0)
  -- A driver-side signal between Unload and Load cancels the Unload.
  if id < FIRST_HIP_ID or id > LAST_HIP_ID then self.unloaded = false end
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
      return self:end_log(BAD_RECORD_MAGIC, magic)
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
-- time lies in the second before.
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
  frame.encap = wtap_encaps.USER1
  frame.rec_type = wtap_rec_types.PACKET
  frame.flags = wtap_presence_flags.TS
  frame.time = frame_time(span.clock, u32_at(head, 4))
  frame.captured_length = #data
  frame.original_length = min(length, 0xFFFFFFFF)
  frame.data = data
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
  "The log of the signals between a WLAN driver and its firmware", "rs")
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
  if not reader.has_next and reader.end_reason ~= LOG_GOES_ON then reader.last_offset = offset end
  reader:fill_frame(frame, offset, span, head, payload)
  return offset
end

function log_reader.seek_read(file, capture, frame, offset)
  local reader = capture.private_table
  if not file:seek("set", offset) then return false end
  local head = file:read(RECORD_HEADER_SIZE)
  if not head or #head < RECORD_HEADER_SIZE then return false end
  local size = 0
  if u32_at(head, 0) == SIGNAL_MAGIC then
    size = min(u32_at(head, 8), MAX_PAYLOAD_SIZE)
  elseif u32_at(head, 8) == TIME_REF then
    size = 8
  end
  local payload = size > 0 and file:read(size) or ""
  if not payload or #payload < size then return false end
  reader:fill_frame(frame, offset, span_at(reader.spans, offset), head, payload)
  return true
end

function log_reader.read_close(_, capture) capture.private_table = nil end

-- Wireshark still reads single frames after it has read all of them.
function log_reader.seq_read_close() end

-- ---------------------------------------------------------------------------
-- The filter fields.
--
-- In Wireshark a name has one type. Where the forms of a name differ between
-- signals, the field has the widest of them. A form without a common number (an
-- address and a count, for example) makes all of them bytes.

local FORMS = {
  u8 = {size = 1},
  u16 = {size = 2},
  u32 = {size = 4},
  i16 = {size = 2, signed = true},
  i32 = {size = 4, signed = true},
  x16 = {size = 2, hex = true},
  x16_no_space = {size = 2, hex = true},
  x32 = {size = 4, hex = true},
  enum16 = {size = 2},
  words = {size = 2, hex = true},
  hex8 = {size = 8, hex = true},
  mac = {size = 6, is = "ether"},
  dump = {size = 0, is = "bytes"},
}

local usage = {}  -- by name: what the forms of all signals need

local function note_usage(name, form_name)
  local form = FORMS[form_name]
  local use = usage[name]
  if not use then
    use = {size = 1, hex = true}
    usage[name] = use
  end
  use.is = (use.is == nil or use.is == (form.is or "number")) and (form.is or "number") or "bytes"
  use.signed = use.signed or form.signed
  use.unsigned_size = max(use.unsigned_size or 0, form.signed and 0 or form.size)
  use.size = max(use.size, form.size)
  use.hex = use.hex and form.hex
  use.has_labels = use.has_labels or form_name == "enum16"
end

-- A layout's last field may stand for the three spares at the end of a signal.
for _, layout in ipairs(vocabulary.layouts) do
  local fields = {}
  for _, field in ipairs(layout[4]) do
    if field[2] == "spares" then
      for i = 1, 3 do
        fields[#fields + 1] = {"spare_" .. i, "u32", field[3] + 4 * (i - 1)}
      end
    else
      fields[#fields + 1] = field
    end
  end
  layout[4] = fields
  for _, dump in ipairs(layout[3]) do note_usage(dump, "dump") end
  for _, field in ipairs(fields) do note_usage(field[1], field[2]) end
end

-- The type of a name, and what makes its value of a number that was read.
local function make_field(name, use)
  local abbreviation = "udi." .. name
  local base_of = use.hex and base.HEX or base.DEC
  if use.is == "bytes" then return ProtoField.bytes(abbreviation, name) end
  if use.is == "ether" then return ProtoField.ether(abbreviation, name), Address.ether end
  if use.signed then
    -- A signed type needs one more bit for the values of an unsigned form.
    if max(use.size, 2 * use.unsigned_size) <= 4 then
      return ProtoField.int32(abbreviation, name, base.DEC)
    end
    return ProtoField.int64(abbreviation, name, base.DEC), Int64.new
  end
  if use.size == 1 then return ProtoField.uint8(abbreviation, name, base_of) end
  if use.size == 2 then return ProtoField.uint16(abbreviation, name, base_of) end
  if use.size == 4 then return ProtoField.uint32(abbreviation, name, base_of) end
  return ProtoField.uint64(abbreviation, name, base_of), UInt64.new
end

local udi = Proto("udi", "WLAN driver UDI log")
local udi_capture = Proto("udi_capture", "WLAN driver UDI signals in a capture file")

local own = {
  line = ProtoField.string("udi.line", "Line"),
  signal = ProtoField.string("udi.signal", "Signal"),
  id = ProtoField.uint16("udi.id", "Id", base.HEX),
  hip_version = ProtoField.string("udi.hip_version", "HIP version"),
  response_in = ProtoField.framenum("udi.response_in", "Confirm in", base.NONE,
    frametype.RESPONSE),
  response_to = ProtoField.framenum("udi.response_to", "Request in", base.NONE,
    frametype.REQUEST),
  response_time = ProtoField.relative_time("udi.response_time", "Time from request"),
  event = ProtoField.string("udi.record.event", "Driver event"),
  clock = ProtoField.uint32("udi.record.clock", "Clock reference", base.DEC),
  time = ProtoField.int32("udi.record.time", "Milliseconds from the clock reference", base.DEC),
  length = ProtoField.uint32("udi.record.length", "Length", base.DEC),
  signal_length = ProtoField.uint32("udi.record.signal_length", "Signal length", base.DEC),
}

local fields, labels, value_of, is_bytes = {}, {}, {}, {}
do
  local all = {}
  for _, field in pairs(own) do all[#all + 1] = field end
  for name, use in pairs(usage) do
    fields[name], value_of[name] = make_field(name, use)
    is_bytes[name] = use.is == "bytes"
    all[#all + 1] = fields[name]
    if use.has_labels then
      labels[name] = ProtoField.string("udi." .. name .. ".label", "Label")
      all[#all + 1] = labels[name]
    end
  end
  udi.fields = all
end

local function expert_field(name, text, group, severity)
  return ProtoExpert.new("udi.expert." .. name, text, group, severity)
end

local expert_fields = {
  result = expert_field("result", "The result is not success",
    expert.group.RESPONSE_CODE, expert.severity.WARN),
  transmission = expert_field("transmission", "The transmission was not successful",
    expert.group.RESPONSE_CODE, expert.severity.WARN),
  too_short = expert_field("too_short", "The signal is too short",
    expert.group.MALFORMED, expert.severity.NOTE),
  unknown_id = expert_field("unknown_id", "The id is unknown",
    expert.group.UNDECODED, expert.severity.NOTE),
  damaged = expert_field("damaged", "The log is damaged",
    expert.group.MALFORMED, expert.severity.ERROR),
  bad_length = expert_field("bad_length", "The signal is longer than its record",
    expert.group.MALFORMED, expert.severity.ERROR),
  cut = expert_field("cut", "The log is cut",
    expert.group.MALFORMED, expert.severity.NOTE),
  truncated = expert_field("truncated", "The record is longer than Wireshark accepts",
    expert.group.UNDECODED, expert.severity.NOTE),
}
do
  local all = {}
  for _, field in pairs(expert_fields) do all[#all + 1] = field end
  udi.experts = all
end

do
  local choices = {}
  for index, version in ipairs(versions) do choices[index] = {index, version.name, index} end
  udi.prefs.hip_version = Pref.enum("HIP version of capture files", #versions,
    "The capture file (link type USER0) does not name its HIP version", choices)
end

-- ---------------------------------------------------------------------------
-- Plans: a layout made ready for one version. A field of a plan has a function
-- that reads it from a signal's bytes and returns its number, its text as printed
-- and its label.

local make_reader = {}

function make_reader.u8(prefix, offset)
  return function(bytes)
    local value = byte(bytes, offset + 1)
    return value, prefix .. value
  end
end

function make_reader.u16(prefix, offset)
  return function(bytes)
    local low, high = byte(bytes, offset + 1, offset + 2)
    local value = low + high * 256
    return value, prefix .. value
  end
end

function make_reader.u32(prefix, offset)
  return function(bytes)
    local value = u32_at(bytes, offset)
    return value, prefix .. value
  end
end

function make_reader.i16(prefix, offset)
  return function(bytes)
    local value = to_signed(u16_at(bytes, offset), 16)
    return value, prefix .. value
  end
end

function make_reader.i32(prefix, offset)
  return function(bytes)
    local value = to_signed(u32_at(bytes, offset), 32)
    return value, prefix .. value
  end
end

function make_reader.x16(prefix, offset)
  local printed = prefix .. "0x%04x"
  return function(bytes)
    local value = u16_at(bytes, offset)
    return value, format(printed, value)
  end
end
make_reader.x16_no_space = make_reader.x16

function make_reader.x32(prefix, offset)
  local printed = prefix .. "0x%08x"
  return function(bytes)
    local value = u32_at(bytes, offset)
    return value, format(printed, value)
  end
end

function make_reader.mac(prefix, offset)
  return function(bytes)
    local address = format("%02x:%02x:%02x:%02x:%02x:%02x", byte(bytes, offset + 1, offset + 6))
    return address, prefix .. address
  end
end

-- The bytes are printed in stored order, and the filter's number is the printed
-- one.
function make_reader.hex8(prefix, offset)
  return function(bytes)
    local digits = format("%02x%02x%02x%02x%02x%02x%02x%02x", byte(bytes, offset + 1, offset + 8))
    return UInt64.fromhex(digits), prefix .. "0x" .. digits
  end
end

-- The number is that of the first word. The tree shows the others below it.
function make_reader.words(prefix, offset, count)
  local printed = prefix .. "[" .. ("0x%04x "):rep(count) .. "]"
  return function(bytes)
    local words = {}
    for i = 1, count do words[i] = u16_at(bytes, offset + 2 * (i - 1)) end
    return words[1], format(printed, (table.unpack or unpack)(words))
  end
end

-- The labels of a table in one version: by value, the text as printed and the
-- label itself.
local function labels_of(number, prefix, version)
  local printed, label_of = {}, {}
  for _, label in ipairs(vocabulary.label_tables[number]) do
    if label[3]:find(version.letter, 1, true) then
      printed[label[1]] = prefix .. label[2]
      label_of[label[1]] = label[2]
    end
  end
  return printed, label_of
end

function make_reader.enum16(prefix, offset, table_number, version)
  local printed, label_of = labels_of(table_number, prefix, version)
  return function(bytes)
    local value = u16_at(bytes, offset)
    local text = printed[value]
    if text then return value, text, label_of[value] end
    return value, prefix .. value
  end
end

local function make_plan_field(layout_field, version)
  local name, form, offset, extra = layout_field[1], layout_field[2], layout_field[3],
    layout_field[4]
  local size = FORMS[form].size
  if form == "words" then size = size * extra end
  return {
    name = name,
    offset = offset,
    size = size,
    words = form == "words" and extra or nil,
    read = make_reader[form](name .. ":", offset, extra, version),
    gap = form == "x16_no_space" and "" or " ",
    unlabelled_gap = form == "enum16" and version.gap or nil,
    item = fields[name],
    is_bytes = is_bytes[name],
    label_item = labels[name],
    make_value = form ~= "hex8" and value_of[name] or nil,
  }
end

-- What a field says about success, by its name.
local SUCCESS = {
  result_code = {label = "success", expert = expert_fields.result},
  transmission_status = {label = "successful", expert = expert_fields.transmission},
}

local function make_plan(layout, version)
  local plan = {name = layout[1], min = layout[2], finish = 0, dumps = {}, fields = {}, place = {}}
  for i, name in ipairs(layout[3]) do
    plan.dumps[i] = {name = name, head = " " .. name .. ":{", item = fields[name]}
  end
  for i, layout_field in ipairs(layout[4]) do
    local field = make_plan_field(layout_field, version)
    plan.fields[i] = field
    plan.place[field.name] = plan.place[field.name] or i
    plan.finish = max(plan.finish, field.offset + field.size)
    field.success = SUCCESS[field.name]
  end
  return plan
end

-- A confirm answers the request of the same name. (Their ids differ by 0x0100 in
-- most families, but not in all.) Requests are told apart by the fields that both
-- signals have.
local function link_plans(plans)
  local by_name = {}
  for _, plan in pairs(plans) do by_name[plan.name] = plan end
  for name, request in pairs(by_name) do
    local stem = name:match("^(.*)_req$")
    local confirm = stem and by_name[stem .. "_cfm"]
    if confirm then
      request.exchange, confirm.exchange = stem, stem
      request.is_request = true
      request.keys, confirm.keys = {}, {}
      for _, key in ipairs({"vif", "host_tag"}) do
        if request.place[key] and confirm.place[key] then
          table.insert(request.keys, request.place[key])
          table.insert(confirm.keys, confirm.place[key])
        end
      end
    end
  end
end

local plans_of_version = {}

local function plans_for(version)
  local plans = plans_of_version[version.index]
  if plans then return plans end
  plans = {}
  for id, number in pairs(vocabulary.signals[version.index]) do
    plans[id] = make_plan(vocabulary.layouts[number], version)
  end
  link_plans(plans)
  plans_of_version[version.index] = plans
  return plans
end

-- ---------------------------------------------------------------------------
-- Requests and confirms. Wireshark shows frames in order once and then in any
-- order, so the links are made on the first visit and kept by frame number.

local waiting, response_in, response_to

local function forget_links()
  waiting, response_in, response_to = {}, {}, {}
end
forget_links()

function udi.init() forget_links() end

local function link(plan, values, pinfo)
  local key = plan.exchange
  for _, place in ipairs(plan.keys) do key = key .. "/" .. values[place] end
  local queue = waiting[key]
  if plan.is_request then
    if not queue then
      queue = {first = 1, last = 0}
      waiting[key] = queue
    end
    queue.last = queue.last + 1
    queue[queue.last] = {number = pinfo.number, time = pinfo.abs_ts}
  elseif queue then
    local request = queue[queue.first]
    queue[queue.first] = nil
    queue.first = queue.first + 1
    if queue.first > queue.last then waiting[key] = nil end
    response_in[request.number] = pinfo.number
    -- The times are fractional numbers, exact to less than a microsecond.
    local microseconds = floor((pinfo.abs_ts - request.time) * 1000000 + 0.5)
    response_to[pinfo.number] = {request.number, microseconds}
  end
end

local function add_links(tree, number)
  local answer = response_in[number]
  if answer then tree:add(own.response_in, answer):set_generated() end
  local question = response_to[number]
  if question then
    tree:add(own.response_to, question[1]):set_generated()
    local seconds = floor(question[2] / 1000000)
    tree:add(own.response_time, NSTime.new(seconds, (question[2] - seconds * 1000000) * 1000))
      :set_generated()
  end
end

-- ---------------------------------------------------------------------------
-- The dissector.

local udi_handle  -- set once the protocol is registered

-- `payload` describes what is dissected: the version, where the signal starts in
-- `tvb` and how many of its bytes are there, and the lengths of the whole payload
-- and of the signal as the record gives them.

local function add_bytes(tree, item, payload, offset, size)
  size = max(0, min(size, payload.captured - offset))
  offset = min(offset, payload.captured)
  return tree:add(item, payload.tvb(payload.start + offset, size))
end

-- A field that lies beyond the last byte has no bytes to show, only its value.
local function add_field(tree, payload, field, value, text, label)
  local present = min(field.size, payload.captured - field.offset)
  local range = present > 0 and payload.tvb(payload.start + field.offset, present) or nil
  local item
  if field.is_bytes then
    item = add_bytes(tree, field.item, payload, field.offset, field.size):set_text(text)
  else
    local typed = field.make_value and field.make_value(value) or value
    if range then
      item = tree:add(field.item, range, typed, text)
    else
      item = tree:add(field.item, typed, text)
    end
  end
  if label then
    if range then
      item:add(field.label_item, range, label):set_generated()
    else
      item:add(field.label_item, label):set_generated()
    end
  end
  return item
end

local function add_words(item, payload, field, bytes)
  for i = 2, field.words do
    local offset = field.offset + 2 * (i - 1)
    local value = u16_at(bytes, offset)
    local word = {item = field.item, offset = offset, size = 2, make_value = field.make_value}
    add_field(item, payload, word, value, format("[%d]:0x%04x", i - 1, value))
  end
end

local function hex_digits(payload, offset, size)
  size = min(size, payload.captured - offset)
  if size <= 0 then return "" end
  return payload.tvb(payload.start + offset, size):bytes():tohex(true)
end

-- The pieces of a line and the values of its fields, the same tables for all
-- frames.
local pieces, values = {}, {}

-- Adds the dumps to the pieces and returns how many pieces there are. They show
-- the bulk, or what a signal without bulk has after its least length.
local function dissect_dumps(plan, payload, tree, detailed)
  local offset = payload.bulk_length == 0 and plan.min or payload.signal_length
  local size = payload.length - offset
  local digits = hex_digits(payload, offset, size)
  local count = 1
  for _, dump in ipairs(plan.dumps) do
    pieces[count + 1], pieces[count + 2], pieces[count + 3] = dump.head, digits, "}"
    count = count + 3
    if detailed then
      add_bytes(tree, dump.item, payload, offset, size)
        :set_text(dump.name .. ":{" .. digits .. "}")
    end
  end
  return count
end

-- Returns the line of a known signal, and adds its fields if `detailed`.
local function dissect_fields(plan, payload, pinfo, tree, detailed)
  local bytes = payload.tvb:raw(payload.start, min(payload.captured, plan.finish))
  if #bytes < plan.finish then bytes = bytes .. ("\0"):rep(plan.finish - #bytes) end

  pieces[1] = plan.name
  local count = plan.dumps[1] and dissect_dumps(plan, payload, tree, detailed) or 1
  local plan_fields = plan.fields
  for i = 1, #plan_fields do
    local field = plan_fields[i]
    local value, text, label = field.read(bytes)
    values[i] = value
    pieces[count + 1] = not label and field.unlabelled_gap or field.gap
    pieces[count + 2] = text
    count = count + 2
    local item = tree
    if detailed then
      item = add_field(tree, payload, field, value, text, label)
      if field.words then add_words(item, payload, field, bytes) end
    end
    if field.success and label ~= field.success.label then
      item:add_proto_expert_info(field.success.expert, text)
    end
  end

  if plan.exchange and not pinfo.visited then link(plan, values, pinfo) end
  return concat(pieces, "", 1, count)
end

-- Where a signal comes from and goes to, by the end of its name.
local DIRECTIONS = {
  req = {"host", "firmware"},
  res = {"host", "firmware"},
  cfm = {"firmware", "host"},
  ind = {"firmware", "host"},
}

local function set_columns(pinfo, line, name)
  local direction = name and DIRECTIONS[name:sub(-3)]
  local columns = pinfo.cols
  columns.protocol = "UDI"
  columns.info = line
  if direction then
    columns.src = direction[1]
    columns.dst = direction[2]
  end
end

local function add_line(tree, line)
  tree:add(own.line, line):set_generated()
end

-- Returns the line of a payload.
local function dissect_signal(payload, pinfo, tree, detailed)
  local head = payload.tvb:raw(payload.start, min(2, payload.captured)) .. "\0\0"
  local id = u16_at(head, 0)
  local is_hip = id >= FIRST_HIP_ID and id <= LAST_HIP_ID
  local plan = is_hip and plans_for(payload.version)[id]
  if detailed then
    if plan then tree:add(own.signal, plan.name):set_generated() end
    if payload.captured >= 2 then
      tree:add(own.id, payload.tvb(payload.start, 2), id)
    else
      tree:add(own.id, id)
    end
  end
  if not is_hip then
    tree:add_proto_expert_info(expert_fields.unknown_id)
    return format("Unknown Driver Signal : 0x%04x", id)
  end
  if payload.bulk_length < 0 then
    tree:add_proto_expert_info(expert_fields.bad_length)
    return "vrkt_wlan_udi_log_decode: Invalid length in data reference"
  end
  if not plan then
    tree:add_proto_expert_info(expert_fields.unknown_id)
    return format("Unknown Hip Signal : 0x%04x", id)
  end
  if payload.bulk_length == 0 and payload.signal_length < plan.min then
    tree:add_proto_expert_info(expert_fields.too_short,
      format("%s of %d bytes is too short, it needs %d", plan.name, payload.signal_length, plan.min))
    return "", plan.name
  end
  return dissect_fields(plan, payload, pinfo, tree, detailed), plan.name
end

local function dissect_event(record, tree, detailed)
  local line
  if record.type == LOAD then
    line = "Driver: Loaded"
  elseif record.type == UNLOAD then
    line = "Driver: Unloaded"
  else
    line = format("Driver: Uptime: %d seconds", to_signed(record.uptime, 32))
  end
  if detailed then tree:add(own.event, line) end
  return line
end

local function add_record(tree, tvb, record)
  local header = tree:add(udi, tvb(0, HEADERS_SIZE), "Record")
  header:add(own.hip_version, tvb(4, 4), record.version.name)
  header:add(own.clock, tvb(8, 4), record.clock)
  header:add(own.time, tvb(20, 4), record.time)
  if record.is_signal then
    header:add(own.length, tvb(24, 4), record.length)
    header:add(own.signal_length, tvb(28, 4), record.signal_length)
  end
end

local function add_end_of_log(tree, reason, value)
  if reason == CUT then
    tree:add_proto_expert_info(expert_fields.cut, "After this record the log is cut")
  elseif LOG_ENDS[reason] then
    tree:add_proto_expert_info(expert_fields.damaged,
      "After this record the log is damaged: " .. format(LOG_ENDS[reason], value))
  end
end

-- Reads the pseudo-header and the record's header into `record`. Returns nil if
-- they are not ours.
local function parse_frame(tvb, record)
  local size = tvb:len()
  if size < HEADERS_SIZE then return nil end
  local head = tvb:raw(0, HEADERS_SIZE)
  local version = version_of_packed[u32_at(head, 4)]
  if byte(head, 1) ~= PSEUDO_HEADER_FORMAT or not version then return nil end
  local magic = u32_at(head, PSEUDO_HEADER_SIZE)
  local third, fourth = u32_at(head, 24), u32_at(head, 28)
  record.version = version
  record.end_reason = byte(head, 2)
  record.end_value = u32_at(head, 12)
  record.clock = u32_at(head, 8)
  record.time = to_signed(u32_at(head, 20), 32)
  record.is_signal = magic == SIGNAL_MAGIC
  record.tvb = tvb
  record.start = HEADERS_SIZE
  record.captured = min(size - HEADERS_SIZE, third)
  record.length = third
  record.signal_length = fourth
  record.bulk_length = third - fourth
  if record.is_signal then return record end
  record.type = third
  if magic ~= EVENT_MAGIC or third > UNLOAD then return nil end
  if third == TIME_REF then
    if size < HEADERS_SIZE + 8 then return nil end
    record.uptime = u32_at(tvb:raw(HEADERS_SIZE + 4, 4), 0)
  end
  return record
end

local function finish(pinfo, tree, detailed, line, name)
  set_columns(pinfo, line, name)
  if detailed then
    if name then tree:append_text(", " .. name) end
    add_links(tree, pinfo.number)
    add_line(tree, line)
  end
end

local frame_record = {}  -- the same for all frames

function udi.dissector(tvb, pinfo, root)
  local record = parse_frame(tvb, frame_record)
  if not record then return 0 end
  local detailed = root:referenced(udi_handle)
  local tree = root:add(udi, tvb())
  if detailed then add_record(tree, tvb, record) end
  local line, name
  if record.is_signal then
    line, name = dissect_signal(record, pinfo, tree, detailed)
    if record.captured < record.length then
      tree:add_proto_expert_info(expert_fields.truncated)
    end
  else
    line = dissect_event(record, tree, detailed)
    if record.type == LOAD and not pinfo.visited then waiting = {} end
  end
  finish(pinfo, tree, detailed, line, name)
  if record.end_reason ~= LOG_GOES_ON then
    add_end_of_log(tree, record.end_reason, record.end_value)
  end
  record.tvb = nil
  return tvb:len()
end

function udi_capture.dissector(tvb, pinfo, root)
  local version = versions[udi.prefs.hip_version] or versions[#versions]
  local detailed = root:referenced(udi_handle)
  local tree = root:add(udi, tvb())
  if detailed then tree:add(own.hip_version, version.name):set_generated() end
  local length = tvb:reported_len()
  local line, name = dissect_signal({
    tvb = tvb,
    version = version,
    start = 0,
    captured = tvb:len(),
    length = length,
    signal_length = length,
    bulk_length = 0,
  }, pinfo, tree, detailed)
  finish(pinfo, tree, detailed, line, name)
  return tvb:len()
end

local link_types = DissectorTable.get("wtap_encap")
link_types:add(wtap_encaps.USER0, udi_capture)
link_types:add(wtap_encaps.USER1, udi)
udi_handle = Dissector.get("udi")
register_filehandler(log_reader)
