#!/usr/bin/env bash
# Runs one case on plenvorith-batch, in a folder of its own.
#
#   batch_test.sh BATCH PROGRAM CASE
#
# Exit status 77 means that the case cannot run here.
#
# shellcheck disable=SC2016 # file names and scripts in single quotes are meant as they stand
set -euo pipefail
batch=$1 program=$2 case=$3

scratch=$(mktemp -d)
servers=()
clean_up() {
  ((${#servers[@]} == 0)) || kill "${servers[@]}" || true
  rm -rf "$scratch"
}
trap clean_up EXIT
mkdir "$scratch/tmp" "$scratch/home"
export TMPDIR=$scratch/tmp HOME=$scratch/home
cd "$scratch"

fail() {
  printf 'FAILED: %s\n' "$*" >&2
  [[ ! -f stdout ]] || cat stdout stderr >&2
  exit 1
}

skip() {
  echo "skipped: $*"
  exit 77
}

# A file of one triangle, whose first corner has the x coordinate NUMBER.
step_file() {
  local path=$1 number=$2
  mkdir -p "$(dirname -- "$path")"
  cat >"$path" <<END
ISO-10303-21;
HEADER;
FILE_DESCRIPTION((''),'2;1');
FILE_NAME('','',(''),(''),'','','');
FILE_SCHEMA(('AP242_MANAGED_MODEL_BASED_3D_ENGINEERING_MIM_LF'));
ENDSEC;
DATA;
#1=TESSELLATED_SHAPE_REPRESENTATION('',(#2),\$);
#2=TESSELLATED_SOLID('',(#3),\$);
#3=COMPLEX_TRIANGULATED_FACE('',#4,3,(),\$,(),((1,2,3)),());
#4=COORDINATES_LIST('',3,(($number.,0.,0.),(0.,1.,0.),(0.,0.,1.)));
ENDSEC;
END-ISO-10303-21;
END
}

# Runs the script with these arguments and asks for the exit status EXPECTED.
run() {
  local expected=$1 status=0
  shift
  "$batch" --program "$program" "$@" >stdout 2>stderr || status=$?
  ((status == expected)) || fail "exit status $status, not $expected"
}

# The output is a binary STL file of the triangle that step_file wrote with this number.
expect_stl() {
  local path=$1 number=$2 size x
  [[ -f $path ]] || fail "missing: $path"
  size=$(stat -c %s -- "$path")
  ((size == 134)) || fail "$path has $size bytes"
  x=$(od -An -tf4 --endian=little -j96 -N4 <"$path")
  ((x == number)) || fail "$path holds triangle $x, not $number"
}

expect_line() {
  grep -Fxq -- "$2" "$1" || fail "no line '$2' in $1: $(cat "$1")"
}

expect_count() {
  local count
  count=$(find "$1" -name .plenvorith-batch -prune -o -type f -print0 | tr -dc '\0' | wc -c)
  ((count == $2)) || fail "$count outputs, not $2"
}

expect_nothing_left() {
  [[ -z $(ls -A "$TMPDIR") ]] || fail "left in the temporary folder: $(ls -A "$TMPDIR")"
  [[ ! -e $1/.plenvorith-batch/run ]] || fail 'work in progress was left behind'
}

# Makes `program` a script with the given body, in which $1 is the input and $2 the output.
pretend() {
  program=$scratch/pretended
  printf '#!/usr/bin/env bash\n%s\n' "$1" >"$program.new"
  chmod +x "$program.new"
  mv -f "$program.new" "$program"
}

# ------------------------------------------------------------------------------------------- cases

names=(
  'a.stp' 'a.STP' 'a.step' 'a.StEp' 'a.p21' 'a.stp.stp' 'two words.stp' "it's.stp" 'say "hi".stp'
  $'two\nlines.stp' $'ends with a line feed\n.stp' $'tab\tstop.stp' '-dash.stp' '--resume.step'
  'größe.stp' '部品.stp' $'not \xff utf-8.stp' '$(touch gone).stp' '`x`.stp' '{}.stp' '{= die =}.stp'
  'back\slash.stp' '%s.stp' '*.stp' '.hidden.stp'
)

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
  (($(wc -l <out/.plenvorith-batch/log.tsv) == 200)) || fail 'the log has not 200 lines'
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

TakesFilesWithALeadingDash() {
  step_file ./-a.stp 1
  run 0 -o out -- -a.stp
  expect_stl out/-a.stp.stl 1
}

TakesNoOutputForAnInput() {
  step_file in/a.stp 1
  pretend 'cp "$1" "$2"'
  run 0 in -o in/out --to stp
  run 0 in -o in/out --to stp
  expect_line stdout 'Converted: 1 (0 triangles)'
  expect_count in/out 1
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
  pretend 'printf "%s\n" "$#" "$3" "${4:-}" >"$2"'
  run 0 a.stp -o out --to stp
  [[ $(<out/a.stp.stp) == $'3\n0.1' ]] || fail "$(<out/a.stp.stp)"
  run 0 a.stp -o out --to stp --deflection 2.5e-1 --split
  [[ $(<out/a.stp.stp) == $'4\n2.5e-1\nyes' ]] || fail "$(<out/a.stp.stp)"
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
  expect_line stdout "  $PWD/in/sub/new\\nline.stp: Error: No geometry found in file"
  grep -q 'malformed.stp: ended by signal 6 after: .*stod' stdout || fail 'no reason for the abort'
  grep -q $'^failed\t.*/malformed.stp\t0\t' out/.plenvorith-batch/log.tsv || fail 'not in the log'
  expect_line $'out/.plenvorith-batch/transcripts/sub/new\nline.stp.txt' 'Failed'
  expect_line out/.plenvorith-batch/transcripts/good.stp.txt 'Saved: good.stp.stl'
  expect_count out 1
  expect_nothing_left out
}

CountsASuccessWithoutAFileAsFailed() {
  step_file a.stp 1
  pretend 'echo Done'
  run 1 a.stp -o out
  expect_line stdout "  $PWD/a.stp: nothing was written"
}

ReportsAnStlFileThatIsNotWhole() {
  step_file a.stp 1
  pretend 'head -c 80 /dev/zero >"$2_1.stl"; printf "\2\0\0\0and less than a triangle" >>"$2_1.stl"'
  run 1 a.stp -o out --split
  expect_line stdout "  $PWD/a.stp: incomplete: a.stp.stl_1.stl"
  expect_count out 0
}

ReportsAnOutputThatCannotBeMovedIntoPlace() {
  step_file a.stp 1
  mkdir -p out/a.stp.stl
  run 1 a.stp -o out
  grep -q 'a.stp: mv: ' stdout || fail 'no reason'
  expect_count out 0
}

StopsAFileAfterTheTimeLimit() {
  step_file in/a.stp 1
  mkfifo in/hang.stp
  run 1 in/a.stp in/hang.stp -o out --time-limit 1
  expect_line stdout 'Converted: 1 (1 triangles)'
  expect_line stdout "  $PWD/in/hang.stp: time limit of 1"
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
    echo "$TMPDIR" >"$2"'
  run 0 in -o out --to stp --jobs 6
  cat out/*/a.stp.stp | sort -u >folders
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
  local real=$program
  # The files from 6 on stop half way.
  pretend '[[ ${1##*/} < 6 ]] && exec "'"$real"'" "$@"
    printf half >"$2"
    echo $$ >>'"$scratch"'/pids
    exec sleep 1000'
  "$batch" --program "$program" in -o out --jobs 2 >stdout 2>stderr &
  local pid=$! status=0
  until [[ -f pids ]] && (($(wc -l <pids) == 2)); do
    sleep 0.05
  done
  kill "$pid"
  wait "$pid" || status=$?
  ((status == 143)) || fail "exit status $status, not 143"
  expect_line stderr 'Interrupted; --resume goes on from here'
  expect_count out 5
  expect_nothing_left out
  while read -r pid; do
    ! kill -0 "$pid" 2>/dev/null || fail 'a conversion goes on'
  done <pids

  before=$(stat -c '%i %y' out/*.stl)
  cp "$real" "$program"
  run 0 in -o out --resume
  expect_line stdout 'Converted: 4 (4 triangles)'
  expect_line stdout 'Converted before: 5'
  for number in 1 2 3 4 5 6 7 8 9; do
    expect_stl "out/$number.stp.stl" "$number"
  done
  [[ $(stat -c '%i %y' out/[1-5].stp.stl) == "$before" ]] || fail 'converted again'
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
  program=$scratch/missing
  run 2 in -o out
  [[ ! -e out ]] || expect_count out 0
}

RefusesAFolderItCannotRead() {
  ((EUID != 0)) || skip 'root reads everything'
  step_file in/a.stp 1
  mkdir -m 0 in/sub
  run 2 in -o out
}

LeavesTheFolderOfAnotherRunAlone() {
  step_file a.stp 1
  mkdir -p out/.plenvorith-batch
  exec 8>out/.plenvorith-batch/lock
  flock 8
  run 2 a.stp -o out
  expect_line stderr "plenvorith-batch: another run is writing to $PWD/out"
}

ShowsTheProgressWhenAsked() {
  step_file a.stp 1
  run 0 a.stp -o out --bar
  grep -aq '100% 1:0=' stderr || fail 'no progress bar'
}

RunsOnTheLocalHostByName() {
  step_file 'in/a b.stp' 1
  step_file 'in/c.stp' 2
  run 0 in -o out --sshlogin :
  expect_stl 'out/a b.stp.stl' 1
  expect_stl out/c.stp.stl 2
}

# Starts an SSH server for this case alone; `host` is how to reach it.
start_server() {
  local sshd port
  sshd=$(PATH=$PATH:/usr/sbin type -P sshd) || skip 'no sshd (Debian package openssh-server)'
  type -P ssh >/dev/null || skip 'no ssh (Debian package openssh-client)'
  if ((EUID == 0)); then
    mkdir -p /run/sshd
  fi
  mkdir -m 700 ssh
  ssh-keygen -q -N '' -t ed25519 -f ssh/host
  ssh-keygen -q -N '' -t ed25519 -f ssh/user
  for port in $(shuf -n 5 -i 20000-60000); do
    cat >ssh/server.conf <<END
Port $port
ListenAddress 127.0.0.1
HostKey $PWD/ssh/host
AuthorizedKeysFile $PWD/ssh/user.pub
StrictModes no
UsePAM no
PidFile none
END
    "$sshd" -D -f "$PWD/ssh/server.conf" -E "$PWD/ssh/server.log" &
    servers=($!)
    cat >ssh/client.conf <<END
Host *
  HostName 127.0.0.1
  Port $port
  IdentityFile $PWD/ssh/user
  IdentitiesOnly yes
  BatchMode yes
  StrictHostKeyChecking no
  UserKnownHostsFile $PWD/ssh/known
  LogLevel ERROR
END
    for _ in 1 2 3 4 5 6 7 8 9 10; do
      sleep 0.1
      if ssh -F ssh/client.conf node true 2>ssh/error; then
        host="ssh -F $PWD/ssh/client.conf node"
        return
      fi
      kill -0 "${servers[0]}" 2>/dev/null || break
    done
    kill "${servers[0]}" 2>/dev/null || true
    servers=()
  done
  skip "no SSH server on this machine: $(cat ssh/server.log ssh/error)"
}

RunsOnOtherHosts() {
  local number=0 name
  start_server
  for name in "${names[@]}"; do
    number=$((number + 1))
    step_file "in/$name" "$number"
  done
  run 0 in -o $'out "of\nit\'s {} place' --jobs 4 --sshlogin "$host"
  number=0
  for name in "${names[@]}"; do
    number=$((number + 1))
    expect_stl $'out "of\nit\'s {} place/'"$name.stl" "$number"
  done
  grep -q 'Accepted publickey' ssh/server.log || fail 'no job came by ssh'
  expect_nothing_left $'out "of\nit\'s {} place'
}

DoesWithoutAHostThatIsLost() {
  step_file in/a.stp 1
  step_file in/b.stp 2
  mkdir bin
  printf '#!/bin/sh\nexit 255\n' >bin/ssh
  chmod +x bin/ssh
  run 0 in -o out --jobs 1 --sshlogin "$PWD/bin/ssh lost,:"
  expect_stl out/a.stp.stl 1
  expect_stl out/b.stp.stl 2
}

EndsTheJobsOfOtherHosts() {
  start_server
  step_file a.stp 1
  pretend 'printf half >"$2"
    echo $$ >'"$scratch"'/pid.new
    mv '"$scratch"'/pid.new '"$scratch"'/pid
    exec sleep 1000'
  "$batch" --program "$program" a.stp -o out --jobs 1 --sshlogin "$host" >stdout 2>stderr &
  local pid=$! status=0 remote
  until [[ -f pid ]]; do
    sleep 0.05
  done
  kill "$pid"
  wait "$pid" || status=$?
  ((status == 143)) || fail "exit status $status, not 143"
  remote=$(<pid)
  for _ in {1..200}; do
    kill -0 "$remote" 2>/dev/null || break
    sleep 0.05
  done
  ! kill -0 "$remote" 2>/dev/null || fail 'the conversion goes on'
  expect_count out 0
}

type -P parallel >/dev/null || skip 'no GNU parallel (Debian package parallel)'
"$case"
