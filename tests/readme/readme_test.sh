#!/usr/bin/env bash
# What the README shows is what happens.
#
#   readme_test.sh README PROGRAM CASE
#
# PROGRAM takes the place of script/convert.
set -euo pipefail
readme=$(realpath "$1") program=$(realpath "$2") case=$3
root=$(dirname "$readme")

scratch=$(mktemp -d)
trap 'rm -rf "$scratch"' EXIT
mkdir "$scratch/tmp"
export TMPDIR=$scratch/tmp

fail() {
  echo "FAILED: $*" >&2
  exit 1
}

# The first console block: its command goes to the file "command_line", what it prints to "shown". The
# command itself then runs in a folder with nothing but the samples; what it prints goes to "printed".
run_first_transcript() {
  cd "$scratch"
  awk '/^```console$/ { inside = 1; next } /^```$/ && inside { exit } inside' "$readme" >block
  sed -n '1s/^[$] //p' block >command_line
  sed 1d block >shown
  local words
  read -r -a words <command_line
  [[ ${words[0]} == script/convert ]] || fail "the first command is \"$(<command_line)\""
  [[ -s shown ]] || fail "nothing stands below the first command"
  mkdir samples
  cp "$root"/samples/*.step samples
  "$program" "${words[@]:1}" >printed || fail "the first command ends with status $?"
  [[ -s ${words[2]} ]] || fail "the first command makes no ${words[2]}"
}

# How many triangles curved faces have is up to the release of the kernel.
without_counts() {
  sed -E 's/((BRep|STL): )[0-9]+/\1NUMBER/g' "$1"
}

FirstTranscriptIsWhatTheProgramPrints() {
  run_first_transcript
  diff <(without_counts shown) <(without_counts printed) || fail "the program prints other lines"
}

NamesOnlyScriptsThatExist() {
  local name
  mapfile -t names < <(grep -oE '\bscript/[A-Za-z0-9_-]+' "$readme" | sort -u)
  ((${#names[@]} >= 3)) || fail "only these names: ${names[*]}"
  for name in "${names[@]}"; do
    [[ -x $root/$name ]] || fail "there is no $name to run"
  done
}

# With the kernel release that the README was written with, and so no test of the build: CI runs it.
# The commands that follow, in blocks of sh, run in the same folder.
to_the_letter() {
  run_first_transcript
  diff shown printed || fail "the program prints other lines"
  ln -s "$root/build" build
  awk '/^```sh$/ { inside = 1; next } /^```$/ { inside = 0 } inside' "$readme" >commands
  (($(wc -l <commands) >= 4)) || fail "only these commands: $(cat commands)"
  bash -euxo pipefail commands >printed || fail "a command ends with status $?"
  [[ -s coupling.stl && -s meshes/bracket.step.stl && -s meshes/index.html ]] || fail "$(ls . meshes)"
}

"$case"
