#!/usr/bin/env bash
# packaging/make_archive.sh, in a small repository of its own.
#
#   archive_test.sh SCRIPT CASE
set -euo pipefail
type -P git >/dev/null || { echo "skipped: no git" && exit 77; }

scratch=$(mktemp -d)
trap 'rm -rf "$scratch"' EXIT
export HOME=$scratch GIT_CONFIG_NOSYSTEM=1 TZ=UTC
mkdir -p "$scratch/sources/packaging" "$scratch/a" "$scratch/b"
cp "$1" "$scratch/sources/packaging"
cd "$scratch/sources"
printf 'project(\n  plenvorith\n  VERSION 7.8.9\n)\nset(CONTACT %s)\n' us@plenvorith.invalid \
  >CMakeLists.txt
echo 'Write to us@plenvorith.invalid.' >SECURITY.md
git init -q
git config user.name Tester
git config user.email tester@example.com

commit() {
  git add -A
  GIT_COMMITTER_DATE='2026-02-03T04:05:06Z' git commit -q -m "$1"
}
commit first

fail() {
  echo "FAILED: $*" >&2
  exit 1
}

GivesTheSameBytesEachTime() {
  packaging/make_archive.sh HEAD ../a >/dev/null
  touch CMakeLists.txt
  (umask 077 && packaging/make_archive.sh HEAD ../b >/dev/null)
  cmp ../a/plenvorith-7.8.9.tar.gz ../b/plenvorith-7.8.9.tar.gz
  tar -tvzf ../a/plenvorith-7.8.9.tar.gz >listing
  grep -q '2026-02-03 04:05 plenvorith-7.8.9/SECURITY.md$' listing || fail "$(cat listing)"
  (cd ../a && sha256sum --quiet -c plenvorith-7.8.9.tar.gz.sha256)
}

RefusesAReleaseWithoutAContact() {
  git tag v7.8.9
  ! packaging/make_archive.sh v7.8.9 ../a 2>../refusal || fail 'an archive was made'
  grep -q 'SECURITY.md:1:Write to us@plenvorith.invalid' ../refusal || fail "$(cat ../refusal)"
  [[ ! -e ../a/plenvorith-7.8.9.tar.gz ]] || fail 'an archive was made'
}

TakesAReleaseWithAContact() {
  sed -i 's/plenvorith[.]invalid/plenvorith.org/' CMakeLists.txt SECURITY.md
  commit second
  git tag v7.8.9
  packaging/make_archive.sh v7.8.9 ../a >/dev/null
  [[ -s ../a/plenvorith-7.8.9.tar.gz ]] || fail 'no archive was made'
}

"$2"
