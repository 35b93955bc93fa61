-- Requests and confirms. Wireshark shows all frames once in order and then in any
-- order, so the links are made on the first visit and kept by frame number.

local floor = math.floor

local waiting        -- by exchange and keys: a frame number, or a queue of them
local sent           -- by frame number: when a waiting request was sent
local response_in    -- by frame number of the request
local response_to    -- by frame number of the confirm
local response_time  -- by frame number of the confirm, in microseconds

local function forget_waiting() waiting, sent = {}, {} end

local function forget_links()
  forget_waiting()
  response_in, response_to, response_time = {}, {}, {}
end
forget_links()

local function add_request(key, number, time)
  local earlier = waiting[key]
  sent[number] = time
  if not earlier then
    waiting[key] = number
  elseif type(earlier) == "number" then
    waiting[key] = {first = 1, last = 2, earlier, number}
  else
    earlier.last = earlier.last + 1
    earlier[earlier.last] = number
  end
end

-- Takes the oldest request with this key.
local function take_request(key)
  local oldest = waiting[key]
  if type(oldest) ~= "table" then
    waiting[key] = nil
    return oldest
  end
  local number = oldest[oldest.first]
  oldest[oldest.first] = nil
  oldest.first = oldest.first + 1
  if oldest.first > oldest.last then waiting[key] = nil end
  return number
end

local function link(plan, values, pinfo)
  local keys = plan.request_keys or plan.confirm_keys
  local key = plan.exchange
  for i = 1, #keys do key = key * 65536 + values[keys[i]] end
  local number = pinfo.number
  if plan.request_keys then
    add_request(key, number, pinfo.abs_ts)
    return
  end
  local request = take_request(key)
  if not request then return end
  response_in[request] = number
  response_to[number] = request
  -- These times are fractional numbers, exact to less than a microsecond.
  response_time[number] = floor((pinfo.abs_ts - sent[request]) * 1000000 + 0.5)
  sent[request] = nil
end

-- Returns, for a frame: the frame of its confirm, the frame of its request, and the time
-- since the request in microseconds.
local function find_links(number)
  return response_in[number], response_to[number], response_time[number]
end

return {
  forget_links = forget_links,
  link = link,
  forget_waiting = forget_waiting,
  find_links = find_links,
}
