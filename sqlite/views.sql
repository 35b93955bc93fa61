-- What is asked most, as views of the table `log`. Each reads the log once.
--
-- There are no joins here, only filters, aggregates and window functions: with joins, the planner
-- can choose to read the log, or a part of it, once per row.

-- Results other than success, transmissions other than successful, and disconnects with
-- their reason. `peer` is an address, or the index of the peer.
CREATE TEMP VIEW failures AS
SELECT path, record, stamp, time_ms, signal, vif,
  coalesce(peer_sta_address, bssid, peer_index) AS peer,
  coalesce(result_code, transmission_status, reason_code) AS failure
FROM log
WHERE log.failure = 1;

-- A row per answer. `signal`, `record` and times are those of the answer, `request` is the
-- record that it answers. A request that is confirmed and completed has two rows.
CREATE TEMP VIEW exchanges AS
SELECT path, request, record, stamp, time_ms, vif, signal, response_ms AS ms,
  coalesce(result_code, transmission_status) AS result
FROM log
WHERE request > 0;

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
        WHEN 'mlme_roamed_ind' THEN nullif(substr(coalesce(frame, data), 33, 12), '')
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

-- A row per stay of an interface at an access point. `started_by` is the indication of the
-- connection or of the roam; `bssid` is the sender of its frame, else that of the request. A link
-- ends with a disconnect from its own access point, with the next link (a roam), when its
-- interface is removed, or when the driver is unloaded or loaded. The columns of the end are
-- NULL if the log ends first.
--
-- A log that starts while connected shows that link, too, from a report of its signal strength,
-- its end, or a roam: `started_by` and the columns of the start are NULL.
CREATE TEMP VIEW links AS
WITH
  events AS (
    SELECT path, record, stamp, time_ms, vif, reason_code, coalesce(signal, line) AS event,
      CASE
        WHEN signal IS NULL THEN 'driver'
        WHEN signal IN ('mlme_connect_ind', 'mlme_roam_ind')
          THEN CASE WHEN result_code = 'success' THEN 'start' END
        WHEN signal = 'mlme_roamed_ind' THEN 'start'
        WHEN signal IN ('mlme_connect_req', 'mlme_roam_req') THEN 'request'
        WHEN signal = 'mlme_procedure_started_ind' THEN 'procedure'
        WHEN signal = 'mlme_rssi_report_ind' THEN 'report'
        WHEN signal IN ('mlme_connected_ind', 'mlme_start_req') THEN 'own access point'
        ELSE 'end'
      END AS kind,
      -- Without colons. In a frame, the receiver is before the sender.
      CASE
        WHEN signal IN ('mlme_connect_ind', 'mlme_roamed_ind')
          THEN nullif(upper(substr(coalesce(frame, data), 21, 12)), '')
        WHEN signal = 'mlme_procedure_started_ind'
          THEN nullif(upper(substr(coalesce(frame, data), 9, 12)), '')
        ELSE upper(replace(coalesce(bssid, peer_sta_address), ':', ''))
      END AS peer
    FROM log
    WHERE signal IN ('mlme_connect_req', 'mlme_connect_ind', 'mlme_roam_req', 'mlme_roam_ind',
        'mlme_roamed_ind', 'mlme_procedure_started_ind', 'mlme_rssi_report_ind',
        'mlme_connected_ind', 'mlme_start_req', 'mlme_disconnect_req', 'mlme_disconnect_ind',
        'mlme_disconnected_ind', 'mlme_del_vif_req')
      OR signal IS NULL AND line IN ('Driver: Loaded', 'Driver: Unloaded')
  ),
  -- A run ends with the next event of the driver: both have the same number of such events
  -- from there to the end of the log.
  runs AS (
    SELECT *, count(*) FILTER (WHERE kind = 'driver')
      OVER (PARTITION BY path ORDER BY record DESC) AS run
    FROM events
  ),
  numbered AS (
    SELECT *,
      count(*) FILTER (WHERE kind = 'driver') OVER (PARTITION BY path) = run AS is_first_run,
      max(CASE WHEN kind = 'driver' THEN record END) OVER run AS driver_record,
      max(CASE WHEN kind = 'driver' THEN event END) OVER run AS driver_event,
      max(CASE WHEN kind = 'driver' THEN stamp END) OVER run AS driver_stamp,
      max(CASE WHEN kind = 'driver' THEN time_ms END) OVER run AS driver_ms,
      count(*) FILTER (WHERE kind = 'start') OVER vif AS number,
      count(*) FILTER (WHERE kind IN ('request', 'procedure')) OVER vif AS target,
      count(*) FILTER (WHERE kind = 'request') OVER vif AS requests,
      count(*) FILTER (WHERE kind = 'own access point') OVER (PARTITION BY path, vif) AS serves
    FROM runs
    WINDOW run AS (PARTITION BY path, run),
      vif AS (PARTITION BY path, run, vif ORDER BY record)
  ),
  targets AS (
    SELECT *, max(CASE WHEN kind IN ('request', 'procedure') THEN peer END) OVER same AS target_peer,
      min(number) OVER same AS target_number
    FROM numbered
    WHERE kind <> 'driver'
    WINDOW same AS (PARTITION BY path, run, vif, target)
  ),
  -- A request belongs to the next start only. Number 0 is the link from before the log, if there
  -- is one.
  peers AS (
    SELECT *, first_value(
        CASE WHEN kind = 'start' AND target_number = number - 1 THEN coalesce(peer, target_peer)
          ELSE peer END)
      OVER (PARTITION BY path, run, vif, number ORDER BY record) AS bssid
    FROM targets
    WHERE number > 0 OR is_first_run AND requests = 0 AND serves = 0 AND kind IN ('report', 'end')
  ),
  own AS (
    SELECT *, kind = 'end' AND (peer = bssid OR peer IS NULL OR bssid IS NULL
      OR peer IN ('000000000000', 'FFFFFFFFFFFF')) AS is_end
    FROM peers
  ),
  ranked AS (
    SELECT *, row_number() OVER (PARTITION BY path, run, vif, number, is_end ORDER BY record) AS rank
    FROM own
  ),
  stays AS (
    SELECT path, run, vif, number, bssid,
      max(record) FILTER (WHERE kind = 'start') AS record,
      max(stamp) FILTER (WHERE kind = 'start') AS stamp,
      max(time_ms) FILTER (WHERE kind = 'start') AS time_ms,
      max(event) FILTER (WHERE kind = 'start') AS started_by,
      max(record) FILTER (WHERE is_end AND rank = 1) AS end_record,
      max(event) FILTER (WHERE is_end AND rank = 1) AS end_event,
      max(stamp) FILTER (WHERE is_end AND rank = 1) AS end_stamp,
      max(time_ms) FILTER (WHERE is_end AND rank = 1) AS end_ms,
      max(reason_code) FILTER (WHERE is_end AND rank = 1) AS reason,
      max(driver_record) AS driver_record, max(driver_event) AS driver_event,
      max(driver_stamp) AS driver_stamp, max(driver_ms) AS driver_ms
    FROM ranked
    GROUP BY path, run, vif, number
  ),
  followed AS (
    SELECT *, lead(record) OVER vif AS next_record, lead(started_by) OVER vif AS next_event,
      lead(stamp) OVER vif AS next_stamp, lead(time_ms) OVER vif AS next_ms
    FROM stays
    WINDOW vif AS (PARTITION BY path, run, vif ORDER BY number)
  )
SELECT path, record, stamp, time_ms, vif,
  lower(substr(bssid, 1, 2) || ':' || substr(bssid, 3, 2) || ':' || substr(bssid, 5, 2) || ':' ||
    substr(bssid, 7, 2) || ':' || substr(bssid, 9, 2) || ':' || substr(bssid, 11, 2)) AS bssid,
  started_by,
  coalesce(end_event, next_event, driver_event) AS ended_by, reason,
  coalesce(end_record, next_record, driver_record) AS end_record,
  CASE WHEN end_record IS NOT NULL THEN end_stamp WHEN next_record IS NOT NULL THEN next_stamp
    ELSE driver_stamp END AS end_stamp,
  CASE WHEN end_record IS NOT NULL THEN end_ms WHEN next_record IS NOT NULL THEN next_ms
    ELSE driver_ms END AS end_time_ms
FROM followed
ORDER BY path, coalesce(record, 0), vif;

-- A row per scan request. `results` counts the results with its scan_id up to the next request
-- with this id, `result` is that of the confirm, or 'no confirm'. A scan ends when it is done,
-- when the host deletes it, with the next request of the same id, or when the driver is unloaded
-- or loaded. The columns of the end are NULL if the request failed, or if the log ends first.
CREATE TEMP VIEW scans AS
WITH
  events AS (
    SELECT path, record, stamp, time_ms, scan_id, scan_type, result_code,
      coalesce(signal, line) AS event,
      CASE
        WHEN signal IS NULL THEN 'driver'
        WHEN signal = 'mlme_add_scan_req' THEN 'request'
        WHEN signal = 'mlme_add_scan_cfm' THEN 'confirm'
        WHEN signal = 'mlme_scan_ind' THEN 'result'
        ELSE 'end'
      END AS kind
    FROM log
    WHERE signal IN ('mlme_add_scan_req', 'mlme_add_scan_cfm', 'mlme_scan_ind',
        'mlme_scan_done_ind', 'mlme_del_scan_req')
      OR signal IS NULL AND line IN ('Driver: Loaded', 'Driver: Unloaded')
  ),
  runs AS (
    SELECT *, count(*) FILTER (WHERE kind = 'driver')
      OVER (PARTITION BY path ORDER BY record DESC) AS run
    FROM events
  ),
  numbered AS (
    SELECT *,
      max(CASE WHEN kind = 'driver' THEN record END) OVER run AS driver_record,
      max(CASE WHEN kind = 'driver' THEN event END) OVER run AS driver_event,
      max(CASE WHEN kind = 'driver' THEN stamp END) OVER run AS driver_stamp,
      max(CASE WHEN kind = 'driver' THEN time_ms END) OVER run AS driver_ms,
      count(*) FILTER (WHERE kind = 'request')
        OVER (PARTITION BY path, run, scan_id ORDER BY record) AS number
    FROM runs
    WINDOW run AS (PARTITION BY path, run)
  ),
  ranked AS (
    SELECT *, row_number()
      OVER (PARTITION BY path, run, scan_id, number, kind ORDER BY record) AS rank
    FROM numbered
    WHERE number > 0 AND kind <> 'driver'
  ),
  parts AS (
    SELECT path, run, scan_id, min(record) AS record,
      max(stamp) FILTER (WHERE kind = 'request') AS stamp,
      max(time_ms) FILTER (WHERE kind = 'request') AS time_ms,
      max(scan_type) AS type,
      count(*) FILTER (WHERE kind = 'result') AS results,
      CASE WHEN count(*) FILTER (WHERE kind = 'confirm') = 0 THEN 'no confirm'
        ELSE max(result_code) FILTER (WHERE kind = 'confirm' AND rank = 1) END AS result,
      max(record) FILTER (WHERE kind = 'end' AND rank = 1) AS end_record,
      max(event) FILTER (WHERE kind = 'end' AND rank = 1) AS end_event,
      max(stamp) FILTER (WHERE kind = 'end' AND rank = 1) AS end_stamp,
      max(time_ms) FILTER (WHERE kind = 'end' AND rank = 1) AS end_ms,
      max(driver_record) AS driver_record, max(driver_event) AS driver_event,
      max(driver_stamp) AS driver_stamp, max(driver_ms) AS driver_ms
    FROM ranked
    GROUP BY path, run, scan_id, number
  ),
  followed AS (
    SELECT *, lead(record) OVER same_id AS next_record, lead(stamp) OVER same_id AS next_stamp,
      lead(time_ms) OVER same_id AS next_ms
    FROM parts
    WINDOW same_id AS (PARTITION BY path, run, scan_id ORDER BY record)
  ),
  ends AS (
    SELECT *,
      CASE
        WHEN result NOT IN ('success', 'no confirm') AND end_record IS NULL THEN 'none'
        WHEN end_record IS NOT NULL THEN 'own'
        WHEN next_record IS NOT NULL THEN 'next'
        ELSE 'driver'
      END AS way
    FROM followed
  )
SELECT path, record, stamp, time_ms, scan_id, type, results, result,
  CASE way WHEN 'own' THEN end_event WHEN 'next' THEN 'mlme_add_scan_req'
    WHEN 'driver' THEN driver_event END AS ended_by,
  CASE way WHEN 'own' THEN end_ms WHEN 'next' THEN next_ms WHEN 'driver' THEN driver_ms END
    - time_ms AS ms,
  CASE way WHEN 'own' THEN end_record WHEN 'next' THEN next_record WHEN 'driver' THEN driver_record
    END AS end_record,
  CASE way WHEN 'own' THEN end_stamp WHEN 'next' THEN next_stamp WHEN 'driver' THEN driver_stamp
    END AS end_stamp,
  CASE way WHEN 'own' THEN end_ms WHEN 'next' THEN next_ms WHEN 'driver' THEN driver_ms
    END AS end_time_ms
FROM ends
ORDER BY path, record;

-- A row per measured signal strength, in dBm. `peer` is the address that sent: that of the link
-- in mlme_rssi_report_ind, that of the frame in the results of scans.
CREATE TEMP VIEW signal_strength AS
SELECT path, record, stamp, time_ms, signal, vif,
  coalesce(bssid, udi_address(substr(coalesce(frame, data), 21, 12))) AS peer,
  -- Its name in 13.1.0.
  iif(signal = 'mlme_rssi_report_ind', coalesce(rssi, low_rssi_threshold), rssi) AS rssi
FROM log
WHERE signal IN ('mlme_rssi_report_ind', 'mlme_scan_ind', 'mlme_synchronised_ind');

-- A row per interface and second with data frames. `sent` counts the frames that the host gave,
-- `received` those that it got, and `bytes` is their length. `not_sent` counts the confirms of
-- frames that were not sent, the columns after it by reason.
--
-- Sorting takes most of the time, so a frame is sorted by one number: second, interface and kind.
CREATE TEMP VIEW traffic AS
WITH
  frames AS (
    SELECT path,
      (time_ms / 1000 * 65536 + vif) * 8 +
        CASE id
          WHEN 0x1000 THEN 1
          WHEN 0x1300 THEN 2
          ELSE CASE transmission_status WHEN 'retry_limit' THEN 4 WHEN 'tx_lifetime' THEN 5
            WHEN 'no_bss' THEN 6 ELSE 7 END
        END AS frame_key,
      dump_bytes AS bytes
    FROM log
    WHERE id IN (0x1000, 0x1100, 0x1300)  -- ma_unitdata_req, _cfm, _ind
      AND transmission_status IS NOT 'successful'
    LIMIT -1  -- else the data are sorted, too
  ),
  counts AS (
    SELECT path, frame_key >> 3 AS second_key, frame_key & 7 AS kind, count(*) AS n,
      sum(bytes) AS bytes
    FROM frames
    WHERE frame_key IS NOT NULL
    GROUP BY frame_key, path
  )
SELECT path, (second_key >> 16) * 1000 AS time_ms, second_key & 65535 AS vif,
  sum(iif(kind = 1, n, 0)) AS sent, sum(iif(kind = 2, n, 0)) AS received,
  coalesce(sum(iif(kind < 3, bytes, 0)), 0) AS bytes,
  sum(iif(kind > 3, n, 0)) AS not_sent, sum(iif(kind = 4, n, 0)) AS retry_limit,
  sum(iif(kind = 5, n, 0)) AS tx_lifetime, sum(iif(kind = 6, n, 0)) AS no_bss
FROM counts
GROUP BY path, second_key;
