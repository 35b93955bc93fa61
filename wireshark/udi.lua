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
--
-- The build writes the table `vocabulary` in front of this text, see
-- generate_vocabulary.cc.

-- A copy in the plugin folder and one on the command line may both be loaded.
-- Wireshark allows each protocol only once.
if pcall(Dissector.get, "udi") and Dissector.get("udi") then return end

-- Each item of a tree is an object that Lua has to collect. Lua 5.4 has a collector
-- for short-lived objects. In Lua 5.2 the collector is fastest while the garbage
-- fits into the processor's cache, so it starts early and finishes quickly: this takes
-- half of the time that its defaults take. (The same settings make Lua 5.4 a hundred
-- times slower.)
if _VERSION == "Lua 5.2" then
  collectgarbage("setpause", 100)
  collectgarbage("setstepmul", 1000)
else
  collectgarbage("generational")
end

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
  self.spans[#self.spans + 1] = span
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
    -- A length is valid if the file contains the record's last byte.
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
-- The vocabulary. Layouts and labels are texts, read here when they are needed.

-- The forms of fields, with what a filter field needs to know of them. `words` is
-- the form of each word.
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
  mac = {size = 6, kind = "address"},
  dump = {size = 0, kind = "bytes"},
}

-- Calls `add(name, form, offset, argument)` for each dump and field of a layout,
-- in print order.
local function for_each_field(layout, add)
  for name, form, offset, argument in layout:gmatch("|(%S+) (%S+) (%d+) (%d+)") do
    add(name, form, tonumber(offset), tonumber(argument))
  end
end

-- The labels of an enumeration in one version, by value.
local function labels_of(enumeration, version)
  local labels = {}
  local lines = vocabulary.enumerations[enumeration]
  for value, letters, label in lines:gmatch("(%x+) (%u+) ([^\n]*)\n") do
    if letters:find(version.letter, 1, true) then labels[tonumber(value, 16)] = label end
  end
  return labels
end

-- ---------------------------------------------------------------------------
-- The filter fields.
--
-- In Wireshark a name has one type. Where the forms of a name differ between
-- signals, the field has the widest of them. A number that also occurs as an
-- address or as a dump makes all of them bytes.

local uses = {}  -- by name: what all forms of the name need together

local function note_use(name, form_name)
  local form = FORMS[form_name]
  local kind = form.kind or "number"
  local use = uses[name]
  if not use then
    use = {kind = kind, size = 1, unsigned_size = 0, hex = true}
    uses[name] = use
  end
  if use.kind ~= kind then use.kind = "bytes" end
  use.size = max(use.size, form.size)
  if form.signed then
    use.signed = true
  else
    use.unsigned_size = max(use.unsigned_size, form.size)
  end
  use.hex = use.hex and form.hex
  use.has_labels = use.has_labels or form_name == "enum16"
end

for _, layout in ipairs(vocabulary.layouts) do for_each_field(layout, note_use) end

-- Returns the field of a name, and a function that makes its value of a number
-- where Wireshark needs more than a number.
local function make_item(name, use)
  local filter = "udi." .. name
  local display = use.hex and base.HEX or base.DEC
  if use.kind == "bytes" then return ProtoField.bytes(filter, name) end
  if use.kind == "address" then return ProtoField.ether(filter, name), Address.ether end
  if use.signed then
    -- A signed type needs another bit for the values of an unsigned form.
    if max(use.size, 2 * use.unsigned_size) <= 4 then
      return ProtoField.int32(filter, name, base.DEC)
    end
    return ProtoField.int64(filter, name, base.DEC), Int64.new
  end
  if use.size == 1 then return ProtoField.uint8(filter, name, display) end
  if use.size == 2 then return ProtoField.uint16(filter, name, display) end
  if use.size == 4 then return ProtoField.uint32(filter, name, display) end
  return ProtoField.uint64(filter, name, display), UInt64.new
end

local udi = Proto("udi", "WLAN driver UDI log")
local udi_capture = Proto("udi_capture", "WLAN driver signals in a capture file")

-- No field of a signal may have one of these names.
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
  driver_event = ProtoField.string("udi.driver.event", "Driver event"),
}

local items, label_items, converters = {}, {}, {}
do
  local all = {}
  for _, item in pairs(own) do all[#all + 1] = item end
  for name, use in pairs(uses) do
    assert(not own[name], name)
    items[name], converters[name] = make_item(name, use)
    all[#all + 1] = items[name]
    if use.has_labels then
      label_items[name] = ProtoField.string("udi." .. name .. ".label", "Label")
      all[#all + 1] = label_items[name]
    end
  end
  udi.fields = all
end

local experts = {
  result = ProtoExpert.new("udi.expert.result", "The result is not success",
    expert.group.RESPONSE_CODE, expert.severity.WARN),
  transmission = ProtoExpert.new("udi.expert.transmission", "The transmission failed",
    expert.group.RESPONSE_CODE, expert.severity.WARN),
  too_short = ProtoExpert.new("udi.expert.too_short", "The signal is too short",
    expert.group.MALFORMED, expert.severity.NOTE),
  unknown_id = ProtoExpert.new("udi.expert.unknown_id", "The id is unknown",
    expert.group.UNDECODED, expert.severity.NOTE),
  truncated = ProtoExpert.new("udi.expert.truncated", "The record is not shown whole",
    expert.group.UNDECODED, expert.severity.NOTE),
  cut = ProtoExpert.new("udi.expert.cut", "The log is cut",
    expert.group.MALFORMED, expert.severity.NOTE),
  damaged = ProtoExpert.new("udi.expert.damaged", "The log is damaged",
    expert.group.MALFORMED, expert.severity.ERROR),
  bad_length = ProtoExpert.new("udi.expert.bad_length", "The signal is longer than its record",
    expert.group.MALFORMED, expert.severity.ERROR),
}
do
  local all = {}
  for _, item in pairs(experts) do all[#all + 1] = item end
  udi.experts = all
end

do
  local choices = {}
  for index, version in ipairs(versions) do choices[index] = {index, version.name, index} end
  udi.prefs.hip_version = Pref.enum("HIP version of capture files", #versions,
    "A capture file (link type USER0) does not name its HIP version", choices)
end

-- ---------------------------------------------------------------------------
-- Plans: the layout of a signal in one version, made ready.
--
-- A reader takes a signal's bytes and returns a field's value for Wireshark, what
-- the line shows for it (a text or a number), and true if that is a label.

local make_reader = {}

-- The texts of small numbers. Most values are small, and to print one takes longer than
-- to read it.
local small_numbers = {}
for value = 0, 1023 do small_numbers[value] = format("%d", value) end

local function decimal(value)
  return small_numbers[value] or format("%d", value)
end

function make_reader.u8(offset)
  return function(bytes)
    local value = byte(bytes, offset + 1)
    return value, decimal(value)
  end
end

function make_reader.u16(offset)
  return function(bytes)
    local low, high = byte(bytes, offset + 1, offset + 2)
    local value = low + high * 256
    return value, decimal(value)
  end
end

function make_reader.u32(offset)
  return function(bytes)
    local value = u32_at(bytes, offset)
    return value, decimal(value)
  end
end

function make_reader.i16(offset)
  return function(bytes)
    local value = to_signed(u16_at(bytes, offset), 16)
    return value, decimal(value)
  end
end

function make_reader.i32(offset)
  return function(bytes)
    local value = to_signed(u32_at(bytes, offset), 32)
    return value, decimal(value)
  end
end

function make_reader.x16(offset)
  return function(bytes)
    local value = u16_at(bytes, offset)
    return value, format("0x%04x", value)
  end
end
make_reader.x16_no_space = make_reader.x16

function make_reader.x32(offset)
  return function(bytes)
    local value = u32_at(bytes, offset)
    return value, format("0x%08x", value)
  end
end

function make_reader.mac(offset)
  return function(bytes)
    local address = format("%02x:%02x:%02x:%02x:%02x:%02x", byte(bytes, offset + 1, offset + 6))
    return address, address
  end
end

-- The bytes are shown in stored order, and the value is the number that is shown.
function make_reader.hex8(offset)
  return function(bytes)
    local digits = format("%02x%02x%02x%02x%02x%02x%02x%02x", byte(bytes, offset + 1, offset + 8))
    return UInt64.fromhex(digits), "0x" .. digits
  end
end

-- The value is that of the first word. The tree has the others below it.
function make_reader.words(offset, count)
  local shown = "[" .. ("0x%04x "):rep(count) .. "]"
  return function(bytes)
    local words = {}
    for i = 1, count do words[i] = u16_at(bytes, offset + 2 * (i - 1)) end
    return words[1], format(shown, table.unpack(words))
  end
end

function make_reader.enum16(offset, enumeration, version)
  local labels = labels_of(enumeration, version)
  return function(bytes)
    local low, high = byte(bytes, offset + 1, offset + 2)
    local value = low + high * 256
    local label = labels[value]
    if label then return value, label, true end
    return value, decimal(value)
  end
end

-- What each field with an outcome shows on success.
local SUCCESS = {
  result_code = {label = "success", expert = experts.result},
  transmission_status = {label = "successful", expert = experts.transmission},
}

local function make_field(name, form, offset, argument, version)
  local field = {
    name = name,
    offset = offset,
    size = form == "words" and 2 * argument or FORMS[form].size,
    prefix = name .. ":",
    line_prefix = (form == "x16_no_space" and "" or " ") .. name .. ":",
    read = make_reader[form](offset, argument, version),
    item = items[name],
  }
  field.word_count = form == "words" and argument or nil
  field.is_bytes = uses[name].kind == "bytes" or nil
  field.label_item = form == "enum16" and label_items[name] or nil
  field.success = SUCCESS[name]
  -- This form has a value of Wireshark's own already.
  field.make_value = form ~= "hex8" and converters[name] or nil
  return field
end

-- Most fields occur in many layouts, and their objects are shared.
local fields_of_version = {}

local function field_for(name, form, offset, argument, version)
  local shared = fields_of_version[version.index]
  if not shared then
    shared = {}
    fields_of_version[version.index] = shared
  end
  local key = concat({name, form, offset, argument}, " ")
  local field = shared[key]
  if not field then
    field = make_field(name, form, offset, argument, version)
    shared[key] = field
  end
  return field
end

-- The numbers of the layouts of a version, by id, and the ids by signal name.
local signals_of_version = {}

local function signals_for(version)
  local signals = signals_of_version[version.index]
  if signals then return signals end
  signals = {layouts = {}, ids = {}, plans = {}}
  for id, layout in vocabulary.signals[version.index]:gmatch("(%x+):(%d+)") do
    id, layout = tonumber(id, 16), vocabulary.layouts[tonumber(layout)]
    signals.layouts[id] = layout
    signals.ids[layout:match("^%S+")] = id
  end
  signals_of_version[version.index] = signals
  return signals
end

-- A confirm answers the request of the same name. (Their ids differ by 0x0100 in
-- most families, but not in all.) Returns the fields that distinguish requests: those
-- of the plan that the other signal has too.
local function find_exchange(plan, stem, other, signals)
  local id = signals.ids[stem .. other]
  if not id then return nil end
  local keys = {}
  for _, key in ipairs({"vif", "host_tag"}) do
    if plan.place[key] and signals.layouts[id]:find("|" .. key .. " ", 1, true) then
      keys[#keys + 1] = plan.place[key]
    end
  end
  return keys
end

local function make_plan(signals, id, layout, version)
  local name, least = layout:match("^(%S+) (%d+)")
  local plan = {name = name, min = tonumber(least), finish = 0, dumps = {}, fields = {}, place = {},
    essential = {}}
  for_each_field(layout, function(field_name, form, offset, argument)
    if form == "dump" then
      plan.dumps[#plan.dumps + 1] = {
        prefix = field_name .. ":{",
        line_prefix = " " .. field_name .. ":{",
        item = items[field_name],
      }
      return
    end
    local field = field_for(field_name, form, offset, argument, version)
    plan.fields[#plan.fields + 1] = field
    plan.place[field_name] = plan.place[field_name] or #plan.fields
    plan.finish = max(plan.finish, offset + field.size)
    if field.success then plan.essential[#plan.essential + 1] = #plan.fields end
  end)
  local stem, role = name:match("^(.*)(_%a+)$")
  if role == "_req" then
    plan.request_keys = find_exchange(plan, stem, "_cfm", signals)
    plan.exchange = id
  elseif role == "_cfm" then
    plan.confirm_keys = find_exchange(plan, stem, "_req", signals)
    plan.exchange = signals.ids[stem .. "_req"]
  end
  for _, place in ipairs(plan.request_keys or plan.confirm_keys or {}) do
    plan.essential[#plan.essential + 1] = place
  end
  return plan
end

-- Returns nil for an id that the version does not know.
local function plan_for(version, id)
  local signals = signals_for(version)
  local plan = signals.plans[id]
  if plan then return plan end
  local layout = signals.layouts[id]
  if not layout then return nil end
  plan = make_plan(signals, id, layout, version)
  signals.plans[id] = plan
  return plan
end

-- ---------------------------------------------------------------------------
-- Requests and confirms. Wireshark shows all frames once in order and then in any
-- order, so the links are made on the first visit and kept by frame number.

local waiting        -- by exchange and keys: a frame number, or a queue of them
local sent           -- by frame number: when a waiting request was sent
local response_in    -- by frame number of the request
local response_to    -- by frame number of the confirm
local response_time  -- by frame number of the confirm, in microseconds

local function forget_waiting() waiting, sent = {}, {} end

local function forget_links()
  forget_waiting()
  response_in, response_to, response_time = {}, {}, {}
end
forget_links()

function udi.init() forget_links() end

local function add_request(key, number, time)
  local earlier = waiting[key]
  sent[number] = time
  if not earlier then
    waiting[key] = number
  elseif type(earlier) == "number" then
    waiting[key] = {first = 1, last = 2, earlier, number}
  else
    earlier.last = earlier.last + 1
    earlier[earlier.last] = number
  end
end

-- Takes the oldest request with this key.
local function take_request(key)
  local oldest = waiting[key]
  if type(oldest) ~= "table" then
    waiting[key] = nil
    return oldest
  end
  local number = oldest[oldest.first]
  oldest[oldest.first] = nil
  oldest.first = oldest.first + 1
  if oldest.first > oldest.last then waiting[key] = nil end
  return number
end

local function link(plan, values, pinfo)
  local keys = plan.request_keys or plan.confirm_keys
  local key = plan.exchange
  for i = 1, #keys do key = key * 65536 + values[keys[i]] end
  local number = pinfo.number
  if plan.request_keys then
    add_request(key, number, pinfo.abs_ts)
    return
  end
  local request = take_request(key)
  if not request then return end
  response_in[request] = number
  response_to[number] = request
  -- These times are fractional numbers, exact to less than a microsecond.
  response_time[number] = floor((pinfo.abs_ts - sent[request]) * 1000000 + 0.5)
  sent[request] = nil
end

-- ---------------------------------------------------------------------------
-- The dissector.
--
-- `payload` describes what it dissects: `version`, `id`, `tvb` and where in it the
-- payload starts, how many bytes of it were captured, its length, and the lengths
-- of the signal and of the bulk as the record gives them. It is the same table for
-- all frames, as are `pieces` and `values`: most of the time goes into objects that
-- are made and collected.

local pieces, values = {}, {}

-- A method of an object takes a search each time that it is called.
local add, set_generated = TreeItem.add, TreeItem.set_generated

-- Whether the tree needs all items, or only those that a filter names.
local all_wanted = true

local function is_wanted(tree, item)
  return all_wanted or tree:referenced(item)
end

-- The bytes of the payload that are there, possibly none.
local function captured_range(payload, offset, size)
  size = max(0, min(size, payload.captured - offset))
  return payload.tvb(payload.start + min(offset, payload.captured), size)
end

-- Adds an item on the bytes that are there. Beyond the last byte there are none,
-- only a value.
local function add_item(tree, item, payload, offset, size, value, text)
  local present = payload.captured - offset
  if present <= 0 then return add(tree, item, value, text) end
  if present < size then size = present end
  return add(tree, item, payload.tvb(payload.start + offset, size), value, text)
end

local function add_words(tree, payload, field, bytes)
  local make_value = field.make_value
  for i = 2, field.word_count do
    local offset = field.offset + 2 * (i - 1)
    local value = u16_at(bytes, offset)
    add_item(tree, field.item, payload, offset, 2, make_value and make_value(value) or value,
      format("[%d]:0x%04x", i - 1, value))
  end
end

-- Returns the item, or the tree if the item is not wanted.
local function add_field(tree, payload, field, bytes, value, shown, is_label)
  local label_item = is_label and field.label_item
  if not is_wanted(tree, field.item) and not (label_item and is_wanted(tree, label_item)) then
    return tree
  end
  local text = field.prefix .. shown
  local item
  if field.is_bytes then
    item = add(tree, field.item, captured_range(payload, field.offset, field.size)):set_text(text)
  else
    local make_value = field.make_value
    if make_value then value = make_value(value) end
    item = add_item(tree, field.item, payload, field.offset, field.size, value, text)
  end
  if label_item then add(item, label_item, shown) end
  if field.word_count then add_words(item, payload, field, bytes) end
  return item
end

-- Adds the dumps to the pieces, and returns how many pieces there are. They show
-- the bulk, or what a signal without bulk has after its minimum length.
local function dissect_dumps(plan, payload, tree, detailed)
  local offset = payload.bulk_length == 0 and plan.min or payload.signal_length
  local size = payload.length - offset
  local range = captured_range(payload, offset, size)
  local digits = range:len() > 0 and range:bytes():tohex(true) or ""
  local count = 1
  for _, dump in ipairs(plan.dumps) do
    pieces[count + 1], pieces[count + 2], pieces[count + 3] = dump.line_prefix, digits, "}"
    count = count + 3
    if detailed and is_wanted(tree, dump.item) then
      add(tree, dump.item, range):set_text(dump.prefix .. digits .. "}")
    end
  end
  return count
end

-- The bytes of a signal up to the end of its last field. Beyond the last byte of the
-- record there are zeros.
local function signal_bytes(plan, payload)
  local finish = plan.finish
  local bytes = payload.tvb:raw(payload.start, min(payload.captured, finish))
  if #bytes < finish then bytes = bytes .. ("\0"):rep(finish - #bytes) end
  return bytes
end

local function check_success(tree, field, shown)
  if shown ~= field.success.label then
    tree:add_proto_expert_info(field.success.expert, field.prefix .. shown)
  end
end

-- Reads only the fields that other frames or the expert information depend on. The
-- first of two passes needs no more.
local function read_essential_fields(plan, payload, tree)
  local places = plan.essential
  if #places == 0 then return end
  local bytes = signal_bytes(plan, payload)
  for i = 1, #places do
    local field = plan.fields[places[i]]
    local value, shown = field.read(bytes)
    values[places[i]] = value
    if field.success then check_success(tree, field, shown) end
  end
end

-- Returns the line of a known signal. Adds its fields if `detailed`.
local function dissect_fields(plan, payload, tree, detailed)
  local bytes = signal_bytes(plan, payload)
  pieces[1] = plan.name
  local count = plan.dumps[1] and dissect_dumps(plan, payload, tree, detailed) or 1
  local fields = plan.fields
  local is_old = payload.version.is_old
  for i = 1, #fields do
    local field = fields[i]
    local value, shown, is_label = field.read(bytes)
    values[i] = value
    -- In versions 13.x, an unlabelled value has no blank before its field's name.
    pieces[count + 1] = is_old and field.label_item and not is_label and field.prefix
      or field.line_prefix
    pieces[count + 2] = shown
    count = count + 2
    local item = detailed and add_field(tree, payload, field, bytes, value, shown, is_label) or tree
    if field.success then check_success(item, field, shown) end
  end
  return concat(pieces, "", 1, count)
end

-- Returns the line of a signal, and its name if the version knows it. If the line is
-- not needed, it is not made.
local function dissect_signal(payload, pinfo, tree, detailed, needs_line)
  local id = payload.id
  if payload.captured < payload.length then tree:add_proto_expert_info(experts.truncated) end
  local is_hip = id >= FIRST_HIP_ID and id <= LAST_HIP_ID
  local plan = is_hip and plan_for(payload.version, id)
  if detailed then
    if plan and is_wanted(tree, own.signal) then add(tree, own.signal, plan.name) end
    if is_wanted(tree, own.id) then
      add_item(tree, own.id, payload, 0, 2, id, format("Id: 0x%04x", id))
    end
  end
  if not is_hip then
    tree:add_proto_expert_info(experts.unknown_id)
    return format("Unknown Driver Signal : 0x%04x", id)
  end
  if payload.bulk_length < 0 then
    tree:add_proto_expert_info(experts.bad_length)
    return "vrkt_wlan_udi_log_decode: Invalid length in data reference", plan and plan.name
  end
  if not plan then
    tree:add_proto_expert_info(experts.unknown_id)
    return format("Unknown Hip Signal : 0x%04x", id)
  end
  if payload.bulk_length == 0 and payload.signal_length < plan.min then
    tree:add_proto_expert_info(experts.too_short, format("%s has %d of at least %d bytes",
      plan.name, payload.signal_length, plan.min))
    return "", plan.name
  end
  local line = ""
  if needs_line then
    line = dissect_fields(plan, payload, tree, detailed)
  else
    read_essential_fields(plan, payload, tree)
  end
  if (plan.request_keys or plan.confirm_keys) and not pinfo.visited then
    link(plan, values, pinfo)
  end
  return line, plan.name
end

local function dissect_event(record, tree, detailed)
  local line
  if record.type == LOAD then
    line = "Driver: Loaded"
  elseif record.type == UNLOAD then
    line = "Driver: Unloaded"
  else
    line = format("Driver: Uptime: %d seconds", record.uptime)
  end
  if detailed then add(tree, own.driver_event, record.tvb(PSEUDO_HEADER_SIZE), line) end
  return line
end

local function add_end_of_log(tree, reason, value)
  if reason == CUT then
    tree:add_proto_expert_info(experts.cut, "After this record the log is cut")
  elseif LOG_ENDS[reason] then
    tree:add_proto_expert_info(experts.damaged,
      "After this record the log is damaged: " .. format(LOG_ENDS[reason], value))
  end
end

local function add_links(tree, number)
  local response, request = response_in[number], response_to[number]
  if response then set_generated(add(tree, own.response_in, response)) end
  if request then
    local microseconds = response_time[number]
    local seconds = floor(microseconds / 1000000)
    set_generated(add(tree, own.response_to, request))
    local time = NSTime.new(seconds, (microseconds - seconds * 1000000) * 1000)
    set_generated(add(tree, own.response_time, time))
  end
end

-- Where a signal comes from and goes to, by the end of its name.
local DIRECTIONS = {
  req = {"host", "firmware"},
  res = {"host", "firmware"},
  cfm = {"firmware", "host"},
  ind = {"firmware", "host"},
}

local function show_columns(columns, line, name)
  columns.protocol = "UDI"
  columns.info = line
  local direction = name and DIRECTIONS[name:sub(-3)]
  if direction then columns.src, columns.dst = direction[1], direction[2] end
end

local function show_line(tree, number, line, name)
  if name and all_wanted then tree:append_text(", " .. name) end
  add_links(tree, number)
  if is_wanted(tree, own.line) then set_generated(add(tree, own.line, line)) end
end

-- Whether Wireshark fills columns. Without them, their text is their name.
local function has_columns(columns)
  return tostring(columns.info) ~= "(info)"
end

-- Reads the pseudo-header and the record's header into `record`. Returns false if
-- they are not ours.
local function parse_frame(tvb, record)
  local size = tvb:len()
  if size < HEADERS_SIZE then return false end
  local head = tvb:raw(0, min(size, HEADERS_SIZE + 2))
  local version = version_of_packed[u32_at(head, 4)]
  if byte(head, 1) ~= PSEUDO_HEADER_FORMAT or not version then return false end
  local magic = u32_at(head, PSEUDO_HEADER_SIZE)
  local third, fourth = u32_at(head, 24), u32_at(head, 28)
  record.tvb = tvb
  record.version = version
  record.end_reason = byte(head, 2)
  record.end_value = u32_at(head, 12)
  record.is_signal = magic == SIGNAL_MAGIC
  if record.is_signal then
    record.start = HEADERS_SIZE
    record.captured = min(size - HEADERS_SIZE, third)
    record.length = third
    record.signal_length = fourth
    record.bulk_length = third - fourth
    record.id = u16_at(head:sub(HEADERS_SIZE + 1, HEADERS_SIZE + record.captured) .. "\0\0", 0)
    return true
  end
  if magic ~= EVENT_MAGIC or third > UNLOAD then return false end
  record.type = third
  if third == TIME_REF then
    if size < HEADERS_SIZE + 8 then return false end
    record.uptime = to_signed(u32_at(tvb:raw(HEADERS_SIZE + 4, 4), 0), 32)
  end
  return true
end

local udi_handle  -- of the dissector, once it is registered
local record = {}

function udi.dissector(tvb, pinfo, root)
  if not parse_frame(tvb, record) then return 0 end
  all_wanted = root.visible
  local detailed = all_wanted or root:referenced(udi_handle)
  local columns = pinfo.cols
  local in_columns = has_columns(columns)
  local tree = add(root, udi, tvb)
  if detailed and is_wanted(tree, own.hip_version) then
    add(tree, own.hip_version, tvb(0, HEADERS_SIZE), record.version.name)
  end
  local line, name
  if record.is_signal then
    line, name = dissect_signal(record, pinfo, tree, detailed, detailed or in_columns)
  else
    line = dissect_event(record, tree, detailed)
    -- After a Load, no confirm answers an earlier request.
    if record.type == LOAD and not pinfo.visited then forget_waiting() end
  end
  if in_columns then show_columns(columns, line, name) end
  if detailed then show_line(tree, pinfo.number, line, name) end
  if record.end_reason ~= LOG_GOES_ON then
    add_end_of_log(tree, record.end_reason, record.end_value)
  end
  return tvb:len()
end

function udi_capture.dissector(tvb, pinfo, root)
  all_wanted = root.visible
  local detailed = all_wanted or root:referenced(udi_handle)
  local tree = add(root, udi, tvb)
  record.tvb, record.start = tvb, 0
  record.version = versions[udi.prefs.hip_version] or versions[#versions]
  record.captured = tvb:len()
  record.length = tvb:reported_len()
  record.signal_length, record.bulk_length = record.length, 0
  record.id = u16_at(tvb:raw(0, min(2, tvb:len())) .. "\0\0", 0)
  if detailed then set_generated(add(tree, own.hip_version, record.version.name)) end
  local line, name = dissect_signal(record, pinfo, tree, detailed, true)
  show_columns(pinfo.cols, line, name)
  if detailed then show_line(tree, pinfo.number, line, name) end
  return tvb:len()
end

local link_types = DissectorTable.get("wtap_encap")
link_types:add(wtap_encaps.USER0, udi_capture)
link_types:add(wtap_encaps.USER1, udi)
udi_handle = Dissector.get("udi")
register_filehandler(log_reader)
