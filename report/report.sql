-- The data of the report page, as one JSON object. Everything on the page comes from here.
--
-- A log can have millions of records, but a chart has some 2,000 pixels. So the time is divided into
-- about 2,000 steps, and what is too much to draw is reduced to the worst of each step. Each view
-- is read once, into a table that the queries after it share: a view that is named twice is
-- computed twice, and a subquery on `logs` would read the logs again for each row.
--
-- Times are milliseconds since `t0`, names are indices in `names`, and long lists have one
-- array per column, so that the page stays small.
.bail on
.headers off
.mode list

.output /dev/fd/8
.print 'report: 1/9 logs'
.output
CREATE TEMP TABLE r_logs AS
SELECT row_number() OVER () - 1 AS log, path,
  CASE path WHEN '/dev/stdin' THEN 'standard input'
    ELSE replace(path, rtrim(path, replace(path, '/', '')), '') END AS name,
  records, bytes, hip_versions, first_ms, last_ms, ending
FROM logs;

.output /dev/fd/8
.print 'report: 2/9 data frames'
.output
CREATE TEMP TABLE r_traffic AS
SELECT log, time_ms, vif, sent, received, traffic.bytes, not_sent, retry_limit, tx_lifetime, no_bss
FROM traffic CROSS JOIN r_logs USING (path);

-- A log can have thousands of interfaces.
CREATE TEMP TABLE r_seconds AS
SELECT log, time_ms, sum(sent) AS sent, sum(received) AS received, sum(not_sent) AS not_sent,
  sum(retry_limit) AS retry_limit, sum(tx_lifetime) AS tx_lifetime, sum(no_bss) AS no_bss
FROM r_traffic GROUP BY time_ms;

CREATE TEMP TABLE r_totals AS
SELECT vif, count(*) AS seconds, sum(sent) AS sent, sum(received) AS received, sum(bytes) AS bytes,
  sum(not_sent) AS not_sent
FROM r_traffic GROUP BY vif;

.output /dev/fd/8
.print 'report: 3/9 failures'
.output
-- Those of data frames are in `traffic`.
CREATE TEMP TABLE r_failures AS
SELECT log, record, time_ms, signal, vif, peer, failure
FROM failures CROSS JOIN r_logs USING (path)
WHERE signal <> 'ma_unitdata_cfm';

.output /dev/fd/8
.print 'report: 4/9 links'
.output
CREATE TEMP TABLE r_links AS
SELECT log, record, coalesce(time_ms, first_ms) AS time_ms, vif, bssid, started_by, ended_by, reason,
  end_record, coalesce(end_time_ms, max(last_ms, coalesce(time_ms, first_ms))) AS end_ms
FROM links CROSS JOIN r_logs USING (path);

.output /dev/fd/8
.print 'report: 5/9 connections'
.output
CREATE TEMP TABLE r_connections AS
SELECT log, record, time_ms, vif, bssid, result, ms, roams, ended_by, reason, end_time_ms AS end_ms
FROM connections CROSS JOIN r_logs USING (path);

.output /dev/fd/8
.print 'report: 6/9 scans and signal strength'
.output
CREATE TEMP TABLE r_scans AS
SELECT log, record, time_ms, type, results, result, ended_by, ms
FROM scans CROSS JOIN r_logs USING (path);

CREATE TEMP TABLE r_strength AS
SELECT log, record, time_ms, signal = 'mlme_rssi_report_ind' AS is_own, vif, peer, rssi
FROM signal_strength CROSS JOIN r_logs USING (path)
WHERE rssi < 0;  -- 0 and above: no measurement

.output /dev/fd/8
.print 'report: 7/9 driver and stations'
.output
-- Events of the driver, and stations of an access point of its own: from their connection to the
-- next event with the same address.
CREATE TEMP TABLE r_events AS
SELECT log, record, time_ms, vif, signal, coalesce(signal, line) AS event,
  CASE WHEN signal = 'mlme_procedure_started_ind'
      THEN nullif(substr(coalesce(frame, data), 21, 12), '')
    ELSE peer_sta_address END AS peer
FROM log CROSS JOIN r_logs USING (path)
WHERE signal IN ('mlme_connected_ind', 'mlme_procedure_started_ind', 'mlme_disconnect_ind',
    'mlme_disconnected_ind', 'mlme_disconnect_req')
  OR signal IS NULL AND line GLOB 'Driver: *';

CREATE TEMP TABLE r_stations AS
WITH
  served AS (
    SELECT * FROM r_events
    WHERE (log, vif) IN (SELECT log, vif FROM r_events WHERE signal = 'mlme_connected_ind')
  ),
  named AS (
    SELECT *, CASE signal WHEN 'mlme_connected_ind'
      THEN lag(CASE signal WHEN 'mlme_procedure_started_ind' THEN
          substr(peer, 1, 2) || ':' || substr(peer, 3, 2) || ':' || substr(peer, 5, 2) || ':' ||
          substr(peer, 7, 2) || ':' || substr(peer, 9, 2) || ':' || substr(peer, 11, 2) END)
        OVER (PARTITION BY log, vif ORDER BY record)
      ELSE peer END AS address
    FROM served
  ),
  followed AS (
    SELECT *, lead(record) OVER same AS end_record, lead(time_ms) OVER same AS end_ms,
      lead(event) OVER same AS ended_by
    FROM named
    WHERE signal <> 'mlme_procedure_started_ind'
    WINDOW same AS (PARTITION BY log, vif, address ORDER BY record)
  )
SELECT log, record, time_ms, vif, address, end_record, coalesce(end_ms, last_ms) AS end_ms, ended_by
FROM followed JOIN r_logs USING (log)
WHERE signal = 'mlme_connected_ind';

-- The axis: stretches of time without a gap of more than an hour, at most 40.
CREATE TEMP VIEW r_times AS
SELECT first_ms AS time_ms FROM r_logs
UNION ALL SELECT last_ms FROM r_logs
UNION ALL SELECT time_ms FROM r_seconds
UNION ALL SELECT time_ms FROM r_failures
UNION ALL SELECT time_ms FROM r_links
UNION ALL SELECT end_ms FROM r_links
UNION ALL SELECT time_ms FROM r_connections
UNION ALL SELECT time_ms FROM r_scans
UNION ALL SELECT time_ms FROM r_strength
UNION ALL SELECT time_ms FROM r_events;

CREATE TEMP VIEW r_find_stretches AS
WITH
  minutes AS (
    SELECT min(time_ms) AS first, max(time_ms) AS last FROM r_times
    WHERE time_ms IS NOT NULL
    GROUP BY time_ms / 60000
  ),
  gaps AS (
    SELECT *, first - lag(last, 1, first) OVER (ORDER BY first) AS gap FROM minutes
  ),
  ranked AS (
    SELECT *, row_number() OVER (ORDER BY gap DESC) < 40 AND gap > 3600000 AS is_cut FROM gaps
  ),
  numbered AS (
    SELECT *, sum(is_cut) OVER (ORDER BY first) AS stretch FROM ranked
  )
SELECT min(first) AS first, max(last) AS last FROM numbered GROUP BY stretch;

CREATE TEMP TABLE r_step AS
SELECT max(1000, (coalesce(sum(last - first), 0) / 2000 + 999) / 1000 * 1000) AS step
FROM r_find_stretches;

.output /dev/fd/8
.print 'report: 8/9 answers'
.output
-- A row per answering signal, step and order of magnitude: the slowest, and how many there are. The
-- sorted key is a number, because that is fastest.
CREATE TEMP TABLE r_answers AS
WITH answers AS (
    SELECT path, record, request, time_ms, signal, response_ms AS ms,
      coalesce(result_code, transmission_status, 'success') NOT IN ('success', 'successful')
        AS failed,
      ((time_ms - response_ms) / (SELECT step FROM r_step) * 8 +
        CASE WHEN response_ms < 10 THEN 0 WHEN response_ms < 30 THEN 1 WHEN response_ms < 100 THEN 2
          WHEN response_ms < 300 THEN 3 WHEN response_ms < 1000 THEN 4 WHEN response_ms < 10000 THEN 5
          ELSE 6 END) * 131072 + id * 2 +
        (coalesce(result_code, transmission_status, 'success') NOT IN ('success', 'successful')) AS k
    FROM log
    WHERE request > 0
    LIMIT -1
  )
SELECT path, record, request, time_ms - ms AS time_ms, signal, max(ms) AS ms, failed, count(*) AS n,
  sum(ms) AS total
FROM answers
GROUP BY k;

.output /dev/fd/8
.print 'report: 9/9 requests without answer'
.output
CREATE TEMP TABLE r_signals AS
SELECT signal, count(*) AS n FROM log WHERE signal IS NOT NULL GROUP BY signal;

-- --- What the page shows ---

CREATE TEMP TABLE r_stretches AS
SELECT * FROM r_find_stretches;

CREATE TEMP TABLE r_axis AS
SELECT coalesce(min(first), 0) AS t0, (SELECT step FROM r_step) AS step FROM r_stretches;

-- The interfaces with most to see.
CREATE TEMP TABLE r_vifs AS
SELECT vif, sum(n) AS n, row_number() OVER (ORDER BY sum(n) DESC, vif) <= 8 AS is_shown
FROM (
  SELECT vif, 10 * count(*) AS n FROM r_links GROUP BY vif
  UNION ALL SELECT vif, 10 * count(*) FROM r_connections GROUP BY vif
  UNION ALL SELECT vif, 10 * count(*) FROM r_stations GROUP BY vif
  UNION ALL SELECT vif, count(*) FROM r_failures GROUP BY vif
  UNION ALL SELECT vif, seconds FROM r_totals)
WHERE vif IS NOT NULL
GROUP BY vif;

-- The addresses with most to see.
CREATE TEMP TABLE r_peers AS
WITH
  found AS (
    SELECT bssid AS peer, count(*) * 100000 AS weight, count(*) AS links,
      sum(end_ms - time_ms) AS linked_ms, NULL AS rssi
    FROM r_links GROUP BY bssid
    UNION ALL SELECT bssid, count(*) * 1000, 0, 0, NULL FROM r_connections GROUP BY bssid
    UNION ALL SELECT address, count(*) * 1000, 0, 0, NULL FROM r_stations GROUP BY address
    UNION ALL SELECT peer, count(*), 0, 0, NULL FROM r_strength GROUP BY peer
  )
SELECT peer, sum(links) AS links, sum(linked_ms) AS linked_ms,
  row_number() OVER (ORDER BY sum(weight) DESC, peer) AS rank
FROM found
WHERE peer IS NOT NULL
GROUP BY peer;

-- Each list of items, the worst of each moment first. The number that orders equal ones spreads
-- them, so that a limit leaves out some everywhere and not the last.
CREATE TEMP TABLE r_items AS
WITH
  all_items AS (
    SELECT 'link' AS list, log, record, time_ms, vif, bssid AS peer, started_by AS a,
      ended_by AS b, reason AS c, end_record AS n, end_ms, end_ms - time_ms AS weight
    FROM r_links
    UNION ALL
    SELECT 'connect', log, record, time_ms, vif, bssid, result, ended_by, reason, ms,
      time_ms + coalesce(ms, 0), (result <> 'success') * 1000000 + coalesce(ms, 0)
    FROM r_connections
    UNION ALL
    SELECT 'scan', log, record, time_ms, NULL, NULL, result, ended_by, type, results,
      time_ms + coalesce(ms, 0), (result <> 'success') * 100000000 + coalesce(ms, 0)
    FROM r_scans
    UNION ALL
    SELECT 'roam', log, record, time_ms, vif, bssid, started_by, 'success', NULL, NULL, time_ms, 0
    FROM r_links WHERE started_by IN ('mlme_roamed_ind', 'mlme_roam_ind')
    UNION ALL
    SELECT 'roam', log, record, time_ms, vif, peer, signal, failure, NULL, NULL, time_ms, 1
    FROM r_failures WHERE signal IN ('mlme_roam_ind', 'mlme_roam_cfm')
    UNION ALL
    SELECT 'failure', log, record, time_ms, vif, peer, signal, failure, NULL, NULL, time_ms, 0
    FROM r_failures
    UNION ALL
    SELECT 'station', log, record, time_ms, vif, address, ended_by, NULL, NULL, end_record, end_ms,
      end_ms - time_ms
    FROM r_stations
    UNION ALL
    SELECT 'driver', log, record, time_ms, NULL, NULL, event, NULL, NULL, NULL, time_ms, 0
    FROM r_events WHERE signal IS NULL
  ),
  ranked AS (
    SELECT *, row_number() OVER (
      PARTITION BY list, vif, time_ms / (SELECT step * 8 FROM r_step) ORDER BY weight DESC) AS rank
    FROM all_items
    WHERE vif IS NULL OR vif IN (SELECT vif FROM r_vifs WHERE is_shown)
  )
SELECT *, row_number() OVER (PARTITION BY list ORDER BY rank, record * 7919 % 10007) AS place
FROM ranked;

CREATE TEMP TABLE r_limits AS SELECT 2000 AS items, 12 AS peers, 200 AS rows;

-- The signal strength: the weakest of each step.
CREATE TEMP TABLE r_strength_shown AS
SELECT log, record, time_ms, is_own, vif, s.peer, min(rssi) AS rssi
FROM r_strength s JOIN r_peers p ON p.peer = s.peer
WHERE rank <= (SELECT peers FROM r_limits)
GROUP BY time_ms / (SELECT step FROM r_step), is_own, s.peer, s.log, s.vif * is_own;

-- The answers that are drawn: the slowest of each step, order of magnitude, kind and outcome. Quick
-- ones are so many that they have longer steps.
CREATE TEMP TABLE r_answers_shown AS
SELECT path, record, request, time_ms, signal, max(ms) AS ms, failed
FROM r_answers, r_step
GROUP BY
  time_ms / (step * CASE WHEN failed THEN 2 WHEN ms < 10 THEN 12 WHEN ms < 30 THEN 6 WHEN ms < 100 THEN 3 ELSE 1 END),
  CASE WHEN ms < 10 THEN 0 WHEN ms < 30 THEN 1 WHEN ms < 100 THEN 2 WHEN ms < 300 THEN 3
    WHEN ms < 1000 THEN 4 WHEN ms < 10000 THEN 5 ELSE 6 END, failed, signal = 'ma_unitdata_cfm'
ORDER BY ms DESC
LIMIT 8000;

-- A signal's requests, answers and failed answers.
CREATE TEMP TABLE r_exchanges AS
WITH
  answers AS (
    SELECT signal, sum(n) AS answers, sum(n * failed) AS failed, sum(total) AS total,
      max(ms) AS slowest, sum(n * (ms >= 100)) AS has_slow
    FROM r_answers GROUP BY signal
  )
SELECT a.signal, answers, failed, total * 1.0 / answers AS mean, slowest,
  max(0, coalesce(r.n, 0) - answers) AS missing
FROM answers a
LEFT JOIN r_signals r ON a.signal GLOB '*_cfm' AND r.signal = substr(a.signal, 1, length(a.signal) - 4) || '_req'
UNION ALL
SELECT r.signal, 0, 0, NULL, NULL, r.n
FROM r_signals r
WHERE r.signal GLOB '*_req' AND substr(r.signal, 1, length(r.signal) - 4) || '_cfm' NOT IN (SELECT signal FROM answers)
  AND r.signal NOT GLOB '*_spare*';

CREATE TEMP TABLE r_slowest AS
SELECT path, record, request, time_ms, signal, ms, failed FROM r_answers
ORDER BY ms DESC, request LIMIT 40;

-- Failures that are alike.
CREATE TEMP TABLE r_groups AS
SELECT signal, failure, vif, count(*) AS n, min(record) AS record, log, min(time_ms) AS first,
  max(time_ms) AS last
FROM r_failures GROUP BY signal, failure, vif
UNION ALL
SELECT 'ma_unitdata_cfm', reason, vif, sum(n), NULL, min(log), min(time_ms), max(time_ms)
FROM (
  SELECT log, time_ms, vif, value ->> 0 AS reason, value ->> 1 AS n
  FROM r_traffic CROSS JOIN json_each(json_array(json_array('retry_limit', retry_limit),
    json_array('tx_lifetime', tx_lifetime), json_array('no_bss', no_bss),
    json_array('another reason', not_sent - retry_limit - tx_lifetime - no_bss)))
  WHERE not_sent > 0)
WHERE n > 0
GROUP BY reason, vif;

-- The time runs backwards from one event to the next.
CREATE TEMP TABLE r_jumps AS
SELECT log, record, time_ms, before - time_ms AS ms
FROM (
  SELECT *, lag(time_ms) OVER (PARTITION BY log ORDER BY record) AS before
  FROM (
    SELECT log, record, time_ms FROM r_failures
    UNION ALL SELECT log, record, time_ms FROM r_events
    UNION ALL SELECT log, record, time_ms FROM r_strength
    UNION ALL SELECT log, record, time_ms FROM r_scans))
WHERE before - time_ms > 1000
ORDER BY ms DESC LIMIT 20;

-- What stands out, at most three of a kind. The weight 2 is worse than 1.
CREATE TEMP TABLE r_findings AS
WITH
  found(kind, weight, text, n, total, log, record, time_ms) AS (
    SELECT 'end', 2, iif(ending = 'empty', 'a log is empty', 'the log ends here: ' || ending), 1,
      NULL, log, NULL, last_ms
    FROM r_logs WHERE ending <> 'complete'
    UNION ALL
    SELECT 'link', 2, 'links lost: ' || coalesce(reason, ended_by), count(*),
      (SELECT count(*) FROM r_links), log, min(end_record), end_ms
    FROM r_links WHERE ended_by IN ('mlme_disconnected_ind', 'mlme_disconnect_ind')
    GROUP BY reason
    UNION ALL
    SELECT 'connect', 2, 'connect requests: ' || result, count(*),
      (SELECT count(*) FROM r_connections), log, min(record), time_ms
    FROM r_connections WHERE result <> 'success' GROUP BY result
    UNION ALL
    SELECT 'roam', 2, 'roam failed: ' || failure, count(*), NULL, log, min(record), time_ms
    FROM r_failures WHERE signal IN ('mlme_roam_ind', 'mlme_roam_cfm') GROUP BY failure
    UNION ALL
    SELECT 'scan', 1, 'scans: ' || result, count(*), (SELECT count(*) FROM r_scans), log,
      min(record), time_ms
    FROM r_scans WHERE result <> 'success' GROUP BY result
    UNION ALL
    SELECT 'driver', 1, 'driver unloaded', count(*), NULL, log, min(record), time_ms
    FROM r_events WHERE event = 'Driver: Unloaded' HAVING count(*) > 0
    UNION ALL
    SELECT 'frames', 1, 'data frames not sent', (SELECT sum(not_sent) FROM r_totals),
      (SELECT sum(sent) FROM r_totals), log, NULL, time_ms
    FROM (SELECT log, time_ms, max(not_sent) AS worst FROM r_seconds) WHERE worst > 0
    UNION ALL
    SELECT 'strength', 1, 'signal strengths of the own link below -75 dBm', count(*),
      (SELECT count(*) FROM r_strength WHERE is_own), log, min(record), time_ms
    FROM r_strength WHERE is_own AND rssi < -75 HAVING count(*) > 0
    UNION ALL
    SELECT 'missing', 1, 'without answer: ' || replace(signal, '_cfm', '_req'), missing,
      missing + answers, NULL, NULL, NULL
    FROM r_exchanges WHERE missing > 0
    UNION ALL
    SELECT 'slow', 1, 'slowest answer: ' || signal || ', ' || ms || ' ms', 1, NULL, log, record,
      time_ms
    FROM (SELECT * FROM r_slowest WHERE signal <> 'mlme_scan_done_ind' ORDER BY ms DESC LIMIT 1)
      JOIN r_logs USING (path)
    WHERE ms >= 100
    UNION ALL
    SELECT 'time', 2, 'the time runs backwards, by ' || max(ms) || ' ms', count(*), NULL, log, record,
      time_ms
    FROM r_jumps HAVING count(*) > 0
  )
SELECT *, row_number() OVER (PARTITION BY kind ORDER BY n DESC) AS place FROM found;

-- --- Output ---

-- The seconds between the log's zone and UTC, where they change.
CREATE TEMP TABLE r_offsets AS
WITH RECURSIVE
  quarters AS (
    SELECT first / 900000 * 900 AS second, last / 1000 AS last,
      max(900, (last - first) / 1000 / 20000 / 900 * 900) AS width FROM r_stretches
    UNION ALL
    SELECT second + width, last, width FROM quarters WHERE second + width <= last
  )
SELECT second, offset FROM (
  SELECT *, lag(offset) OVER (ORDER BY second) AS before FROM (
    SELECT second, strftime('%s', second, 'unixepoch', 'localtime') - second AS offset FROM quarters))
WHERE before IS NOT offset;

CREATE TEMP TABLE r_names AS
SELECT row_number() OVER () - 1 AS id, name FROM (
  SELECT a AS name FROM r_items UNION SELECT b FROM r_items UNION SELECT c FROM r_items
  UNION SELECT peer FROM r_items
  UNION SELECT signal FROM r_answers_shown UNION SELECT signal FROM r_slowest)
WHERE name IS NOT NULL;
CREATE INDEX r_names_of ON r_names(name);

SELECT '{"t0":' || t0 || ',"step":' || step FROM r_axis;
SELECT ',"stretches":' || json_group_array(json_array(first, last)) FROM r_stretches;
SELECT ',"offsets":' || json_group_array(json_array(second, offset)) FROM (SELECT * FROM r_offsets ORDER BY second);
SELECT ',"names":' || json_group_array(name) FROM (SELECT * FROM r_names ORDER BY id);
SELECT ',"logs":' || json_group_array(json_array(name, records, bytes, hip_versions, first_ms, last_ms, ending)) FROM r_logs;
SELECT ',"vifs":' || json_group_array(json_array(vif, is_shown)) FROM (SELECT * FROM r_vifs ORDER BY is_shown DESC, vif LIMIT 100);
SELECT ',"vif_count":' || count(*) FROM r_vifs;
SELECT ',"peers":' || json_group_array(json_array(p.peer, p.links, p.linked_ms, own, weakest, strongest, scans)) FROM (
  SELECT p.*, count(rssi) FILTER (WHERE is_own) AS own, count(rssi) FILTER (WHERE NOT is_own) AS scans,
    min(rssi) AS weakest, max(rssi) AS strongest
  FROM r_peers p LEFT JOIN r_strength s ON s.peer = p.peer
  WHERE rank <= (SELECT peers FROM r_limits) GROUP BY p.peer ORDER BY rank) p;
SELECT ',"peer_count":' || count(*) FROM r_peers;
SELECT ',"counts":' || json_group_object(list, json_array(shown, n)) FROM (
  SELECT list, sum(place <= (SELECT items FROM r_limits)) AS shown, count(*) AS n FROM r_items GROUP BY list);
SELECT ',"all_counts":' || json_object('link', (SELECT count(*) FROM r_links), 'connect', (SELECT count(*) FROM r_connections),
  'scan', (SELECT count(*) FROM r_scans), 'failure', (SELECT count(*) FROM r_failures),
  'answer', (SELECT coalesce(sum(n), 0) FROM r_answers), 'strength', (SELECT count(*) FROM r_strength));
SELECT ',"items":' || json_group_array(json_array(list, log, record, time_ms - t0, vif, p.id, a.id, b.id, c.id, n, end_ms - time_ms))
FROM (SELECT * FROM r_items, r_axis WHERE place <= (SELECT items FROM r_limits) ORDER BY time_ms, record) i
LEFT JOIN r_names p ON p.name = i.peer LEFT JOIN r_names a ON a.name = i.a
LEFT JOIN r_names b ON b.name = i.b LEFT JOIN r_names c ON c.name = i.c;
SELECT ',"strength":' || json_object('t', json_group_array(dt), 'record', json_group_array(dr), 'rssi', json_group_array(rssi),
  'peer', json_group_array(rank - 1), 'own', json_group_array(is_own), 'vif', json_group_array(vif), 'log', json_group_array(log))
FROM (
  SELECT s.*, p.rank, s.time_ms - lag(s.time_ms, 1, t0) OVER o AS dt, record - lag(record, 1, 0) OVER o AS dr
  FROM r_strength_shown s JOIN r_peers p ON p.peer = s.peer, r_axis WINDOW o AS (ORDER BY s.time_ms, record) ORDER BY s.time_ms, record);
SELECT ',"traffic":' || json_object('t', json_group_array(dt), 'sent', json_group_array(sent), 'received', json_group_array(received),
  'retry', json_group_array(retry), 'lifetime', json_group_array(lifetime), 'no_bss', json_group_array(no_bss), 'other', json_group_array(other))
FROM (
  SELECT *, step_number - lag(step_number, 1, 0) OVER (ORDER BY step_number) AS dt FROM (
    SELECT (time_ms - t0 / 1000 * 1000) / step AS step_number, max(sent) AS sent, max(received) AS received,
      max(retry_limit) AS retry, max(tx_lifetime) AS lifetime, max(no_bss) AS no_bss,
      max(not_sent - retry_limit - tx_lifetime - no_bss) AS other
    FROM r_seconds, r_axis
    GROUP BY step_number) ORDER BY step_number);
SELECT ',"totals":' || json_group_array(json_array(vif, sent, received, bytes, not_sent))
FROM (SELECT * FROM r_totals ORDER BY sent + received DESC LIMIT 20);
SELECT ',"sums":' || json_array(total(sent), total(received), total(bytes), total(not_sent))
FROM r_totals;
SELECT ',"answers":' || json_object('t', json_group_array(dt), 'ms', json_group_array(ms), 'signal', json_group_array(id),
  'failed', json_group_array(failed), 'request', json_group_array(dr), 'record', json_group_array(record - request), 'log', json_group_array(log))
FROM (
  SELECT s.*, n.id, l.log, time_ms - lag(time_ms, 1, t0) OVER o AS dt, request - lag(request, 1, 0) OVER o AS dr
  FROM r_answers_shown s JOIN r_names n ON n.name = s.signal JOIN r_logs l USING (path), r_axis
  WINDOW o AS (ORDER BY time_ms, request) ORDER BY time_ms, request);
SELECT ',"slowest":' || json_group_array(json_array(log, request, record, time_ms - t0, signal, ms, failed))
FROM (SELECT * FROM r_slowest JOIN r_logs USING (path), r_axis ORDER BY ms DESC, request);
SELECT ',"exchanges":' || json_group_array(json_array(signal, answers, failed, missing, mean, slowest)) FROM (
  SELECT * FROM r_exchanges ORDER BY slowest DESC, missing DESC LIMIT (SELECT rows FROM r_limits));
SELECT ',"groups":' || json_group_array(json_array(signal, failure, vif, n, log, record, first - t0, last - t0)) FROM (
  SELECT * FROM r_groups, r_axis ORDER BY signal = 'ma_unitdata_cfm', n DESC LIMIT (SELECT rows FROM r_limits));
SELECT ',"group_count":' || count(*) FROM r_groups;
SELECT ',"findings":' || json_group_array(json_array(weight, text, n, total, log, record, time_ms - t0)) FROM (
  SELECT * FROM r_findings, r_axis WHERE place <= 3 ORDER BY weight DESC, n DESC);
SELECT ',"jumps":' || json_group_array(json_array(log, record, time_ms - t0, ms)) || '}' FROM r_jumps, r_axis;
