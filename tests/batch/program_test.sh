#!/usr/bin/env bash
# Runs one case on plenvorith-batch, in a folder of its own.
#
#   program_test.sh BATCH CONVERTER PREPARE SAMPLES CASE
#
# BATCH is the program, CONVERTER and PREPARE are those that convert and prepare a single file,
# SAMPLES is the folder of the samples. Exit status 77 means that the case cannot run here.
#
# shellcheck disable=SC2016,SC2154 # names as they stand; variables of support.sh
set -euo pipefail
self=$(realpath -- "$0")
batch=$1 converter=$2 prepare=$3 samples=$4 case=$5 program=(--as-is)

# shellcheck source=/dev/null
source "${BASH_SOURCE[0]%/*}/support.sh"

# ------------------------------------------------------------------------------------------- cases

ConvertsTwoHundredOddlyNamedFiles() {
  local number=0 folder name
  for folder in . sub 'sub/of sub' $'new\nline' '-f' 'ü' 'a.stp.d' "quote'"; do
    for name in "${names[@]}"; do
      number=$((number + 1))
      step_file "in/$folder/$name" "$number"
    done
  done
  ((number == 200)) || fail "made $number files"
  run 0 in -o out --jobs 4
  expect_line stdout 'Converted: 200 (200 triangles)'
  expect_line stdout 'Failed: 0'
  expect_count out 200
  number=0
  for folder in . sub 'sub/of sub' $'new\nline' '-f' 'ü' 'a.stp.d' "quote'"; do
    for name in "${names[@]}"; do
      number=$((number + 1))
      expect_stl "out/$folder/$name.stl" "$number"
    done
  done
  "$batch" -o out --export log.csv
  (($(wc -l <log.csv) == 201)) || fail "the table has $(wc -l <log.csv) lines"
  [[ ! -s stderr ]] || fail 'something on standard error'
  expect_nothing_left out
}

KeepsEqualNamesFromDifferentArgumentsApart() {
  step_file x/a.stp 1
  step_file y/a.stp 2
  step_file y/z/a.stp 3
  run 0 x/a.stp y y/a.stp -o out
  expect_count out 3
  expect_stl out/x/a.stp.stl 1
  expect_stl out/y/a.stp.stl 2
  expect_stl out/y/z/a.stp.stl 3
}

TakesNoOutputForAnInput() {
  step_file in/a.stp 1
  pretend 'cp "$1" "$2"'
  run 0 in -o in/out --to stp
  run 0 in -o in/out --to stp
  expect_line stdout 'Converted: 1 (0 triangles)'
  expect_count in/out 1

  # An INPUT that is DIR, and one that lies in it.
  step_file a/x.stp 1
  step_file b/y.stp 2
  run 0 a b -o b --to stp
  run 0 a b -o b --to stp
  expect_line stdout 'Converted: 2 (0 triangles)'
  expect_line stdout 'Skipped: 2 outputs of earlier runs: b/a/x.stp.stp, b/b/y.stp.stp'
  expect_count b 3
  run 2 b/a -o b --to stp
  expect_count b 3
}

TakesOnlyStepFilesFromFolders() {
  step_file in/a.stp 1
  echo >in/a.stpx
  echo >in/stp
  ln -s a.stp in/link.step
  run 0 in -o out
  expect_count out 2
  expect_stl out/link.step.stl 1
}

PassesTheOptionsOn() {
  step_file a.stp 1
  pretend 'printf "%s\n" "$#" "$3" "${4:-}" "END-ISO-10303-21;" >"$2"'
  run 0 a.stp -o out --to stp
  [[ $(<out/a.stp.stp) == $'3\n0.1\n\nEND-ISO-10303-21;' ]] || fail "$(<out/a.stp.stp)"
  run 0 a.stp -oout --to=stp --deflection 2.5e-1 --split
  [[ $(<out/a.stp.stp) == $'4\n2.5e-1\nyes\nEND-ISO-10303-21;' ]] || fail "$(<out/a.stp.stp)"
}

ReportsWhatFailedAndWhy() {
  step_file in/good.stp 1
  mkdir in/sub
  echo 'no STEP file' >$'in/sub/new\nline.stp'
  step_file in/malformed.stp 1
  sed -i "s/'',3,((/'',x,((/" in/malformed.stp
  run 1 in -o out
  expect_line stdout 'Converted: 1 (1 triangles)'
  expect_line stdout 'Failed: 2'
  local odd='sub/new\nline.stp'
  expect_line stdout '  1 not a STEP file (no ISO-10303-21)'
  expect_line stdout "    $odd: Error: No geometry found in file"
  expect_line stderr \
    "failed: $odd: not a STEP file (no ISO-10303-21) (Error: No geometry found in file)"
  expect_line stderr "failed: malformed.stp: a malformed number (what():  invalid stod argument)"
  expect_row out '^failed,.*/malformed.stp,a malformed number,.*,6,0,'
  expect_row out '^converted,.*,AP242_MANAGED_MODEL_BASED_3D_ENGINEERING_MIM_LF,'
  "$batch" -o out --transcript $'in/sub/new\nline.stp' >transcript
  expect_line transcript 'Failed'
  "$batch" -o out --transcript good.stp >transcript
  expect_line transcript 'Saved: good.stp.stl'
  expect_count out 1
  expect_nothing_left out
}

GivesEveryJobItsOwnTemporaryFolder() {
  local number
  for number in 1 2 3 4 5 6; do
    step_file "in/$number/a.stp" 1
  done
  pretend 'copy=$TMPDIR/${1##*/}.clean.stp
    [[ ! -e $copy ]] || exit 1
    echo "$1" >"$copy"
    sleep 0.2
    [[ $(<"$copy") == "$1" ]] || exit 1
    printf "%s\n" "$TMPDIR" "END-ISO-10303-21;" >"$2"'
  run 0 in -o out --to stp --jobs 6
  grep -hv '^END' out/*/a.stp.stp | sort -u >folders
  (($(wc -l <folders) == 6)) || fail 'shared temporary folders'
  expect_nothing_left out
}

MovesAllFilesOfSplitMode() {
  step_file in/a.stp 1
  step_file in/b.stp 2
  pretend '
    { head -c 80 /dev/zero; printf "\2\0\0\0"; head -c 100 /dev/zero; } >"$2_1.stl"
    cp "$2_1.stl" "$2_3.stl"
    [[ $1 != *b.stp ]] || exit 1
    cp "$2_1.stl" "$2_tess.stl"'
  run 1 in -o out --split
  expect_line stdout 'Converted: 1 (6 triangles)'
  expect_count out 3
  [[ -f out/a.stp.stl_1.stl && -f out/a.stp.stl_3.stl && -f out/a.stp.stl_tess.stl ]] ||
    fail "$(ls out)"
}

TakesTheStlThatACleanStepBecomes() {
  step_file a.stp 5
  run 0 a.stp -o out --to stp
  expect_count out 1
  expect_stl out/a.stp.stl 5
}

GoesOnAfterAnInterruption() {
  local number before
  for number in 1 2 3 4 5 6 7 8 9; do
    step_file "in/$number.stp" "$number"
  done
  # The files from 6 on stop half way, as long as there is no file `go`.
  pretend '[[ ${1##*/} < 6 || -e '"$scratch/go"' ]] && exec "'"$converter"'" "$@"
    printf half >"$2"
    echo $$ >>'"$scratch"'/pids
    exec sleep 1000'
  "$batch" "${program[@]}" in -o out --jobs 2 >stdout 2>stderr &
  local pid=$! status=0
  until [[ -f pids ]] && (($(wc -l <pids) == 2)); do
    sleep 0.05
  done
  kill "$pid"
  wait "$pid" || status=$?
  ((status == 143)) || fail "exit status $status, not 143"
  expect_line stderr 'Interrupted; --resume goes on from here'
  expect_line stdout 'Converted: 5 (5 triangles)'
  expect_line stdout 'Without a result: 4'
  expect_count out 5
  expect_nothing_left out
  while read -r pid; do
    ! kill -0 "$pid" 2>/dev/null || fail 'a conversion goes on'
  done <pids

  before=$(stat -c '%i %y' out/*.stl)
  touch go
  run 0 in -o out --resume
  expect_line stdout 'Converted: 4 (4 triangles)'
  expect_line stdout 'Converted before: 5'
  for number in 1 2 3 4 5 6 7 8 9; do
    expect_stl "out/$number.stp.stl" "$number"
  done
  [[ $(stat -c '%i %y' out/[1-5].stp.stl) == "$before" ]] || fail 'converted again'
}

# Sanitizers reserve terabytes of address space.
is_sanitized() {
  ! (ulimit -v 4000000 && "$batch" --version >stdout 2>stderr)
}

# A thousand; ten thousand where PLENVORITH_THOROUGH is set.
ConvertsThousandsOfFiles() {
  local pid status=0 count=1000 stop=400 name first second number
  ! is_sanitized || skip 'each file takes ten times as long'
  [[ -z ${PLENVORITH_THOROUGH:-} ]] || count=10000 stop=4000
  mkdir -p in/{00..99}
  step_file pattern 12345
  awk -v count="$count" '{ text = text $0 "\n" }
    END {
      for (i = 0; i < count; ++i) {
        path = sprintf("in/%02d/%04d.stp", i / 100, i)
        copy = text
        sub("12345", i, copy)
        printf "%s", copy >path
        close(path)
      }
    }' pattern
  "$batch" "${program[@]}" in -o out --jobs 2 >stdout 2>stderr &
  pid=$!
  printf -v name %04d "$stop"
  until [[ -e out/${name:0:2}/$name.stp.stl ]]; do
    kill -0 "$pid" 2>/dev/null || fail 'ended early'
    sleep 0.05
  done
  kill "$pid"
  wait "$pid" || status=$?
  ((status == 143)) || fail "exit status $status, not 143"
  first=$(sed -n 's/^Converted: \([0-9]*\) .*/\1/p' stdout)
  ((first > stop && first < count)) || fail "converted $first files before the signal"
  expect_count out "$first"
  run 0 in -o out --jobs 2 --resume
  second=$(sed -n 's/^Converted: \([0-9]*\) .*/\1/p' stdout)
  ((first + second == count)) || fail "converted $first and $second files"
  expect_line stdout "Converted before: $first"
  expect_count out "$count"
  for number in 0 7 "$((stop - 1))" "$stop" "$((stop + 1))" "$((count - 1))"; do
    printf -v name %04d "$number"
    expect_stl "out/${name:0:2}/$name.stp.stl" "$number"
  done
  (($(grep -c '^{"name"' out/index.html) == count)) || fail 'not all are in the report'
  run 0 in -o out --resume
  expect_line stdout "Converted before: $count"
  expect_nothing_left out
}

ResumeRedoesWhatIsMissingOrFailedOrChanged() {
  local number
  for number in 1 2 3 4; do
    step_file "in/$number.stp" "$number"
  done
  echo >in/2.stp
  run 1 in -o out
  rm out/1.stp.stl
  step_file in/2.stp 2
  step_file in/3.stp 33
  touch -d '+1 minute' in/3.stp
  run 0 in -o out --resume
  expect_line stdout 'Converted: 3 (3 triangles)'
  expect_line stdout 'Converted before: 1'
  expect_stl out/1.stp.stl 1
  expect_stl out/2.stp.stl 2
  expect_stl out/3.stp.stl 33
  touch -d '-1 minute' in/3.stp
  run 0 in -o out --resume
  expect_line stdout 'Converted: 0 (0 triangles)'
  run 0 in -o out --resume --deflection 0.5
  expect_line stdout 'Converted: 4 (4 triangles)'
}

RefusesWhatItCannotDo() {
  step_file in/a.stp 1
  echo >in/a.txt
  mkdir empty
  run 2 -o out
  run 2 in
  run 2 in -o
  run 2 in -o out --to obj
  run 2 in -o out --deflection 0,1
  run 2 in -o out --deflection 0
  run 2 in -o out --time-limit soon
  run 2 in -o out --quickly
  run 2 in missing.stp -o out
  run 2 in/a.txt -o out
  run 2 empty -o out
  run 2 in -o in --to stp
  run 2 in -o out --jobs 0x
  run 2 in -o out --base elsewhere
  run 2 -o out --export log.csv
  run 2 in -o out --program missing
  [[ ! -e out ]] || expect_count out 0
}

# Runs the program as a user who may not do everything.
run_without_rights() {
  if ((EUID == 0)); then
    chmod 777 "$scratch" "$TMPDIR"
    local all=$batch
    batch=$scratch/without_rights
    printf '#!/bin/sh\nexec setpriv --reuid=65534 --regid=65534 --clear-groups "%s" "$@"\n' \
      "$all" >"$batch"
    chmod 755 "$batch"
    "$batch" --version >version 2>&1 || skip "cannot do without root's rights: $(cat version)"
  fi
  run "$@"
}

GoesOnBesideWhatItCannotRead() {
  step_file in/a.stp 1
  step_file in/closed.stp 2
  chmod 0 in/closed.stp
  mkdir -m 0 in/sub
  run_without_rights 1 in -o out
  expect_stl out/a.stp.stl 1
  expect_line stderr "failed: closed.stp: cannot be read: Permission denied"
  expect_line stdout 'Not looked at: 1'
  expect_line stdout "  folder cannot be read: $PWD/in/sub: Permission denied"
}

# Makes a STEP file with this data section.
file_with() {
  printf 'ISO-10303-21;\nDATA;\n%s\nENDSEC;\nEND-ISO-10303-21;\n' "$2" >"$1"
}

TellsReasonsThatCanBeActedOn() {
  mkdir in
  : >in/empty.stp
  head -c 3000 /dev/urandom >in/noise.stp
  file_with in/none.stp ''
  printf 'ISO-10303-21;\nDATA;\n#1=POINT(' >in/cut.stp
  file_with in/strips.stp "#1=TESSELLATED_SHAPE_REPRESENTATION('',(#2),#9);
#2=TESSELLATED_SOLID('',(#3),\$);
#3=TRIANGULATED_FACE('',#4,3,(),\$,(),((1,2,3)));
#4=COORDINATES_LIST('',3,((0.,0.,0.),(1.,0.,0.),(0.,1.,0.)));"
  file_with in/drawn.stp "#1=TESSELLATED_SHAPE_REPRESENTATION('',(#2),#9);
#2=TESSELLATED_ANNOTATION_OCCURRENCE('',(),#3);
#5=ADVANCED_FACE('',(),#6,.T.);"
  run 1 in -o out
  local failed="failed:"
  expect_line stderr "$failed empty.stp: empty"
  local none='(Error: No geometry found in file)'
  expect_line stderr "$failed noise.stp: not a STEP file (no ISO-10303-21) $none"
  expect_line stderr "$failed none.stp: no geometry that the converter takes $none"
  expect_line stderr "$failed cut.stp: ends in the middle (no END-ISO-10303-21) $none"
  local form='tessellation of a form that the converter does not decode'
  expect_line stderr "$failed strips.stp: $form: try without --as-is $none"
  expect_line stderr "$failed drawn.stp: exact geometry behind annotation: try without --as-is $none"
}

LimitsTheMemoryOfAFile() {
  ! is_sanitized || skip 'sanitizers reserve more address space than any limit'
  mkdir in
  step_file in/large.stp 1
  truncate -s 200M in/large.stp # its last line is longer than the limit
  step_file in/small.stp 1
  run 1 in -o out --memory-limit 160M
  expect_line stdout 'Converted: 1 (1 triangles)'
  grep -q 'large.stp: memory limit of 167772160 bytes' stderr || fail 'no reason'
}

SaysThatAConvertedFileEndsInTheMiddle() {
  step_file a.stp 1
  sed -i '$d' a.stp
  run 0 a.stp -o out
  expect_stl out/a.stp.stl 1
  expect_line stdout 'Converted, but doubtful: 1'
  expect_line stdout '  1 ends in the middle (no END-ISO-10303-21)'
  expect_line stdout '    a.stp'
}

ConvertsEqualFilesOnce() {
  step_file in/a.stp 1
  step_file in/b.stp 2
  step_file in/sub/c.stp 1
  program=()
  run 0 in -o out
  expect_line stdout 'Converted: 3 (3 triangles)'
  expect_line stdout 'Of them, files with the bytes of another, converted once: 1'
  expect_stl out/a.stp.stl 1
  expect_stl out/sub/c.stp.stl 1
  expect_row out '^converted,.*/sub/c.stp,.*/in/a.stp,'
  "$batch" -o out --transcript in/sub/c.stp >transcript
  expect_line transcript "The same bytes as $PWD/in/a.stp, whose conversion said:"
  run 0 in -o out --resume
  expect_line stdout 'Converted before: 3'

  # Each has outputs of its own.
  rm in/a.stp
  run 0 in -o out --resume --prune
  expect_count out 2
  expect_stl out/sub/c.stp.stl 1
  rm out/sub/c.stp.stl
  run 0 in -o out --resume
  expect_stl out/sub/c.stp.stl 1

  # What fails is tried for each, and shards know nothing of each other.
  mkdir bad
  echo 'no STEP file' | tee bad/a.stp >bad/b.stp
  run 1 bad -o failed
  expect_line stdout '  2 not a STEP file (no ISO-10303-21)'
  step_file parts/a.stp 1
  step_file parts/b.stp 1
  run 0 parts -o shards --shard 1/2
  run 0 parts -o shards --shard 2/2
  run 0 -o shards --merge
  expect_stl shards/a.stp.stl 1
  expect_stl shards/b.stp.stl 1
  expect_nothing_left shards
  expect_nothing_left out
}

ConvertsEqualFilesOnceInAllForms() {
  mkdir in
  cp "$samples/bracket.step" in/a.step
  cp in/a.step in/b.step
  step_file in/c.stp 1
  cp in/c.stp in/d.stp
  run 0 in -o split --split --parts
  run 0 in -o step --to stp
  expect_line stdout 'Of them, files with the bytes of another, converted once: 2'
  local name
  for name in stl_1.stl stl.parts.json; do
    cmp "split/a.step.$name" "split/b.step.$name"
  done
  cmp step/a.step.stp step/b.step.stp
  expect_stl step/c.stp.stl 1
  expect_stl step/d.stp.stl 1
}

TellsWhatPreparingWouldChange() {
  local unit='#9=(LENGTH_UNIT()NAMED_UNIT(*)SI_UNIT($,.METRE.));'
  unit+="#8=(GEOMETRIC_REPRESENTATION_CONTEXT(3)GLOBAL_UNIT_ASSIGNED_CONTEXT((#9))REPRESENTATION_CONTEXT('',''));"
  local tail="#4=COORDINATES_LIST('',4,((0.,0.,0.),(1.,0.,0.),(0.,1.,0.),(1.,1.,0.)));"
  local head="#1=TESSELLATED_SHAPE_REPRESENTATION('',(#2),#8);
#2=TESSELLATED_SOLID('',(#3),\$);"
  mkdir in
  file_with in/strip.stp "$head
#3=COMPLEX_TRIANGULATED_FACE('',#4,4,(),\$,(),((1,2,3),(1,2,4,3)),());
$tail"
  file_with in/metres.stp "$unit
$head
#3=COMPLEX_TRIANGULATED_FACE('',#4,4,(),\$,(),((1,2,3)),());
$tail"
  step_file in/plain.stp 1
  run 0 in -o out
  expect_line stdout 'Converted: 3 (4 triangles)'
  expect_line stdout 'Converted, but doubtful: 2'
  expect_line stdout '  2 preparing would change the mesh'
  local changes='preparing would change the mesh'
  expect_line stdout "    metres.stp: $changes (units): try without --as-is"
  expect_line stdout "    strip.stp: $changes (strips): try without --as-is"
  expect_row out "^converted,.*/strip.stp,$changes \\(strips\\): try without --as-is,"
  expect_row out '^converted,.*/plain.stp,,'
  program=()
  run 0 in -o out
  ! grep -q doubtful stdout || fail 'still doubtful'
  expect_line stdout 'Converted: 3 (5 triangles)'
}

RemovesWhatAnEarlierVersionMade() {
  step_file in/a.stp 1
  pretend '
    head -c 84 /dev/zero >"$2_1.stl"
    [[ $(<"$1") == *"((1.,"* ]] || exit 0
    cp "$2_1.stl" "$2_2.stl"
    cp "$2_1.stl" "$2_3.stl"'
  run 0 in -o out --split
  expect_count out 3
  step_file in/a.stp 2
  run 0 in -o out --split --resume
  expect_count out 1
  [[ -f out/a.stp.stl_1.stl ]] || fail "$(ls out)"
}

ListsThePartsOfSplitMeshes() {
  mkdir in
  cp "$samples/assembly.step" in/größe.step
  run 0 in -o out --split --parts
  expect_count out 5
  local list='out/größe.step.stl.parts.json' k size
  for k in 1 2 3 4; do
    size=$(stat -c %s "out/größe.step.stl_$k.stl")
    grep -q "^{\"number\":$k,\"path\":\[\"lamp\",.*\"triangles\":$(((size - 84) / 50))," "$list" ||
      fail "part $k of $size bytes: $(cat "$list")"
  done
  run 0 in -o out --split --parts --resume
  expect_line stdout 'Converted before: 1'
  truncate -s -1 "$list"
  run 0 in -o out --split --parts --resume
  [[ $(tail -n 1 "$list") == ']' && $(tail -c 1 "$list") == '' ]] || fail "$(cat "$list")"
  ! grep -q '^Converted before' stdout || fail 'a list that is too short was left'
  run 0 in -o out --split --resume
  expect_count out 4
  expect_nothing_left out
}

FailsWhereThePartsCannotBeListed() {
  # The name of the list would be longer than a name can be, those of the meshes are not.
  local name
  printf -v name '%0240d.step' 0
  mkdir in
  cp "$samples/assembly.step" "in/$name"
  run 0 in -o out --split
  expect_count out 4
  run 1 in -o out --split --parts
  grep -q ' (Error: Cannot write the list of parts: 0*.step.stl.parts.json)' stderr || fail "$(cat stderr)"
  expect_count out 0
  expect_nothing_left out
}

RemovesWhatAnEarlierVersionMadeWhenAFileFails() {
  step_file in/sub/a.stp 1
  step_file in/b.stp 2
  run 0 in -o out
  echo 'no STEP file any more' >in/sub/a.stp
  run 1 in -o out --resume
  expect_count out 1
  [[ ! -e out/sub ]] || fail 'an empty folder is left'
  expect_line stderr 'removed: 1 earlier output of sub/a.stp'
  expect_line stdout 'Removed outputs of files that fail now: 1'
  run 1 in -o out --resume
  ! grep -q '^Removed' stdout || fail 'told of twice'
}

KeepsOnRecordWhatCannotBeRemoved() {
  step_file in/sub/a.stp 1
  run_without_rights 0 in -o out --base in
  echo 'no STEP file any more' >in/sub/a.stp
  chmod a-w out/sub
  run 1 in -o out --base in --resume
  expect_stl out/sub/a.stp.stl 1
  ! grep -q '^Removed' stdout || fail 'told of what is still there'
  chmod u+w out/sub
  run 1 in -o out --base in --resume
  [[ ! -e out/sub ]] || fail 'what could not be removed is forgotten'
}

ResumeConvertsAgainWhatMayDiffer() {
  step_file in/a.stp 1
  step_file old.stp 2
  run 0 in -o out
  touch -d 2020-01-01 old.stp
  cp -p old.stp in/a.stp
  run 0 in -o out --resume
  expect_line stdout 'Converted: 1 (1 triangles)'
  expect_stl out/a.stp.stl 2
  truncate -s 10 out/a.stp.stl
  run 0 in -o out --resume
  expect_stl out/a.stp.stl 2
  run 0 in -o out --resume --program "$converter"
  expect_line stdout 'Converted: 1 (1 triangles)'
  run 0 in -o out --resume --program "$converter"
  expect_line stdout 'Converted before: 1'
  run 0 in -o out --resume --split --program "$converter"
  expect_line stdout 'Converted: 1 (1 triangles)'
}

ResumeKnowsAFileThatWasOnlyTouched() {
  step_file in/a.stp 1
  run 0 in -o out
  touch -d 2020-01-01 in/a.stp
  run 0 in -o out --resume
  expect_line stdout 'Converted before: 1'
  # A file of the same size and time is the same: the state has learned the new time.
  run 0 in -o out --resume
  expect_line stdout 'Converted before: 1'
}

CountsWhatItDoesNotFollow() {
  step_file in/a.stp 1
  step_file elsewhere/b.stp 2
  ln -s "$PWD/elsewhere" in/link
  ln -s . in/loop
  ln -s nowhere in/dead.stp
  mkfifo in/pipe.stp
  step_file in/other/c.stp 3
  mkdir in/other/.plenvorith-batch
  run 0 in -o out
  expect_count out 1
  expect_line stdout 'Skipped: 1 links that lead nowhere: dead.stp'
  expect_line stdout 'Skipped: 1 not regular files: pipe.stp'
  expect_line stdout 'Skipped: 1 folders of outputs: other'
  grep -q '^Skipped: 2 links to folders (--follow looks into them): ' stdout || fail 'not counted'
  run 0 in -o out --follow
  expect_count out 2
  expect_stl out/link/b.stp.stl 2
  expect_line stdout 'Skipped: 1 links to a folder around them: loop'
}

TakesTheFilesThatGlobsLetThrough() {
  step_file in/a.stp 1
  step_file in/b.stp 2
  step_file in/old/a.stp 3
  step_file in/new/a.stp 4
  step_file in/new/deep/a.stp 5
  run 0 in -o out --include 'a.*' --exclude old
  expect_count out 3
  grep -q '^Skipped: 2 excluded: ' stdout || fail 'not counted'
  run 0 in -o out2 --include='new/*'
  expect_count out2 2
  run 2 in -o out3 --include 'c*'
}

TakesTheFilesOfAListing() {
  step_file in/a.stp 1
  step_file $'in/b\nc.stp' 2
  step_file in/d/e.stp 3
  touch in/notes.txt
  printf '%s\r\n' in/a.stp in/missing.stp in/notes.txt >list
  run 1 --files-from list -o out
  expect_stl out/a.stp.stl 1
  expect_line stderr "failed: missing.stp: cannot be read: No such file or directory"
  expect_line stdout "  not named like a STEP file: $PWD/in/notes.txt"
  printf '%s\0' in/a.stp $'in/b\nc.stp' in/d >list
  run 0 --files-from - -o out2 <list
  expect_stl $'out2/b\nc.stp.stl' 2
  expect_stl out2/d/e.stp.stl 3
  run 2 --files-from missing -o out3
}

KeepsTheBaseThatItIsGiven() {
  step_file x/in/a.stp 1
  step_file x/more/b.stp 2
  run 0 x/in -o out --base x
  expect_stl out/in/a.stp.stl 1
  run 0 x/in x/more -o out --base x --resume
  expect_line stdout 'Converted before: 1'
  expect_stl out/more/b.stp.stl 2
}

MovesOutputsWithTheBase() {
  step_file x/in/a.stp 1
  step_file x/more/b.stp 2
  run 0 x/in -o out
  expect_stl out/a.stp.stl 1
  run 0 x/in x/more -o out --resume
  expect_stl out/in/a.stp.stl 1
  expect_stl out/more/b.stp.stl 2
  expect_count out 2
}

RemovesOnDemandWhatVanishedInputsMade() {
  step_file in/a.stp 1
  step_file in/sub/b.stp 2
  run 0 in -o out
  rm in/sub/b.stp
  run 0 in -o out --resume
  expect_count out 2
  run 0 -o out --prune
  expect_line stdout 'Pruned: 1'
  ! grep -q '^Converted' stdout || fail 'tells of a run that was none'
  expect_count out 1
  [[ ! -e out/sub ]] || fail 'an empty folder is left'
  rm in/a.stp
  step_file in/c.stp 3
  run 0 in -o out --prune
  expect_count out 1
}

ConvertsNamesUpToTheLongest() {
  local a b c
  a=$(printf 'a%.0s' {1..247}).stp # with .stl as long as a name can be
  b=$(printf 'b%.0s' {1..248}).stp
  c=$(printf 'c%.0s' {1..240}).stp # the name of the converter's copy would be longer
  mkdir in
  step_file "in/$a" 1
  step_file "in/$b" 2
  cp "$samples/mixed.step" "in/$c"
  run 1 in -o out
  expect_stl "out/$a.stl" 1
  expect_line stderr "failed: $b: name too long"
  cp "$samples/mixed.step" short.stp
  "$converter" short.stp short.stl >/dev/null
  cmp short.stl "out/$c.stl"
}

# Files in a random order, one after the other in the same workers, and each of them in a process of
# its own: the same bytes, lines and exit statuses.
GivesTheSameBytesAndLinesAsSingleRuns() {
  local sample name number=0 times=(1)
  [[ -z ${PLENVORITH_THOROUGH:-} ]] || times=(1 2 3)
  mkdir in
  while read -r sample; do
    number=$((number + 1))
    cp "$sample" "in/$number-${sample##*/}"
  done < <(for _ in "${times[@]}"; do printf '%s\n' "$samples"/*.step "$samples"/../tests/data/*.step; done |
    shuf)
  for name in broken cut; do
    head -c 3000 "$samples/bracket.step" >"in/5-$name.stp"
  done
  step_file in/7-malformed.stp 1
  sed -i "s/'',3,((/'',x,((/" in/7-malformed.stp
  local mode settings kind
  settings=()
  for mode in 'stl 0.1' 'stl 0.3 split' 'stp 0.1' 'stp 0.1 split'; do
    read -ra settings <<<"$mode"
    kind=${settings[0]}
    settings=("${settings[@]:1}")
    rm -rf out single
    mkdir -p single out/.plenvorith-batch/run/1/out
    "$batch" "${program[@]}" in -o out --jobs 1 --to "$kind" --deflection "${settings[0]}" \
      ${settings[1]:+--split} >stdout 2>stderr || (($? == 1))
    expect_same_as_single
  done
}

expect_same_as_single() {
  local input name status
  "$batch" -o out --export "$scratch/table.csv"
  for input in in/*; do
    name=${input##*/}
    mkdir -p "out/.plenvorith-batch/run/1/tmp" "single/$name"
    status=0
    (cd "single/$name" && TMPDIR=$scratch/out/.plenvorith-batch/run/1/tmp "$converter" \
      "$scratch/in/$name" "$name.$kind" "${settings[@]}" >../transcript 2>&1) || status=$?
    # A time of day, in split mode the kernel's own lines with times, and the name of the temporary
    # folder are all that may differ.
    cmp <(without_times single/transcript) \
      <("$batch" -o out --transcript "$scratch/in/$name" | without_times /dev/stdin) ||
      fail "transcript of $name"
    # A file without anything to convert may leave nothing and call that done.
    if ((status == 0)) && [[ -n $(ls -A "single/$name") ]]; then
      expect_same_files "single/$name" "$name"
    else
      grep -q "^failed,$scratch/in/$name," "$scratch/table.csv" || fail "$name has not failed"
      ((status > 128)) || grep -Eq "^failed,$scratch/in/$name,.*,$status,,0," \
        "$scratch/table.csv" || fail "exit status of $name"
    fi
    rm -rf "out/.plenvorith-batch/run"
  done
}

without_times() {
  sed -E 's/[0-9]{4}-[0-9]{2}-[0-9]{2}T[0-9:]{8}//; s#/run/[0-9a-f]{16}/[0-9]+/#/run/1/#' "$1"
}

expect_same_files() {
  local file made=0
  for file in "$1"/*; do
    made=$((made + 1))
    cmp <(without_times "$file") <(without_times "out/${file##*/}") || fail "$file"
  done
  local there=("out/$2".*)
  ((${#there[@]} == made)) || fail "${#there[@]} outputs of $2, not $made"
}

ResumeMindsNoClock() {
  step_file in/a.stp 1
  step_file in/b.stp 2
  touch -d '+1 year' in/a.stp
  run 0 in -o out
  touch in/b.stp # right before it is looked at, however long the first run took
  run 0 in -o out --resume
  expect_line stdout 'Converted before: 2'
  # The clock may have been put back since: neither time nor size say that it is another file.
  step_file in/a.stp 3
  touch -d '+1 year' in/a.stp
  local stamp
  stamp=$(stat -c %y in/b.stp)
  step_file in/b.stp 4
  touch -d "$stamp" in/b.stp
  run 0 in -o out --resume
  expect_stl out/a.stp.stl 3
  expect_stl out/b.stp.stl 4
}

RefusesASecondRunInOneFolder() {
  step_file a.stp 1
  pretend 'touch '"$scratch/begun"'; exec sleep 1000'
  "$batch" "${program[@]}" a.stp -o out >first 2>&1 &
  local pid=$!
  wait_until test -e begun
  run 2 a.stp -o out
  expect_line stderr "plenvorith-batch: another run is writing to $PWD/out"
  kill "$pid"
  wait "$pid" || true
  program=(--as-is)
  run 0 a.stp -o out --resume
}

# The processes that a process has started.
children_of() {
  cat "/proc/$1/task/$1/children" 2>/dev/null || true
}

# The driver, one of its workers or one of their children, whatever there is just now.
pick_victim() {
  local victim=$1 level
  for ((level = RANDOM % 3; level > 0; level--)); do
    local children
    read -ra children <<<"$(children_of "$victim")" || true
    ((${#children[@]} == 0)) && break
    victim=${children[RANDOM % ${#children[@]}]}
  done
  echo "$victim"
}

# PLENVORITH_KILLS says how often.
KeepsWhatItKnowsWhenItIsKilled() {
  local number kills=${PLENVORITH_KILLS:-8} victim pid
  for number in {1..40}; do
    step_file "in/$number.stp" "$number"
  done
  for number in {1..5}; do
    cp "$samples/bracket.step" "in/large-$number.step"
    cp "$samples/mixed.step" "in/mixed-$number.step"
  done
  for ((; kills > 0; kills--)); do
    # Each time some of them are other files, so that there is always work.
    number=$((RANDOM % 40 + 1))
    step_file "in/$number.stp" "$((number + 1000 * (RANDOM % 5)))"
    rm -f out/large-*.stl
    "$batch" "${program[@]}" in -o out --jobs 2 --resume >stdout 2>stderr &
    pid=$!
    sleep "0.$((RANDOM % 4))$((RANDOM % 10))"
    victim=$(pick_victim "$pid")
    kill -KILL "$victim" 2>/dev/null || true
    wait "$pid" 2>/dev/null || true
    local patience=100
    while [[ -e /proc/$victim/task ]] && ((patience-- > 0)); do
      sleep 0.05
    done
  done
  run 0 in -o out --jobs 2 --resume
  expect_count out 50
  for number in {1..40}; do
    expect_stl "out/$number.stp.stl" "$(grep -oP "\(\(\K[0-9]+(?=\.,0)" "in/$number.stp")"
  done
  "$converter" "$samples/bracket.step" bracket.stl >/dev/null
  "$converter" "$samples/mixed.step" mixed.stl >/dev/null
  for number in {1..5}; do
    cmp bracket.stl "out/large-$number.step.stl"
    cmp mixed.stl "out/mixed-$number.step.stl"
  done
  run 0 in -o out --resume
  expect_line stdout 'Converted before: 50'
  expect_nothing_left out
}

# Runs itself where it may mount a file system of its own.
GoesOnOnceADiskIsNoLongerFull() {
  if [[ ! ${PLENVORITH_MOUNTS:-} ]]; then
    local way=()
    ((EUID == 0)) && unshare -m true 2>/dev/null && way=(unshare -m)
    ((${#way[@]})) || ! unshare -rm true 2>/dev/null || way=(unshare -rm)
    ((${#way[@]})) || skip 'cannot mount a file system'
    PLENVORITH_MOUNTS=yes exec "${way[@]}" "$self" "$batch" "$converter" "$prepare" "$samples" "$case"
  fi
  local number size failed=0 step=250
  [[ -z ${PLENVORITH_THOROUGH:-} ]] || step=40
  mkdir in out
  for number in {1..6}; do
    cp "$samples/mixed.step" "in/$number.step"
    step_file "in/$number.stp" "$number"
  done
  "$converter" "$samples/mixed.step" mixed.stl >/dev/null
  for ((size = 130; size <= 890; size += step)); do
    mount -t tmpfs -o "size=${size}k" none out || skip 'cannot mount a file system'
    "$batch" "${program[@]}" in -o out --jobs 2 >stdout 2>stderr && status=0 || status=$?
    ((status <= 2)) || fail "exit status $status with ${size}k"
    if ((status == 1)); then
      failed=$((failed + 1))
      grep -Eq 'disk full|state cannot be written|No space left' stdout stderr || fail 'no reason'
      # What is there is whole.
      for number in out/*.stl; do
        [[ $number == *.step.stl ]] && cmp mixed.stl "$number"
      done
    fi
    mount -o remount,size=8M none out
    run 0 in -o out --jobs 2 --resume
    for number in {1..6}; do
      cmp mixed.stl "out/$number.step.stl"
      expect_stl "out/$number.stp.stl" "$number"
    done
    umount out
  done
  ((failed > 1)) || fail "only $failed runs met a full disk"
}

PreparesFilesFirst() {
  mkdir in single
  cp "$samples/annotated.step" "$samples/coupling.step" "$samples/bracket.step" in
  echo 'no STEP file' >in/noise.stp
  file_with in/none.stp '#1=POINT();'
  local name form='tessellation of a form that the converter does not decode: try without --as-is'
  run 1 in -o out
  grep -Eq "coupling.step: $form|annotated.step: exact geometry behind annotation" stderr ||
    fail 'no hint'
  program=()
  run 1 in -o out --resume
  expect_line stdout 'Converted with other settings before: 1 (to=stl deflection=0.1)'
  grep -q '^Converted: 3 (' stdout || fail 'not all are converted'
  for name in annotated coupling bracket; do
    "$prepare" "in/$name.step" single/ready.stp >/dev/null
    "$converter" single/ready.stp single/out.stl >/dev/null
    cmp single/out.stl "out/$name.step.stl"
  done
  "$batch" -o out --transcript in/coupling.step | grep '^Preparing: ' >/dev/null ||
    fail 'no report'
  grep -q 'noise.stp: not a STEP file' stderr || fail 'no reason'
  expect_line stderr 'failed: none.stp: no geometry in the file, says its preparation'
  run 1 in -o out --prepare --resume
  expect_line stdout 'Converted before: 3'
  expect_nothing_left out
}

"$case"
