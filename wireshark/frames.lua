-- The frames inside signals, shown by Wireshark's own dissectors.
--
-- What a dump contains follows from the signal's data_unit_descriptor, or else from the
-- dump's name: `frame` is a management frame of IEEE 802.11. Some versions call a dump `data`
-- that others call `frame` or `information_elements`.

local vocabulary, parts = ...
local calls, for_each_field = parts.calls, parts.fields.for_each_field

local concat, min = table.concat, math.min

local ethernet, wlan = Dissector.get("eth_withoutfcs"), Dissector.get("wlan_withoutfcs")

-- The Info column, if there is one, and what the dissectors write into it.
local info
local summaries, summary_count = {}, 0

-- Removes the counters of a frame of IEEE 802.11, because the signal's fields follow.
local function shorten(summary)
  return (summary:gsub(", SN=%d+, FN=%d+, Flags=[%a.]*", ""):gsub(", BI=%d+", ""))
end

local function call(dissector, tvb, pinfo, root)
  calls.call(dissector, tvb, pinfo, root)
  if not info then return end
  summary_count = summary_count + 1
  summaries[summary_count] = shorten(tostring(info))
  info:clear_fence()
  info:clear()
end

local function show_ethernet(range, pinfo, root) call(ethernet, range:tvb(), pinfo, root) end

local function show_wlan(range, pinfo, root) call(wlan, range:tvb(), pinfo, root) end

-- An A-MSDU has one or more frames of Ethernet, each with its length in place of the type.
-- All but the last are padded to a multiple of four bytes (IEEE 802.11, 9.3.2.2).
local function show_amsdu(range, pinfo, root)
  local HEADER_SIZE = 14
  local size = range:len()
  local offset = 0
  while offset + HEADER_SIZE <= size do
    local length = HEADER_SIZE + range(offset + 12, 2):uint()
    show_ethernet(range(offset, min(length, size - offset)), pinfo, root)
    offset = offset + length + (-length) % 4
  end
end

-- Shows a dump that has no descriptor, if it can be a management frame: it has the whole
-- header, and the low half of its first byte has the version 0 and the type 0.
local function show_management(range, pinfo, root)
  if range:len() >= 24 and range(0, 1):uint() % 16 == 0 then show_wlan(range, pinfo, root) end
end

local PROBE_REQUEST_HEADER = ByteArray.new("40000000" .. ("ff"):rep(6) .. ("00"):rep(14))

local function show_elements(range, pinfo, root)
  local request = PROBE_REQUEST_HEADER .. range:bytes()
  call(wlan, request:tvb("Information elements"), pinfo, root)
end

local SHOW_BY_DESCRIPTOR = {
  ieee802_11_frame = show_wlan,
  ieee802_3_frame = show_ethernet,
  amsdu_subframe = show_ethernet,
  amsdu = show_amsdu,
}

-- The names of the dumps of each signal, in all versions.
local dump_names = {}
for _, layout in ipairs(vocabulary.layouts) do
  local signal = layout:match("^%S+")
  dump_names[signal] = dump_names[signal] or {}
  for_each_field(layout, function(name, form)
    if form == "dump" then dump_names[signal][name] = true end
  end)
end

-- Returns how the dump of a signal is shown: the preference that allows it, and either the
-- field that describes the dump or the function that shows it. Returns nil if nothing does.
local function find_content(signal, descriptor)
  if descriptor then return {preference = "dissect_frames", descriptor = descriptor} end
  local names = dump_names[signal]
  if names.frame then return {preference = "dissect_frames", show = show_management} end
  if names.information_elements then
    return {preference = "dissect_elements", show = show_elements}
  end
  return nil
end

-- The dissectors set addresses and ports. A signal has none.
local no_address

local function clear_addresses(pinfo)
  pinfo.src, pinfo.dst = no_address, no_address
  pinfo.net_src, pinfo.net_dst = no_address, no_address
  pinfo.dl_src, pinfo.dl_dst = no_address, no_address
  pinfo.src_port, pinfo.dst_port = 0, 0
end

-- Shows what a signal's dump contains. `bytes` are those of the signal's fields, `range` is
-- the dump, and `columns` is nil if Wireshark fills none. Returns what the Info column
-- would say of the dump, or nil. The caller fills the columns of the signal afterwards.
local function dissect(content, bytes, range, pinfo, root, columns)
  if range:len() == 0 or not calls.is_safe() then return nil end
  local show = content.show
  if content.descriptor then
    local _, label = content.descriptor.read(bytes)
    show = SHOW_BY_DESCRIPTOR[label]
    if not show then return nil end
  end
  info, summary_count = columns and columns.info, 0
  no_address = no_address or pinfo.src
  show(range, pinfo, root)
  clear_addresses(pinfo)
  if columns then columns.protocol:clear_fence() end
  return summary_count > 0 and concat(summaries, " | ", 1, summary_count) or nil
end

return {find_content = find_content, dissect = dissect}
