-- The fields of signals, and the names that filters use for them.
--
-- Layouts and labels are texts in the vocabulary. They are read when they are needed.

local vocabulary, parts = ...
local versions = parts.format.versions

local max = math.max

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

return {
  udi = udi,
  udi_capture = udi_capture,
  own = own,
  experts = experts,
  FORMS = FORMS,
  for_each_field = for_each_field,
  labels_of = labels_of,
  uses = uses,
  items = items,
  label_items = label_items,
  converters = converters,
}
