#!/usr/bin/env bash
# Runs one case of plenvorith-batch in which data could be lost or mixed up.
#
#   safety_test.sh BATCH SAMPLES CASE
#
# Exit status 77 means that the case cannot run here.
#
# shellcheck disable=SC2016,SC2154 # names as they stand; variables of support.sh
set -euo pipefail
batch=$1 samples=$2 case=$3 program=(--as-is)
# shellcheck source=/dev/null
source "${BASH_SOURCE[0]%/*}/support.sh"

ToolsTouchNothingOfTheUsers() {
  step_file in/a.stp 1
  step_file in/b.stp 2
  echo 'mine' >0.stl
  echo 'mine' >1.stl
  TMPDIR=/proc run 0 in -o out --check
  [[ $(cat 0.stl 1.stl) == $'mine\nmine' ]] || fail 'files of the user are gone'
  [[ $(sqlite3 out/.plenvorith-batch/inspections.db \
    'SELECT count(*) FROM stl WHERE checked AND parts > 0') == 2 ]] || fail 'not checked'
  expect_nothing_left out
}

ToolsAreTriedAgainOnceTheyHaveAFolder() {
  step_file in/a.stp 1
  run 0 in -o out
  echo >out/.plenvorith-batch/run
  run 2 -o out --export all.csv --check
  grep -q '^plenvorith-batch: no work folder below ' stderr || fail "$(cat stderr)"
  rm out/.plenvorith-batch/run
  run 0 -o out --export all.csv --check
  [[ $(sqlite3 out/.plenvorith-batch/inspections.db \
    'SELECT count(*) FROM stl WHERE checked AND parts > 0') == 1 ]] || fail 'not checked'
}

ADryRunLeavesTheRunInProgressAlone() {
  local number
  for number in 1 2 3 4; do
    step_file "in/$number.stp" "$number"
  done
  step_file other/9.stp 9
  pretend 'echo >>"$scratch/begun"; sleep 0.4; head -c 84 /dev/zero >"$2"'
  scratch=$scratch "$batch" "${program[@]}" in -o out --jobs 2 >first 2>&1 &
  wait_until test -s begun
  for number in 1 2 3; do
    run 0 in -o out --dry-run
    run 0 in -o out --dry-run --resume
    run 0 other -o out --dry-run --resume --base "$scratch"
  done
  wait $! || fail "the run failed: $(cat first)"
  expect_count out 4
  expect_nothing_left out
}

ADryRunWritesNothing() {
  step_file in/a.stp 1
  run 0 in -o out
  step_file in/b.stp 2
  local before
  before=$(find out -printf '%p %T@ %s\n' | sort)
  chmod -R a-w out
  if ((EUID == 0)); then
    chmod -R a+rX "$scratch"
    setpriv --reuid 65534 --clear-groups --inh-caps=-all \
      "$batch" "${program[@]}" in -o out --dry-run --resume >stdout 2>stderr || fail "$(cat stderr)"
  else
    run 0 in -o out --dry-run --resume
  fi
  chmod -R u+w out
  expect_line stdout 'To convert: 1'
  expect_line stdout 'Converted before: 1'
  [[ $(find out -printf '%p %T@ %s\n' | sort) == "$before" ]] || fail 'something was written'
}

WorkFoldersBelongToOneRunForEver() {
  local run number
  for number in 1 2 3; do
    step_file "in/$number.stp" "$number"
  done
  for run in 1 2; do
    pretend "pwd >>'$scratch/places$run'; head -c 84 /dev/zero >\"\$2\""
    run 0 in -o out --jobs 2
  done
  [[ -z $(comm -12 <(sort -u places1) <(sort -u places2)) ]] || fail "$(cat places1 places2)"
}

WhatComesLateForADeadRunIsNotTaken() {
  local number
  for number in 1 2 3 4; do
    step_file "in/$number.stp" "$number"
  done
  # As a worker on another host, which goes on when the driver is killed.
  pretend 'trap "" TERM; echo $$ >>'"$scratch"'/begun; pwd >>'"$scratch"'/places
setsid sh -c "sleep 1; mkdir -p \"$PWD\"; echo late >\"$PWD/${2##*/}\"" >/dev/null 2>&1 &
sleep 5'
  "$batch" "${program[@]}" in -o out --jobs 1 >first 2>&1 &
  wait_until test -s begun
  kill -KILL $!
  wait $! 2>/dev/null || true
  program=(--as-is)
  run 0 in -o out --jobs 1
  sleep 1.5
  run 0 in -o out --jobs 1 --resume
  for number in 1 2 3 4; do
    expect_stl "out/$number.stp.stl" "$number"
  done
  expect_nothing_left out
}

InputsOutOfReachKeepTheirOutputs() {
  step_file in/a.stp 1
  step_file in/b.stp 2
  printf '%s\n' "$scratch/in/a.stp" "$scratch/in/b.stp" >list
  run 0 --files-from list --base in -o out
  mv in elsewhere
  mkdir in
  run 1 --files-from list --base in -o out
  expect_line stdout 'Failed: 0'
  expect_line stdout 'Not looked at: 2'
  expect_stl out/a.stp.stl 1
  expect_stl out/b.stp.stl 2
  expect_row out '^converted,.*a.stp'
  rmdir in
  mv elsewhere in
  run 0 --files-from list --base in -o out --resume
  expect_line stdout 'Converted before: 2'
  mv in elsewhere
  run 0 -o out --prune
  expect_line stdout 'Pruned: 2'
  expect_count out 0
}

AWorkerThatDiesKeepsTheOutputs() {
  step_file in/a.stp 1
  run 0 in -o out
  pretend 'kill -KILL $PPID'
  run 1 in -o out
  grep -q '^  1 its worker ended twice.*; what was converted before stays' stdout ||
    fail "$(cat stdout)"
  expect_stl out/a.stp.stl 1
  expect_row out '^converted,'
  program=(--as-is)
  run 0 in -o out --resume
  expect_line stdout 'Converted before: 1'
}

TakesEveryByteOfAName() {
  local code byte arguments=() number=0
  for ((code = 1; code < 256; ++code)); do
    ((code != 47)) || continue
    printf -v byte '%b' "\\x$(printf %02x "$code")"
    [[ -n $byte ]] || byte=$'\n'
    step_file "in/${byte}x$byte.stp" "$code"
    arguments+=("${byte}x$byte.stp")
  done
  cd in
  run 0 -o ../out -- "${arguments[@]}"
  cd ..
  for ((code = 1; code < 256; ++code)); do
    ((code != 47)) || continue
    printf -v byte '%b' "\\x$(printf %02x "$code")"
    [[ -n $byte ]] || byte=$'\n'
    expect_stl "out/${byte}x$byte.stp.stl" "$code"
    number=$((number + 1))
  done
  ((number == 254)) || fail "$number names"
}

TakesFoldersInBracketsAsTheyStand() {
  local name
  for name in '[2024]' 2024 '{}' '[a,b]' a b '[]' $'\x01[x]' '%%' '""'; do
    step_file "$name/p.stp" 1
    rm -rf out
    run 0 "$name" -o out --base .
    expect_stl "out/$name/p.stp.stl" 1
    expect_count out 1
    run 0 "$name" -o "[out]" --exclude '[p].stq' --include '[p].stp'
    expect_stl '[out]/p.stp.stl' 1
    rm -rf '[out]' "$name"
  done
}

NamesThatAreNotUtf8StayApart() {
  local name kind
  mkdir in
  cp "$samples/bracket.step" $'in/a\xff.step'
  cp "$samples/assembly.step" $'in/a\xfe.step'
  cp "$samples/bracket.step" 'in/größe.step'
  for kind in split stp; do
    if [[ $kind == split ]]; then
      run 0 in -o out --split --jobs 1
    else
      run 0 in -o out --to stp --jobs 1
    fi
    expect_line stdout 'Failed: 0'
    for name in $'a\xff.step' $'a\xfe.step' 'größe.step'; do
      compgen -G "out/$name.st*" >/dev/null || fail "no output of $name: $(ls -b out)"
    done
    run 0 in -o out "$([[ $kind == split ]] && echo --split || echo --to=stp)" --resume
    expect_line stdout 'Converted before: 3'
    rm -r out
  done
}

AFileThatIsRewrittenInItsSecondIsConvertedAgain() {
  step_file in/a.stp 1
  run 0 in -o out
  # As on a disk whose times are whole seconds: another file of the same length and time.
  touch -d '2020-01-01 00:00:00' in/a.stp
  run 0 in -o out
  step_file in/a.new 2
  touch -d '2020-01-01 00:00:00' in/a.new
  mv in/a.new in/a.stp
  run 0 in -o out --resume
  expect_line stdout 'Converted: 1 (1 triangles)'
  expect_stl out/a.stp.stl 2
  # The same inode.
  step_file again/a.stp 3
  cat again/a.stp >in/a.stp
  touch -d '2020-01-01 00:00:00' in/a.stp
  run 0 in -o out --resume
  expect_stl out/a.stp.stl 3
}

RefusesASecondFolderOfInputs() {
  step_file a/x.stp 1
  step_file b/x.stp 2
  step_file b/y.stp 3
  run 0 a -o m
  run 2 b -o m
  grep -q -- "a/x.stp: --base with a folder that holds both" stderr || fail "$(cat stderr)"
  run 2 b -o m --shard 1/1
  run 2 b -o m --dry-run
  expect_stl m/x.stp.stl 1
  run 0 b/y.stp -o m
  run 0 a -o m --resume
  expect_line stdout 'Converted before: 1'
  # What is gone makes room once it is forgotten.
  rm a/x.stp
  run 0 -o m --prune
  run 0 b -o m
  expect_stl m/x.stp.stl 2
}

TranscriptsGoWithTheirRecords() {
  step_file in/a.stp 1
  step_file in/b.stp 2
  run 0 in -o out
  run 0 -o out --transcript in/a.stp
  [[ $(tail -n 1 stdout) == Done ]] || fail "$(cat stdout)"
  rm in/a.stp
  run 0 -o out --prune
  run 1 -o out --transcript in/a.stp
  [[ ! -e out/.plenvorith-batch/transcripts ]] || fail 'transcripts are files'
}

NothingIsLeftAfterAKill() {
  local round
  step_file in/a.stp 1
  step_file in/b.stp 2
  for round in 1 2 3; do
    "$batch" "${program[@]}" in -o out --check --thumbnails >log 2>&1 &
    sleep "0.$((round * 2))"
    kill -KILL $! 2>/dev/null || true
    wait $! 2>/dev/null || true
  done
  sleep 0.5
  [[ -z $(ls -A "$TMPDIR") ]] || fail "left: $(ls -A "$TMPDIR")"
  run 0 in -o out --resume
  expect_nothing_left out
}

SignalsThatAreIgnoredStayIgnored() {
  local number
  for number in 1 2 3; do
    step_file "in/$number.stp" "$number"
  done
  pretend 'echo >>"'"$scratch"'/begun"; sleep 0.3; head -c 84 /dev/zero >"$2"'
  (
    trap '' HUP INT
    exec "$batch" "${program[@]}" in -o out --jobs 1 >log 2>&1
  ) &
  wait_until test -s begun
  kill -HUP $!
  kill -INT $!
  wait $! || fail "ended with $?: $(cat log)"
  expect_count out 3
}

ClosedStreamsAreNoFilesOfOurs() {
  step_file in/a.stp 1
  "$batch" "${program[@]}" in -o out <&- >&- 2>&- || fail "exit status $?"
  expect_stl out/a.stp.stl 1
  [[ $(sqlite3 out/.plenvorith-batch/state.db 'PRAGMA integrity_check') == ok ]] || fail 'damaged'
  run 0 -o out --transcript in/a.stp
  [[ $(tail -n 1 stdout) == Done ]] || fail "$(cat stdout)"
}

"$case"
