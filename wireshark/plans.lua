-- Plans: the layout of a signal in one version, made ready.
--
-- A reader takes a signal's bytes and returns a field's value for Wireshark, what
-- the line shows for it (a text or a number), and true if that is a label.

local vocabulary, parts = ...
local frame_format, fields, frames = parts.format, parts.fields, parts.frames
local u16_at, u32_at, to_signed = frame_format.u16_at, frame_format.u32_at, frame_format.to_signed
local for_each_field, labels_of = fields.for_each_field, fields.labels_of
local items, label_items, converters = fields.items, fields.label_items, fields.converters
local forms = vocabulary.forms

local byte, format, concat, max = string.byte, string.format, table.concat, math.max

-- The texts of small numbers. Most values are small, and to print one takes longer than
-- to read it.
local small_numbers = {}
for value = 0, 1023 do small_numbers[value] = format("%d", value) end

local integer_at = {
  [1] = function(bytes, offset) return (byte(bytes, offset + 1)) end,
  [2] = u16_at,
  [4] = u32_at,
}

local make_reader = {}

-- A number with a label shows that.
function make_reader.number(form, offset, argument, version)
  local bits, is_signed = 8 * form.width, form.is_signed
  local labels = form.has_labels and labels_of(argument, version) or {}
  local texts = form.is_hex and {} or small_numbers
  local digits = form.is_hex and "%0" .. 2 * form.width .. "x" or "%d"
  local pattern = form.before .. digits .. form.after
  local read = integer_at[form.width]
  return function(bytes)
    local value = read(bytes, offset)
    if is_signed then value = to_signed(value, bits) end
    local label = labels[value]
    if label then return value, label, true end
    return value, texts[value] or format(pattern, value)
  end
end

function make_reader.mac(_, offset)
  return function(bytes)
    local address = format("%02x:%02x:%02x:%02x:%02x:%02x", byte(bytes, offset + 1, offset + 6))
    return address, address
  end
end

-- The bytes are shown in stored order, and the value is the number that is shown.
function make_reader.digits(form, offset)
  local pattern = ("%02x"):rep(form.width)
  return function(bytes)
    local digits = format(pattern, byte(bytes, offset + 1, offset + form.width))
    return UInt64.fromhex(digits), form.before .. digits .. form.after
  end
end

-- The value is that of the first word. The tree has the others below it.
function make_reader.words(form, offset, count)
  local pattern = form.before .. ("0x%04x "):rep(count) .. form.after
  return function(bytes)
    local words = {}
    for i = 1, count do words[i] = u16_at(bytes, offset + 2 * (i - 1)) end
    return words[1], format(pattern, table.unpack(words))
  end
end

local function make_field(name, form_name, offset, argument, version)
  local form = forms[form_name]
  local is_words = form.reader == "words"
  local field = {
    name = name,
    offset = offset,
    size = form.width * (is_words and argument or 1),
    word_count = is_words and argument or nil,
    prefix = name .. ":",
    line_prefix = (form.has_blank and " " or "") .. name .. ":",
    read = make_reader[form.reader](form, offset, argument, version),
    item = items[name],
    label_item = form.has_labels and label_items[name] or nil,
    -- The value of digits is one of Wireshark's own already.
    make_value = form.reader ~= "digits" and converters[name] or nil,
  }
  local has_blank = version.unlabelled_has_blank or not form.has_labels
  field.unlabelled_prefix = has_blank and field.line_prefix or field.prefix
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

-- Returns the name that says what the dumps of a signal contain, or nil. `data` says nothing:
-- it counts as what the next version calls the dump that calls it something else.
local function find_dump_name(id, version)
  for index = version.index, #frame_format.versions do
    local layout = signals_for(frame_format.versions[index]).layouts[id]
    local name
    for_each_field(layout or "", function(field_name, form)
      if form == "dump" and (not name or name == "data") then name = field_name end
    end)
    if name ~= "data" and (name or index == version.index) then return name end
  end
  return nil
end

local function make_plan(signals, id, layout, version)
  local name, least, failure, spares = layout:match("^(%S+) (%d+) (%S+) ([^|]+)")
  local plan = {name = name, min = tonumber(least), finish = 0, dumps = {}, fields = {}, place = {},
    essential = {}}
  for_each_field(layout, function(field_name, form, offset, argument)
    if form == "dump" then
      local open = field_name .. ":" .. forms.dump.before
      plan.dumps[#plan.dumps + 1] = {
        prefix = open,
        line_prefix = " " .. open,
        item = items[field_name],
      }
      return
    end
    local field = field_for(field_name, form, offset, argument, version)
    plan.fields[#plan.fields + 1] = field
    plan.place[field_name] = plan.place[field_name] or #plan.fields
    plan.finish = max(plan.finish, offset + field.size)
  end)
  -- Where the spares begin, counted from 1.
  plan.spares = spares == "true" and plan.finish - 11 or nil
  local rule = vocabulary.failures[failure]
  if rule then
    plan.failure = {place = plan.place[rule.field], success = rule.success,
      expert = fields.experts[failure]}
    plan.essential[1] = plan.failure.place
  end
  if plan.dumps[1] then
    plan.content = frames.find_content(find_dump_name(id, version),
      plan.fields[plan.place.data_unit_descriptor])
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
