-- The frames inside signals, shown by Wireshark's own dissectors.
--
-- What a dump contains follows from the signal's data_unit_descriptor, or else from the
-- dump's name: `frame` is a management frame of IEEE 802.11. Some versions call a dump `data`
-- that others call `frame` or `information_elements`.

local vocabulary, parts = ...
local prefs, for_each_field = parts.fields.udi.prefs, parts.fields.for_each_field

local concat, min = table.concat, math.min

prefs.dissect_frames = Pref.bool("Dissect the frames inside signals", true,
  "Wireshark's own dissectors show frames of Ethernet and IEEE 802.11")
prefs.dissect_elements = Pref.bool("Dissect information elements", false,
  "Shows information elements that are not in a frame, as if a probe request had brought them: "
    .. "filters for probe requests find them, too")

local ethernet, wlan = Dissector.get("eth_withoutfcs"), Dissector.get("wlan_withoutfcs")

-- What the dissectors write into the Info column, if there is one.
local summaries, has_info = {}, false

-- In the middle of a line, the counters of a frame of IEEE 802.11 are in the way.
local function shorten(summary)
  return (summary:gsub(", SN=%d+, FN=%d+, Flags=[%a.]*", ""):gsub(", BI=%d+", ""))
end

local function call(dissector, tvb, pinfo, root)
  -- A malformed frame raises an error. The tree has the dissector's report of it then.
  pcall(dissector.call, dissector, tvb, pinfo, root)
  if not has_info then return end
  local info = pinfo.cols.info
  summaries[#summaries + 1] = shorten(tostring(info))
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

-- Returns what shows the dump of a signal: its name, the preference that allows it, and the
-- function, if there is no descriptor among the signal's fields. Returns nil if nothing does.
local function find_content(signal, descriptor)
  if descriptor then return {preference = "dissect_frames", descriptor = descriptor} end
  local names = dump_names[signal]
  if names.frame then return {preference = "dissect_frames", show = show_management} end
  if names.information_elements then
    return {preference = "dissect_elements", show = show_elements}
  end
  return nil
end

-- The dissectors set addresses and ports for the frame. Those of the signal come back.
local function call_for_signal(show, range, pinfo, root)
  local src, dst, dl_src, dl_dst = pinfo.src, pinfo.dst, pinfo.dl_src, pinfo.dl_dst
  local net_src, net_dst = pinfo.net_src, pinfo.net_dst
  local src_port, dst_port = pinfo.src_port, pinfo.dst_port
  show(range, pinfo, root)
  pinfo.src, pinfo.dst, pinfo.dl_src, pinfo.dl_dst = src, dst, dl_src, dl_dst
  pinfo.net_src, pinfo.net_dst = net_src, net_dst
  pinfo.src_port, pinfo.dst_port = src_port, dst_port
end

-- Shows what a signal's dump contains. `bytes` are those of the signal's fields, `range` is
-- the dump. Returns what the Info column would say of it, or nil. The caller fills the
-- columns of the signal afterwards.
local function dissect(content, bytes, range, pinfo, root, in_columns)
  if range:len() == 0 or not prefs[content.preference] then return nil end
  local show = content.show
  if content.descriptor then
    local _, label = content.descriptor.read(bytes)
    show = SHOW_BY_DESCRIPTOR[label]
    if not show then return nil end
  end
  summaries, has_info = {}, in_columns
  call_for_signal(show, range, pinfo, root)
  if not summaries[1] then return nil end
  pinfo.cols.protocol:clear_fence()
  return concat(summaries, " | ")
end

return {find_content = find_content, dissect = dissect}
