#!/usr/bin/env bash
# Packs the sources of the last commit, or of the one named, and prints the archive's checksum.
#
#   packaging/make_archive.sh [COMMIT]
#
# The same commit gives the same bytes: git takes the times from it, and gzip adds none.
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."
commit=${1:-HEAD}

version=$(git show "$commit:CMakeLists.txt" | sed -n 's/^ *VERSION \([0-9.]*\)$/\1/p')
name=plenvorith-$version
mkdir -p build
git archive --prefix="$name/" "$commit" | gzip -9n >"build/$name.tar.gz"
cd build
sha256sum "$name.tar.gz" | tee "$name.tar.gz.sha256"
