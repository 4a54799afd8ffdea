#!/usr/bin/env bash
# Runs one case on .ci/check-subjects, in a repository of its own.
#
#   subjects_test.sh CHECK CASE
#
# Exit status 77 means that the case cannot run here.
set -euo pipefail
check=$(realpath "$1") case=$2
command -v git >/dev/null || { echo "skipped: no git" && exit 77; }

scratch=$(mktemp -d)
trap 'rm -rf "$scratch"' EXIT
export HOME=$scratch GIT_CONFIG_NOSYSTEM=1 GIT_CEILING_DIRECTORIES=$scratch
unset GIT_DIR GIT_WORK_TREE GIT_INDEX_FILE
mkdir "$scratch/project"
cd "$scratch/project"

fail() {
  echo "FAILED: $*" >&2
  cat "$scratch/err" >&2 || true
  exit 1
}

# One commit, at a time that only grows.
now=1700000000
commit() {
  now=$((now + 100))
  GIT_AUTHOR_DATE="@$now +0000" GIT_COMMITTER_DATE="@$now +0000" \
    git -c user.name=a -c user.email=a@b commit -q --allow-empty -m "$1"
}

# An old commit that breaks the rule, BASE, and room for new ones.
begin() {
  git init -q -b main
  commit "Merge branch 'work'"
  base=$(git rev-parse HEAD)
  base_time=$now
}

expect_right() {
  "$check" "$base" "$base_time" >"$scratch/out" 2>"$scratch/err" || fail "it finds something wrong"
  [[ ! -s $scratch/err ]] || fail "it prints something"
}

expect_wrong() {
  ! "$check" "$base" "$base_time" >"$scratch/out" 2>"$scratch/err" || fail "it finds nothing wrong"
  grep -q "$1" "$scratch/err" || fail "it does not say \"$1\""
}

PassesOldAndRightCommits() {
  begin
  expect_right
  commit 'steptext: keep blanks after the equals sign'
  commit '.ci: say what is wrong'
  commit 'tests/cli: add a case that is 72 characters long with its folder, not 73'
  expect_right
}

RejectsASubjectWithoutAFolder() {
  begin
  commit 'keep blanks after the equals sign'
  commit 'docs: say so'
  expect_wrong 'keep blanks after the equals sign: not like "folder: imperative subject"'
}

RejectsCapitalLettersAndFullStops() {
  begin
  commit 'docs: Say so'
  expect_wrong 'not like'
  git reset -q --hard "$base"
  commit 'docs: say so.'
  expect_wrong 'full stop'
}

RejectsALongSubject() {
  begin
  commit 'tests/cli: add a case that is 73 characters long with its folder, not  72'
  expect_wrong '73 characters'
}

RejectsAMerge() {
  begin
  git checkout -q -b other
  commit 'docs: say so'
  git checkout -q main
  commit 'docs: say something else'
  GIT_COMMITTER_DATE="@$((now + 1)) +0000" \
    git -c user.name=a -c user.email=a@b merge -q -m 'docs: say both' other
  expect_wrong 'docs: say both: a merge'
}

LooksAtNewCommitsOfAShallowClone() {
  begin
  commit 'docs: say so'
  commit 'docs: say more'
  commit 'say nothing'
  git clone -q --depth 2 "file://$PWD" ../shallow
  cd ../shallow
  expect_wrong 'say nothing: not like'
}

PassesOldCommitsOfAShallowClone() {
  git init -q -b main
  commit 'first'
  base=$(git rev-parse HEAD)
  commit 'old as well'
  base_time=$now
  commit 'docs: say so'
  git clone -q --depth 2 "file://$PWD" ../shallow
  cd ../shallow
  expect_right
}

PassesATreeWithoutARepository() {
  base=HEAD base_time=0
  "$check" >"$scratch/out" 2>"$scratch/err" || fail "it fails"
  grep -q 'no repository' "$scratch/out" || fail "it does not say that there is none"
}

"$case"
