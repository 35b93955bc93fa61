-- The dissector: shows a frame as a line, columns and a tree.
--
-- `payload` describes what it dissects: `version`, `id`, `tvb` and where in it the
-- payload starts, how many bytes of it were captured, its length, and the lengths
-- of the signal and of the bulk as the record gives them. It is the same table for
-- all frames, as are `pieces` and `values`: most of the time goes into objects that
-- are made and collected.

local _, parts = ...
local frame_format, fields, exchanges = parts.format, parts.fields, parts.exchanges
local u16_at, u32_at, to_signed = frame_format.u16_at, frame_format.u32_at, frame_format.to_signed
local versions, version_of_packed = frame_format.versions, frame_format.version_of_packed
local PSEUDO_HEADER_SIZE = frame_format.PSEUDO_HEADER_SIZE
local PSEUDO_HEADER_FORMAT = frame_format.PSEUDO_HEADER_FORMAT
local HEADERS_SIZE = frame_format.HEADERS_SIZE
local EVENT_MAGIC, SIGNAL_MAGIC = frame_format.EVENT_MAGIC, frame_format.SIGNAL_MAGIC
local TIME_REF, LOAD, UNLOAD = frame_format.TIME_REF, frame_format.LOAD, frame_format.UNLOAD
local LOG_GOES_ON, CUT, LOG_ENDS = frame_format.LOG_GOES_ON, frame_format.CUT, frame_format.LOG_ENDS
local udi, udi_capture = fields.udi, fields.udi_capture
local own, experts = fields.own, fields.experts
local plan_for = parts.plans.plan_for

local byte, format, concat = string.byte, string.format, table.concat
local floor, max, min = math.floor, math.max, math.min

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
  local plan_fields = plan.fields
  local is_old = payload.version.is_old
  for i = 1, #plan_fields do
    local field = plan_fields[i]
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
  local is_hip = frame_format.is_hip_id(id)
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
    exchanges.link(plan, values, pinfo)
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
  local response, request, microseconds = exchanges.find_links(number)
  if response then set_generated(add(tree, own.response_in, response)) end
  if request then
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
    if record.type == LOAD and not pinfo.visited then exchanges.forget_waiting() end
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
