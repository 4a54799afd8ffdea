#!/usr/bin/env bash
# The script for the night, with scripts that do nothing in the place of its parts.
#
#   nightly_test.sh NIGHTLY CASE
set -euo pipefail
nightly=$1 case=$2

scratch=$(mktemp -d)
trap 'rm -rf "$scratch"' EXIT
cd "$scratch"
mkdir script
cp "$nightly" script/test-nightly

fail() {
  echo "FAILED: $*" >&2
  exit 1
}

# parts STATUS...: what each part notes of its call and ends with
parts() {
  local name
  # shellcheck disable=SC2016 # for the part to expand
  for name in test memcheck fuzz test-kernels test-architectures; do
    printf '#!/bin/sh\necho "%s $* ${PLENVORITH_THOROUGH-}${PLENVORITH_LARGE-}" >>calls\nexit %d\n' \
      "$name" "$1" >"script/$name"
    chmod +x "script/$name"
    shift
  done
}

RunsEveryPart() {
  parts 0 0 0 0 0
  script/test-nightly 7 >printed || fail "exit status $?"
  diff - calls <<'END' || fail 'not these calls'
test  11
memcheck  
fuzz 7 
test-kernels  
test-architectures  
END
  sed -i 's/[0-9]* min$/N min/' printed
  diff - printed <<'END' || fail 'not these lines'
tests: passed after N min
memcheck: passed after N min
fuzz: passed after N min
kernels: passed after N min
architectures: passed after N min
END
}

GoesOnBehindAPartThatFails() {
  local status=0
  parts 1 0 3 0 0
  script/test-nightly >printed || status=$?
  ((status == 1)) || fail "exit status $status"
  (($(wc -l <calls) == 5)) || fail 'a part was left out'
  grep -q '^tests: FAILED, see build/nightly/tests.log after' printed || fail "$(<printed)"
  grep -q '^memcheck: passed' printed || fail "$(<printed)"
  grep -q '^fuzz: FAILED' printed || fail "$(<printed)"
}

RejectsOtherArguments() {
  local arguments status
  parts 0 0 0 0 0
  for arguments in 0 x '7 7' -1; do
    status=0
    # shellcheck disable=SC2086 # several arguments
    script/test-nightly $arguments 2>printed || status=$?
    ((status == 2)) || fail "exit status $status for $arguments"
    grep -q '^usage: ' printed || fail "$(<printed)"
  done
  [[ ! -e calls ]] || fail 'a part was run'
}

"$case"
