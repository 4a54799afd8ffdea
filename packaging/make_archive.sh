#!/usr/bin/env bash
# Packs the sources of the last commit, or of the one named, and prints the archive's checksum.
#
#   packaging/make_archive.sh [COMMIT [FOLDER]]      FOLDER is build if left out
#
# The same commit gives the same bytes: git takes the times from it, and gzip adds none. A commit that
# is tagged as a release needs a homepage and a contact that exist.
set -euo pipefail
folder=${2:-}
[[ ! $folder ]] || folder=$(realpath "$folder")
cd "$(dirname "${BASH_SOURCE[0]}")/.."
commit=${1:-HEAD}

if git describe --exact-match --tags --match 'v*' "$commit" >/dev/null 2>&1 &&
  git grep -n '[.]invalid\b' "$commit" -- CMakeLists.txt SECURITY.md >&2; then
  echo 'A release needs a homepage and a contact: put them in place of what ends in .invalid.' >&2
  exit 1
fi

version=$(git show "$commit:CMakeLists.txt" | sed -n 's/^ *VERSION \([0-9.]*\)$/\1/p')
name=plenvorith-$version
folder=${folder:-$PWD/build}
mkdir -p "$folder"
git archive --prefix="$name/" "$commit" | gzip -9n >"$folder/$name.tar.gz"
cd "$folder"
sha256sum "$name.tar.gz" | tee "$name.tar.gz.sha256"
