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
local CLAIM, settings = fields.CLAIM, fields.settings
local plan_for = parts.plans.plan_for
local calls, frames = parts.calls, parts.frames
local collect_some = parts.collector.collect_some

local byte, format, concat = string.byte, string.format, table.concat
local fmod, max, min = math.fmod, math.max, math.min

local pieces, values = {}, {}

-- The largest dump, in bytes, that the Info column shows.
local MAX_SHOWN_DUMP = 16

-- A method of an object is looked up at each call, these only once.
local add, set_generated = TreeItem.add, TreeItem.set_generated

-- What a frame needs: `details`, the items below the protocol's; and its `columns`, or nil.
local needs = {}

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
  local make_value = field.make_value
  if make_value then value = make_value(value) end
  local item = add_item(tree, field.item, payload, field.offset, field.size, value,
    field.prefix .. shown)
  if label_item then set_generated(add(item, label_item, shown)) end
  if field.word_count then add_words(item, payload, field, bytes) end
  return item
end

-- The bytes that dumps show: the bulk, or what a signal without bulk has after its minimum
-- length.
local function dump_range(plan, payload)
  local offset = payload.bulk_length == 0 and plan.min or payload.signal_length
  return captured_range(payload, offset, payload.length - offset)
end

-- Adds the dumps to the pieces, and returns how many pieces there are. Without details, the
-- pieces are for the Info column alone, which has no digits of a long dump.
local function dissect_dumps(plan, range, tree, detailed)
  local size = range:len()
  local digits = ""
  if size > 0 and (detailed or size <= MAX_SHOWN_DUMP) then digits = range:bytes():tohex(true) end
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

local function report_failure(tree, field, failure, shown)
  if shown ~= failure.success then
    tree:add_proto_expert_info(failure.expert, field.prefix .. shown)
  end
end

-- Reads only the fields that other frames or the expert information depend on. The
-- first of two passes needs no more.
local function read_essential_fields(plan, bytes, tree)
  local places, failure = plan.essential, plan.failure
  for i = 1, #places do
    local place = places[i]
    local field = plan.fields[place]
    local value, shown = field.read(bytes)
    values[place] = value
    if failure and place == failure.place then report_failure(tree, field, failure, shown) end
  end
end

-- Makes the pieces of a known signal's line, and returns how many there are. Adds the fields
-- to the tree if `detailed`.
local function dissect_fields(plan, payload, bytes, range, tree, detailed)
  pieces[1] = plan.name
  local count = range and dissect_dumps(plan, range, tree, detailed) or 1
  local plan_fields, failure = plan.fields, plan.failure
  local failure_place = failure and failure.place
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
    if i == failure_place then report_failure(item, field, failure, shown) end
  end
  return count
end

-- Returns the line of the pieces, but with long dumps as their length, and with the summary of
-- what they contain.
local function make_info(plan, count, range, summary)
  if range and (summary or range:len() > MAX_SHOWN_DUMP) then
    local shown = format("%d bytes", range:len())
    for i = 1, #plan.dumps do
      pieces[3 * i] = summary and i == 1 and shown .. ", " .. summary or shown
    end
  end
  return concat(pieces, "", 1, count)
end

-- The signal of this frame, if the version knows it and it is long enough: its `plan`, the
-- `bytes` of its fields, the `range` of its dumps and their `content`, and the `count` of the
-- pieces of its line.
local known = {}

-- Shows the signal in the tree, and returns its line if it is needed.
local function dissect_known_signal(plan, payload, pinfo, tree)
  local content = plan.content
  if content and not settings[content.preference] then content = nil end
  local needs_fields = needs.details or needs.columns
  local bytes = (needs_fields or plan.essential[1] or content) and signal_bytes(plan, payload)
  local range = (needs_fields or content) and plan.dumps[1] and dump_range(plan, payload)
  known.plan, known.bytes, known.range, known.content = plan, bytes, range, content
  local line
  if needs_fields then
    known.count = dissect_fields(plan, payload, bytes, range, tree, needs.details)
    line = needs.details and concat(pieces, "", 1, known.count)
  else
    read_essential_fields(plan, bytes, tree)
  end
  if plan.exchanges[1] and not pinfo.visited then
    exchanges.link(plan.exchanges, values, pinfo)
  end
  return line
end

-- Shows what the signal's dumps contain, and returns the text of the Info column if it is
-- needed.
local function show_content(pinfo, root)
  local summary = known.content
    and frames.dissect(known.content, known.bytes, known.range, pinfo, root, needs.columns)
  return needs.columns and make_info(known.plan, known.count, known.range, summary)
end

-- Shows a signal in the tree. Returns its line; the text of the Info column, but not if
-- show_content makes it; and the plan of its signal if the version knows it.
local function dissect_signal(payload, pinfo, tree)
  local id = payload.id
  if payload.captured < payload.length then tree:add_proto_expert_info(experts.truncated) end
  local is_hip = frame_format.is_hip_id(id)
  local plan = is_hip and plan_for(payload.version, id)
  if needs.details then
    if plan and is_wanted(tree, own.signal) then
      set_generated(add_item(tree, own.signal, payload, 0, 2, plan.name))
    end
    if is_wanted(tree, own.id) then
      add_item(tree, own.id, payload, 0, 2, id, format("Id: 0x%04x", id))
    end
  end
  if not is_hip then
    tree:add_proto_expert_info(experts.unknown_id)
    local line = format("Unknown Driver Signal : 0x%04x", id)
    return line, line
  end
  if payload.bulk_length < 0 then
    tree:add_proto_expert_info(experts.bad_length)
    local line = "vrkt_wlan_udi_log_decode: Invalid length in data reference"
    return line, line, plan
  end
  if not plan then
    tree:add_proto_expert_info(experts.unknown_id)
    local line = format("Unknown Hip Signal : 0x%04x", id)
    return line, line
  end
  if payload.bulk_length == 0 and payload.signal_length < plan.min then
    local report = format("%s has %d of at least %d bytes", plan.name, payload.signal_length,
      plan.min)
    tree:add_proto_expert_info(experts.too_short, report)
    return "", report, plan
  end
  return dissect_known_signal(plan, payload, pinfo, tree), nil, plan
end

local function dissect_event(event, tree)
  local line
  if event.type == LOAD then
    line = "Driver: Loaded"
  elseif event.type == UNLOAD then
    line = "Driver: Unloaded"
  else
    line = format("Driver: Uptime: %d seconds", event.uptime)
  end
  if needs.details then
    add(tree, own.driver_event, event.tvb(PSEUDO_HEADER_SIZE), line)
    if event.type == TIME_REF and is_wanted(tree, own.uptime) then
      add(tree, own.uptime, event.tvb(HEADERS_SIZE + 4, 4), event.uptime)
    end
  end
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
  if type(response) == "table" then
    for i = 1, #response do set_generated(add(tree, own.response_in, response[i])) end
  elseif response then
    set_generated(add(tree, own.response_in, response))
  end
  if request then
    -- Both parts of a negative time are negative. The clock can have been set back.
    local rest = fmod(microseconds, 1000000)
    set_generated(add(tree, own.response_to, request))
    local time = NSTime.new((microseconds - rest) / 1000000, rest * 1000)
    set_generated(add(tree, own.response_time, time))
  end
end

local HOST_ADDRESS, FIRMWARE_ADDRESS = Address.ip("0.0.0.1"), Address.ip("0.0.0.2")

-- Wireshark overwrites the text of these columns if a frame has addresses, so a frame has
-- either addresses or names.
local function show_direction(pinfo, plan)
  local is_from_host = plan.is_from_host
  if is_from_host == nil then return end
  if settings.addresses then
    local from = is_from_host and HOST_ADDRESS or FIRMWARE_ADDRESS
    local to = is_from_host and FIRMWARE_ADDRESS or HOST_ADDRESS
    pinfo.src, pinfo.dst = from, to
    pinfo.net_src, pinfo.net_dst = from, to
  elseif needs.columns then
    needs.columns.src = is_from_host and "host" or "firmware"
    needs.columns.dst = is_from_host and "firmware" or "host"
  end
end

local udi_handle  -- of the dissector, once it is registered

local function note_needs(pinfo, root)
  local columns = pinfo.cols
  -- If Wireshark fills no columns, the name of a column is its text.
  needs.columns = tostring(columns.info) ~= "(info)" and columns or nil
  all_wanted = root.visible
  needs.details = all_wanted or root:referenced(udi_handle)
end

-- The dissectors of the content come last: if one of them does not return, the tree is
-- complete.
local function show_frame(tree, pinfo, root, line, info, plan)
  if needs.details then
    if plan and all_wanted then tree:append_text(", " .. plan.name) end
    add_links(tree, pinfo.number)
    if is_wanted(tree, own.line) then set_generated(add(tree, own.line, line)) end
  end
  info = info or show_content(pinfo, root)
  local columns = needs.columns
  if columns then columns.protocol, columns.info = "UDI", info end
  if plan then show_direction(pinfo, plan) end
end

-- The record of the frame that is dissected.
local record = {}

-- Reads the pseudo-header and the record's header. Returns false if they are not ours.
local function parse_frame(tvb)
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
  record.clock_reference = u32_at(head, 8)
  record.milliseconds = to_signed(u32_at(head, 20), 32)
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

local function add_headers(tree)
  local tvb = record.tvb
  local function add_if_wanted(item, offset, value)
    if is_wanted(tree, item) then add(tree, item, tvb(offset, 4), value) end
  end
  add_if_wanted(own.hip_version, 4, record.version.name)
  add_if_wanted(own.clock_reference, 8, record.clock_reference)
  add_if_wanted(own.milliseconds, PSEUDO_HEADER_SIZE + 4, record.milliseconds)
  if not record.is_signal then return end
  add_if_wanted(own.record_length, PSEUDO_HEADER_SIZE + 8, record.length)
  add_if_wanted(own.signal_length, PSEUDO_HEADER_SIZE + 12, record.signal_length)
end

-- The dissectors that had the link types before. They show a frame that is not ours, so other
-- captures open as they do without this plugin.
local link_types = DissectorTable.get("wtap_encap")
local earlier = {
  [wtap_encaps.USER0] = link_types:get_dissector(wtap_encaps.USER0),
  [wtap_encaps.USER1] = link_types:get_dissector(wtap_encaps.USER1),
}
local own_dissectors = {[wtap_encaps.USER0] = udi_capture, [wtap_encaps.USER1] = udi}
local given_back = {}  -- the link types that an earlier dissector has for the rest of a file

local function pass_on(link_type, tvb, pinfo, root)
  local dissector = earlier[link_type]
  -- A user's table of link types can name this plugin's dissector.
  if not dissector or pinfo.private.udi_is_passed_on then return 0 end
  -- The frames of this file are not safe to pass on. The rest goes there directly.
  if calls.has_escaped() then
    link_types:add(link_type, dissector)
    given_back[link_type] = true
  end
  pinfo.private.udi_is_passed_on = "yes"
  return calls.call(dissector, tvb, pinfo, root) or tvb:len()
end

-- Wireshark calls this before it dissects a file, and again if a preference has changed.
function udi.init()
  calls.has_escaped()
  for link_type in pairs(given_back) do link_types:add(link_type, own_dissectors[link_type]) end
  given_back = {}
  fields.read_settings()
  exchanges.forget_links()
end

function udi.dissector(tvb, pinfo, root)
  if not parse_frame(tvb) then return pass_on(wtap_encaps.USER1, tvb, pinfo, root) end
  calls.has_escaped()
  note_needs(pinfo, root)
  local tree = add(root, udi, tvb())
  if needs.details then add_headers(tree) end
  local line, info, plan
  if record.is_signal then
    line, info, plan = dissect_signal(record, pinfo, tree)
  else
    line = dissect_event(record, tree)
    info = line
    -- After a Load, nothing answers an earlier signal.
    if record.type == LOAD and not pinfo.visited then exchanges.forget_waiting() end
  end
  if record.end_reason ~= LOG_GOES_ON then
    add_end_of_log(tree, record.end_reason, record.end_value)
  end
  show_frame(tree, pinfo, root, line, info, plan)
  collect_some()
  return tvb:len()
end

-- A frame of a capture file: a payload alone.
local function parse_payload(tvb)
  local size = tvb:reported_len()
  record.tvb, record.start = tvb, 0
  record.version = versions[settings.hip_version]
  record.captured, record.length = tvb:len(), size
  record.signal_length, record.bulk_length = size, 0
  record.id = u16_at(tvb:raw(0, min(2, tvb:len())) .. "\0\0", 0)
end

local function is_claimed()
  local claim = settings.capture_files
  if claim ~= CLAIM.SIGNALS then return claim == CLAIM.ALL end
  local plan = frame_format.is_hip_id(record.id) and plan_for(record.version, record.id)
  return plan and record.length >= plan.min
end

function udi_capture.dissector(tvb, pinfo, root)
  parse_payload(tvb)
  if not is_claimed() then return pass_on(wtap_encaps.USER0, tvb, pinfo, root) end
  calls.has_escaped()
  note_needs(pinfo, root)
  local tree = add(root, udi, tvb())
  if needs.details then set_generated(add(tree, own.hip_version, record.version.name)) end
  local line, info, plan = dissect_signal(record, pinfo, tree)
  show_frame(tree, pinfo, root, line, info, plan)
  return tvb:len()
end

for link_type, dissector in pairs(own_dissectors) do link_types:add(link_type, dissector) end
udi_handle = Dissector.get("udi")
