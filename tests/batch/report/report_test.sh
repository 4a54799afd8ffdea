#!/usr/bin/env bash
# Runs one case on the page of a report, in a browser without a window.
#
#   report_test.sh PAGES CASE
#
# PAGES is the program that writes the pages. A case adds a script to the page that does what a user
# does - clicks, types, chooses - and prints what is to be seen then. Exit status 77 means that the
# case cannot run here.
set -euo pipefail
pages=$1 case=$2

scratch=$(mktemp -d)
trap 'rm -rf "$scratch"' EXIT
mkdir "$scratch/tmp" "$scratch/home"
export TMPDIR=$scratch/tmp HOME=$scratch/home
cd "$scratch"

fail() {
  printf 'FAILED: %s\n' "$*" >&2
  exit 1
}

browser=$(type -P chromium || type -P chromium-browser || type -P google-chrome) || {
  echo 'skipped: no browser (Debian package chromium)'
  exit 77
}

# look FRAGMENT: opens index.html with this fragment and runs the script on standard input at its
# end; the lines that the script gives to say() become the file `seen`. The page's policy, which would
# keep the script from running, has to go.
look() {
  {
    grep -v Content-Security-Policy index.html
    cat <<'END'
<script>
const lines = [];
const say = (...texts) => lines.push(texts.join(' '));
const $ = (selector) => document.querySelector(selector);
const all = (selector) => [...document.querySelectorAll(selector)];
const column = (name) => all('#rows tr.file td.' + name).map((cell) => cell.textContent);
const head = (title) => all('#head button').find((button) => button.textContent.startsWith(title));
const enter = (id, value) => {
  document.getElementById(id).value = value;
  document.getElementById(id).dispatchEvent(new Event('input', { bubbles: true }));
};
const counts = () => $('.pages span').textContent.replaceAll('\u202f', ' ');
END
    cat
    cat <<'END'
document.body.replaceChildren(Object.assign(document.createElement('pre'), { textContent: '\n' + lines.join('\n') + '\n' }));
</script>
END
  } >page.html
  timeout 120 "$browser" --headless --no-sandbox --disable-gpu --disable-dev-shm-usage \
    --user-data-dir="$scratch/profile" --dump-dom "file://$scratch/page.html#$1" \
    >dom 2>browser.log || fail "the browser ended with $?: $(tail -n 5 browser.log)"
  sed -n '/<pre>/,/<\/pre>/p' dom | sed -e '1d' -e '$d' >seen
}

expect() {
  diff -u - seen >&2 || fail 'the page shows something else'
}

# ------------------------------------------------------------------------------------------- cases

ShowsCountsAndRows() {
  "$pages" many index.html 30
  look '' <<'END'
say(all('.card').map((card) => card.textContent.replaceAll('\u202f', ' ')).join('; '));
say(all('#reasons button').map((button) => button.textContent).join('; '));
say(counts());
for (const row of all('#rows tr.file').slice(2, 5)) {
  say([...row.cells].map((cell) => cell.textContent.replaceAll('\u202f', ' ')).join('|'));
}
say(all('#rows img').map((image) => image.getAttribute('src')).join());
say($('#cut').hidden, $('#notes').hidden);
END
  expect <<'END'
30files; 27converted; 3failed; 465 kBof input; 143 831triangles; 58.13 sof conversion
2 ends in the middle; 1 kernel crashed (signal 11)
1–30 of 30 files
|converted|group 0/part-00002.step||3.0 kB|3.50|5 831|10 × 20 × 30.5|2 of 5 parts|0.25|1.5|0 B
|failed|group 0/part-00003.step|ends in the middle|4.0 kB|3.38|0|||||0 B
|converted|group 0/part-00004.step||5.0 kB|3.25|1 655|10 × 20 × 30.5|no problem|0.5|1.5|0 B
data:image/png;base64,cGljdHVyZQ==
true true
END
}

SortsByEveryColumnUpAndDown() {
  "$pages" many index.html 30
  look '' <<'END'
const first = () => column('name').slice(0, 3).map((name) => name.slice(-7, -5)).join(' ');
for (const button of all('#head button')) {
  const title = button.textContent.replace(/ [▴▾]/, '');
  button.click();
  const once = first();
  button.click();
  say(title, once, '/', first(), button.closest('th').getAttribute('aria-sort'));
}
END
  expect <<'END'
Status 03 13 23 / 00 01 02 descending
File 00 01 02 / 29 28 27 descending
Reason 03 23 13 / 13 03 23 descending
Size 29 28 27 / 00 01 02 ascending
Time, s 00 01 02 / 29 28 27 ascending
Triangles 24 05 29 / 00 03 13 ascending
Extent, mm 00 01 02 / 00 01 02 ascending
Check 07 11 15 / 00 04 08 ascending
Deviation, mm 07 15 06 / 00 08 16 ascending
Volume, mm³ 00 01 02 / 00 01 02 ascending
Memory 00 01 02 / 00 01 02 ascending
END
}

TellsDoubtfulFilesFromOthers() {
  "$pages" doubts index.html 6
  look '' <<'END'
const states = () => all('#rows td.status').map((cell) => cell.className + ' ' + cell.textContent).join('; ');
say(states());
say(all('#status option').map((option) => option.textContent).join('; '));
head('Status').click();
say(column('status').join(' '));
for (const status of ['doubtful', 'converted', '']) {
  enter('status', status);
  say(column('name').join(' '));
}
head('File').click();
all('#rows button')[1].click();
say($('tr.more').textContent.includes('converted, but doubtful, exit status 0'));
all('#rows button')[1].click();
all('#rows button')[2].click();
say($('tr.more').textContent.includes('Same bytes as/in/one\\n.stp'));
END
  expect <<'END'
status converted converted; status doubtful doubtful; status converted converted; status failed failed; status doubtful doubtful; status converted converted
Any status; converted (5); failed (1); interrupted (0); doubtful (2)
failed doubtful doubtful converted converted converted
group 0/part-00001.step group 0/part-00004.step
group 0/part-00001.step group 0/part-00004.step group 0/part-00000.step group 0/part-00002.step group 0/part-00005.step
group 0/part-00003.step group 0/part-00001.step group 0/part-00004.step group 0/part-00000.step group 0/part-00002.step group 0/part-00005.step
true
true
END
}

FiltersBySearchStatusReasonAndRanges() {
  "$pages" many index.html 10000
  look '' <<'END'
const say_ = (what) => say(what + ':', counts(), column('name')[0] || '', $('#nothing').hidden);
enter('q', 'GROUP 7/ part-0700');
say_('search');
enter('q', 'crashed');
say_('reason searched');
enter('q', 'nowhere');
say_('nothing');
enter('q', '');
enter('status', 'failed');
say_('status');
enter('status', 'delivering');
say_('interrupted');
enter('status', '');
enter('reason', 'kernel crashed (signal 11)');
say_('reason');
all('#reasons button')[0].click();
say_('reason clicked');
all('#reasons button')[0].click();
say_('clicked again');
enter('sizeMin', '9.999MB');
say_('size');
enter('sizeMin', '');
enter('secondsMax', '0.5');
say_('seconds');
enter('secondsMax', '');
enter('trianglesMin', '10k');
enter('trianglesMax', '10003');
say_('triangles');
enter('trianglesMin', '');
enter('trianglesMax', '');
for (const check of ['problems', 'none', 'unknown', '']) {
  enter('checked', check);
  say_('check');
}
enter('trianglesMax', '10003');
enter('trianglesMin', 'many');
say_('no number');
say($('#trianglesMin').classList.contains('wrong'));
$('#filters button').click();
say_('cleared');
END
  expect <<'END'
search: 1–10 of 10 files, out of 10 000 group 7/part-07000.step true
reason searched: 1–100 of 500 files, out of 10 000 group 0/part-00013.step true
nothing: 0 files, out of 10 000  false
status: 1–100 of 1 000 files, out of 10 000 group 0/part-00003.step true
interrupted: 0 files, out of 10 000  false
reason: 1–100 of 500 files, out of 10 000 group 0/part-00013.step true
reason clicked: 1–100 of 500 files, out of 10 000 group 0/part-00003.step true
clicked again: 1–100 of 10 000 files group 0/part-00000.step true
size: 1–2 of 2 files, out of 10 000 group 9/part-09998.step true
seconds: 1–4 of 4 files, out of 10 000 group 9/part-09996.step true
triangles: 1–4 of 4 files, out of 10 000 group 4/part-04160.step true
check: 1–100 of 6 500 files, out of 10 000 group 0/part-00001.step true
check: 1–100 of 2 500 files, out of 10 000 group 0/part-00000.step true
check: 1–100 of 1 000 files, out of 10 000 group 0/part-00003.step true
check: 1–100 of 10 000 files group 0/part-00000.step true
no number: 1–100 of 9 997 files, out of 10 000 group 0/part-00000.step true
true
cleared: 1–100 of 10 000 files group 0/part-00000.step true
END
}

GroupsReasonsByKind() {
  "$pages" reasons index.html
  look '' <<'END'
for (const button of all('#reasons button')) {
  say(button.textContent, '[' + button.title.replaceAll('\n', '|') + ']');
}
for (const option of all('#reason option')) {
  say(option.textContent.replace('\u2003', '- '));
}
const names = () => column('name').map((name) => name.slice(0, 3)).join(' ');
all('#reasons button')[0].click();
say(names(), location.hash);
all('#reasons button')[1].click();
say(names());
enter('reason', 'ends in the middle (no END-ISO-10303-21)');
say(names());
enter('reason', 'time limit of 6 s');
say(names());
enter('reason', '');
head('Reason').click();
say(names());
END
  expect <<'END'
5 incomplete [2 incomplete: c.stl|1 incomplete: a: (1).stl|1 incomplete: b\n.stl|1 incomplete: d.stl]
3 ends in the middle [2 ends in the middle (no END-ISO-10303-21)|1 ends in the middle (no END-ISO-10303-21); kernel crashed (signal 11, SIGSEGV)]
2 exit status [1 exit status 3|1 exit status 4]
2 time limit of 6 s []
1 cannot be read: Permission denied []
1 tessellation of a form that the converter does not decode: try without --as-is []
Any reason
incomplete (5)
- incomplete: c.stl (2)
- incomplete: a: (1).stl (1)
- incomplete: b\n.stl (1)
- incomplete: d.stl (1)
ends in the middle (3)
- ends in the middle (no END-ISO-10303-21) (2)
- ends in the middle (no END-ISO-10303-21); kernel crashed (signal 11, SIGSEGV) (1)
exit status (2)
- exit status 3 (1)
- exit status 4 (1)
time limit of 6 s (2)
cannot be read: Permission denied (1)
tessellation of a form that the converter does not decode: try without --as-is (1)
106 107 108 109 110 #reason=incomplete
101 102 103
101 102
112 113
108 109 106 107 110 101 102 103 104 105 112 113 100 111
END
}

TurnsPages() {
  "$pages" many index.html 1050
  look 'page=2' <<'END'
const button = (text) => all('.pages button').find((found) => found.textContent === text);
const report = (what) => say(what, counts(), all('#rows tr.file').length, column('name')[0],
  all('.pages')[0].querySelectorAll('button:disabled').length);
report('opened');
button('Next').click();
report('next');
button('Last').click();
report('last');
button('Previous').click();
report('previous');
button('First').click();
report('first');
say('address [' + location.hash + ']');
button('Last').click();
enter('q', 'part-0000');
report('filtered');
END
  expect <<'END'
opened 101–200 of 1 050 files 100 group 0/part-00100.step 0
next 201–300 of 1 050 files 100 group 0/part-00200.step 0
last 1 001–1 050 of 1 050 files 50 group 1/part-01000.step 2
previous 901–1 000 of 1 050 files 100 group 0/part-00900.step 0
first 1–100 of 1 050 files 100 group 0/part-00000.step 2
address []
filtered 1–10 of 10 files, out of 1 050 10 group 0/part-00000.step 4
END
}

KeepsTheViewInTheAddress() {
  "$pages" many index.html 300
  look 'q=part&status=failed&sort=-size' <<'END'
say(counts(), column('name')[0], $('#q').value, $('#status').value);
head('Time').click();
enter('sizeMax', '50k');
say(location.hash);
END
  expect <<'END'
1–30 of 30 files, out of 300 group 0/part-00293.step part failed
#q=part&amp;status=failed&amp;sizeMax=50k&amp;sort=-seconds
END
}

ShowsAllAboutAFile() {
  "$pages" many index.html 30
  look '' <<'END'
const toggle = (i) => all('#rows tr.file td.name button')[i].click();
const details = () => all('tr.more dl > *').map((cell) => cell.textContent).join('|');
say(all('tr.more').length);
toggle(1);
say(details());
say(all('tr.more a').map((link) => link.getAttribute('href')).join(' '));
say(all('#rows tr.file td.name button')[1].getAttribute('aria-expanded'));
toggle(1);
toggle(3);
say(details());
END
  expect <<'END'
0
Input|/in/group 0/part-00001.step|Status|converted, exit status 0|Bounds|x 0 … 10,  y 0 … 20,  z 0 … 30.5 mm|Output|part-00001.step.stl396 kB|Check|1 part of 5 with problems, 1 open solidlamp / \xfflamp / foot
./group%200/part-00001.step.stl
true
Input|/in/group 0/part-00003.step|Status|failed, exit status 1|Reason|ends in the middle|Transcript|Reading: part
  \x1b[31mError: &lt;none&gt;
Failed
END
}

EscapesNamesOfAnyBytes() {
  "$pages" odd index.html
  look '' <<'END'
say(document.title);
column('name').forEach((name) => say(name));
all('#rows tr.file td.name button').forEach((_, i) => all('#rows tr.file td.name button')[i].click());
all('tr.more .outputs a').forEach((link) => say(link.getAttribute('href'), new URL(link.href).protocol));
say(all('#rows img').length, all('#rows script').length);
END
  expect <<'END'
Plenvorith report
&lt;/script&gt;&lt;img src=x onerror=document.title='broken'&gt;.stp
new\nline.stp
not \xff utf-8.stp
percent%20 and ? and #.stp
quote"'&amp;lt;.stp
sub folder/größe 部品.stp
turned \u202epts.gpj.stp
javascript:alert(1)/a\\b.stp
./%3C/script%3E%3Cimg%20src%3Dx%20onerror%3Ddocument.title%3D'broken'%3E.stp.stl file:
./new%0Aline.stp.stl file:
./not%20%ff%20utf-8.stp.stl file:
./percent%2520%20and%20%3F%20and%20%23.stp.stl file:
./quote%22'%26lt%3B.stp.stl file:
./sub%20folder/gr%C3%B6%C3%9Fe%20%E9%83%A8%E5%93%81.stp.stl file:
./turned%20%E2%80%AEpts.gpj.stp.stl file:
./javascript%3Aalert(1)/a%5Cb.stp.stl file:
0 0
END
}

FollowsLinksToNamesOfAnyBytes() {
  local name=$'not \xff utf-8, # and % and ?.txt' target
  echo 'found it' >"$name"
  # The link of the page for this name; the browser reads the file behind it.
  target="./not%20%ff%20utf-8%2C%20%23%20and%20%25%20and%20%3F.txt"
  timeout 120 "$browser" --headless --no-sandbox --disable-gpu --disable-dev-shm-usage \
    --user-data-dir="$scratch/profile" --dump-dom "file://$scratch/$target" >dom 2>browser.log
  grep -q 'found it' dom || fail "not found: $(cat dom)"
}

RunsNothingButItsOwnScript() {
  "$pages" many index.html 30
  cat index.html - >page.html <<'END'
<script>document.body.append('foreign script');</script>
<img src="x" onerror="document.body.append('foreign handler')">
END
  timeout 120 "$browser" --headless --no-sandbox --disable-gpu --disable-dev-shm-usage \
    --user-data-dir="$scratch/profile" --dump-dom "file://$scratch/page.html" >dom 2>browser.log
  grep -q '1–30 of 30 files' dom || fail 'the page does not run its own script'
  ! grep -Eq '</table>.*foreign|^foreign' dom || fail 'the page runs any script'
  (($(grep -c 'foreign' dom) == 2)) || fail "$(grep foreign dom)"
}

SaysThatItHoldsAPart() {
  "$pages" part index.html 5000
  look '' <<'END'
say(all('.card').slice(0, 3).map((card) => card.textContent.replaceAll('\u202f', ' ')).join('; '));
say(all('#reasons button').map((button) => button.textContent).join('; '));
say($('#cut').hidden, $('#cut').textContent.replaceAll('\u202f', ' '));
say(counts());
say($('#notes').hidden, $('#notes').textContent);
END
  expect <<'END'
5 000files; 4 500converted; 500failed
250 ends in the middle; 250 kernel crashed (signal 11)
false This page holds 4 of 5 000 files, first those that failed or are doubtful. plenvorith-batch --export writes a table of all of them; the counts above are of all.
1–4 of 4 files
false Left out by the last run (2)3 files that end in .zip: a.zip, &lt;b&gt;.zip, ...folder cannot be read: /x
END
}

"$case"
