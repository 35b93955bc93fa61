
// The page of a log. report.sql makes its data; this only draws them. Charts share one range of
// the axis. Most of them are drawn by hand in uPlot's hook `draw`, since uPlot has one list of x
// values per chart and joins points of the same time.
//
// The axis leaves out hours without a record, so it has positions of its own: x counts milliseconds
// of the stretches that are left. Times are milliseconds since data.t0, and stamps use the offsets
// of the log's zone, whatever the browser's zone is.
'use strict';
(() => {
const data = JSON.parse(document.getElementById('data').textContent);
const byId = (id) => document.getElementById(id);

// --- Time ---

const total = data.stretches.reduce((sum, [first, last]) => sum + last - first, 0) || 1000;
const segments = [];
for (const [first, last] of data.stretches) {
  const start = segments.length ? segments[segments.length - 1].end + total * 0.03 : 0;
  const from = first - data.t0;
  const to = Math.max(last - data.t0, from + Math.max(10, total * 0.004));
  segments.push({from, to, start, end: start + to - from});
}
const whole = {min: 0, max: segments.length ? segments[segments.length - 1].end : 1000};
const margin = (whole.max - whole.min) * 0.004;
whole.min -= margin;
whole.max += margin;

function toX(time) {
  for (const s of segments) {
    if (time < s.from) return s.start;
    if (time <= s.to) return s.start + time - s.from;
  }
  return segments.length ? segments[segments.length - 1].end : 0;
}

function toTime(x) {
  let time = 0;
  for (const s of segments) {
    if (x >= s.start || s === segments[0]) time = s.from + Math.min(x - s.start, s.to - s.from + margin);
  }
  return Math.round(time);
}

function getOffset(time) {  // in ms
  let offset = 0;
  for (const [second, value] of data.offsets) {
    if (second * 1000 > time + data.t0 && offset !== 0) break;
    offset = value;
    if (second * 1000 > time + data.t0) break;
  }
  return offset * 1000;
}

const pad = (number, width) => String(number).padStart(width, '0');

function getStamp(time) {
  const date = new Date(data.t0 + Math.round(time) + getOffset(time));
  return `${pad(date.getUTCFullYear(), 4)}/${pad(date.getUTCMonth() + 1, 2)}/${pad(date.getUTCDate(), 2)}-` +
    `${pad(date.getUTCHours(), 2)}:${pad(date.getUTCMinutes(), 2)}:${pad(date.getUTCSeconds(), 2)}.` +
    pad(date.getUTCMilliseconds(), 3);
}

const count = (number) => String(number).replace(/\B(?=(\d{3})+$)/g, ',');

function getDuration(ms) {
  if (ms === null || ms === undefined) return '';
  if (ms < 1000) return `${Math.round(ms)} ms`;
  if (ms < 60000) return `${(ms / 1000).toFixed(ms < 10000 ? 1 : 0)} s`;
  const seconds = Math.round(ms / 1000);
  if (seconds < 3600) return `${Math.floor(seconds / 60)} min ${seconds % 60} s`;
  if (seconds < 86400) return `${Math.floor(seconds / 3600)} h ${Math.floor(seconds / 60) % 60} min`;
  return `${Math.floor(seconds / 86400)} d ${Math.floor(seconds / 3600) % 24} h`;
}

const getSize = (bytes) => bytes < 1e6 ? `${(bytes / 1e3).toFixed(1)} kB` : `${(bytes / 1e6).toFixed(1)} MB`;

// --- Colours ---

// Colour-blind readers can tell these apart. An address has the same colour in each chart, and
// in each page unless another address has taken it.
const kPalette = {
  light: ['#0072b2', '#e69f00', '#009e73', '#b65a98', '#56b4e9', '#7a4f2b', '#5d5ab8', '#7f8c00'],
  dark: ['#4aa3df', '#f0b429', '#2fc49a', '#dd8fc0', '#8fd0f5', '#c49a6c', '#a09df0', '#b9c53a'],
};
const kReasons = ['retry limit', 'lifetime', 'no BSS', 'another'];
const dark = matchMedia('(prefers-color-scheme: dark)');
let theme = {};
function readTheme() {
  const style = getComputedStyle(document.documentElement);
  theme = {palette: dark.matches ? kPalette.dark : kPalette.light};
  for (const name of ['back', 'ink', 'soft', 'line', 'grid', 'bad', 'warn', 'ok', 'accent']) {
    theme[name] = style.getPropertyValue(`--${name}`).trim();
  }
}
readTheme();

const colours = new Map();
for (const [address] of data.peers.slice(0, 8).sort()) {
  let slot = 0;
  for (const digit of address) slot = (slot * 31 + digit.charCodeAt(0)) % 8;
  while ([...colours.values()].includes(slot)) slot = (slot + 1) % 8;
  colours.set(address, slot);
}
const getColour = (address) => colours.has(address) ? theme.palette[colours.get(address)] : theme.ok;

// --- Items ---

// What is drawn and can be picked: {log, record, time, end, lines, ...}.
const name = (index) => index === null ? null : data.names[index];
const logName = (log) => log === null || data.logs.length < 2 ? '' : ` of ${data.logs[log][0]}`;

function describe(item) {
  const {kind, a, b, c} = item;
  const vif = item.vif === null || item.vif === undefined ? '' : ` on vif ${item.vif}`;
  const peer = item.peer ? ` ${item.peer}` : '';
  switch (kind) {
    case 'link':
      return [`link to${peer || ' an unknown address'}${vif}, ${getDuration(item.end - item.time)}`,
        a ? `started by ${a}` : 'started before the log',
        b ? `ended by ${b}${c ? `: ${c}` : ''}, ${getStamp(item.end)}` : 'until the end of the log'];
    case 'connect':
      return [`mlme_connect_req${vif} to${peer}: ${a}${item.n === null ? '' : ` after ${getDuration(item.n)}`}`,
        b ? `ended by ${b}${c ? `: ${c}` : ''}` : ''];
    case 'scan':
      return [`scan${c ? `, ${c}` : ''}: ${a}, ${item.n} results`,
        b ? `ended by ${b} after ${getDuration(item.end - item.time)}` : 'no end'];
    case 'roam': return [`${a}${peer}${vif}: ${b}`];
    case 'station':
      return [`station${peer || ' of unknown address'}${vif}, ${getDuration(item.end - item.time)}`, a ? `ended by ${a}` : ''];
    case 'driver': return [a];
    case 'strength': return [`${item.rssi} dBm${peer}${item.own ? `, own link${vif}` : ', seen by a scan'}`];
    case 'answer':
      return [`${a} after ${getDuration(item.n)}${item.failed ? ', failed' : ''} (record ${item.answer})`];
    case 'log': return [a];
    default: return [`${a}${vif}${peer}: ${b}`];
  }
}

const items = data.items.map(([kind, log, record, time, vif, peer, a, b, c, n, length]) => ({
  kind, log, record, time, vif, peer: name(peer), a: name(a), b: name(b), c: name(c), n, end: time + length}));

function addUp(steps) {
  let sum = 0;
  return steps.map((step) => sum += step);
}

const strength = (() => {
  const s = data.strength;
  const times = addUp(s.t);
  const records = addUp(s.record);
  return times.map((time, i) => ({kind: 'strength', log: s.log[i], record: records[i], time, rssi: s.rssi[i],
    peer: data.peers[s.peer[i]][0], own: s.own[i], vif: s.vif[i], end: time, x: toX(time)}));
})();

const answers = (() => {
  const s = data.answers;
  const times = addUp(s.t);
  const requests = addUp(s.request);
  return times.map((time, i) => ({kind: 'answer', log: s.log[i], record: requests[i], answer: requests[i] + s.record[i],
    time, a: name(s.signal[i]), n: s.ms[i], failed: s.failed[i], end: time + s.ms[i], x: toX(time)}));
})();

const traffic = (() => {
  const s = data.traffic;
  const steps = addUp(s.t);
  const start = Math.floor(data.t0 / 1000) * 1000 - data.t0;
  return steps.map((step, i) => {
    const time = start + step * data.step;
    return {time, end: time + data.step, x: toX(time), sent: s.sent[i], received: s.received[i],
      lost: [s.retry[i], s.lifetime[i], s.no_bss[i], s.other[i]]};
  });
})();

// --- Charts ---

const charts = [];
let range = {...whole};
let pickedPeer = null;
const kGutter = 104;
const kTicks = [1, 2, 5, 10, 20, 50, 100, 200, 500, 1000, 2000, 5000, 10000, 15000, 30000, 60000, 120000, 300000, 600000,
  900000, 1800000, 3600000, 7200000, 10800000, 21600000, 43200000, 86400000, 172800000, 604800000, 2592000000];

function listTicks(u, axis, min, max) {
  const perPixel = (max - min) / (u.bbox.width / devicePixelRatio);
  const width = kTicks.find((tick) => tick / perPixel > 76) || kTicks[kTicks.length - 1];
  const ticks = [];
  for (const s of segments) {
    const from = Math.max(min, s.start);
    const to = Math.min(max, s.end);
    if (from > to) continue;
    const start = s.from + from - s.start;
    const end = s.from + to - s.start;
    const local = data.t0 + getOffset(start);
    const before = ticks.length;
    for (let time = Math.ceil((start + local) / width) * width - local; time <= end; time += width) {
      ticks.push(s.start + time - s.from);
    }
    if (ticks.length === before) ticks.push(from);  // a short stretch
  }
  let last = -Infinity;
  return ticks.filter((x) => {
    if ((x - last) / perPixel < 70) return false;
    last = x;
    return true;
  });
}

function nameTicks(u, ticks) {
  const perPixel = (range.max - range.min) / (u.bbox.width / devicePixelRatio);
  let day = '';
  return ticks.map((x) => {
    const stamp = getStamp(toTime(x));
    const text = perPixel * 76 < 1000 ? stamp.slice(14) : perPixel * 76 < 60000 ? stamp.slice(11, 19) : stamp.slice(11, 16);
    const today = stamp.slice(0, 10);
    const label = today === day || u.root.parentNode.id !== 'lanes' ? text : `${text}\n${today}`;
    day = today;
    return label;
  });
}

function drawLine(u, x, colour, dashes) {
  const {ctx, bbox} = u;
  if (x < range.min || x > range.max) return;
  const place = Math.round(u.valToPos(x, 'x', true)) + 0.5;
  ctx.strokeStyle = colour;
  ctx.lineWidth = devicePixelRatio;
  ctx.setLineDash(dashes.map((dash) => dash * devicePixelRatio));
  ctx.beginPath();
  ctx.moveTo(place, bbox.top);
  ctx.lineTo(place, bbox.top + bbox.height);
  ctx.stroke();
  ctx.setLineDash([]);
}

const driverTimes = items.filter((item) => item.kind === 'driver' && /oaded$/.test(item.a)).map((item) => toX(item.time));
const ends = data.logs.filter((log) => log[5] !== null && log[6] !== 'complete').map((log) => ({x: toX(log[5] - data.t0), text: log[6]}));

// What all charts show: hours that are left out, the driver's loads, damage, time that jumps back.
function drawMarks(u) {
  const {ctx, bbox} = u;
  for (let i = 1; i < segments.length; ++i) {
    const from = Math.max(segments[i - 1].end, range.min);
    const to = Math.min(segments[i].start, range.max);
    if (from >= to) continue;
    const left = u.valToPos(from, 'x', true);
    ctx.fillStyle = theme.grid;
    ctx.fillRect(left, bbox.top, u.valToPos(to, 'x', true) - left, bbox.height);
  }
  if (driverTimes.length < 200) for (const x of driverTimes) drawLine(u, x, theme.soft, [2, 3]);
  for (const [, , time] of data.jumps) drawLine(u, toX(time), theme.warn, [6, 3]);
  for (const end of ends) drawLine(u, end.x, theme.bad, [6, 3]);
}

function setFont(ctx, size, align) {
  ctx.font = `${Math.round(size * devicePixelRatio)}px system-ui, "DejaVu Sans", sans-serif`;
  ctx.textAlign = align;
  ctx.textBaseline = 'middle';
}

// draw(chart) draws and fills chart.hits with [left, top, width, height, item] in CSS pixels;
// scale(chart) gives the y range of what can be seen.
function addChart(id, height, axis, draw, scale) {
  const chart = {id, hits: [], height};
  const y = scale(chart);
  const options = {
    width: byId(id).clientWidth || 900,
    height,
    ms: 1,
    legend: {show: false},
    padding: [6, 8, 0, 0],
    cursor: {
      y: false,
      points: {show: false},
      drag: {x: true, y: false, setScale: false},
      sync: {key: 'time', filters: {pub: (type) => type === 'mousemove' || type === 'mouseleave'}},
      bind: {dblclick: () => () => { setRange(whole.min, whole.max); }},
    },
    scales: {x: {time: false, auto: false, min: range.min, max: range.max}, y: {auto: false, min: y[0], max: y[1]}},
    series: [{}, {paths: () => null, points: {show: false}}],
    axes: [
      {stroke: () => theme.soft, grid: {stroke: () => theme.grid, width: 1}, ticks: {show: false}, size: id === 'lanes' ? 36 : 22, gap: 4,
        font: '11px system-ui, "DejaVu Sans", sans-serif', splits: listTicks, values: nameTicks},
      {stroke: () => theme.soft, grid: {stroke: () => theme.grid, width: 1}, ticks: {show: false}, size: kGutter, gap: 8,
        font: '11px system-ui, "DejaVu Sans", sans-serif', ...axis},
    ],
    hooks: {
      drawClear: [(u) => {
        u.ctx.save();  // uPlot remembers what it has set
        drawMarks(u);
        u.ctx.restore();
      }],
      draw: [(u) => {
        const {ctx, bbox} = u;
        chart.hits = [];
        ctx.save();
        ctx.beginPath();
        ctx.rect(bbox.left, bbox.top, bbox.width, bbox.height);
        ctx.clip();
        draw(u, chart);
        ctx.restore();
        if (chart.after) {
          ctx.save();
          chart.after(u);
          ctx.restore();
        }
      }],
      setSelect: [(u) => {
        if (u.select.width < 4) return;
        const min = u.posToVal(u.select.left, 'x');
        const max = u.posToVal(u.select.left + u.select.width, 'x');
        u.setSelect({left: 0, width: 0, top: 0, height: 0}, false);
        setRange(min, max);
      }],
    },
  };
  chart.scale = scale;
  chart.plot = new uPlot(options, [[whole.min, whole.max], [null, null]], byId(id));
  charts.push(chart);
  const {over} = chart.plot;
  over.addEventListener('mousemove', (event) => { showTip(findItem(chart, event.offsetX, event.offsetY), event); });
  over.addEventListener('mouseleave', () => { showTip(null); });
  let pressed = null;
  over.addEventListener('mousedown', (event) => { pressed = [event.clientX, event.clientY]; });
  over.addEventListener('click', (event) => {
    if (pressed && Math.hypot(event.clientX - pressed[0], event.clientY - pressed[1]) > 3) return;
    const item = findItem(chart, event.offsetX, event.offsetY);
    if (item && item.kind) pick(item);
  });
  over.addEventListener('wheel', (event) => {
    if (event.ctrlKey) return;
    event.preventDefault();
    const width = range.max - range.min;
    if (event.shiftKey || Math.abs(event.deltaX) > Math.abs(event.deltaY)) {
      const way = Math.sign(event.deltaX || event.deltaY);
      move(way * 0.1);
      return;
    }
    const factor = event.deltaY > 0 ? 1.3 : 1 / 1.3;
    const x = chart.plot.posToVal(event.offsetX, 'x');
    setRange(x - (x - range.min) * factor, x + (range.max - x) * factor, width);
  }, {passive: false});
  return chart;
}

function addHit(u, chart, left, top, width, height, item) {
  const {bbox} = u;
  chart.hits.push([(left - bbox.left) / devicePixelRatio, (top - bbox.top) / devicePixelRatio,
    width / devicePixelRatio, height / devicePixelRatio, item]);
}

// The nearest item within 6 pixels. A small item wins over a bar below it.
function findItem(chart, x, y) {
  let found = null;
  let best = 6;
  for (const [left, top, width, height, item] of chart.hits) {
    const across = Math.max(left - x, 0, x - left - width);
    const down = Math.max(top - y, 0, y - top - height);
    const distance = Math.hypot(across, down) + Math.min(width, 400) / 1000;
    if (distance < best) {
      best = distance;
      found = item;
    }
  }
  return found;
}

function setRange(min, max) {
  const limit = whole.max - whole.min;
  let width = Math.min(Math.max(max - min, Math.min(10, limit)), limit);
  if (!Number.isFinite(width)) width = limit;
  const middle = (min + max) / 2;
  const start = Math.min(Math.max(middle - width / 2, whole.min), whole.max - width);
  range = {min: start, max: start + width};
  const isWhole = width >= limit * 0.9999;
  const hash = isWhole ? '#' : `#${data.t0 + toTime(range.min)}-${data.t0 + toTime(range.max)}`;
  if (location.hash !== hash && (location.hash || hash !== '#')) {
    try {
      history.replaceState(null, '', hash);
    } catch (error) {
      location.replace(hash);
    }
  }
  drawAll();
}

let isDrawing = false;
function drawAll() {
  if (isDrawing) return;
  isDrawing = true;
  requestAnimationFrame(() => {
    isDrawing = false;
    for (const chart of charts) {
      const y = chart.scale(chart);
      chart.plot.batch(() => {
        chart.plot.setScale('x', range);
        chart.plot.setScale('y', {min: y[0], max: y[1]});
      });
    }
    showRange();
  });
}

function showRange() {
  const from = toTime(Math.max(range.min, 0));
  const to = toTime(Math.min(range.max, whole.max - margin));
  byId('range').textContent = `${getStamp(from)} to ${getStamp(to)}, ${getDuration(to - from)}`;
  byId('all').disabled = range.max - range.min >= (whole.max - whole.min) * 0.9999;
}

function move(part) {
  const width = (range.max - range.min) * part;
  setRange(range.min + width, range.max + width);
}

function readHash() {
  const match = /^#(-?\d+)-(-?\d+)$/.exec(location.hash);
  if (match) setRange(toX(Number(match[1]) - data.t0), toX(Number(match[2]) - data.t0));
  else setRange(whole.min, whole.max);
}

const isVisible = (from, to) => to >= range.min && from <= range.max;

// --- What happened ---

const overlap = data.logs.some((log, i) => data.logs.some((other, j) =>
  i < j && log[4] !== null && other[4] !== null && log[4] < other[5] && other[4] < log[5]));
const kLaneNames = {link: 'access point', connect: 'connect', roam: 'roam', failure: 'failure', station: 'stations'};
const kSpan = new Set(['link', 'station', 'log', 'scan']);

function makeLanes() {
  const lanes = [];
  const addLane = (label, list, heading) => {
    if (!list.length) return;
    const lane = {label, heading, items: list, rows: 1, isSpan: kSpan.has(list[0].kind)};
    if (list[0].kind !== 'scan' && lane.isSpan) {
      const rowEnds = [];
      for (const item of list) {
        let row = rowEnds.findIndex((end) => end <= item.time);
        if (row < 0) row = rowEnds.length < 3 ? rowEnds.length : 2;
        rowEnds[row] = item.end;
        item.row = row;
      }
      lane.rows = rowEnds.length;
    }
    lanes.push(lane);
  };
  if (data.logs.length > 1) {
    addLane('logs', data.logs.map((log, i) => ({kind: 'log', log: i, record: 1, time: (log[4] || 0) - data.t0,
      end: (log[5] || 0) - data.t0, a: log[0]})).filter((item) => data.logs[item.log][4] !== null));
  }
  const groups = overlap ? data.logs.map((log, i) => i) : [null];
  for (const group of groups) {
    const mine = items.filter((item) => group === null || item.log === group);
    const prefix = group === null ? '' : `log ${group + 1} `;
    addLane(`${prefix}driver`, mine.filter((item) => item.kind === 'driver'));
    addLane(`${prefix}scan`, mine.filter((item) => item.kind === 'scan'));
    for (const [vif, isShown] of data.vifs) {
      if (!isShown) continue;
      let isFirst = true;
      for (const [kind, label] of Object.entries(kLaneNames)) {
        const list = mine.filter((item) => item.kind === kind && item.vif === vif);
        addLane(label, list, isFirst && list.length ? `${prefix}vif ${vif}` : null);
        if (list.length) isFirst = false;
      }
    }
    addLane(`${prefix}failure`, mine.filter((item) => item.kind === 'failure' && item.vif === null));
  }
  let top = 0;
  for (const lane of lanes) {
    if (lane.heading) top += 16;
    lane.top = top;
    lane.height = 18 * lane.rows;
    top += lane.height + 3;
  }
  return {lanes, height: top};
}

function isBad(item) {
  switch (item.kind) {
    case 'connect': case 'scan': return item.a !== 'success';
    case 'roam': return item.b !== 'success';
    case 'failure': return item.a !== 'mlme_disconnect_req';  // the host asked for it
    default: return false;
  }
}

function drawLanes(u, chart) {
  const {ctx, bbox} = u;
  const unit = devicePixelRatio;
  for (const lane of lanes) {
    for (const item of lane.items) {
      const from = toX(item.time);
      const to = Math.max(toX(item.end), from);
      if (!isVisible(from, to)) continue;
      const top = bbox.top + (lane.top + (item.row || 0) * 18) * unit;
      const left = Math.max(u.valToPos(from, 'x', true), bbox.left - 4);
      ctx.globalAlpha = pickedPeer && item.peer !== pickedPeer ? 0.25 : 1;
      if (lane.isSpan) {
        const right = Math.min(u.valToPos(to, 'x', true), bbox.left + bbox.width + 4);
        const width = Math.max(right - left, (item.kind === 'scan' ? 3 : 2) * unit);
        ctx.fillStyle = item.kind === 'log' ? theme.line : item.kind === 'scan' ? (isBad(item) ? theme.bad : theme.ok) : getColour(item.peer);
        ctx.fillRect(left, top, width, 16 * unit);
        if (item.kind !== 'scan') {
          // How it ended: a red end is that of a link that was lost.
          if (item.kind === 'link' && /disconnect(ed)?_ind$/.test(item.b || '')) {
            ctx.fillStyle = theme.bad;
            ctx.fillRect(left + width - 4 * unit, top - 1 * unit, 4 * unit, 18 * unit);
          } else if (width > 3 * unit) {
            ctx.fillStyle = theme.back;
            ctx.fillRect(left + width - unit, top, unit, 16 * unit);
          }
          setFont(ctx, 11, 'left');
          const texts = item.kind === 'log' ? [item.a] : [item.peer || 'unknown', (item.peer || '').slice(-5)];
          const text = texts.find((part) => width > ctx.measureText(part).width + 10 * unit);
          if (text) {
            ctx.fillStyle = item.kind === 'log' ? theme.ink : dark.matches ? '#101418' : isPale(ctx, item) ? '#1b1f24' : '#fff';
            ctx.fillText(text, Math.max(left, bbox.left) + 5 * unit, top + 8.5 * unit);
          }
        }
        addHit(u, chart, left, top, width, 16 * unit, item);
      } else {
        const bad = isBad(item);
        ctx.fillStyle = bad ? theme.bad : item.kind === 'driver' ? (/oaded$/.test(item.a) ? theme.ink : theme.line) : item.peer ? getColour(item.peer) : theme.ok;
        if (bad) {
          drawCross(ctx, left, top + 8 * unit, 5 * unit, theme.bad);
        } else {
          ctx.fillRect(left - 1.5 * unit, top + unit, 3 * unit, 14 * unit);
        }
        addHit(u, chart, left - 3 * unit, top, 6 * unit, 16 * unit, item);
      }
    }
  }
  ctx.globalAlpha = 1;
  for (const end of ends) {
    if (!isVisible(end.x, end.x)) continue;
    setFont(ctx, 11, 'right');
    ctx.fillStyle = theme.bad;
    ctx.fillText(end.text === 'cut' ? 'the log is cut here' : end.text, u.valToPos(end.x, 'x', true) - 5 * unit, bbox.top + bbox.height - 8 * unit);
  }
  for (let i = 1; i < segments.length; ++i) {
    const left = u.valToPos(segments[i - 1].end, 'x', true);
    const right = u.valToPos(segments[i].start, 'x', true);
    const text = `${getDuration(segments[i].from - segments[i - 1].to)} without records`;
    ctx.save();
    ctx.translate((left + right) / 2, bbox.top + bbox.height / 2);
    ctx.rotate(-Math.PI / 2);
    setFont(ctx, 11, 'center');
    ctx.fillStyle = theme.soft;
    if (right - left > 12 * unit && ctx.measureText(text).width < bbox.height) ctx.fillText(text, 0, 0);
    ctx.restore();
  }
}

const isPale = (ctx, item) => ['#e69f00', '#56b4e9'].includes(getColour(item.peer));

function drawCross(ctx, x, y, size, colour) {
  ctx.strokeStyle = colour;
  ctx.lineWidth = 2 * devicePixelRatio;
  ctx.beginPath();
  ctx.moveTo(x - size, y - size);
  ctx.lineTo(x + size, y + size);
  ctx.moveTo(x - size, y + size);
  ctx.lineTo(x + size, y - size);
  ctx.stroke();
}

const {lanes, height: lanesHeight} = makeLanes();
const lanesChart = addChart('lanes', lanesHeight + 44, {splits: () => [], grid: {show: false}}, drawLanes, () => [0, 1]);
lanesChart.after = (u) => {
  const {ctx, bbox} = u;
  for (const lane of lanes) {
    setFont(ctx, 11, 'right');
    ctx.fillStyle = theme.ink;
    ctx.fillText(lane.label, bbox.left - 8 * devicePixelRatio, bbox.top + (lane.top + 8) * devicePixelRatio);
    if (!lane.heading) continue;
    setFont(ctx, 11, 'left');
    ctx.fillStyle = theme.soft;
    ctx.fillText(lane.heading, 2, bbox.top + (lane.top - 8) * devicePixelRatio);
    ctx.fillStyle = theme.line;
    ctx.fillRect(0, bbox.top + (lane.top - 15) * devicePixelRatio, bbox.left + bbox.width, 1);
  }
};

// --- Signal strength ---

const strengthRange = (() => {
  let low = -85;
  let high = -50;
  for (const item of strength) {
    low = Math.min(low, item.rssi);
    high = Math.max(high, item.rssi);
  }
  return [Math.max(low, -120) - 5, Math.min(high, 0) + 5];
})();
// The points of a link make a line, which ends where the link ends.
const strengthLines = (() => {
  const lines = new Map();
  const links = items.filter((item) => item.kind === 'link');
  for (const item of strength) {
    if (!item.own) continue;
    const link = links.findIndex((l) => l.log === item.log && l.vif === item.vif && l.peer === item.peer && l.time <= item.time && item.time <= l.end);
    const key = `${item.log} ${item.vif} ${item.peer} ${link}`;
    if (!lines.has(key)) lines.set(key, {peer: item.peer, isLink: link >= 0, points: []});
    lines.get(key).points.push(item);
  }
  return [...lines.values()];
})();

addChart('strength', 200, {}, (u, chart) => {
  const {ctx} = u;
  const unit = devicePixelRatio;
  for (const line of strengthLines) {
    ctx.strokeStyle = getColour(line.peer);
    ctx.globalAlpha = pickedPeer && line.peer !== pickedPeer ? 0.25 : 1;
    ctx.lineWidth = 1.5 * unit;
    ctx.beginPath();
    line.points.forEach((item, i) => {
      const x = u.valToPos(item.x, 'x', true);
      const y = u.valToPos(item.rssi, 'y', true);
      if (i === 0 || !line.isLink || crossesGap(line.points[i - 1], item)) ctx.moveTo(x, y); else ctx.lineTo(x, y);
      if (item.x >= range.min && item.x <= range.max) addHit(u, chart, x, y, 0, 0, item);
    });
    ctx.stroke();
    if ((range.max - range.min) / line.points.length > 0 && line.points.filter((p) => isVisible(p.x, p.x)).length < 150) {
      ctx.fillStyle = ctx.strokeStyle;
      for (const item of line.points) {
        if (!isVisible(item.x, item.x)) continue;
        ctx.fillRect(u.valToPos(item.x, 'x', true) - 2 * unit, u.valToPos(item.rssi, 'y', true) - 2 * unit, 4 * unit, 4 * unit);
      }
    }
  }
  for (const item of strength) {
    if (item.own || !isVisible(item.x, item.x)) continue;
    const x = u.valToPos(item.x, 'x', true);
    const y = u.valToPos(item.rssi, 'y', true);
    ctx.globalAlpha = pickedPeer && item.peer !== pickedPeer ? 0.2 : 0.9;
    ctx.fillStyle = getColour(item.peer);
    ctx.beginPath();
    ctx.arc(x, y, 2.5 * unit, 0, 7);
    ctx.fill();
    addHit(u, chart, x - unit, y - unit, 2 * unit, 2 * unit, item);
  }
  ctx.globalAlpha = 1;
}, () => strengthRange);

function crossesGap(before, after) {
  return segments.some((s) => s.from > before.time && s.from <= after.time);
}

// --- Frames ---

function getTop(list, value) {
  let top = 1;
  for (const item of list) {
    if (isVisible(item.x, item.x + data.step)) top = Math.max(top, value(item));
  }
  return top;
}

const getLost = (item) => item.lost[0] + item.lost[1] + item.lost[2] + item.lost[3];

// Bars of one step each. parts(item): [value, colour] from the middle upwards, or downwards if negative.
function drawBars(u, chart, parts, describeBar) {
  const {ctx, bbox} = u;
  for (const item of traffic) {
    const right = item.x + data.step;
    if (!isVisible(item.x, right)) continue;
    const left = u.valToPos(item.x, 'x', true);
    const width = Math.max(u.valToPos(right, 'x', true) - left, devicePixelRatio);
    let up = 0;
    for (const [value, colour] of parts(item)) {
      if (!value) continue;
      const base = value < 0 ? 0 : up;
      const y = u.valToPos(base, 'y', true);
      ctx.fillStyle = colour;
      ctx.fillRect(left, y, width, Math.sign(-value) * Math.max(Math.abs(u.valToPos(base + value, 'y', true) - y), devicePixelRatio));
      if (value > 0) up += value;
    }
    addHit(u, chart, left, bbox.top, width, bbox.height, {time: item.time, end: item.end, text: () => describeBar(item)});
  }
}

const kRate = data.step > 1000 ? `, the highest second of ${data.step / 1000} s` : '';
addChart('traffic', 140, {values: (u, ticks) => ticks.map((tick) => count(Math.abs(tick)))}, (u, chart) => {
  drawBars(u, chart, (item) => [[item.sent, theme.palette[0]], [-item.received, theme.palette[1]]],
    (item) => `${item.sent} sent, ${item.received} received per second${kRate}`);
}, () => [-getTop(traffic, (item) => item.received) * 1.05, getTop(traffic, (item) => item.sent) * 1.05]);

const getReasonColours = () => [theme.bad, theme.palette[1], theme.palette[3], theme.ok];
addChart('lost', 110, {values: (u, ticks) => ticks.map((tick) => Number.isInteger(tick) ? count(tick) : '')}, (u, chart) => {
  const reasonColours = getReasonColours();
  drawBars(u, chart, (item) => item.lost.map((value, i) => [value, reasonColours[i]]), (item) =>
    `${getLost(item)} not sent per second${kRate}\n${item.lost.map((value, i) => value ? `${kReasons[i]}: ${value}` : '').filter(Boolean).join(', ')}`);
}, () => [0, getTop(traffic, getLost) * 1.08]);

// --- Answers ---

const toLog = (ms) => Math.log10(Math.max(ms, 0.7));
const slowest = answers.reduce((most, item) => Math.max(most, item.n), 100);
addChart('answers', 230, {
  splits: (u, axis, min, max) => [0, 1, 2, 3, 4, 5, 6, 7, 8, 9].filter((tick) => tick >= min && tick <= max),
  values: (u, ticks) => ticks.map((tick) => tick < 3 ? `${10 ** tick} ms` : `${count(10 ** (tick - 3))} s`),
}, (u, chart) => {
  const {ctx} = u;
  const unit = devicePixelRatio;
  const late = [];
  for (const item of answers) {
    if (!isVisible(item.x, item.x)) continue;
    const x = u.valToPos(item.x, 'x', true);
    const y = u.valToPos(toLog(item.n), 'y', true);
    addHit(u, chart, x - unit, y - unit, 2 * unit, 2 * unit, item);
    if (item.failed) {
      late.push([x, y]);
      continue;
    }
    const isData = item.a === 'ma_unitdata_cfm';
    ctx.fillStyle = isData ? theme.palette[0] : theme.palette[1];
    ctx.globalAlpha = 0.85;
    if (isData) {
      ctx.fillRect(x - 1.5 * unit, y - 1.5 * unit, 3 * unit, 3 * unit);
    } else {
      ctx.beginPath();
      ctx.arc(x, y, 2.5 * unit, 0, 7);
      ctx.fill();
    }
  }
  ctx.globalAlpha = 1;
  for (const [x, y] of late) drawCross(ctx, x, y, 2.6 * unit, theme.bad);
}, () => [-0.25, toLog(slowest) + 0.3]);

// --- The bar: what is picked ---

const tip = byId('tip');
function showTip(item, event) {
  tip.hidden = !item;
  if (!item) return;
  const head = item.kind ? `${getStamp(item.time)}  record ${item.record}${logName(item.log)}` : getStamp(item.time);
  const lines = item.kind ? describe(item) : [item.text()];
  tip.textContent = [head, ...lines].filter(Boolean).join('\n');
  const box = tip.getBoundingClientRect();
  tip.style.left = `${Math.max(4, Math.min(event.clientX + 14, innerWidth - box.width - 6))}px`;
  tip.style.top = `${event.clientY + 16 + box.height > innerHeight ? event.clientY - box.height - 10 : event.clientY + 16}px`;
}

const quote = (text) => /^[\w.,+:@%/-]+$/.test(text) && text[0] !== '-' ? text : `'./${text.replace(/'/g, `'\\''`)}'`;

function addPaste(box, label, text) {
  const term = document.createElement('span');
  term.textContent = label;
  const value = document.createElement('span');
  const code = document.createElement('code');
  code.textContent = text;
  const button = document.createElement('button');
  button.textContent = 'Copy';
  button.addEventListener('click', () => {
    getSelection().selectAllChildren(code);
    document.execCommand('copy');
    button.textContent = 'Copied';
    setTimeout(() => { button.textContent = 'Copy'; }, 1500);
  });
  value.append(code, button);
  box.append(term, value);
}

function pick(item) {
  const box = byId('picked');
  box.replaceChildren();
  box.hidden = false;
  const term = document.createElement('span');
  term.textContent = 'Picked';
  const what = document.createElement('span');
  what.textContent = [`${getStamp(item.time)}  record ${item.record}${logName(item.log)}`, ...describe(item)].filter(Boolean).join('; ') + ' ';
  const close = document.createElement('button');
  close.textContent = 'Close';
  close.addEventListener('click', () => { box.hidden = true; });
  what.append(close);
  box.append(term, what);
  const log = quote(data.logs[item.log][0]);
  const records = [item.record, item.answer].filter((record) => record !== null && record !== undefined);
  if (records.length) addPaste(box, 'Wireshark', records.map((record) => `frame.number == ${record}`).join(' || '));
  const from = data.t0 + item.time - 2000;
  const to = data.t0 + (item.kind === 'answer' ? item.end : item.time) + 2000;
  addPaste(box, 'SQL', `vrkt_wlan_udi_log_query "SELECT record, stamp, line FROM log WHERE time_ms BETWEEN ${from} AND ${to}" ${log}`);
  addPaste(box, 'Part', `vrkt_wlan_udi_log_cut --from ${getStamp(from - data.t0)} --to ${getStamp(to - data.t0)} ${log} >part.udi`);
}

// Moves the charts to an item of a table, and picks it.
function goTo(item) {
  const x = toX(item.time);
  const end = toX(item.end === undefined ? item.time : item.end);
  const width = Math.min(range.max - range.min, Math.max(60000, (end - x) * 1.5));
  setRange((x + end) / 2 - width / 2, (x + end) / 2 + width / 2);
  if (item.record) pick(item);
}

// --- Tables ---

// columns: [title, text of a row, isNumber]; an item of a row can be gone to.
function addTable(id, columns, rows, getItem, total) {
  const box = byId(id);
  box.replaceChildren();
  if (!rows.length) {
    box.className = 'none';
    box.textContent = 'None.';
    return;
  }
  const table = document.createElement('table');
  const head = table.createTHead().insertRow();
  for (const [title, , isNumber] of columns) {
    const cell = document.createElement('th');
    cell.textContent = title;
    if (isNumber) cell.className = 'number';
    head.append(cell);
  }
  const body = table.createTBody();
  for (const row of rows) {
    const line = body.insertRow();
    for (const [, text, isNumber, style] of columns) {
      const cell = line.insertCell();
      const value = text(row);
      if (value instanceof Node) cell.append(value); else cell.textContent = value === null || value === undefined ? '' : value;
      if (isNumber) cell.className = 'number';
      if (style && style(row)) cell.classList.add(style(row));
    }
    const act = getItem && getItem(row);
    if (!act) continue;
    const run = () => { if (typeof act === 'function') act(line); else goTo(act); };
    line.tabIndex = 0;
    line.addEventListener('click', run);
    line.addEventListener('keydown', (event) => { if (event.key === 'Enter') run(); });
  }
  box.append(table);
  if (total > rows.length) addNote(`${count(rows.length)} of ${count(total)} rows in the table ${byId(id).previousElementSibling.textContent.toLowerCase()}`);
}

const notes = [];
function addNote(text) { notes.push(text); }

function makePeerCell(address) {
  const cell = document.createElement('span');
  const swatch = document.createElement('span');
  swatch.className = 'swatch';
  swatch.style.background = getColour(address);
  cell.append(swatch, address || 'unknown');
  return cell;
}

const clock = (time) => getStamp(time).slice(segments.length > 1 || total > 86400000 ? 5 : 11, 23);
const plural = (number, one, many) => `${count(number)} ${number === 1 ? one : many}`;

function showTables() {
  const connections = items.filter((item) => item.kind === 'connect');
  addTable('connections', [
    ['Time', (row) => clock(row.time)],
    ['Vif', (row) => row.vif, true],
    ['To', (row) => makePeerCell(row.peer)],
    ['Result', (row) => row.a, false, (row) => row.a === 'success' ? '' : 'bad'],
    ['After', (row) => getDuration(row.n), true],
    ['Ended by', (row) => row.c || row.b],
  ], connections.slice(0, 500), (row) => row, data.all_counts.connect);
  addTable('peers', [
    ['Address', (row) => makePeerCell(row[0])],
    ['Links', (row) => row[1] || '', true],
    ['Linked', (row) => row[2] ? getDuration(row[2]) : '', true],
    ['Own reports', (row) => row[3] ? count(row[3]) : '', true],
    ['In scans', (row) => row[6] ? count(row[6]) : '', true],
    ['dBm', (row) => row[4] === null ? '' : `${row[4]} to ${row[5]}`, true],
  ], data.peers, (row) => () => {
    pickedPeer = pickedPeer === row[0] ? null : row[0];
    drawAll();
  }, data.peer_count);
  addTable('totals', [
    ['Vif', (row) => row[0], true],
    ['Sent', (row) => count(row[1]), true],
    ['Received', (row) => count(row[2]), true],
    ['Bytes', (row) => getSize(row[3]), true],
    ['Not sent', (row) => count(row[4]), true],
    ['of sent', (row) => row[1] ? `${(100 * row[4] / row[1]).toFixed(1)} %` : '', true],
  ], data.totals);
  addTable('groups', [
    ['Count', (row) => count(row[3]), true],
    ['Failure', (row) => row[1], false, (row) => row[0] === 'mlme_disconnect_req' ? '' : 'bad'],
    ['Signal', (row) => row[0]],
    ['Vif', (row) => row[2], true],
    ['First', (row) => clock(row[6])],
    ['Last', (row) => clock(row[7])],
  ], data.groups, (row) => ({kind: 'failure', log: row[4], record: row[5], time: row[6], vif: row[2], a: row[0], b: row[1]}), data.group_count);
  addTable('slowest', [
    ['Request', (row) => clock(row[3])],
    ['Answer', (row) => row[4]],
    ['After', (row) => getDuration(row[5]), true],
    ['', (row) => row[6] ? 'failed' : '', false, () => 'bad'],
    ['Record', (row) => row[1], true],
  ], data.slowest, (row) => ({kind: 'answer', log: row[0], record: row[1], answer: row[2], time: row[3], end: row[3] + row[5], a: row[4], n: row[5], failed: row[6]}));
  addTable('exchanges', [
    ['Answer', (row) => row[0]],
    ['Count', (row) => count(row[1]), true],
    ['Failed', (row) => row[2] ? count(row[2]) : '', true, (row) => row[2] ? 'bad' : ''],
    ['Without answer', (row) => row[3] ? count(row[3]) : '', true, (row) => row[3] ? 'bad' : ''],
    ['Mean', (row) => row[4] === null ? '' : row[4] < 100 ? `${row[4].toFixed(1)} ms` : getDuration(row[4]), true],
    ['Slowest', (row) => getDuration(row[5]), true],
  ], data.exchanges);
}

function addKey(id, entries) {
  const box = byId(id);
  box.replaceChildren();
  for (const [colour, text] of entries) {
    const swatch = document.createElement('span');
    swatch.className = 'swatch';
    swatch.style.background = colour;
    box.append(swatch, `${text}   `);
  }
}

function showKeys() {
  addKey('traffic_key', [[theme.palette[0], 'sent, upwards'], [theme.palette[1], 'received, downwards']]);
  addKey('lost_key', getReasonColours().map((colour, i) => [colour, kReasons[i]]));
  addKey('answers_key', [[theme.palette[0], 'data'], [theme.palette[1], 'others'], [theme.bad, '× failed']]);
}

// --- The head and the notes ---

function showHead() {
  const names = data.logs.map((log) => log[0]);
  byId('title').textContent = names.length > 3 ? `${names.slice(0, 3).join(', ')} and ${names.length - 3} more` : names.join(', ');
  document.title = `${byId('title').textContent} - UDI log`;
  const sum = (index) => data.logs.reduce((all, log) => all + log[index], 0);
  const versions = [...new Set(data.logs.flatMap((log) => log[3].split(',')))].filter(Boolean);
  const bad = data.logs.filter((log) => log[6] !== 'complete');
  const parts = [];
  if (data.stretches.length) {
    const last = data.stretches[data.stretches.length - 1][1] - data.t0;
    parts.push(`${getStamp(0)} to ${getStamp(last)} (${getDuration(last)})`);
  }
  parts.push(`${plural(sum(1), 'record', 'records')}, ${getSize(sum(2))}`);
  if (versions.length) parts.push(`HIP ${versions.join(', ')}`);
  parts.push(bad.length === 0 ? 'complete' : bad.map((log) => `${names.length > 1 ? `${log[0]}: ` : ''}${log[6]}`).slice(0, 5).join('; '));
  byId('summary').textContent = parts.join(' · ');
  for (const [weight, text, n, of, log, record, time] of data.findings) {
    const line = document.createElement('li');
    const button = document.createElement('button');
    const number = document.createElement('b');
    number.textContent = of === null ? (n > 1 ? `${count(n)} ×` : '') : `${count(n)} of ${count(of)}`;
    button.append(number, text);
    if (weight > 1) button.className = 'worst';
    button.disabled = time === null;
    button.addEventListener('click', () => { goTo({kind: 'finding', log, record, time, a: text, b: ''}); });
    line.append(button);
    byId('findings').append(line);
  }
  const titles = {link: 'links', connect: 'connect requests', scan: 'scans', failure: 'failures', roam: 'roams', station: 'stations', driver: 'events of the driver'};
  for (const [list, [shown, n]] of Object.entries(data.counts)) {
    const all = Math.max(n, data.all_counts[list] || 0);
    if (shown < all) addNote(`${count(shown)} of ${count(all)} ${titles[list]} in the lanes`);
  }
  const shownVifs = data.vifs.filter((vif) => vif[1]).length;
  if (shownVifs < data.vif_count) addNote(`${shownVifs} of ${count(data.vif_count)} interfaces, those with most events`);
  if (answers.length < data.all_counts.answer) addNote(`${count(answers.length)} of ${count(data.all_counts.answer)} answers, the slowest of each moment`);
  if (strength.length < data.all_counts.strength) addNote(`${count(strength.length)} of ${count(data.all_counts.strength)} signal strengths, the weakest of each moment`);
  if (data.step > 1000) addNote(`one bar per ${data.step / 1000} s`);
}

function showNotes() {
  const box = byId('notes');
  if (notes.length) {
    const line = document.createElement('p');
    line.textContent = `Not everything is drawn: ${notes.join('; ')}.`;
    box.append(line);
  }
  const line = document.createElement('p');
  line.textContent = 'The numbers of this page come from the views of vrkt_wlan_udi_log_query: links, connections, scans, signal_strength, traffic, exchanges, failures. The page has no key, no frame and no SSID, but addresses and the names of the logs.';
  box.append(line);
}

// --- Start ---

showHead();
showTables();
showKeys();
showNotes();
byId('all').addEventListener('click', () => { setRange(whole.min, whole.max); });
addEventListener('hashchange', readHash);
addEventListener('keydown', (event) => {
  if (event.ctrlKey || event.altKey || event.metaKey) return;
  const middle = (range.min + range.max) / 2;
  const half = (range.max - range.min) / 2;
  switch (event.key) {
    case 'ArrowLeft': move(-0.2); break;
    case 'ArrowRight': move(0.2); break;
    case '+': case '=': setRange(middle - half / 2, middle + half / 2); break;
    case '-': setRange(middle - half * 2, middle + half * 2); break;
    case '0': case 'Escape': setRange(whole.min, whole.max); break;
    default: return;
  }
  event.preventDefault();
});
dark.addEventListener('change', () => {
  readTheme();
  showTables();
  showKeys();
  drawAll();
});
let width = 0;
new ResizeObserver(() => {
  if (byId('lanes').clientWidth === width) return;
  width = byId('lanes').clientWidth;
  for (const chart of charts) chart.plot.setSize({width: byId(chart.id).clientWidth, height: chart.height});
  drawAll();
}).observe(byId('lanes'));
readHash();
})();
