// The page of a report. What is shown - filters, order, page - stands in the address behind the "#",
// so that a view can be kept and sent on.
'use strict';
(() => {
  const kPageRows = 100;
  const byId = (id) => document.getElementById(id);
  const data = JSON.parse(byId('data').textContent);

  // ------------------------------------------------------------------------------ names and numbers

  // Names come as the end of a run prints them: a byte that is no UTF-8 as \xff, a backslash as two,
  // control characters as \n, \t, \x1b and \u009b. What would not show, or would change how the rest
  // shows, is written as an escape, too.
  const kHidden = /[\u00ad\u061c\u200b-\u200f\u2028-\u202e\u2060-\u206f\ufeff\ufff9-\ufffb]/g;
  const shown = (name) => name.replace(kHidden, (letter) => '\\u' + letter.charCodeAt(0).toString(16).padStart(4, '0'));

  const kCodes = { n: '%0A', t: '%09', '\\': '%5C' };
  const linkTo = (name) => './' + name.replace(/\\x(..)|\\u00(..)|\\(.)|[^\\/]+/g, (text, byte, control, letter) =>
    (byte ? '%' + byte : control ? '%C2%' + control : letter ? kCodes[letter] : encodeURIComponent(text)));

  const count = (number) => number.toString().replace(/\B(?=(\d{3})+$)/g, '\u202f');
  const digits = (number) => String(Number(number.toPrecision(6)));
  function bytes(number) {
    const units = ['B', 'kB', 'MB', 'GB', 'TB'];
    let unit = 0;
    while (number >= 999.5 && unit < units.length - 1) {
      number /= 1000;
      unit += 1;
    }
    return (unit === 0 || number >= 99.95 ? number.toFixed(0) : number.toFixed(1)) + ' ' + units[unit];
  }
  const seconds = (number) => (number < 99.995 ? number.toFixed(2) : number.toFixed(0));
  function duration(number) {
    if (number < 120) {
      return seconds(number) + ' s';
    }
    const minutes = Math.round(number / 60);
    return minutes < 120 ? minutes + ' min' : Math.floor(minutes / 60) + ' h ' + (minutes % 60) + ' min';
  }

  // "20k" is 20000. Nothing written is no limit; what is no number is marked and is no limit either.
  const kFactors = { '': 1, k: 1e3, m: 1e6, g: 1e9 };
  function limitFrom(input) {
    const match = /^\s*(\d+\.?\d*|\.\d+)\s*([kmg]?)b?\s*$/i.exec(input.value);
    input.classList.toggle('wrong', !match && input.value.trim() !== '');
    return match ? Number(match[1]) * kFactors[match[2].toLowerCase()] : null;
  }

  // ------------------------------------------------------------------------------------- the files

  const files = data.files.map((record, index) => {
    const outputs = record.outputs || [];
    return {
      index, record, outputs,
      name: shown(record.name),
      reason: shown(record.reason || ''),
      // What was found out about the input is kept with one of its outputs.
      check: (outputs.find((output) => output.check) || { check: null }).check,
      kind: record.kind === undefined ? '' : shown(data.kinds[record.kind].title),
      open: false, // whether its details are shown
      key: '',
    };
  });
  for (const file of files) {
    file.key = (file.name + '\n' + file.reason).toLowerCase();
  }
  const hasPictures = files.some((file) => file.outputs.some((output) => output.picture));
  const hasChecks = files.some((file) => file.check);
  const kNames = { converted: 'converted', failed: 'failed', delivering: 'interrupted', doubtful: 'doubtful' };
  const stateOf = (file) => (file.record.status === 'converted' && file.reason ? 'doubtful' : file.record.status);

  // The kinds of reasons, the most frequent first; of the reasons in each, the most frequent.
  const kindList = data.kinds.map((kind) => ({
    title: shown(kind.title),
    count: kind.count,
    reasons: kind.reasons.map(([text, count]) => ({ text: shown(text), count })),
  }));
  const reasonRank = new Map();
  for (const kind of kindList) {
    kind.reasons.forEach(({ text }) => reasonRank.set(text, reasonRank.size));
  }

  // Coordinates are of single precision: what is that much smaller than others of its file is 0.
  const kNoise = 1e-7;
  const without = (noise, number) => (Math.abs(number) <= noise ? 0 : number);
  function bounds(file) {
    const b = file.record.bounds;
    const noise = b ? kNoise * Math.max(...b.map(Math.abs)) : 0;
    return b ? b.map((number) => without(noise, number)) : null;
  }
  function extent(file) {
    const b = bounds(file);
    return b ? [b[3] - b[0], b[4] - b[1], b[5] - b[2]] : null;
  }
  function volume(file, number) {
    const largest = file.record.bounds ? Math.max(...extent(file)) : 0;
    return digits(without(kNoise * largest ** 3, number));
  }
  const known = (value) => (value === undefined ? null : value);

  // Reasons that are too rare to be listed come after the others.
  const reasonKey = (f) => (!f.reason ? null : reasonRank.has(f.reason) ? reasonRank.get(f.reason) : reasonRank.size);

  // `key` gives the number that a column is sorted by; null goes to the end in both directions.
  const columns = [
    { id: 'status', title: 'Status', key: (f) => ['failed', 'delivering', 'doubtful', 'converted'].indexOf(stateOf(f)) },
    { id: 'name', title: 'File', key: (f) => f.index }, // the records come in the order of the names
    { id: 'reason', title: 'Reason', key: reasonKey },
    { id: 'size', title: 'Size', number: true, key: (f) => known(f.record.size) },
    { id: 'seconds', title: 'Time, s', number: true, key: (f) => known(f.record.seconds) },
    { id: 'triangles', title: 'Triangles', number: true, key: (f) => known(f.record.triangles) },
    {
      id: 'bounds', title: 'Extent, mm', number: true,
      key: (f) => (extent(f) ? Math.hypot(...extent(f)) : null),
    },
    { id: 'check', title: 'Check', number: true, key: (f) => (f.check ? f.check.badParts : null) },
    { id: 'deviation', title: 'Deviation, mm', number: true, key: (f) => (f.check ? f.check.deviation : null) },
    { id: 'volume', title: 'Volume, mm³', number: true, key: (f) => (f.check ? f.check.volume : null) },
    { id: 'memory', title: 'Memory', number: true, key: (f) => known(f.record.peakMemory) },
  ].filter((column) => hasChecks || !['check', 'deviation', 'volume'].includes(column.id));

  // --------------------------------------------------------------------------------------- the view

  const kChecks = {
    problems: (file) => Boolean(file.check && file.check.badParts > 0),
    none: (file) => Boolean(file.check && file.check.badParts === 0),
    unknown: (file) => !file.check,
  };
  const kFields = ['q', 'status', 'reason', 'checked', 'sizeMin', 'sizeMax', 'secondsMin', 'secondsMax', 'trianglesMin', 'trianglesMax'];
  const view = { sort: 'name', down: false, page: 0 };
  let found = [];

  function select() {
    const query = byId('q').value.toLowerCase().split(' ').filter((word) => word);
    const status = byId('status').value;
    const reason = byId('reason').value;
    const isChecked = kChecks[byId('checked').value] || (() => true);
    const ranges = ['size', 'seconds', 'triangles'].map((field) => [field, limitFrom(byId(field + 'Min')), limitFrom(byId(field + 'Max'))])
      .filter(([, min, max]) => min !== null || max !== null);
    found = files.filter((file) =>
      (!status || file.record.status === status || stateOf(file) === status) &&
      (!reason || file.reason === reason || file.kind === reason) &&
      isChecked(file) &&
      ranges.every(([field, min, max]) => {
        const value = file.record[field];
        return value !== undefined && (min === null || value >= min) && (max === null || value <= max);
      }) &&
      query.every((word) => file.key.includes(word)));
  }

  function sort() {
    const key = columns.find((column) => column.id === view.sort).key;
    const keys = new Float64Array(files.length);
    for (const file of found) {
      const value = key(file);
      keys[file.index] = value === null ? NaN : view.down ? -value : value;
    }
    found.sort((a, b) => {
      const x = keys[a.index], y = keys[b.index];
      if (x === y || (x !== x && y !== y)) {
        return a.index - b.index;
      }
      return x < y || y !== y ? -1 : 1;
    });
  }

  function element(tag, properties, ...children) {
    const made = document.createElement(tag);
    Object.assign(made, properties);
    made.append(...children);
    return made;
  }

  function picture(output) {
    return element('img', { src: 'data:image/png;base64,' + output.picture, alt: '', loading: 'lazy' });
  }

  const several = (number, one, more) => count(number) + ' ' + (number === 1 ? one : more);
  function checkText(check) {
    return check.badParts === 0 ? 'no problem' : `${count(check.badParts)} of ${several(check.parts, 'part', 'parts')}`;
  }
  // Everything that is known of the parts with problems.
  function problemText(check) {
    const problems = [
      check.openSolids && several(check.openSolids, 'open solid', 'open solids'),
      check.facesWithoutMesh && several(check.facesWithoutMesh, 'face without mesh', 'faces without mesh'),
      check.facesOver && several(check.facesOver, 'face misses the deflection', 'faces miss the deflection'),
    ].filter((text) => text);
    return [`${several(check.badParts, 'part', 'parts')} of ${count(check.parts)} with problems`, ...problems].join(', ');
  }

  const cells = {
    status(file, cell) {
      cell.classList.add(stateOf(file));
      cell.append(kNames[stateOf(file)]);
    },
    name(file, cell) {
      const cut = file.name.lastIndexOf('/') + 1;
      const button = element('button', { type: 'button', title: 'Show all about this file' },
        element('span', { className: 'folder' }, element('bdi', {}, file.name.slice(0, cut))),
        element('bdi', {}, file.name.slice(cut)));
      button.setAttribute('aria-expanded', file.open);
      cell.append(button);
    },
    size: (file, cell) => cell.append(bytes(file.record.size)),
    seconds: (file, cell) => cell.append(seconds(file.record.seconds)),
    triangles: (file, cell) => cell.append(count(file.record.triangles)),
    bounds: (file, cell) => cell.append(extent(file).map((d) => String(Number(d.toPrecision(4)))).join(' × ')),
    check(file, cell) {
      cell.classList.add(file.check.badParts === 0 ? 'closed' : 'holed');
      cell.append(checkText(file.check));
    },
    deviation: (file, cell) => cell.append(String(Number(file.check.deviation.toPrecision(3)))),
    volume: (file, cell) => cell.append(volume(file, file.check.volume)),
    memory: (file, cell) => cell.append(bytes(file.record.peakMemory)),
    // An option is not broken between its dashes.
    reason: (file, cell) => cell.append(...file.reason.split(/(--[a-z-]+)/).map((part) =>
      (part.startsWith('--') ? element('span', { className: 'option' }, part) : part))),
  };

  function details(file) {
    const { record } = file;
    const list = element('dl');
    const add = (title, ...content) => list.append(element('dt', {}, title), element('dd', {}, ...content));
    add('Input', element('bdi', {}, shown(record.path || data.base + record.name)));
    add('Status', kNames[record.status] + (stateOf(file) === 'doubtful' ? ', but doubtful' : '') +
      (record.signal ? ', signal ' + record.signal : record.exitStatus === undefined ? '' : ', exit status ' + record.exitStatus) +
      (record.host ? ', on ' + shown(record.host) : ''));
    if (file.reason) {
      add('Reason', file.reason);
    }
    if (record.sameAs) {
      add('Same bytes as', element('bdi', {}, shown(record.sameAs)));
    }
    if (record.transcriptEnd) {
      add('Transcript', element('pre', {}, record.transcriptEnd.map(shown).join('\n')));
    }
    if (record.bounds) {
      const b = bounds(file).map(digits);
      add('Bounds', `x ${b[0]} … ${b[3]},  y ${b[1]} … ${b[4]},  z ${b[2]} … ${b[5]} mm`);
    }
    if (file.outputs.length) {
      add(file.outputs.length === 1 ? 'Output' : 'Outputs', element('ul', { className: 'outputs' },
        ...file.outputs.map((output) => element('li', {},
          ...(output.picture ? [picture(output)] : []),
          element('a', { href: linkTo(output.path) }, element('bdi', {}, shown(output.path.slice(output.path.lastIndexOf('/') + 1)))),
          element('small', {}, bytes(output.size))))));
    }
    if (file.check) {
      const { names } = file.check;
      add('Check', file.check.badParts === 0 ? 'no problem' : problemText(file.check),
        element('ul', { className: 'parts' }, ...names.map((name) => element('li', {}, element('bdi', {}, shown(name))))),
        ...(file.check.badParts > names.length ? [element('small', {}, `and ${count(file.check.badParts - names.length)} more`)] : []));
    }
    return element('tr', { className: 'more' }, element('td', { colSpan: columns.length + (hasPictures ? 1 : 0) }, list));
  }

  function row(file) {
    const made = element('tr', { className: 'file' });
    if (hasPictures) {
      const first = file.outputs.find((output) => output.picture);
      made.append(element('td', { className: 'picture' }, ...(first ? [picture(first)] : [])));
    }
    for (const column of columns) {
      const cell = element('td', { className: column.id + (column.number ? ' number' : '') });
      if (column.key(file) !== null) {
        cells[column.id](file, cell);
      }
      made.append(cell);
    }
    made.querySelector('button').addEventListener('click', () => {
      file.open = !file.open;
      render();
    });
    return made;
  }

  function render() {
    const pages = Math.max(1, Math.ceil(found.length / kPageRows));
    view.page = Math.min(Math.max(0, view.page), pages - 1);
    const first = view.page * kPageRows;
    const rows = [];
    for (const file of found.slice(first, first + kPageRows)) {
      rows.push(row(file));
      if (file.open) {
        rows.push(details(file));
      }
    }
    byId('rows').replaceChildren(...rows);
    byId('nothing').hidden = found.length > 0;
    for (const cell of byId('head').children) {
      const sorted = cell.dataset.column === view.sort;
      cell.setAttribute('aria-sort', !sorted ? 'none' : view.down ? 'descending' : 'ascending');
      const arrow = cell.querySelector('i');
      if (arrow) {
        arrow.textContent = !sorted ? '' : view.down ? ' ▾' : ' ▴';
      }
    }
    for (const bar of document.querySelectorAll('.pages')) {
      const step = (text, page) => {
        const button = element('button', { type: 'button', disabled: page < 0 || page >= pages || page === view.page }, text);
        button.addEventListener('click', () => show({ page }));
        return button;
      };
      const last = Math.min(first + kPageRows, found.length);
      bar.replaceChildren(
        element('span', {}, (found.length ? count(first + 1) + '–' + count(last) + ' of ' : '') + count(found.length) + ' files' +
          (found.length < files.length ? ', out of ' + count(files.length) : '')),
        step('First', 0), step('Previous', view.page - 1), step('Next', view.page + 1), step('Last', pages - 1));
    }
  }

  // ------------------------------------------------------------------------------------ the address

  function writeAddress() {
    const parts = new URLSearchParams();
    for (const field of kFields) {
      if (byId(field).value) {
        parts.set(field, byId(field).value);
      }
    }
    if (view.sort !== 'name' || view.down) {
      parts.set('sort', (view.down ? '-' : '') + view.sort);
    }
    if (view.page > 0) {
      parts.set('page', view.page + 1);
    }
    history.replaceState(null, '', '#' + parts);
  }

  function readAddress() {
    const parts = new URLSearchParams(location.hash.slice(1));
    for (const field of kFields) {
      byId(field).value = parts.get(field) || '';
    }
    const order = parts.get('sort') || 'name';
    view.down = order.startsWith('-');
    view.sort = order.replace(/^-/, '');
    if (!columns.some((column) => column.id === view.sort)) {
      view.sort = 'name';
    }
    view.page = (parseInt(parts.get('page'), 10) || 1) - 1;
  }

  // Filters, sorts and shows anew after a change of the view.
  function show(change) {
    Object.assign(view, change);
    select();
    sort();
    render();
    writeAddress();
  }

  // ----------------------------------------------------------------------------- what stands for good

  function fillHead() {
    if (hasPictures) {
      byId('head').append(element('th', {}, element('span', { title: 'Picture' })));
    }
    for (const column of columns) {
      const button = element('button', { type: 'button' }, column.title, element('i', {}));
      button.addEventListener('click', () => show({
        sort: column.id, page: 0,
        // Numbers come largest first: that is what one looks for.
        down: view.sort === column.id ? !view.down : Boolean(column.number),
      }));
      const cell = element('th', { scope: 'col', className: column.number ? 'number' : '' }, button);
      cell.dataset.column = column.id;
      byId('head').append(cell);
    }
  }

  function fillSummary() {
    const number = {};
    const sum = { files: 0, size: 0, triangles: 0, seconds: 0 };
    for (const [status, total] of Object.entries(data.totals)) {
      number[status] = total.files;
      Object.keys(sum).forEach((key) => { sum[key] += total[key]; });
    }
    const card = (value, title, kind) => byId('cards').append(
      element('div', { className: 'card ' + (kind || '') }, element('b', {}, value), element('span', {}, title)));
    card(count(sum.files), 'files');
    card(count(number.converted), 'converted', 'converted');
    card(count(number.failed), 'failed', number.failed ? 'failed' : '');
    if (number.delivering) {
      card(count(number.delivering), 'interrupted', 'delivering');
    }
    card(bytes(sum.size), 'of input');
    card(count(sum.triangles), 'triangles');
    card(duration(sum.seconds), 'of conversion');
    byId('cut').hidden = files.length >= sum.files;
    byId('cut').append(`This page holds ${count(files.length)} of ${count(sum.files)} files, first those that failed or are doubtful. ` +
      'plenvorith-batch --export writes a table of all of them; the counts above are of all.');
    byId('notes').hidden = data.notes.length === 0;
    byId('notes').querySelector('summary').append(`Left out by the last run (${data.notes.length})`);
    byId('notes').querySelector('ul').append(...data.notes.map((note) => element('li', {}, note)));
    for (const status of ['converted', 'failed', 'delivering']) {
      const part = element('i', { className: status });
      part.style.flexGrow = number[status];
      byId('share').append(part);
    }
    byId('about').append(data.about);
    byId('status').append(element('option', { value: '' }, 'Any status'),
      ...Object.keys(number).map((status) => element('option', { value: status }, `${kNames[status]} (${count(number[status])})`)));
    const doubtful = files.filter((file) => stateOf(file) === 'doubtful').length;
    if (doubtful) {
      byId('status').append(element('option', { value: 'doubtful' }, `doubtful (${count(doubtful)})`));
    }
  }

  function fillChecks() {
    byId('checked').hidden = !hasChecks;
    const option = ([value, title]) => element('option', { value }, value ? `${title} (${count(files.filter(kChecks[value]).length)})` : title);
    byId('checked').append(...[['', 'Any check'], ['problems', 'has problems'], ['none', 'no problem'], ['unknown', 'not checked']].map(option));
  }

  function fillReasons() {
    const option = (text, number) => element('option', { value: text }, `${text} (${count(number)})`);
    byId('reason').append(element('option', { value: '' }, 'Any reason'));
    for (const kind of kindList) {
      const several = kind.reasons.length > 1 ? kind.reasons : [];
      const made = several.map((reason) => option(reason.text, reason.count));
      made.forEach((one) => one.prepend('\u2003'));
      byId('reason').append(option(kind.title, kind.count), ...made);
    }
    for (const kind of kindList.slice(0, 8)) {
      const button = element('button', { type: 'button' }, element('b', {}, count(kind.count)), ' ' + kind.title);
      if (kind.reasons.length > 1) {
        button.title = kind.reasons.map((reason) => `${count(reason.count)} ${reason.text}`).join('\n');
      }
      button.addEventListener('click', () => {
        byId('reason').value = byId('reason').value === kind.title ? '' : kind.title;
        show({ page: 0 });
      });
      byId('reasons').append(button);
    }
  }

  fillHead();
  fillSummary();
  fillReasons();
  fillChecks();
  byId('filters').addEventListener('submit', (event) => event.preventDefault());
  byId('filters').addEventListener('input', () => show({ page: 0 }));
  byId('filters').addEventListener('reset', (event) => {
    event.preventDefault(); // the browser would clear the fields after this, when it is too late to filter
    for (const field of kFields) {
      byId(field).value = '';
    }
    show({ page: 0 });
  });
  window.addEventListener('hashchange', () => {
    readAddress();
    show({});
  });
  readAddress();
  show({});
})();
