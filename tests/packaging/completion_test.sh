#!/usr/bin/env bash
# What bash offers behind the programs' names.
#
#   completion_test.sh FOLDER CASE      FOLDER holds <program>.bash
set -euo pipefail
shopt -s extglob nullglob
folder=$1

scratch=$(mktemp -d)
trap 'rm -rf "$scratch"' EXIT
cd "$scratch"
mkdir parts
touch a.step b.STP c.p21 d.stl e.txt

# These two stand for those of the package bash-completion, which need not be there.
# shellcheck disable=SC2034 # what the completions read
_init_completion() {
  words=("${COMP_WORDS[@]}") cword=$COMP_CWORD
  cur=${words[cword]} prev=${words[cword - 1]}
  [[ ${1:-} != -s || $cur != --*=* ]] || prev=${cur%%=*} cur=${cur#*=}
}
_filedir() {
  COMPREPLY=(*/)
  [[ $1 == -d ]] || COMPREPLY+=(*.@($1|${1^^}))
}

# offered WORD...: what is offered for the last word
offered() {
  # shellcheck disable=SC1090 # one for each program
  source "$folder/$1.bash"
  COMP_WORDS=("$@") COMP_CWORD=$(($# - 1)) COMPREPLY=()
  "_${1//-/_}"
  echo "${COMPREPLY[@]}"
}

expect() {
  [[ $2 == "$1" ]] || { echo "FAILED: offered are $2" >&2 && exit 1; }
}

InputsAreStepFiles() {
  expect 'parts/ a.step b.STP c.p21' "$(offered plenvorith '')"
  expect 'parts/ a.step b.STP c.p21' "$(offered plenvorith-prepare '')"
  expect 'parts/ a.step b.STP c.p21' "$(offered plenvorith-batch a.step '')"
}

NoStepFileIsOfferedAsOutput() {
  expect 'parts/ d.stl' "$(offered plenvorith a.step '')"
  expect 'parts/' "$(offered plenvorith-prepare a.step '')"
}

WhatIsCheckedIsOffered() {
  expect 'parts/ a.step b.STP c.p21 d.stl' "$(offered plenvorith-check '')"
  expect '--all --exact --text' "$(offered plenvorith-check -)"
  expect 'parts/ d.stl' "$(offered plenvorith-check --exact a.step '')"
  expect '1.0 0.1 0.01' "$(offered plenvorith-check a.step d.stl '')"
}

DeflectionsAreOffered() {
  expect '1.0 0.1 0.01' "$(offered plenvorith a.step a.stl '')"
}

ValuesAreOfferedBehindAnEqualsSign() {
  expect 'stl stp' "$(offered plenvorith-batch --to '')"
  expect 'stl stp' "$(offered plenvorith-batch --to=)"
  expect 'stp' "$(offered plenvorith-batch --to=stp)"
}

"$2"
