#!/usr/bin/env bash
# script/convert where it does not come to converting.
#
#   convert_test.sh SCRIPT CASE
set -euo pipefail
script=$1
usage='usage: script/convert INPUT OUTPUT [DEFLECTION] [SPLIT]'

fail() {
  echo "FAILED: $*" >&2
  exit 1
}

SaysOnStandardErrorThatArgumentsAreMissing() {
  local status=0 printed
  printed=$("$script" 2>&1 >/dev/null) || status=$?
  [[ $printed == "$usage" ]] || fail "$printed"
  ((status == 2)) || fail "exit status $status"
}

HelpsOnStandardOutput() {
  local printed
  printed=$("$script" --help 2>/dev/null)
  [[ $printed == "$usage" ]] || fail "$printed"
}

"$2"
