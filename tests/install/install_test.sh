#!/usr/bin/env bash
# What `cmake --install` installs: programs that run, documents whose links lead somewhere, libraries
# that other projects build with.
#
#   install_test.sh CMAKE BUILD CASE
set -euo pipefail
shopt -s globstar nullglob
cmake=$1 build=$2

scratch=$(mktemp -d)
trap 'rm -rf "$scratch"' EXIT
mkdir "$scratch/tmp" "$scratch/home"
export TMPDIR=$scratch/tmp HOME=$scratch/home
cd "$scratch"
doc=usr/share/doc/plenvorith

fail() {
  echo "FAILED: $*" >&2
  exit 1
}

skip() {
  echo "skipped: $*"
  exit 77
}

# What the build was configured with.
setting() {
  sed -n "s/^$1:[A-Z]*=//p" "$build/CMakeCache.txt"
}
source=$(setting plenvorith_SOURCE_DIR)
compiler=$(setting CMAKE_CXX_COMPILER)
sanitize=$(setting PLENVORITH_SANITIZE)

install() {
  "$cmake" --install "$build" --prefix "$scratch/usr" "$@" >installed
}

has_kernel() {
  [[ $(setting PLENVORITH_WITH_KERNEL) =~ ^(ON|TRUE|true)$ ]]
}

# Configures the project in a folder with the compiler that built ours, and builds the program that is
# named like the folder.
build_project() {
  {
    "$cmake" -G Ninja -S "$1" -B "$1/build" -DCMAKE_PREFIX_PATH="$scratch/usr" \
      -DCMAKE_CXX_COMPILER="$compiler" -DCMAKE_CXX_FLAGS="${sanitize:+-fsanitize=$sanitize}" \
      "${@:2}" &&
      "$cmake" --build "$1/build" --target "$1"
  } >log 2>&1 || fail "$(cat log)"
}

# Prints block NUMBER of a language in docs/library.md.
example() {
  awk -v begin="\`\`\`$1" -v number="$2" \
    '$0 == "```" { on = 0 } on { print } $0 == begin { on = ++count == number }' \
    "$source/docs/library.md"
}

expect_knot() {
  (($(stat -c %s "$1") == 84 + 50 * 1536)) || fail "$1 has $(stat -c %s "$1") bytes"
}

ProgramsConvertASample() {
  has_kernel || skip "built without the kernel"
  install
  usr/bin/plenvorith $doc/samples/tessellated.step knot.stl >transcript
  [[ $(tail -n 1 transcript) == Done ]] || fail "$(cat transcript)"
  expect_knot knot.stl

  usr/bin/plenvorith-batch --help | grep -q '^usage: plenvorith-batch' || fail 'no help'
  usr/bin/plenvorith-batch $doc/samples/tessellated.step -o meshes >summary
  cmp knot.stl meshes/tessellated.step.stl
  usr/bin/plenvorith-check knot.stl | grep -q '"closed":true' || fail 'no closed knot'
}

PreparedFilesConvert() {
  has_kernel || skip "built without the kernel"
  install
  usr/bin/plenvorith-prepare $doc/samples/annotated.step ready.step >report
  usr/bin/plenvorith ready.step prepared.stl >transcript
  usr/bin/plenvorith $doc/samples/bracket.step bracket.stl >transcript
  cmp prepared.stl bracket.stl
}

EveryProgramHasItsPageAndCompletions() {
  install
  local program page version expected=plenvorith-prepare
  ! has_kernel || expected='plenvorith plenvorith-batch plenvorith-check plenvorith-prepare'
  [[ $(cd usr/bin && echo *) == "$expected" ]] || fail "$(ls usr/bin)"
  version=$(setting CMAKE_PROJECT_VERSION)
  for program in $expected; do
    page=usr/share/man/man1/$program.1
    grep -q "\"Plenvorith $version\"" "$page" || fail "no version in $page"
    grep -qF "$(setting PLENVORITH_CONTACT)" "$page" || fail "no contact in $page"
    ! grep '@[A-Za-z_]*@' "$page" || fail "something is not filled in in $page"
    bash -n "usr/share/bash-completion/completions/$program"
    grep -q "^#compdef $program$" "usr/share/zsh/site-functions/_$program" ||
      fail "completion of $program"
  done
}

LinksBetweenDocumentsLeadSomewhere() {
  install
  local page link count=0
  for page in "$doc"/**/*.md; do
    while IFS= read -r link; do
      count=$((count + 1))
      [[ -e ${page%/*}/$link ]] || fail "$page links to $link"
    done < <(sed 's/](/\n](/g' "$page" | sed -n 's/^](\([^):#]*\)[#)].*/\1/p' | grep .)
  done
  ((count >= 10)) || fail "only $count links found"
  grep -qF "<$(setting PLENVORITH_CONTACT)>" $doc/SECURITY.md || fail 'SECURITY.md names no contact'
}

ProgramsComeWithoutDevelopmentFiles() {
  install --component programs
  [[ ! -e usr/include && ! -e usr/lib ]] || fail "$(find usr/include usr/lib)"
}

OtherProjectsDecodeWithoutTheKernel() {
  install
  mkdir decode
  example cpp 1 >decode/decode.cpp
  example cmake 1 >decode/CMakeLists.txt
  build_project decode -DCMAKE_DISABLE_FIND_PACKAGE_OpenCASCADE=ON
  decode/build/decode "$source/samples/tessellated.step" knot.stl >report
  expect_knot knot.stl
  ! decode/build/decode missing.step missing.stl >report 2>errors || fail 'decoded what is not there'
  grep -q '^Error: .*missing.step' errors || fail "$(cat errors)"
  ! decode/build/decode $doc/samples/bracket.step none.stl >report 2>errors || fail 'decoded nothing'
  [[ $(<errors) == 'no tessellation' ]] || fail "$(cat errors)"
  [[ $(echo -- *.stl*) == '-- knot.stl' ]] || fail "left: $(echo ./*.stl*)"
}

OtherProjectsGetTheTriangles() {
  has_kernel || skip "built without the kernel"
  install
  mkdir triangles
  example cpp 3 >triangles/triangles.cpp
  example cmake 3 >triangles/CMakeLists.txt
  build_project triangles -DOpenCASCADE_DIR="$(setting OpenCASCADE_DIR)"
  local sample count
  for sample in bracket mixed tessellated; do
    usr/bin/plenvorith "$doc/samples/$sample.step" out.stl >transcript
    count=$(od -An -tu1 -j80 -N4 out.stl | awk '{ print $1 + 256 * ($2 + 256 * ($3 + 256 * $4)) }')
    triangles/build/triangles "$doc/samples/$sample.step" | tail -n 1 >said
    grep -qE "^$count triangles, the highest point at [0-9.]+$" said || fail "$sample: $(cat said)"
  done
  ! triangles/build/triangles missing.step >said 2>errors || fail 'triangles of what is not there'
  [[ $(<errors) == 'no geometry: missing.step' ]] || fail "$(cat errors)"
  [[ ! $(ls tmp) ]] || fail "left in the temporary directory: $(ls tmp)"
}

InstalledHeadersCompileAlone() {
  install
  local header count=0
  for header in usr/include/plenvorith/**/*.h; do
    header=${header#usr/include/plenvorith/}
    [[ $header != brep/* && $header != app/* ]] || continue
    count=$((count + 1))
    "$compiler" -std=c++20 -fsyntax-only -I usr/include/plenvorith -include "$header" -x c++ /dev/null
  done
  ((count >= 8)) || fail "only $count headers"
  [[ ! -e usr/include/plenvorith/exchange && ! -e usr/include/plenvorith/common/number.h ]] ||
    fail "$(find usr/include)"
}

OtherProjectsConvert() {
  has_kernel || skip "built without the kernel"
  install
  mkdir convert
  example cpp 2 >convert/convert.cpp
  example cmake 2 >convert/CMakeLists.txt
  build_project convert -DOpenCASCADE_DIR="$(setting OpenCASCADE_DIR)"
  convert/build/convert "$source/samples/mixed.step" ring.stl >transcript
  usr/bin/plenvorith "$source/samples/mixed.step" expected.stl >transcript
  cmp ring.stl expected.stl
}

OtherProjectsAreToldThatTheKernelIsMissing() {
  install
  mkdir convert
  example cmake 2 >convert/CMakeLists.txt
  : >convert/convert.cpp
  ! "$cmake" -G Ninja -S convert -B convert/build -DCMAKE_PREFIX_PATH="$scratch/usr" \
    -DCMAKE_DISABLE_FIND_PACKAGE_OpenCASCADE=ON >log 2>&1 || fail 'found without a kernel'
  if has_kernel; then
    grep -q 'Open CASCADE [0-9.]* was not found' log || fail "$(cat log)"
  else
    grep -q 'Plenvorith_FOUND to FALSE' log || fail "$(cat log)"
  fi
}

PkgConfigKnowsTheLibraries() {
  type -P pkg-config >/dev/null || skip "no pkg-config"
  install
  local flags
  flags=$(PKG_CONFIG_PATH=$(echo usr/lib/**/pkgconfig) pkg-config --cflags --libs plenvorith)
  example cpp 1 >decode.cpp
  # shellcheck disable=SC2086 # several flags
  "$compiler" -std=c++20 ${sanitize:+-fsanitize=$sanitize} decode.cpp $flags -o decode
  ./decode "$source/samples/tessellated.step" knot.stl >report
  expect_knot knot.stl
}

APartOfOtherSourcesIsNotInstalled() {
  mkdir decode
  example cpp 1 >decode/decode.cpp
  cat >decode/CMakeLists.txt <<END
cmake_minimum_required(VERSION 3.25)
project(decode LANGUAGES CXX)
set(PLENVORITH_WITH_KERNEL OFF)
add_subdirectory("$source" plenvorith)
add_executable(decode decode.cpp)
target_link_libraries(decode PRIVATE plenvorith::prepare plenvorith::tessellation plenvorith::output)
install(TARGETS decode)
END
  build_project decode -DCMAKE_UNITY_BUILD=ON
  "$cmake" --install decode/build --prefix "$scratch/usr" >installed
  usr/bin/decode "$source/samples/tessellated.step" knot.stl >report
  expect_knot knot.stl
  [[ $(find usr -type f) == usr/bin/decode ]] || fail "$(find usr -type f)"
}

"$3"
