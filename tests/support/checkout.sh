#!/usr/bin/env bash
# Whether tests have left the files of the checkout alone that programs are given: samples and data.
#
#   checkout.sh remember SOURCES LIST
#   checkout.sh compare SOURCES LIST
set -euo pipefail
sources=$2 list=$3

list_files() {
  cd "$sources"
  find README.md samples docs tests/data tests/cli/cases -type f -print0 | LC_ALL=C sort -z |
    xargs -0 sha256sum
}

case $1 in
  remember) list_files >"$list" ;;
  compare)
    diff "$list" <(list_files) || {
      echo 'FAILED: tests have changed these files of the checkout' >&2
      exit 1
    }
    ;;
  *) exit 2 ;;
esac
