-- Exchanges: which signal answers which. Wireshark shows all frames once in order and then
-- in any order, so the links are made on the first visit and kept by frame number. A
-- request is what is answered, although it can be an indication.

local vocabulary = ...

local abs, floor = math.abs, math.floor

local GIVE_UP = vocabulary.give_up_ms * 1000

local waiting        -- by exchange and keys: a frame number, or a queue of them
local sent           -- by frame number: when a waiting request was sent
local last_waiting   -- by exchange and keys, where a request replaces an earlier one: the last
local response_in    -- by frame number of the request: that of the answer, or a list of two
local response_to    -- by frame number of the answer
local response_time  -- by frame number of the answer, in microseconds

local function forget_waiting() waiting, sent, last_waiting = {}, {}, {} end

local function forget_links()
  forget_waiting()
  response_in, response_to, response_time = {}, {}, {}
end
forget_links()

-- In microseconds. Times are fractional numbers, exact to less than a microsecond.
local function time_between(earlier, later) return floor((later - earlier) * 1000000 + 0.5) end

local function oldest_request(key)
  local earlier = waiting[key]
  return type(earlier) == "table" and earlier[earlier.first] or earlier
end

-- Takes the oldest request with this key, and when it was sent.
local function take_request(key)
  local number = waiting[key]
  if type(number) == "table" then
    local queue = number
    number = queue[queue.first]
    queue[queue.first] = nil
    queue.first = queue.first + 1
    if queue.first > queue.last then waiting[key] = nil end
  elseif number then
    waiting[key] = nil
  else
    return nil
  end
  local time = sent[number]
  sent[number] = nil
  return number, time
end

local function add_request(key, number, time)
  local oldest = oldest_request(key)
  while oldest and abs(time_between(sent[oldest], time)) > GIVE_UP do
    take_request(key)
    oldest = oldest_request(key)
  end
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

local function take_last_request(key)
  local last = last_waiting[key]
  if not last then return nil end
  last_waiting[key] = nil
  return last.number, last.time
end

local function add_response(request, request_time, number, time)
  local earlier = response_in[request]
  response_in[request] = earlier and {earlier, number} or number
  response_to[number] = request
  response_time[number] = time_between(request_time, time)
end

local function link(exchanges, values, pinfo)
  local number, time = pinfo.number, pinfo.abs_ts
  for i = 1, #exchanges do
    local exchange = exchanges[i]
    local key, keys = exchange.id, exchange.keys
    for j = 1, #keys do key = key * 65536 + values[keys[j]] end
    if exchange.answers then
      local take = exchange.replaces and take_last_request or take_request
      local request, request_time = take(key)
      if request then add_response(request, request_time, number, time) end
    elseif exchange.replaces then
      last_waiting[key] = {number = number, time = time}
    else
      add_request(key, number, time)
    end
  end
end

-- Returns, for a frame: the frame of its answer or a list of two, the frame that it answers,
-- and the time since that in microseconds.
local function find_links(number)
  return response_in[number], response_to[number], response_time[number]
end

return {
  forget_links = forget_links,
  link = link,
  forget_waiting = forget_waiting,
  find_links = find_links,
}
