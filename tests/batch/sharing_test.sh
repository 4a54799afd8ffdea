#!/usr/bin/env bash
# Runs one case of several processes, or hosts, that share the work of plenvorith-batch.
#
#   sharing_test.sh BATCH CASE
#
# Exit status 77 means that the case cannot run here.
#
# shellcheck disable=SC2016,SC2154 # names as they stand; variables of support.sh
set -euo pipefail
batch=$1 case=$2 program=(--as-is)
# shellcheck source=/dev/null
source "${BASH_SOURCE[0]%/*}/support.sh"

# Files 1.stp to COUNT.stp in the folder `in`, each larger than the one before.
make_files() {
  local number
  for ((number = 1; number <= $1; ++number)); do
    step_file "in/$number.stp" "$number"
    head -c $((number * 100)) /dev/zero | tr '\0' ' ' >>"in/$number.stp"
  done
}

expect_files() {
  local number
  for ((number = 1; number <= $1; ++number)); do
    expect_stl "$2/$number.stp.stl" "$number"
  done
}

query() {
  sqlite3 "$1/.plenvorith-batch/state.db" "$2"
}

# ------------------------------------------------------------------------------------------ shards

ShardsConvertEveryFileOnceAndMerge() {
  local number processes=()
  make_files 30
  for number in 1 2 3 4; do
    "$batch" "${program[@]}" in -o out --shard "$number/4" --jobs 1 >"shard$number" 2>&1 &
    processes+=($!)
  done
  for number in 1 2 3 4; do
    wait "${processes[number - 1]}" || fail "shard $number: $(cat "shard$number")"
  done
  [[ $(cat shard[1-4] | sed -n 's/^Converted: \([0-9]*\) .*/\1/p' | paste -sd +) == 7+7+8+8 ]] ||
    fail "divided otherwise: $(cat shard[1-4])"
  [[ ! -e out/index.html ]] || fail 'a shard has written a report'
  run 0 --merge -o out
  expect_line stdout 'Merged: 4 shards, 30 files'
  expect_files 30 out
  [[ -f out/index.html && ! -e out/.plenvorith-batch/shards ]] || fail 'not merged'
  run 0 in -o out --resume
  expect_line stdout 'Converted before: 30'
  expect_nothing_left out
}

ShardsKeepToTheListOfTheFirst() {
  make_files 6
  run 0 in -o out --shard 1/2
  step_file in/late.stp 7
  rm in/5.stp # one of the second shard
  run 1 in -o out --shard 2/2
  grep -q '^failed: 5.stp: cannot be read' stderr || fail 'the list of the first was not kept to'
  run 1 --merge -o out
  expect_line stdout 'Failed: 1'
  [[ ! -e out/late.stp.stl ]] || fail 'a file that came late was converted'
  run 0 in -o out --shard 1/1 --resume
  run 0 --merge -o out --prune
  expect_stl out/late.stp.stl 7
  expect_count out 6
}

AShardGoesOnWhereItWasKilled() {
  make_files 12
  run 0 in -o out --shard 1/2
  pretend 'echo >>'"$scratch"'/begun; exec sleep 1000'
  "$batch" "${program[@]}" in -o out --shard 2/2 --jobs 1 >stdout 2>stderr &
  local pid=$!
  wait_until test -s begun
  kill -9 "$pid"
  wait "$pid" 2>/dev/null || true
  program=(--as-is)
  run 0 in -o out --shard 2/2 --resume
  run 0 in -o out --shard 2/2 --resume
  expect_line stdout 'Converted before: 6'
  run 0 --merge -o out
  expect_files 12 out
}

AMergeNamesTheShardThatIsMissing() {
  make_files 6
  run 0 in -o out --shard 1/2
  run 1 --merge -o out
  expect_line stdout 'Never tried: 3 of shard 2/2, which is missing'
}

AShardKnowsWhatWasConvertedBeforeTheDivision() {
  make_files 6
  run 0 in -o out
  step_file in/3.stp 33
  run 0 in -o out --shard 1/2 --resume
  run 0 in -o out --shard 2/2 --resume
  run 0 --merge -o out
  expect_line stdout 'Merged: 2 shards, 1 files'
  expect_stl out/3.stp.stl 33
  [[ $(query out 'select count(*) from file') == 6 ]] || fail 'not every file is known'
}

RefusesASecondDriverOfAShard() {
  make_files 2
  pretend 'echo >'"$scratch"'/begun; exec sleep 1000'
  "$batch" "${program[@]}" in -o out --shard 1/2 --jobs 1 >first 2>&1 &
  local pid=$!
  wait_until test -e begun
  run 2 in -o out --shard 1/2
  expect_line stderr "plenvorith-batch: another run is writing to $PWD/out, or to this shard"
  run 2 in -o out
  run 2 --merge -o out
  program=(--as-is)
  run 0 in -o out --shard 2/2
  kill "$pid"
  wait "$pid" || true
  run 2 in -o out
  expect_line stderr "plenvorith-batch: there are shards in $PWD/out that --merge has not taken in"
}

RefusesShardsThatDoNotFit() {
  make_files 2
  run 2 in -o out --shard 0/2
  run 2 in -o out --shard 3/2
  run 2 in -o out --shard 1
  run 2 in -o out --shard 1/2 --check
  run 2 --merge in -o out
  run 2 --merge -o out
  run 0 in -o out --shard 1/2
  run 2 in -o out --shard 1/3
  grep -q 'are others (2, to=stl' stderr || fail 'no reason'
  run 2 in -o out --shard 1/2 --deflection 0.5
  [[ $(echo out/.plenvorith-batch/shards/*-of-*) == out/.plenvorith-batch/shards/1-of-2 ]] ||
    fail 'a shard that was refused has left something'
}

# Ends the daemons, and waits for them: they write when they end.
stop_slurm() {
  local file process
  for file in "$scratch"/slurm/{slurmd,slurmctld,munged}.pid; do
    process=$(cat "$file" 2>/dev/null) || continue
    kill "$process" 2>/dev/null || continue
    for _ in {1..100}; do
      kill -0 "$process" 2>/dev/null || break
      sleep 0.1
    done
  done
}

# Starts a cluster of this host alone, with two processors; sets SLURM_CONF. Munge vouches for the
# users of Slurm.
start_slurm() {
  local port host
  need munged slurmctld slurmd sbatch
  ((EUID == 0)) || skip 'slurmd is started by root'
  host=$(hostname -s)
  mkdir slurm slurm/state slurm/spool
  head -c 1024 /dev/urandom >slurm/key
  chmod 600 slurm/key
  munged --force --socket="$PWD/slurm/socket" --key-file="$PWD/slurm/key" \
    --pid-file="$PWD/slurm/munged.pid" --seed-file="$PWD/slurm/seed" \
    --log-file="$PWD/slurm/munged.log" 2>slurm/error || skip "no munge: $(cat slurm/error)"
  trap 'stop_slurm; rm -rf "$scratch"' EXIT
  port=$(shuf -n 1 -i 20000-60000)
  export SLURM_CONF=$PWD/slurm/slurm.conf
  cat >"$SLURM_CONF" <<END
ClusterName=test
SlurmctldHost=$host(127.0.0.1)
SlurmUser=root
AuthType=auth/munge
AuthInfo=socket=$PWD/slurm/socket
StateSaveLocation=$PWD/slurm/state
SlurmdSpoolDir=$PWD/slurm/spool
SlurmctldPidFile=$PWD/slurm/slurmctld.pid
SlurmdPidFile=$PWD/slurm/slurmd.pid
SlurmctldLogFile=$PWD/slurm/slurmctld.log
SlurmdLogFile=$PWD/slurm/slurmd.log
SlurmctldPort=$port
SlurmdPort=$((port + 1))
ProctrackType=proctrack/linuxproc
TaskPlugin=task/none
SwitchType=switch/none
MpiDefault=none
NodeName=$host NodeAddr=127.0.0.1 CPUs=2 State=UNKNOWN
PartitionName=all Nodes=$host Default=YES State=UP
END
  if ! slurmctld 2>slurm/error || ! slurmd 2>slurm/error; then
    skip "no Slurm: $(cat slurm/error)"
  fi
  for _ in {1..100}; do
    [[ $(sinfo -h -o %t 2>>slurm/error) != idle ]] || return 0
    sleep 0.2
  done
  skip "no Slurm: $(cat slurm/error)"
}

ShardsRunAsAnArrayOfSlurm() {
  start_slurm
  make_files 40
  echo noise >in/bad.stp
  export PATH="${batch%/*}:$PATH"
  local status=0
  sbatch --wait --array=1-4 --wrap \
    'plenvorith-batch in -o out --shard $SLURM_ARRAY_TASK_ID/4 --jobs 1 --resume' \
    >sbatch.out 2>&1 || status=$?
  ((status == 1)) || fail "sbatch ended with $status, not with that of the task that failed: $(cat sbatch.out slurm-*.out)"
  [[ $(cat slurm-*.out | grep -c '^failed: ') == 1 ]] || fail "more has failed: $(cat slurm-*.out)"
  run 1 --merge -o out
  expect_line stdout 'Merged: 4 shards, 41 files'
  expect_line stdout 'Failed: 1'
  expect_files 40 out
}

# ------------------------------------------------------------------------------------------- hosts

servers=()

need() {
  local tool
  for tool in "$@"; do
    PATH=$PATH:/usr/sbin type -P "$tool" >/dev/null || skip "no $tool"
  done
}

# Starts an SSH server for this case alone, which NAME is the host of from then on; `login` is how
# to reach it.
start_server() {
  local name=$1 sshd port
  need sshd ssh parallel
  sshd=$(PATH=$PATH:/usr/sbin type -P sshd)
  if ((EUID == 0)); then
    mkdir -p /run/sshd
  fi
  if [[ ! -d ssh ]]; then
    mkdir -m 700 ssh
    ssh-keygen -q -N '' -t ed25519 -f ssh/host
    ssh-keygen -q -N '' -t ed25519 -f ssh/user
  fi
  for port in $(shuf -n 5 -i 20000-60000); do
    cat >"ssh/$name.conf" <<END
Port $port
ListenAddress 127.0.0.1
HostKey $PWD/ssh/host
AuthorizedKeysFile $PWD/ssh/user.pub
StrictModes no
UsePAM no
PidFile none
END
    cat >"ssh/$name.client" <<END
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
    login="ssh -F $PWD/ssh/$name.client $name"
    "$sshd" -D -f "$PWD/ssh/$name.conf" -E "$PWD/ssh/$name.log" &
    servers+=($!)
    trap 'kill "${servers[@]}" 2>/dev/null || true; chmod -R u+rwx "$scratch"; rm -rf "$scratch"' EXIT
    for _ in {1..20}; do
      sleep 0.1
      if $login true 2>ssh/error; then
        return
      fi
      kill -0 "${servers[-1]}" 2>/dev/null || break
    done
    kill "${servers[-1]}" 2>/dev/null || true
    unset 'servers[-1]'
  done
  skip "no SSH server on this machine: $(cat ssh/*.log ssh/error)"
}

# Makes a file of each odd name and gives their number.
make_odd_files() {
  local number=0 name
  for name in "${names[@]}"; do
    number=$((number + 1))
    step_file "in/$name" "$number"
  done
}

expect_odd_files() {
  local number=0 name
  for name in "${names[@]}"; do
    number=$((number + 1))
    expect_stl "$1/$name.stl" "$number"
  done
}

RunsOnTheLocalHostByName() {
  need parallel
  make_odd_files
  run 0 in -o out --sshlogin : --jobs 2
  expect_odd_files out
  expect_nothing_left out
}

RunsOnOtherHosts() {
  start_server alpha
  local hosts=$login
  start_server beta
  make_odd_files
  run 0 in -o $'out "of\nit\'s {} place' --sshlogin "$hosts,2/$login"
  expect_odd_files $'out "of\nit\'s {} place'
  grep -q 'Accepted publickey' ssh/alpha.log || fail 'no job came to the first host'
  grep -q 'Accepted publickey' ssh/beta.log || fail 'no job came to the second host'
  expect_nothing_left $'out "of\nit\'s {} place'
}

SendsFilesToHostsThatDoNotSeeThem() {
  need rsync
  start_server alpha
  make_odd_files
  echo noise >in/bad.stp
  run 1 in -o $'out "of\nit\'s {} place' --transfer --sshlogin "$login,:"
  expect_odd_files $'out "of\nit\'s {} place'
  expect_line stdout 'Failed: 1'
  "$batch" -o $'out "of\nit\'s {} place' --transcript 'in/*.stp' | grep '^Reading: ' >/dev/null ||
    fail 'no transcript'
  expect_nothing_left $'out "of\nit\'s {} place'
  [[ -z $(find "$HOME/.parallel/tmp" -mindepth 1 -maxdepth 1 ! -name sshlogin) ]] || fail 'files stay on the host'
}

ListsThePartsOnHostsAndInShards() {
  need rsync parallel
  make_files 3
  run 0 in -o here --split --parts
  run 0 in -o sent --split --parts --transfer --sshlogin :
  local number
  for number in 1 2; do
    run 0 in -o divided --split --parts --shard "$number/2"
  done
  run 0 -o divided --merge
  for number in 1 2 3; do
    cmp "here/$number.stp.stl.parts.json" "sent/$number.stp.stl.parts.json"
    cmp "here/$number.stp.stl.parts.json" "divided/$number.stp.stl.parts.json"
  done
}

DoesWithoutAHostThatCannotConvert() {
  need parallel
  make_files 12
  mkdir bin
  printf '#!/bin/sh\necho no route >&2\nexit 255\n' >bin/ssh
  # A host that has another version.
  printf '#!/bin/sh\necho "plenvorith-batch 0.0.1 (another kernel)"; echo cores 4\n' >bin/other
  chmod +x bin/ssh bin/other
  run 0 in -o out --jobs 1 --sshlogin "$PWD/bin/ssh lost,$PWD/bin/other old,:"
  expect_files 12 out
  expect_line stderr "host $PWD/bin/ssh lost is left out: no route"
  grep -q "bin/other old is left out: it has plenvorith-batch 0.0.1 (another kernel), this is" stderr ||
    fail 'the other version is not told'
  run 2 in -o out --jobs 1 --sshlogin "$PWD/bin/ssh lost"
  expect_line stderr 'plenvorith-batch: no host can convert'
}

TakesBackTheFilesOfAHostThatDies() {
  need parallel
  make_files 40
  mkdir bin
  # A host that answers, and dies in the middle of the first chunk that it gets.
  cat >bin/ssh <<'END'
#!/bin/bash
[[ ! -e dead ]] || exit 255
shift
if [[ $* == *--version* ]]; then
  exec bash -c "$*"
fi
bash -c "$*" | head -n 2
touch "$DEAD"
exit 255
END
  chmod +x bin/ssh
  sed -i "s|-e dead|-e $PWD/dead|; s|\"\$DEAD\"|$PWD/dead|" bin/ssh
  run 0 in -o out --jobs 1 --sshlogin "$PWD/bin/ssh dying,:"
  [[ -e dead ]] || fail 'the host was not used'
  expect_line stdout 'Converted: 40 (40 triangles)'
  expect_files 40 out
  expect_nothing_left out
}

EndsTheJobsOfOtherHosts() {
  start_server alpha
  make_files 1
  pretend 'printf half >"$2"
    echo $$ >'"$scratch"'/pid.new
    mv '"$scratch"'/pid.new '"$scratch"'/pid
    exec sleep 1000'
  "$batch" "${program[@]}" in -o out --jobs 1 --sshlogin "$login" >stdout 2>stderr &
  local pid=$! status=0 remote
  wait_until test -f pid
  kill "$pid"
  wait "$pid" || status=$?
  ((status == 143)) || fail "exit status $status, not 143"
  expect_line stderr 'Interrupted; --resume goes on from here'
  remote=$(<pid)
  for _ in {1..200}; do
    [[ -s /proc/$remote/cmdline ]] || break
    sleep 0.05
  done
  [[ -z $(tr -d '\0' 2>/dev/null <"/proc/$remote/cmdline") ]] || fail 'the conversion goes on'
  expect_count out 0
}

# ------------------------------------------------------------------------------------------ report

ReportsEveryRun() {
  make_files 3
  echo noise >in/bad.stp
  run 1 in -o out
  expect_line stdout "Report: $PWD/out/index.html"
  grep -q '^{"name":"2.stp","status":"converted","size":' out/index.html || fail 'no row'
  grep -q '"reason":"not a STEP file' out/index.html || fail 'no reason'
  run 0 in/1.stp -o out --resume --base in
  (($(grep -c '^{"name"' out/index.html) == 4)) || fail 'earlier files are not in the report'
}

ReportsPartsWithProblems() {
  make_files 1
  cp in/1.stp in/2.stp
  run 0 in -o out --check --export log.json
  (($(grep -c '"check":{"parts":1,"badParts":0,' out/index.html) == 2)) || fail 'no checks'
  (($(grep -c '"parts_with_problems":0,' log.json) == 2)) || fail 'no checks in the table'
  run 0 in -o out --resume
  (($(grep -c '"check":{"parts":1,"badParts":0,' out/index.html) == 2)) || fail 'no checks any more'
}

ReportsWithoutToolsWhenItIsInterrupted() {
  make_files 1
  run 0 in -o out
  step_file in/2.stp 2
  pretend 'echo >'"$scratch"'/begun; exec sleep 1000'
  "$batch" "${program[@]}" in -o out --jobs 1 --check >stdout 2>stderr &
  local pid=$! status=0
  wait_until test -e begun
  kill "$pid"
  wait "$pid" || status=$?
  ((status == 143)) || fail "exit status $status, not 143"
  ! grep -q Checked stdout || fail 'a tool was run'
  [[ -f out/index.html ]] || fail 'no report'
}

ReportsPicturesOfF3d() {
  need f3d Xvfb
  make_files 2
  run 0 in -o out --thumbnails
  # A PNG file starts so.
  (($(grep -c '"picture":"iVBORw0KGgo' out/index.html) == 2)) || fail 'no pictures'
}

"$case"
