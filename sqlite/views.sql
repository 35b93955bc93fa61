-- What is asked most, as views of the table `log`. Each reads the log once.
--
-- SQLite makes no index for a virtual table, so `log` joined with itself would be read once
-- per row, and the planner can choose the same for a materialized part of it. So there are
-- no joins here, only filters, aggregates and window functions.

-- Results other than success, transmissions other than successful, and disconnects with
-- their reason. `peer` is an address, or the index of the peer.
CREATE TEMP VIEW failures AS
SELECT path, record, stamp, time_ms, signal, vif,
  coalesce(peer_sta_address, bssid, peer_index) AS peer,
  CASE
    WHEN result_code <> 'success' THEN result_code
    WHEN transmission_status <> 'successful' THEN transmission_status
    ELSE reason_code
  END AS failure
FROM log
WHERE result_code <> 'success' OR transmission_status <> 'successful'
  OR signal IN ('mlme_disconnect_req', 'mlme_disconnected_ind');

-- A row per answer. `signal`, `record` and times are those of the answer, `request` is the
-- record that it answers. A request that is confirmed and completed has two rows.
CREATE TEMP VIEW exchanges AS
SELECT path, request, record, stamp, time_ms, vif, signal, response_ms AS ms,
  coalesce(result_code, transmission_status) AS result
FROM log
WHERE request IS NOT NULL;

-- A row per connect request. `result` is that of the indication; without one, that of the
-- confirm, 'no confirm' or 'no indication'. `ms` is the time to the indication.
--
-- A connection ends with the first disconnect of its own peer before the next connection of
-- its interface is indicated: the old access point's disconnect can come after the request
-- to the new one. Without it, the connection ends with the next connect request, when its
-- interface is removed, or when the driver is unloaded or loaded. The peer is that of the
-- request, after a roam the new access point; if the log lacks the new address, any
-- disconnect ends the connection. A request without an answer ends in the same way. The
-- columns of the end are NULL if the request failed, or if the log ends first.
CREATE TEMP VIEW connections AS
WITH
  events AS (
    SELECT path, record, stamp, time_ms, vif, bssid, coalesce(signal, line) AS event,
      CASE
        WHEN signal IS NULL THEN 'driver'
        WHEN signal = 'mlme_connect_req' THEN 'request'
        WHEN signal = 'mlme_connect_cfm' THEN 'confirm'
        WHEN signal = 'mlme_connect_ind' THEN 'indication'
        WHEN signal = 'mlme_roam_req' THEN 'roam request'
        WHEN signal IN ('mlme_roam_ind', 'mlme_roamed_ind') THEN 'roam'
        WHEN signal = 'mlme_del_vif_req' THEN 'removal'
        ELSE 'disconnect'
      END AS kind,
      result_code AS result, reason_code AS reason,
      -- The third address of the frame in an mlme_roamed_ind is that of the access point.
      CASE signal
        WHEN 'mlme_roamed_ind' THEN nullif(lower(hex(substr(coalesce(frame, data), 17, 6))), '')
        ELSE replace(coalesce(bssid, peer_sta_address), ':', '')
      END AS address
    FROM log
    WHERE signal IN ('mlme_connect_req', 'mlme_connect_cfm', 'mlme_connect_ind',
        'mlme_roam_req', 'mlme_roam_ind', 'mlme_roamed_ind', 'mlme_disconnect_req',
        'mlme_disconnect_ind', 'mlme_disconnected_ind', 'mlme_del_vif_req')
      OR signal IS NULL AND line IN ('Driver: Loaded', 'Driver: Unloaded')
  ),
  -- Counted from the end of the log, so that a driver event and a removal belong to what
  -- they end.
  counted AS (
    SELECT *, sum(kind = 'driver') OVER (PARTITION BY path ORDER BY record DESC) AS run,
      sum(kind = 'removal') OVER (PARTITION BY path, vif ORDER BY record DESC) AS life
    FROM events
  ),
  numbered AS (
    SELECT *, sum(kind = 'request') OVER so_far AS number,
      sum(kind = 'roam request') OVER so_far AS roam_number,
      max(event) FILTER (WHERE kind = 'removal') OVER whole AS removal_event,
      max(stamp) FILTER (WHERE kind = 'removal') OVER whole AS removal_stamp,
      max(time_ms) FILTER (WHERE kind = 'removal') OVER whole AS removal_ms,
      max(event) FILTER (WHERE kind = 'driver') OVER same_run AS driver_event,
      max(stamp) FILTER (WHERE kind = 'driver') OVER same_run AS driver_stamp,
      max(time_ms) FILTER (WHERE kind = 'driver') OVER same_run AS driver_ms
    FROM counted
    WINDOW same_run AS (PARTITION BY path, run),
      whole AS (PARTITION BY path, vif, run, life),
      so_far AS (PARTITION BY path, vif, run, life ORDER BY record)
  ),
  -- The first answer of each kind counts.
  answered AS (
    SELECT *,
      kind = 'roam' AND coalesce(result, 'success') = 'success' AS roams,
      kind = 'indication' AND result = 'success' AND row_number()
        OVER (PARTITION BY path, vif, run, life, number, kind ORDER BY record) = 1 AS starts,
      max(address) FILTER (WHERE kind = 'request')
        OVER (PARTITION BY path, vif, run, life, number) AS requested,
      max(address) FILTER (WHERE kind = 'roam request')
        OVER (PARTITION BY path, vif, run, life, roam_number) AS roam_requested
    FROM numbered
    WHERE number > 0
  ),
  connected AS (
    SELECT *, sum(starts) OVER so_far AS connection,
      sum(starts OR roams) OVER so_far AS peer_number,
      CASE event
        WHEN 'mlme_connect_ind' THEN requested
        WHEN 'mlme_roam_ind' THEN roam_requested
        ELSE address
      END AS new_peer
    FROM answered
    WINDOW so_far AS (PARTITION BY path, vif, run, life ORDER BY record)
  ),
  peered AS (
    SELECT *,
      max(number) FILTER (WHERE starts)
        OVER (PARTITION BY path, vif, run, life, connection) AS connected_number,
      max(starts) OVER (PARTITION BY path, vif, run, life, number) AS is_connected,
      kind = 'disconnect' AND connection > 0
        AND coalesce(address = max(new_peer) FILTER (WHERE starts OR roams)
          OVER (PARTITION BY path, vif, run, life, peer_number), 1) AS ends
    FROM connected
  ),
  ended AS (
    SELECT *, sum(ends) OVER (PARTITION BY path, vif, run, life, connection ORDER BY record) AS end_number
    FROM peered
  ),
  -- The number of the request that an event belongs to.
  owned AS (
    SELECT *, CASE
        WHEN roams AND end_number = 0 OR ends AND end_number = 1 THEN connected_number
        WHEN kind IN ('request', 'confirm', 'indication')
          OR kind = 'disconnect' AND NOT is_connected AND address = requested THEN number
      END AS owner
    FROM ended
  ),
  ranked AS (
    SELECT *, row_number()
      OVER (PARTITION BY path, vif, run, life, owner, kind ORDER BY record) AS rank
    FROM owned
    WHERE owner > 0
  ),
  attempts AS (
    SELECT path, vif, run, life, removal_event, removal_stamp, removal_ms, driver_event,
      driver_stamp, driver_ms,
      max(record) FILTER (WHERE kind = 'request') AS record,
      max(stamp) FILTER (WHERE kind = 'request') AS stamp,
      max(time_ms) FILTER (WHERE kind = 'request') AS time_ms,
      max(bssid) FILTER (WHERE kind = 'request') AS bssid,
      sum(kind = 'confirm') AS confirms,
      max(result) FILTER (WHERE kind = 'confirm' AND rank = 1) AS confirmed,
      sum(kind = 'indication') AS indications,
      max(result) FILTER (WHERE kind = 'indication' AND rank = 1) AS indicated,
      max(time_ms) FILTER (WHERE kind = 'indication' AND rank = 1) AS indicated_ms,
      sum(kind = 'roam') AS roams,
      max(event) FILTER (WHERE kind = 'disconnect' AND rank = 1) AS end_event,
      max(reason) FILTER (WHERE kind = 'disconnect' AND rank = 1) AS reason,
      max(stamp) FILTER (WHERE kind = 'disconnect' AND rank = 1) AS end_stamp,
      max(time_ms) FILTER (WHERE kind = 'disconnect' AND rank = 1) AS end_ms
    FROM ranked
    GROUP BY path, vif, run, life, owner
  ),
  results AS (
    SELECT *,
      CASE
        WHEN indications > 0 THEN indicated
        WHEN confirms = 0 THEN 'no confirm'
        WHEN confirmed = 'success' THEN 'no indication'
        ELSE confirmed
      END AS result,
      lead('mlme_connect_req') OVER next AS next_event,
      lead(stamp) OVER next AS next_stamp, lead(time_ms) OVER next AS next_ms
    FROM attempts
    WINDOW next AS (PARTITION BY path, vif, run, life ORDER BY record)
  ),
  lasting AS (SELECT *, result IN ('success', 'no confirm', 'no indication') AS lasts FROM results)
SELECT path, record, stamp, time_ms, vif, bssid, result, indicated_ms - time_ms AS ms, roams,
  iif(lasts, coalesce(end_event, next_event, removal_event, driver_event), NULL) AS ended_by,
  iif(lasts, reason, NULL) AS reason,
  iif(lasts, coalesce(end_stamp, next_stamp, removal_stamp, driver_stamp), NULL) AS end_stamp,
  iif(lasts, coalesce(end_ms, next_ms, removal_ms, driver_ms), NULL) AS end_time_ms
FROM lasting
ORDER BY path, record;
