-- The dissector: shows a frame as a line, columns and a tree.
--
-- `frame` describes what it dissects: `version`, `id`, `tvb` and where in it the payload
-- starts, how many bytes of it were captured, its length, and the lengths of the signal and of
-- the bulk as the record gives them; then what the frame needs, and what was found. It is the
-- same table for all frames, as are its `pieces` and `values`: most of the time goes into
-- objects that are made and collected.

local vocabulary, parts = ...
local frame_format, fields, exchanges = parts.format, parts.fields, parts.exchanges
local u16_at, u32_at, to_signed = frame_format.u16_at, frame_format.u32_at, frame_format.to_signed
local versions, version_of_packed = frame_format.versions, frame_format.version_of_packed
local PSEUDO_HEADER_SIZE = frame_format.PSEUDO_HEADER_SIZE
local PSEUDO_HEADER_FORMAT = frame_format.PSEUDO_HEADER_FORMAT
local HEADERS_SIZE, REASONS = frame_format.HEADERS_SIZE, frame_format.REASONS
local EVENT_MAGIC, SIGNAL_MAGIC = vocabulary.log.event_magic, vocabulary.log.signal_magic
local LOAD, texts = vocabulary.event_types.load, vocabulary.texts
local udi, udi_capture = fields.udi, fields.udi_capture
local own, experts = fields.own, fields.experts
local CLAIM, settings = fields.CLAIM, fields.settings
local plan_for = parts.plans.plan_for
local calls, frames = parts.calls, parts.frames
local collect_some = parts.collector.collect_some

local byte, format, sub, concat = string.byte, string.format, string.sub, table.concat
local fmod, max, min = math.fmod, math.max, math.min

-- The largest dump, in bytes, that the Info column shows.
local MAX_SHOWN_DUMP = 16

local ZERO_SPARES = ("\0"):rep(12)

-- The end of a dump's text.
local DUMP_END = vocabulary.forms.dump.after

-- A method of an object is looked up at each call, these only once.
local add, set_generated = TreeItem.add, TreeItem.set_generated

-- Whether the tree needs an item: all, or only those that a filter names.
local function is_wanted(frame, tree, item)
  return frame.shows_all or tree:referenced(item)
end

-- The bytes of the payload that are there, possibly none.
local function captured_range(frame, offset, size)
  size = max(0, min(size, frame.captured - offset))
  return frame.tvb(frame.start + min(offset, frame.captured), size)
end

-- Adds an item on the bytes that are there. Beyond the last byte there are none,
-- only a value.
local function add_item(frame, tree, item, offset, size, value, text)
  local present = frame.captured - offset
  if present <= 0 then return add(tree, item, value, text) end
  if present < size then size = present end
  return add(tree, item, frame.tvb(frame.start + offset, size), value, text)
end

local function add_words(frame, tree, field)
  local make_value = field.make_value
  for i = 2, field.word_count do
    local offset = field.offset + 2 * (i - 1)
    local value = u16_at(frame.bytes, offset)
    add_item(frame, tree, field.item, offset, 2, make_value and make_value(value) or value,
      format("[%d]:0x%04x", i - 1, value))
  end
end

-- Returns the item, or the tree if the item is not wanted.
local function add_field(frame, tree, field, value, shown, is_label)
  local label_item = is_label and field.label_item
  if not is_wanted(frame, tree, field.item)
      and not (label_item and is_wanted(frame, tree, label_item)) then
    return tree
  end
  local make_value = field.make_value
  if make_value then value = make_value(value) end
  local item = add_item(frame, tree, field.item, field.offset, field.size, value,
    field.prefix .. shown)
  if label_item then set_generated(add(item, label_item, shown)) end
  if field.word_count then add_words(frame, item, field) end
  return item
end

-- The bytes that dumps show: the bulk, or what a signal without bulk has after its minimum
-- length.
local function dump_range(frame)
  local offset = frame.bulk_length == 0 and frame.plan.min or frame.signal_length
  return captured_range(frame, offset, frame.length - offset)
end

-- Adds the dumps to the pieces, and returns how many pieces there are. Without details, the
-- pieces are for the Info column alone, which has no digits of a long dump.
local function dissect_dumps(frame, tree)
  local range, pieces, has_details = frame.range, frame.pieces, frame.has_details
  local size = range:len()
  local digits = ""
  if size > 0 and (has_details or size <= MAX_SHOWN_DUMP) then
    digits = range:bytes():tohex(true)
  end
  local count = 1
  for _, dump in ipairs(frame.plan.dumps) do
    pieces[count + 1], pieces[count + 2], pieces[count + 3] = dump.line_prefix, digits, DUMP_END
    count = count + 3
    if has_details and is_wanted(frame, tree, dump.item) then
      add(tree, dump.item, range):set_text(dump.prefix .. digits .. DUMP_END)
    end
  end
  return count
end

-- The bytes of a signal up to the end of its last field. Beyond the last byte of the
-- record there are zeros.
local function signal_bytes(frame)
  local finish = frame.plan.finish
  local bytes = frame.tvb:raw(frame.start, min(frame.captured, finish))
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
local function read_essential_fields(frame, tree)
  local plan, bytes, values = frame.plan, frame.bytes, frame.values
  local places, failure = plan.essential, plan.failure
  for i = 1, #places do
    local place = places[i]
    local field = plan.fields[place]
    local value, shown = field.read(bytes)
    values[place] = value
    if failure and place == failure.place then report_failure(tree, field, failure, shown) end
  end
end

-- Makes the pieces of a known signal's line. Adds the fields to the tree if it has details.
local function dissect_fields(frame, tree)
  local plan, bytes, pieces, values = frame.plan, frame.bytes, frame.pieces, frame.values
  local has_details = frame.has_details
  pieces[1] = plan.name
  local count = frame.range and dissect_dumps(frame, tree) or 1
  local plan_fields, failure = plan.fields, plan.failure
  local failure_place = failure and failure.place
  local last = #plan_fields
  -- The spares are nearly always zero. As one text they take less time.
  local spares = not has_details and plan.spares
  local has_zero_spares = spares and sub(bytes, spares, plan.finish) == ZERO_SPARES
  if has_zero_spares then last = last - 3 end
  for i = 1, last do
    local field = plan_fields[i]
    local value, shown, is_label = field.read(bytes)
    values[i] = value
    pieces[count + 1] = is_label and field.line_prefix or field.unlabelled_prefix
    pieces[count + 2] = shown
    count = count + 2
    local item = has_details and add_field(frame, tree, field, value, shown, is_label) or tree
    if i == failure_place then report_failure(item, field, failure, shown) end
  end
  if has_zero_spares then
    count = count + 1
    pieces[count] = texts.zero_spares
  end
  frame.count = count
end

-- Returns the line of the pieces, but with long dumps as their length, and with the summary of
-- what they contain.
local function make_info(frame, summary)
  local range, pieces = frame.range, frame.pieces
  if range and (summary or range:len() > MAX_SHOWN_DUMP) then
    local shown = format("%d bytes", range:len())
    for i = 1, #frame.plan.dumps do
      pieces[3 * i] = summary and i == 1 and shown .. ", " .. summary or shown
    end
  end
  return concat(pieces, "", 1, frame.count)
end

-- Shows a signal that the version knows and that is long enough.
local function dissect_known_signal(frame, pinfo, tree)
  local plan = frame.plan
  local content = plan.content
  if content and not settings[content.preference] then content = nil end
  local needs_fields = frame.has_details or frame.columns
  frame.content = content
  frame.bytes = (needs_fields or plan.essential[1] or content) and signal_bytes(frame)
  frame.range = (needs_fields or content) and plan.dumps[1] and dump_range(frame)
  if needs_fields then
    dissect_fields(frame, tree)
    if frame.has_details then frame.line = concat(frame.pieces, "", 1, frame.count) end
  else
    read_essential_fields(frame, tree)
  end
  if plan.exchanges[1] and not pinfo.visited then
    exchanges.link(plan.exchanges, frame.values, pinfo)
  end
end

-- Sets the line of the frame and the text of the Info column. A known signal has its line only
-- if the tree needs it, and the Info column comes later, with what its dump contains.
local function dissect_signal(frame, pinfo, tree)
  local id = frame.id
  if frame.captured < frame.length then tree:add_proto_expert_info(experts.truncated) end
  local is_hip = frame_format.is_hip_id(id)
  local plan = is_hip and plan_for(frame.version, id)
  frame.plan = plan
  if frame.has_details then
    if plan and is_wanted(frame, tree, own.signal) then
      set_generated(add_item(frame, tree, own.signal, 0, 2, plan.name))
    end
    if is_wanted(frame, tree, own.id) then
      add_item(frame, tree, own.id, 0, 2, id, format("Id: 0x%04x", id))
    end
  end
  if plan and frame.bulk_length == 0 and frame.signal_length < plan.min then
    frame.line = ""
    frame.info = format("%s has %d of at least %d bytes", plan.name, frame.signal_length, plan.min)
    tree:add_proto_expert_info(experts.too_short, frame.info)
    return
  end
  if is_hip and frame.bulk_length < 0 then
    frame.line = texts.invalid_length
    tree:add_proto_expert_info(experts.bad_length)
  elseif not plan then
    frame.line = format(is_hip and texts.unknown_signal or texts.unknown_driver_signal, id)
    tree:add_proto_expert_info(experts.unknown_id)
  else
    dissect_known_signal(frame, pinfo, tree)
    return
  end
  frame.info = frame.line
end

local function dissect_event(frame, tree)
  local event = frame.event
  local line = event.text
  if frame.uptime then line = line .. format("%d", frame.uptime) .. event.text_after_uptime end
  if frame.has_details then
    add(tree, own.driver_event, frame.tvb(PSEUDO_HEADER_SIZE), line)
    if frame.uptime and is_wanted(frame, tree, own.uptime) then
      add(tree, own.uptime, frame.tvb(HEADERS_SIZE + 4, 4), frame.uptime)
    end
  end
  frame.line, frame.info = line, line
end

local function add_end_of_log(frame, tree)
  local reason = frame.end_reason
  if reason == REASONS.cut then
    tree:add_proto_expert_info(experts.cut, "After this record the log is cut")
    return
  end
  local report = frame_format.describe_end(reason, frame.end_value)
  if report then
    tree:add_proto_expert_info(experts.damaged, "After this record the log is damaged: " .. report)
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
local function show_direction(frame, pinfo)
  local is_from_host, columns = frame.plan.is_from_host, frame.columns
  if is_from_host == nil then return end
  if settings.addresses then
    local from = is_from_host and HOST_ADDRESS or FIRMWARE_ADDRESS
    local to = is_from_host and FIRMWARE_ADDRESS or HOST_ADDRESS
    pinfo.src, pinfo.dst = from, to
    pinfo.net_src, pinfo.net_dst = from, to
  elseif columns then
    columns.src = is_from_host and "host" or "firmware"
    columns.dst = is_from_host and "firmware" or "host"
  end
end

local udi_handle  -- of the dissector, once it is registered

-- Adds the protocol to the tree, and sets what the frame needs: `columns`, or nil; details, the
-- items below the protocol's; and whether all of these.
local function begin_frame(frame, pinfo, root)
  calls.has_escaped()
  local columns = pinfo.cols
  -- If Wireshark fills no columns, the name of a column is its text.
  frame.columns = tostring(columns.info) ~= "(info)" and columns or nil
  frame.shows_all = root.visible
  frame.has_details = frame.shows_all or root:referenced(udi_handle)
  frame.plan, frame.content, frame.line, frame.info = nil, nil, nil, nil
  return add(root, udi, frame.tvb())
end

-- The dissectors of the content come last: if one of them does not return, the tree is
-- complete.
local function end_frame(frame, tree, pinfo, root)
  local plan, columns = frame.plan, frame.columns
  if frame.has_details then
    if plan and frame.shows_all then tree:append_text(", " .. plan.name) end
    add_links(tree, pinfo.number)
    if is_wanted(frame, tree, own.line) then set_generated(add(tree, own.line, frame.line)) end
  end
  local summary = frame.content and frames.dissect(frame, pinfo, root)
  if columns then
    columns.protocol, columns.info = "UDI", frame.info or make_info(frame, summary)
  end
  if plan then show_direction(frame, pinfo) end
end

-- Reads the pseudo-header and the record's header. Returns false if they are not ours.
local function parse_frame(frame, tvb)
  local size = tvb:len()
  if size < HEADERS_SIZE then return false end
  local head = tvb:raw(0, min(size, HEADERS_SIZE + 2))
  local version = version_of_packed[u32_at(head, 4)]
  if byte(head, 1) ~= PSEUDO_HEADER_FORMAT or not version then return false end
  local magic = u32_at(head, PSEUDO_HEADER_SIZE)
  local third, fourth = u32_at(head, 24), u32_at(head, 28)
  frame.tvb = tvb
  frame.version = version
  frame.end_reason = byte(head, 2)
  frame.end_value = u32_at(head, 12)
  frame.clock_reference = u32_at(head, 8)
  frame.milliseconds = to_signed(u32_at(head, 20), 32)
  frame.event, frame.uptime = nil, nil
  if magic == SIGNAL_MAGIC then
    frame.start = HEADERS_SIZE
    frame.captured = min(size - HEADERS_SIZE, third)
    frame.length = third
    frame.signal_length = fourth
    frame.bulk_length = third - fourth
    frame.id = u16_at(sub(head, HEADERS_SIZE + 1, HEADERS_SIZE + frame.captured) .. "\0\0", 0)
    return true
  end
  local event = magic == EVENT_MAGIC and frame_format.events[third]
  event = event and event[fourth]
  if not event or not event.has_line or size < HEADERS_SIZE + fourth then return false end
  frame.event = event
  if event.text_after_uptime ~= "" then
    frame.uptime = to_signed(u32_at(tvb:raw(HEADERS_SIZE + 4, 4), 0), 32)
  end
  return true
end

local function add_headers(frame, tree)
  local function add_if_wanted(item, offset, value)
    if is_wanted(frame, tree, item) then add(tree, item, frame.tvb(offset, 4), value) end
  end
  add_if_wanted(own.hip_version, 4, frame.version.name)
  add_if_wanted(own.clock_reference, 8, frame.clock_reference)
  add_if_wanted(own.milliseconds, PSEUDO_HEADER_SIZE + 4, frame.milliseconds)
  if frame.event then return end
  add_if_wanted(own.record_length, PSEUDO_HEADER_SIZE + 8, frame.length)
  add_if_wanted(own.signal_length, PSEUDO_HEADER_SIZE + 12, frame.signal_length)
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

local the_frame = {pieces = {}, values = {}}

function udi.dissector(tvb, pinfo, root)
  local frame = the_frame
  if not parse_frame(frame, tvb) then return pass_on(wtap_encaps.USER1, tvb, pinfo, root) end
  local tree = begin_frame(frame, pinfo, root)
  if frame.has_details then add_headers(frame, tree) end
  if frame.event then
    dissect_event(frame, tree)
    -- After a Load, nothing answers an earlier signal.
    if frame.event.type == LOAD and not pinfo.visited then exchanges.forget_waiting() end
  else
    dissect_signal(frame, pinfo, tree)
  end
  if frame.end_reason ~= REASONS.goes_on then add_end_of_log(frame, tree) end
  end_frame(frame, tree, pinfo, root)
  collect_some()
  return tvb:len()
end

-- A frame of a capture file: a payload alone.
local function parse_payload(frame, tvb)
  local size = tvb:reported_len()
  frame.tvb, frame.start = tvb, 0
  frame.version = versions[settings.hip_version]
  frame.captured, frame.length = tvb:len(), size
  frame.signal_length, frame.bulk_length = size, 0
  frame.id = u16_at(tvb:raw(0, min(2, tvb:len())) .. "\0\0", 0)
end

local function is_claimed(frame)
  local claim = settings.capture_files
  if claim ~= CLAIM.SIGNALS then return claim == CLAIM.ALL end
  local plan = frame_format.is_hip_id(frame.id) and plan_for(frame.version, frame.id)
  return plan and frame.length >= plan.min
end

function udi_capture.dissector(tvb, pinfo, root)
  local frame = the_frame
  parse_payload(frame, tvb)
  if not is_claimed(frame) then return pass_on(wtap_encaps.USER0, tvb, pinfo, root) end
  local tree = begin_frame(frame, pinfo, root)
  if frame.has_details then set_generated(add(tree, own.hip_version, frame.version.name)) end
  dissect_signal(frame, pinfo, tree)
  end_frame(frame, tree, pinfo, root)
  return tvb:len()
end

for link_type, dissector in pairs(own_dissectors) do link_types:add(link_type, dissector) end
udi_handle = Dissector.get("udi")
