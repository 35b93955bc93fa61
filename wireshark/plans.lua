-- Plans: the layout of a signal in one version, made ready.
--
-- A reader takes a signal's bytes and returns a field's value for Wireshark, what
-- the line shows for it (a text or a number), and true if that is a label.

local vocabulary, parts = ...
local frame_format, fields, frames = parts.format, parts.fields, parts.frames
local u16_at, u32_at, to_signed = frame_format.u16_at, frame_format.u32_at, frame_format.to_signed
local for_each_field, labels_of = fields.for_each_field, fields.labels_of
local experts = fields.experts
local items, label_items, converters = fields.items, fields.label_items, fields.converters

local byte, format, concat, max = string.byte, string.format, table.concat, math.max

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

local function make_field(name, form, offset, argument, version)
  local field = {
    name = name,
    offset = offset,
    size = form == "words" and 2 * argument or vocabulary.forms[form],
    prefix = name .. ":",
    line_prefix = (form == "x16_no_space" and "" or " ") .. name .. ":",
    read = make_reader[form](offset, argument, version),
    item = items[name],
  }
  field.word_count = form == "words" and argument or nil
  field.label_item = form == "enum16" and label_items[name] or nil
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

-- The layouts of a version, by id, and the exchanges that each signal has a part in.
local signals_of_version = {}

local function signals_for(version)
  local signals = signals_of_version[version.index]
  if signals then return signals end
  signals = {layouts = {}, exchanges = {}, plans = {}}
  for id, layout in vocabulary.signals[version.index]:gmatch("(%x+):(%d+)") do
    id = tonumber(id, 16)
    signals.layouts[id] = vocabulary.layouts[tonumber(layout)]
    signals.exchanges[id] = {}
  end
  local exchanges = vocabulary.exchanges[version.index]
  for opening, answering, mark, keys in exchanges:gmatch("(%x+):(%x+):(!?)(%S*)") do
    opening, answering = tonumber(opening, 16), tonumber(answering, 16)
    for _, id in ipairs({opening, answering}) do
      local list = signals.exchanges[id]
      list[#list + 1] = {id = answering, key_names = keys, answers = id == answering,
        replaces = mark == "!"}
    end
  end
  signals_of_version[version.index] = signals
  return signals
end

-- Finds the fields that are keys of an exchange. They become essential.
local function place_keys(plan, exchange)
  exchange.keys = {}
  for name in exchange.key_names:gmatch("[^,]+") do
    local place = plan.place[name]
    exchange.keys[#exchange.keys + 1] = place
    if not plan.is_key[place] then plan.essential[#plan.essential + 1] = place end
    plan.is_key[place] = true
  end
end

-- Where a signal comes from, by the end of its name.
local FROM_HOST = {_req = true, _res = true, _cfm = false, _ind = false}

local function make_plan(signals, id, layout, version)
  local name, least, failure = layout:match("^(%S+) (%d+) ([^|]+)")
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
  end)
  local rule = vocabulary.failures[failure]
  if rule then
    plan.failure = {place = plan.place[rule.field], success = rule.success,
      expert = experts[failure]}
    plan.essential[1] = plan.failure.place
  end
  if plan.dumps[1] then
    plan.content = frames.find_content(name, plan.fields[plan.place.data_unit_descriptor])
  end
  plan.is_from_host = FROM_HOST[name:match("_%a+$")]
  plan.exchanges, plan.is_key = signals.exchanges[id], {}
  for _, exchange in ipairs(plan.exchanges) do place_keys(plan, exchange) end
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

return {plan_for = plan_for}
