'use strict';
(() => {
  // Times are minutes since 1601-01-01 00:00 UTC, as the guide's own are; `data.offset` makes them
  // local. A broadcast is [start, end, title, episode, description, genre, facts].
  const data = JSON.parse(document.getElementById('data').textContent);
  const EPOCH = 194074560;  // 1970
  const DAY = 1440;
  const MINUTE = 4;  // pixels
  const MARGIN = 240;  // minutes drawn beyond what is seen
  const byId = (id) => document.getElementById(id);
  const scroller = byId('scroller');
  const canvas = byId('canvas');
  const pixels = (name) =>
    parseFloat(getComputedStyle(document.documentElement).getPropertyValue(name)) *
    parseFloat(getComputedStyle(document.documentElement).fontSize);
  let rowHeight = 0;
  let nameWidth = 0;
  let headHeight = 0;

  const nowMinute = () => Math.floor(Date.now() / 60000) + EPOCH;
  const floorTo = (time, step) => Math.floor(time / step) * step;
  const begin = floorTo(data.begin + data.offset, 60) - data.offset;
  const end = Math.max(data.end, begin + 60);
  const local = (time) => new Date((time + data.offset - EPOCH) * 60000);
  const hour = (time) => local(time).toISOString().slice(11, 16);
  const DAYS = ['Sun', 'Mon', 'Tue', 'Wed', 'Thu', 'Fri', 'Sat'];
  const MONTHS = ['Jan', 'Feb', 'Mar', 'Apr', 'May', 'Jun', 'Jul', 'Aug', 'Sep', 'Oct', 'Nov', 'Dec'];
  const day = (time) => {
    const date = local(time);
    return `${DAYS[date.getUTCDay()]} ${date.getUTCDate()} ${MONTHS[date.getUTCMonth()]}`;
  };
  const left = (time) => nameWidth + (time - begin) * MINUTE;
  const make = (tag, className, text) => {
    const element = document.createElement(tag);
    if (className) element.className = className;
    if (text !== undefined) element.textContent = text;
    return element;
  };
  const fold = (text) => text.normalize('NFKD').replace(/\p{M}/gu, '').toLowerCase();

  // Colours of genres, in the order in which they are met.
  const colours = new Map();
  const colourOf = (genre) => {
    if (!genre) return '';
    const key = genre.toLowerCase();
    if (!colours.has(key)) colours.set(key, `g${colours.size % 8}`);
    return colours.get(key);
  };

  // What is shown: stations, all or those where something is found.
  let words = [];
  let shown = data.stations.map((_, index) => index);
  const folded = new Map();
  const foldedOf = (broadcast) => {
    let text = folded.get(broadcast);
    if (text === undefined) {
      text = fold([broadcast[2], broadcast[3], broadcast[4], broadcast[5],
        ...broadcast[6].map((fact) => fact[1])].join(' '));
      folded.set(broadcast, text);
    }
    return text;
  };
  const isFound = (broadcast) => words.every((word) => foldedOf(broadcast).includes(word));

  // The first broadcast of a station that ends after a time.
  const firstAt = (broadcasts, time) => {
    let low = 0;
    let high = broadcasts.length;
    while (low < high) {
      const middle = (low + high) >> 1;
      if (broadcasts[middle][1] <= time) low = middle + 1; else high = middle;
    }
    return low;
  };

  const hours = make('div', 'hours');
  hours.setAttribute('role', 'row');
  const corner = make('div', 'corner');
  corner.setAttribute('role', 'columnheader');
  const line = make('div', 'now');
  const rows = new Map();  // station -> what is drawn of it
  let drawn = {from: 0, to: 0};
  let active = {station: 0, index: 0};

  const drawHours = (from, to) => {
    hours.replaceChildren(corner);
    for (let time = Math.max(begin, floorTo(from + data.offset, 60) - data.offset);
      time < Math.min(to, end); time += 60) {
      const head = make('div', '', hour(time) === '00:00' ? day(time) : hour(time));
      head.setAttribute('role', 'columnheader');
      head.style.left = `${left(time)}px`;
      hours.append(head);
    }
  };

  const drawCell = (station, index, now) => {
    const [start, stop, title, episode, , genre] = data.stations[station].broadcasts[index];
    const from = Math.max(start, begin);
    const cell = make('div', `cell ${colourOf(genre)}`);
    cell.setAttribute('role', 'gridcell');
    cell.setAttribute('aria-label', `${title}${episode ? ': ' + episode : ''}, ${day(start)} ${hour(start)} to ${hour(stop)}`);
    cell.tabIndex = station === active.station && index === active.index ? 0 : -1;
    cell.dataset.station = station;
    cell.dataset.index = index;
    cell.style.left = `${left(from)}px`;
    cell.style.width = `${Math.max(8, (Math.min(stop, end) - from) * MINUTE - 2)}px`;
    cell.classList.toggle('on', start <= now && now < stop);
    if (words.length) cell.classList.toggle('passed', !isFound(data.stations[station].broadcasts[index]));
    cell.append(make('b', '', title), make('small', '', `${hour(start)}${episode ? ' ' + episode : ''}`));
    return cell;
  };

  const drawRow = (station, position, now) => {
    const row = make('div', 'row');
    row.setAttribute('role', 'row');
    row.setAttribute('aria-rowindex', position + 2);
    row.style.top = `${headHeight + position * rowHeight}px`;
    const name = make('div', 'name', data.stations[station].name);
    name.setAttribute('role', 'rowheader');
    row.append(name);
    const {broadcasts} = data.stations[station];
    for (let index = firstAt(broadcasts, drawn.from);
      index < broadcasts.length && broadcasts[index][0] < drawn.to; ++index) {
      row.append(drawCell(station, index, now));
    }
    return row;
  };

  // Draws what is seen and a little around it; nothing else is in the document.
  const draw = (anew) => {
    const from = begin + (scroller.scrollLeft) / MINUTE;
    const to = from + scroller.clientWidth / MINUTE;
    const now = nowMinute();
    if (anew || from < drawn.from + MARGIN / 4 || to > drawn.to - MARGIN / 4) {
      const next = {from: Math.max(begin, from - MARGIN), to: Math.min(end, to + MARGIN)};
      if (anew || next.from !== drawn.from || next.to !== drawn.to) {
        drawn = next;
        drawHours(drawn.from, drawn.to);
        for (const row of rows.values()) row.remove();
        rows.clear();
      }
    }
    corner.textContent = day(from + 60);
    const first = Math.max(0, Math.floor(scroller.scrollTop / rowHeight) - 2);
    const last = Math.min(shown.length, Math.ceil((scroller.scrollTop + scroller.clientHeight) / rowHeight) + 2);
    const kept = document.activeElement && document.activeElement.classList.contains('cell');
    for (const [station, row] of rows) {
      const position = shown.indexOf(station);
      if (position < first || position >= last) {
        row.remove();
        rows.delete(station);
      }
    }
    for (let position = first; position < last; ++position) {
      const station = shown[position];
      if (rows.has(station)) continue;
      const row = drawRow(station, position, now);
      rows.set(station, row);
      canvas.append(row);
    }
    line.hidden = now < begin || now >= end;
    line.style.left = `${left(now)}px`;
    if (kept) cellOf(active)?.focus({preventScroll: true});
    for (const button of byId('days').children) {
      const at = Number(button.dataset.time);
      button.toggleAttribute('aria-current', false);
      if (from + 60 >= at && from + 60 < at + DAY) button.setAttribute('aria-current', 'date');
    }
  };

  const layOut = () => {
    rowHeight = pixels('--row');
    nameWidth = pixels('--name');
    headHeight = pixels('--head');
    canvas.style.width = `${left(end)}px`;
    canvas.style.height = `${headHeight + shown.length * rowHeight}px`;
    scroller.setAttribute('aria-rowcount', shown.length + 1);
    for (const row of rows.values()) row.remove();
    rows.clear();
    draw(true);
  };

  const cellOf = ({station, index}) =>
    canvas.querySelector(`.cell[data-station="${station}"][data-index="${index}"]`);

  const scrollToTime = (time) => {
    scroller.scrollLeft = Math.max(0, (time - begin) * MINUTE);
    draw(false);
  };

  // Makes a broadcast the one that the keyboard is at.
  const activate = (station, index) => {
    const broadcast = data.stations[station].broadcasts[index];
    if (!broadcast) return;
    const before = cellOf(active);
    if (before) before.tabIndex = -1;
    active = {station, index};
    const position = shown.indexOf(station);
    const top = position * rowHeight;
    const room = scroller.clientHeight - headHeight;
    if (top < scroller.scrollTop) scroller.scrollTop = top;
    if (top + rowHeight > scroller.scrollTop + room) scroller.scrollTop = top + rowHeight - room;
    const start = (Math.max(broadcast[0], begin) - begin) * MINUTE;
    const width = scroller.clientWidth - nameWidth;
    const stop = start + Math.min((broadcast[1] - broadcast[0]) * MINUTE, width / 2);
    if (start < scroller.scrollLeft) scroller.scrollLeft = start;
    if (stop > scroller.scrollLeft + width) scroller.scrollLeft = stop - width;
    draw(false);
    const cell = cellOf(active);
    if (cell) {
      cell.tabIndex = 0;
      cell.focus({preventScroll: true});
    }
  };

  const dialog = byId('details');
  const open = (station, index) => {
    const [start, stop, title, episode, description, , facts] = data.stations[station].broadcasts[index];
    byId('details-title').textContent = episode ? `${title}: ${episode}` : title;
    byId('details-time').textContent =
      `${data.stations[station].name}, ${day(start)} ${hour(start)} to ${hour(stop)}`;
    byId('details-text').textContent = description;
    byId('details-facts').replaceChildren(
      ...facts.flatMap(([name, text]) => [make('dt', '', name), make('dd', '', text)]));
    dialog.showModal();
  };
  byId('close').addEventListener('click', () => dialog.close());
  dialog.addEventListener('close', () => cellOf(active)?.focus({preventScroll: true}));

  canvas.addEventListener('click', (event) => {
    const cell = event.target.closest('.cell');
    if (!cell) return;
    activate(Number(cell.dataset.station), Number(cell.dataset.index));
    open(active.station, active.index);
  });
  const near = (station, time) => {
    const {broadcasts} = data.stations[station];
    return Math.min(firstAt(broadcasts, time), broadcasts.length - 1);
  };
  scroller.addEventListener('keydown', (event) => {
    if (!event.target.classList.contains('cell')) return;
    const {station, index} = active;
    const position = shown.indexOf(station);
    const time = Math.max(data.stations[station].broadcasts[index][0], begin);
    const moves = {
      ArrowLeft: () => activate(station, Math.max(0, index - 1)),
      ArrowRight: () => activate(station, index + 1),
      ArrowUp: () => position > 0 && activate(shown[position - 1], near(shown[position - 1], time)),
      ArrowDown: () => position + 1 < shown.length &&
        activate(shown[position + 1], near(shown[position + 1], time)),
      Home: () => activate(station, 0),
      End: () => activate(station, data.stations[station].broadcasts.length - 1),
      Enter: () => open(station, index),
      ' ': () => open(station, index),
    };
    if (!moves[event.key]) return;
    event.preventDefault();
    moves[event.key]();
  });

  const search = () => {
    words = fold(byId('search').value).split(/\s+/u).filter((word) => word);
    let count = 0;
    let first = null;
    shown = [];
    data.stations.forEach((station, index) => {
      let hits = 0;
      if (words.length) {
        station.broadcasts.forEach((broadcast, at) => {
          if (!isFound(broadcast)) return;
          ++hits;
          if (broadcast[1] > data.now && (!first || broadcast[0] < first.start)) {
            first = {station: index, index: at, start: broadcast[0]};
          }
        });
      }
      count += hits;
      if (!words.length || hits) shown.push(index);
    });
    byId('found').textContent = words.length ? `${count} found` : '';
    if (!shown.includes(active.station)) active = {station: shown[0] ?? 0, index: 0};
    scroller.scrollTop = 0;
    layOut();
    if (first) {
      active = {station: first.station, index: first.index};
      scrollToTime(first.start - 30);
      draw(true);
    }
  };
  let waiting = 0;
  byId('search').addEventListener('input', () => {
    clearTimeout(waiting);
    waiting = setTimeout(search, 80);
  });
  byId('search').addEventListener('keydown', (event) => {
    if (event.key === 'Enter') {
      clearTimeout(waiting);
      search();
      cellOf(active)?.focus();
    }
  });

  for (let time = floorTo(begin + data.offset, DAY) - data.offset; time < end; time += DAY) {
    const button = make('button', '', day(time));
    button.type = 'button';
    button.dataset.time = time;
    // Evenings are what is looked for.
    button.addEventListener('click', () => scrollToTime(Math.max(begin, Math.min(time + 19 * 60, end - 120))));
    byId('days').append(button);
  }
  byId('to-now').addEventListener('click', () => scrollToTime(nowMinute() - 30));

  let frame = 0;
  scroller.addEventListener('scroll', () => {
    if (!frame) frame = requestAnimationFrame(() => { frame = 0; draw(false); });
  });
  window.addEventListener('resize', layOut);
  setInterval(() => draw(true), 60000);

  // Paper gets what is on within six hours of what is seen.
  window.addEventListener('beforeprint', () => {
    const from = begin + scroller.scrollLeft / MINUTE;
    byId('print').replaceChildren(make('h1', '', `${day(from)} from ${hour(Math.floor(from))}`));
    for (const station of shown) {
      const {name, broadcasts} = data.stations[station];
      byId('print').append(make('h2', '', name));
      for (let index = firstAt(broadcasts, from);
        index < broadcasts.length && broadcasts[index][0] < from + 360; ++index) {
        const [start, , title, episode] = broadcasts[index];
        byId('print').append(make('p', '', `${hour(start)}  ${title}${episode ? ': ' + episode : ''}`));
      }
    }
  });

  canvas.append(hours, line);
  layOut();
  const now = nowMinute();
  const at = now >= begin && now < end ? now : begin;
  if (data.stations.length) active = {station: 0, index: Math.max(0, near(0, at))};
  scrollToTime(at - 30);
  draw(true);
})();
