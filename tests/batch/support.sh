# shellcheck shell=bash
# The vocabulary of the tests of plenvorith-batch: makes a folder for a case and goes there. Wants
# `batch`, the program to test, and `program`, an array of options for every call.
#
# shellcheck disable=SC2016,SC2034,SC2154 # names as they stand; variables of the scripts around

scratch=$(mktemp -d)
trap 'chmod -R u+rwx "$scratch"; rm -rf "$scratch"' EXIT
mkdir "$scratch/tmp" "$scratch/home"
export TMPDIR=$scratch/tmp HOME=$scratch/home
cd "$scratch" || exit

fail() {
  printf 'FAILED: %s\n' "$*" >&2
  [[ ! -f stdout ]] || cat stdout stderr >&2
  exit 1
}

skip() {
  echo "skipped: $*"
  exit 77
}

# Waits until a command succeeds; a minute is for ever.
wait_until() {
  local patience=1200
  until "$@"; do
    ((patience-- > 0)) || fail "never: $*"
    sleep 0.05
  done
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

# Runs the program with these arguments and asks for the exit status EXPECTED.
run() {
  local expected=$1 status=0
  shift
  "$batch" "${program[@]}" "$@" >stdout 2>stderr || status=$?
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
  count=$(find "$1" \( -name .plenvorith-batch -o -path "$1/index.html" \) -prune -o \
    -type f -print0 | tr -dc '\0' | wc -c)
  ((count == $2)) || fail "$count outputs, not $2"
}

expect_nothing_left() {
  [[ -z $(ls -A "$TMPDIR") ]] || fail "left in the temporary folder: $(ls -A "$TMPDIR")"
  [[ ! -e $1/.plenvorith-batch/run ]] || fail 'work in progress was left behind'
}

# Has a script with the given body run for each file, in which $1 is the input and $2 the output.
pretend() {
  program=(--as-is --program "$scratch/pretended")
  printf '#!/usr/bin/env bash\n%s\n' "$1" >"$scratch/pretended.new"
  chmod +x "$scratch/pretended.new"
  mv -f "$scratch/pretended.new" "$scratch/pretended"
}

# Whether a line of the table of all files matches.
expect_row() {
  "$batch" -o "$1" --export "$scratch/table.csv"
  grep -aEq -- "$2" "$scratch/table.csv" || fail "no row '$2' in: $(cat "$scratch/table.csv")"
}

names=(
  'a.stp' 'a.STP' 'a.step' 'a.StEp' 'a.p21' 'a.stp.stp' 'two words.stp' "it's.stp" 'say "hi".stp'
  $'two\nlines.stp' $'ends with a line feed\n.stp' $'tab\tstop.stp' '-dash.stp' '--resume.step'
  'größe.stp' '部品.stp' $'not \xff utf-8.stp' '$(touch gone).stp' '`x`.stp' '{}.stp' '{= die =}.stp'
  'back\slash.stp' '%s.stp' '*.stp' '.hidden.stp'
)
