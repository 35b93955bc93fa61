-- The frames inside signals, shown by Wireshark's own dissectors.
--
-- What a dump contains follows from the signal's data_unit_descriptor, or else from the
-- dump's name: `frame` is a management frame of IEEE 802.11.

local _, parts = ...
local calls = parts.calls

local concat, min = table.concat, math.min

local ethernet, wlan = Dissector.get("eth_withoutfcs"), Dissector.get("wlan_withoutfcs")

-- Removes the counters of a frame of IEEE 802.11, because the signal's fields follow.
local function shorten(summary)
  return (summary:gsub(", SN=%d+, FN=%d+, Flags=[%a.]*", ""):gsub(", BI=%d+", ""))
end

local function call(dissector, frame, tvb, pinfo, root)
  calls.call(dissector, tvb, pinfo, root)
  if not frame.columns then return end
  local info, summaries = frame.columns.info, frame.summaries
  local summary = shorten(tostring(info))
  if summary:find("%S") then summaries[#summaries + 1] = summary end
  info:clear_fence()
  info:clear()
end

local function show_ethernet(frame, range, pinfo, root)
  call(ethernet, frame, range:tvb(), pinfo, root)
end

local function show_wlan(frame, range, pinfo, root) call(wlan, frame, range:tvb(), pinfo, root) end

-- An A-MSDU has one or more frames of Ethernet, each with its length in place of the type.
-- All but the last are padded to a multiple of four bytes (IEEE 802.11, 9.3.2.2).
local function show_amsdu(frame, range, pinfo, root)
  local HEADER_SIZE = 14
  local size = range:len()
  local offset = 0
  while offset + HEADER_SIZE <= size do
    local length = HEADER_SIZE + range(offset + 12, 2):uint()
    show_ethernet(frame, range(offset, min(length, size - offset)), pinfo, root)
    offset = offset + length + (-length) % 4
  end
end

-- Shows a dump that has no descriptor, if it can be a management frame: it has the whole
-- header, and the low half of its first byte has the version 0 and the type 0.
local function show_management(frame, range, pinfo, root)
  if range:len() >= 24 and range(0, 1):uint() % 16 == 0 then
    show_wlan(frame, range, pinfo, root)
  end
end

local PROBE_REQUEST_HEADER = ByteArray.new("40000000" .. ("ff"):rep(6) .. ("00"):rep(14))

local function show_elements(frame, range, pinfo, root)
  local request = PROBE_REQUEST_HEADER .. range:bytes()
  call(wlan, frame, request:tvb("Information elements"), pinfo, root)
end

local SHOW_BY_DESCRIPTOR = {
  ieee802_11_frame = show_wlan,
  ieee802_3_frame = show_ethernet,
  amsdu_subframe = show_ethernet,
  amsdu = show_amsdu,
}

-- Returns how a dump of this name is shown: the preference that allows it, and either the
-- field that describes the dump or the function that shows it. Returns nil if nothing does.
local function find_content(name, descriptor)
  if descriptor then return {preference = "dissect_frames", descriptor = descriptor} end
  if name == "frame" then return {preference = "dissect_frames", show = show_management} end
  if name == "information_elements" then
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

-- Shows what the dump of a signal contains. Returns what the Info column would say of it, or
-- nil. The caller fills the columns of the signal afterwards.
local function dissect(frame, pinfo, root)
  local content, columns = frame.content, frame.columns
  if frame.range:len() == 0 or not calls.is_safe() then return nil end
  local show = content.show
  if content.descriptor then
    local _, label = content.descriptor.read(frame.bytes)
    show = SHOW_BY_DESCRIPTOR[label]
    if not show then return nil end
  end
  frame.summaries = {}
  no_address = no_address or pinfo.src
  show(frame, frame.range, pinfo, root)
  clear_addresses(pinfo)
  if columns then columns.protocol:clear_fence() end
  return frame.summaries[1] and concat(frame.summaries, " | ") or nil
end

return {find_content = find_content, dissect = dissect}
