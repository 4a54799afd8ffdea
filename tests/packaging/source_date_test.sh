#!/usr/bin/env bash
# How old the files of the Debian packages are.
#
#   source_date_test.sh CMAKE FOLDER CASE      FOLDER holds source_date.cmake
set -euo pipefail
cmake=$1

scratch=$(mktemp -d)
trap 'rm -rf "$scratch"' EXIT
export HOME=$scratch GIT_CONFIG_NOSYSTEM=1 GIT_CEILING_DIRECTORIES=${scratch%/*}
unset SOURCE_DATE_EPOCH
mkdir -p "$scratch/packaging/debian"
cp "$2"/source_date* "$scratch/packaging/debian"
cd "$scratch"
touch -d '2026-02-03T04:05:06Z' CHANGELOG.md

# expect_date TIME
expect_date() {
  local date
  cat >print.cmake <<END
include(packaging/debian/source_date.cmake)
file(WRITE date \$ENV{SOURCE_DATE_EPOCH})
END
  "$cmake" -P print.cmake
  date=$(date -u -d "@$(cat date)" +%FT%TZ)
  [[ $date == "$1" ]] || { echo "FAILED: $date" >&2 && exit 1; }
}

IsThatOfTheCommit() {
  type -P git >/dev/null || { echo "skipped: no git" && exit 77; }
  git init -q
  git config user.name Tester
  git config user.email tester@example.com
  git add -A
  GIT_COMMITTER_DATE='2026-01-02T03:04:05Z' git commit -q -m all
  expect_date 2026-01-02T03:04:05Z
}

IsThatOfTheArchive() {
  date -u -d 2026-01-01T00:00:00Z +%s >packaging/debian/source_date
  expect_date 2026-01-01T00:00:00Z
}

IsThatOfTheChangelogWithoutARepository() {
  expect_date 2026-02-03T04:05:06Z
}

IsThatOfTheChangelogWithoutGit() {
  cmake=$(type -P "$cmake")
  mkdir programs
  ln -s /bin/cat /bin/date /bin/rm programs
  # shellcheck disable=SC2123 # no other programs are to be found
  PATH=$scratch/programs
  expect_date 2026-02-03T04:05:06Z
}

IsTheOneInTheEnvironment() {
  SOURCE_DATE_EPOCH=86400 expect_date 1970-01-02T00:00:00Z
}

"$3"
