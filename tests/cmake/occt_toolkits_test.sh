#!/usr/bin/env bash
# The lookup of the kernel's toolkits, against kernels that are nothing but a package file and empty
# libraries, outside the system's folders.
#
#   occt_toolkits_test.sh CMAKE CASE
set -euo pipefail
cmake=$1
here=$(cd "$(dirname "${BASH_SOURCE[0]}")" && pwd)
scratch=$(mktemp -d)
trap 'rm -rf "$scratch"' EXIT

common='TKXSBase TKMesh TKTopAlgo TKBRep TKGeomBase TKG3d TKMath TKernel TKFillet TKBO TKPrim'

# Makes a kernel of this release with these toolkits and configures against it.
configure_against() {
  local release=$1 toolkit
  shift
  IFS=. read -r major minor maintenance <<<"$release"
  mkdir -p "$scratch/kernel/lib/cmake" "$scratch/kernel/include"
  cat >"$scratch/kernel/lib/cmake/OpenCASCADEConfig.cmake" <<END
set(OpenCASCADE_MAJOR_VERSION $major)
set(OpenCASCADE_MINOR_VERSION $minor)
set(OpenCASCADE_MAINTENANCE_VERSION $maintenance)
set(OpenCASCADE_LIBRARY_DIR $scratch/kernel/lib)
set(OpenCASCADE_INCLUDE_DIR $scratch/kernel/include)
END
  for toolkit in "$@"; do
    : >"$scratch/kernel/lib/lib$toolkit.so"
  done
  "$cmake" -G Ninja -S "$here/occt_toolkits" -B "$scratch/build" \
    -DOpenCASCADE_DIR="$scratch/kernel/lib/cmake" >"$scratch/out" 2>&1
}

expect() {
  grep -qF -- "$1" "$scratch/out" || {
    echo "not printed: $1"
    cat "$scratch/out"
    exit 1
  }
}

expect_not() {
  ! grep -qF -- "$1" "$scratch/out" || {
    echo "printed: $1"
    cat "$scratch/out"
    exit 1
  }
}

TakesTheOldNamesBefore78() {
  # shellcheck disable=SC2086 # a list
  configure_against 7.7.2 $common TKSTEP TKSTEP209 TKSTEPAttr TKSTEPBase TKSTL
  expect "links $scratch/kernel/lib/libTKSTEP.so;"
  expect "$scratch/kernel/lib/libTKSTL.so;"
  expect "includes $scratch/kernel/include"
  expect_not TKDE
}

TakesTheNewNamesFrom78() {
  # shellcheck disable=SC2086 # a list
  configure_against 7.8.0 $common TKDESTEP TKDESTL
  expect "links $scratch/kernel/lib/libTKDESTEP.so;$scratch/kernel/lib/libTKDESTL.so;"
  expect_not libTKSTEP
}

AcceptsTheOldestRelease() {
  # shellcheck disable=SC2086 # a list
  configure_against 7.5.0 $common TKSTEP TKSTEP209 TKSTEPAttr TKSTEPBase TKSTL
  expect 'Open CASCADE 7.5.0 in'
}

RejectsAnOlderRelease() {
  # shellcheck disable=SC2086 # a list
  ! configure_against 7.4.0 $common TKSTEP TKSTEP209 TKSTEPAttr TKSTEPBase TKSTL
  expect 'Plenvorith needs Open CASCADE 7.5 or later'
  expect 'found 7.4.0 in'
}

RejectsAKernelWithoutAToolkit() {
  # shellcheck disable=SC2086 # a list
  ! configure_against 7.8.0 $common TKDESTEP
  expect 'Could not find occt_TKDESTL'
}

"$2"
