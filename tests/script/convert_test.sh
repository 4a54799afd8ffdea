#!/usr/bin/env bash
# script/convert where it does not come to converting.
#
#   convert_test.sh SCRIPT CASE
set -euo pipefail
script=$1
usage='usage: script/convert INPUT OUTPUT [DEFLECTION [SPLIT]]
Several files: build/release/bin/plenvorith-batch FOLDER -o FOLDER'

scratch=$(mktemp -d)
trap 'rm -rf "$scratch"' EXIT
cd "$scratch"

fail() {
  echo "FAILED: $*" >&2
  exit 1
}

# expect_refusal TEXT ARGUMENT...: status 2, the text on standard error, nothing on standard output
expect_refusal() {
  local status=0 printed
  printed=$("$script" "${@:2}" 2>&1 >/dev/null) || status=$?
  [[ $printed == "$1" ]] || fail "$printed"
  ((status == 2)) || fail "exit status $status"
  printed=$("$script" "${@:2}" 2>/dev/null) || true
  [[ ! $printed ]] || fail "$printed"
}

SaysOnStandardErrorThatArgumentsAreMissing() {
  expect_refusal "$usage"
  expect_refusal "$usage" part.step
}

HelpsOnStandardOutput() {
  local printed option
  for option in -h --help --version; do
    printed=$("$script" "$option" 2>/dev/null)
    [[ $printed == "$usage" ]] || fail "$printed"
  done
}

OverwritesNoStepFile() {
  local name
  for name in b.step B.STP 'a b.P21'; do
    echo 'the only copy' >"$name"
    expect_refusal "script/convert: $name is there already, and a STEP file is not overwritten
$usage" a.step "$name"
    [[ $(<"$name") == 'the only copy' ]] || fail "$name is overwritten"
  done
}

"$2"
