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
-- A connection ends with a disconnect by the host (mlme_disconnect_req) or by anybody else
-- (mlme_disconnected_ind), with the next connect request, when its interface is removed, or
-- when the driver is unloaded or loaded. The columns of the end are NULL if the request
-- failed, or if the log ends first.
CREATE TEMP VIEW connections AS
WITH
  events AS (
    SELECT path, record, stamp, time_ms, signal, vif, bssid, result_code, reason_code,
      CASE
        WHEN signal = 'mlme_connect_req' THEN 'request'
        WHEN signal = 'mlme_connect_cfm' THEN 'confirm'
        WHEN signal = 'mlme_connect_ind' THEN 'indication'
        WHEN signal = 'mlme_roam_ind' OR signal = 'mlme_roamed_ind' THEN 'roam'
        WHEN signal IS NULL THEN 'driver'
        ELSE 'end'
      END AS kind,
      CASE WHEN signal IS NULL THEN line ELSE signal END AS event
    FROM log
    WHERE signal IN ('mlme_connect_req', 'mlme_connect_cfm', 'mlme_connect_ind',
        'mlme_roam_ind', 'mlme_roamed_ind', 'mlme_disconnect_req', 'mlme_disconnect_ind',
        'mlme_disconnected_ind', 'mlme_del_vif_req')
      OR signal IS NULL AND line IN ('Driver: Loaded', 'Driver: Unloaded')
  ),
  -- A run ends with the next event of the driver, which has no vif. That of least record is
  -- that of least text.
  runs AS (
    SELECT *, min(CASE WHEN kind = 'driver'
        THEN printf('%019d', record) || json_array(event, stamp, time_ms) END)
      OVER (PARTITION BY path ORDER BY record DESC) AS run_end
    FROM events
  ),
  numbered AS (
    SELECT *, sum(kind = 'request')
      OVER (PARTITION BY path, run_end, vif ORDER BY record) AS number
    FROM runs
    WHERE kind <> 'driver'
  ),
  -- The first of each kind counts.
  ranked AS (
    SELECT *, row_number()
      OVER (PARTITION BY path, run_end, vif, number, kind ORDER BY record) AS rank
    FROM numbered
    WHERE number > 0
  ),
  attempts AS (
    SELECT path, vif, run_end, min(record) AS record,
      max(stamp) FILTER (WHERE kind = 'request') AS stamp,
      max(time_ms) FILTER (WHERE kind = 'request') AS time_ms,
      max(bssid) FILTER (WHERE kind = 'request') AS bssid,
      count(*) FILTER (WHERE kind = 'confirm') AS confirms,
      max(result_code) FILTER (WHERE kind = 'confirm' AND rank = 1) AS confirmed,
      count(*) FILTER (WHERE kind = 'indication') AS indications,
      max(result_code) FILTER (WHERE kind = 'indication' AND rank = 1) AS indicated,
      max(time_ms) FILTER (WHERE kind = 'indication' AND rank = 1) AS indicated_ms,
      count(*) FILTER (WHERE kind = 'roam' AND coalesce(result_code, 'success') = 'success')
        AS roams,
      max(event) FILTER (WHERE kind = 'end' AND rank = 1) AS ended_by,
      max(reason_code) FILTER (WHERE kind = 'end' AND rank = 1) AS reason,
      max(stamp) FILTER (WHERE kind = 'end' AND rank = 1) AS end_stamp,
      max(time_ms) FILTER (WHERE kind = 'end' AND rank = 1) AS end_time_ms
    FROM ranked
    GROUP BY path, run_end, vif, number
  ),
  results AS (
    SELECT *,
      CASE
        WHEN indications > 0 THEN indicated
        WHEN confirms = 0 THEN 'no confirm'
        WHEN confirmed = 'success' THEN 'no indication'
        ELSE confirmed
      END AS result,
      CASE
        WHEN ended_by IS NOT NULL THEN json_array(ended_by, end_stamp, end_time_ms)
        WHEN lead(record) OVER same_vif IS NOT NULL
          THEN json_array('mlme_connect_req', lead(stamp) OVER same_vif, lead(time_ms) OVER same_vif)
        ELSE substr(run_end, 20)
      END AS next_end
    FROM attempts
    WINDOW same_vif AS (PARTITION BY path, run_end, vif ORDER BY record)
  ),
  ends AS (
    SELECT *, CASE WHEN result IN ('success', 'no confirm', 'no indication') THEN next_end END
      AS own_end
    FROM results
  )
SELECT path, record, stamp, time_ms, vif, bssid, result, indicated_ms - time_ms AS ms, roams,
  json_extract(own_end, '$[0]') AS ended_by, CASE WHEN own_end IS NOT NULL THEN reason END AS reason,
  json_extract(own_end, '$[1]') AS end_stamp, json_extract(own_end, '$[2]') AS end_time_ms
FROM ends
ORDER BY path, record;
