-- The fields of signals, and the names that filters use for them.
--
-- Layouts and labels are texts in the vocabulary. They are read when they are needed.

local vocabulary, parts = ...
local versions = parts.format.versions

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

local udi = Proto("udi", "WLAN driver UDI log")
local udi_capture = Proto("udi_capture", "WLAN driver signals in a capture file")

local own = {
  line = ProtoField.string("udi.line", "Line"),
  signal = ProtoField.string("udi.signal", "Signal"),
  id = ProtoField.uint16("udi.id", "Id", base.HEX),
  hip_version = ProtoField.string("udi.hip_version", "HIP version"),
  response_in = ProtoField.framenum("udi.response_in", "Answer in", base.NONE,
    frametype.RESPONSE, 0, "The packet that answers this one"),
  response_to = ProtoField.framenum("udi.response_to", "Answer to", base.NONE,
    frametype.REQUEST, 0, "The packet that this one answers"),
  response_time = ProtoField.relative_time("udi.response_time", "Time to answer",
    "Time from the packet that this one answers"),
  driver_event = ProtoField.string("udi.driver.event", "Driver event"),
  uptime = ProtoField.int32("udi.uptime", "Uptime", base.DEC, nil, nil, "In seconds"),
  clock_reference = ProtoField.uint32("udi.clock_reference", "Clock reference", base.DEC, nil, nil,
    "Seconds of Unix time from which the milliseconds count"),
  milliseconds = ProtoField.int32("udi.milliseconds", "Milliseconds", base.DEC, nil, nil,
    "Time from the clock reference"),
  record_length = ProtoField.uint32("udi.record_length", "Record length", base.DEC, nil, nil,
    "Bytes of the signal and its bulk"),
  signal_length = ProtoField.uint32("udi.signal_length", "Signal length", base.DEC, nil, nil,
    "Bytes of the signal without its bulk"),
}

-- The fields of signals by their names, the fields of their labels, and what makes a value of a
-- number where Wireshark needs more than a number.
local items, label_items, converters = {}, {}, {}

local CONVERTERS = {ether = Address.ether, uint64 = UInt64.new}

local function make_item(field)
  local filter, name, description = "udi." .. field.name, field.name, field.description
  local make = ProtoField[field.type]
  if field.type == "ether" then return make(filter, name, description) end
  if field.type == "bytes" then return make(filter, name, base.NONE, description) end
  return make(filter, name, field.is_hex and base.HEX or base.DEC, nil, nil, description)
end

do
  local all = {}
  for _, item in pairs(own) do all[#all + 1] = item end
  for _, field in ipairs(vocabulary.fields) do
    local name = field.name
    items[name], converters[name] = make_item(field), CONVERTERS[field.type]
    assert(not own[name], name)  -- that of a signal would hide it
    all[#all + 1] = items[name]
    if field.has_labels then
      label_items[name] = ProtoField.string("udi." .. name .. ".label", name .. " label")
      all[#all + 1] = label_items[name]
    end
  end
  udi.fields = all
end

local experts = {
  result = ProtoExpert.new("udi.expert.result", "The result is not success",
    expert.group.RESPONSE_CODE, expert.severity.WARN),
  disconnect = ProtoExpert.new("udi.expert.disconnect", "The reason of a disconnect",
    expert.group.RESPONSE_CODE, expert.severity.NOTE),
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

-- Which packets of link type USER0 are signals of a capture file.
local CLAIM = {SIGNALS = 1, ALL = 2, NONE = 3}

do
  local prefs = udi.prefs
  prefs.dissect_frames = Pref.bool("Dissect the frames inside signals", true,
    "Wireshark's own dissectors show frames of Ethernet and IEEE 802.11")
  prefs.dissect_elements = Pref.bool("Dissect information elements", false,
    "Shows information elements that are not in a frame, as if a probe request had brought "
      .. "them: filters for probe requests find them, too")
  prefs.addresses = Pref.bool("Host and firmware as addresses", false,
    "Gives each signal a source and a destination: 0.0.0.1 is the host, 0.0.0.2 the firmware. "
      .. "The flow graph needs them")
  prefs.capture_files = Pref.enum("Packets of link type USER0", CLAIM.SIGNALS,
    "Which packets of this link type, which others use too, are shown as signals", {
      {1, "known signals", CLAIM.SIGNALS},
      {2, "all", CLAIM.ALL},
      {3, "none", CLAIM.NONE},
    })
  local choices = {}
  for index, version in ipairs(versions) do choices[index] = {index, version.name, index} end
  prefs.hip_version = Pref.enum("HIP version of capture files", #versions,
    "A capture file (link type USER0) does not name its HIP version", choices)
end

-- The preferences as they were when the dissection began. To ask Wireshark for each frame
-- takes longer.
local settings = {}

local function read_settings()
  local prefs = udi.prefs
  for _, name in ipairs({"dissect_frames", "dissect_elements", "addresses", "capture_files",
    "hip_version"}) do
    settings[name] = prefs[name]
  end
end

return {
  udi = udi,
  udi_capture = udi_capture,
  own = own,
  experts = experts,
  CLAIM = CLAIM,
  settings = settings,
  read_settings = read_settings,
  for_each_field = for_each_field,
  labels_of = labels_of,
  items = items,
  label_items = label_items,
  converters = converters,
}
