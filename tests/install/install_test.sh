#!/usr/bin/env bash
# Installs a build into a scratch folder and converts samples with what is installed.
#
#   install_test.sh CMAKE BUILD
set -euo pipefail
cmake=$1 build=$2

scratch=$(mktemp -d)
trap 'rm -rf "$scratch"' EXIT
mkdir "$scratch/tmp" "$scratch/home"
export TMPDIR=$scratch/tmp HOME=$scratch/home
cd "$scratch"

fail() {
  echo "FAILED: $*" >&2
  exit 1
}

"$cmake" --install "$build" --prefix "$scratch/usr" >installed

doc=usr/share/doc/plenvorith
for file in bin/plenvorith bin/plenvorith-batch share/man/man1/plenvorith.1 \
  share/man/man1/plenvorith-batch.1 share/doc/plenvorith/LICENSE \
  share/doc/plenvorith/samples/README.md share/zsh/site-functions/_plenvorith \
  share/bash-completion/completions/plenvorith share/bash-completion/completions/plenvorith-batch; do
  [[ -f usr/$file ]] || fail "$file is not installed"
done
[[ ! -e usr/include && ! -e usr/lib ]] || fail 'development files are installed'

usr/bin/plenvorith $doc/samples/tessellated.step knot.stl >transcript
[[ $(tail -n 1 transcript) == Done ]] || fail "$(cat transcript)"
(($(stat -c %s knot.stl) == 84 + 50 * 1536)) || fail "knot.stl has $(stat -c %s knot.stl) bytes"

usr/bin/plenvorith-batch --help | grep -q '^usage: plenvorith-batch' || fail 'no help'
if type -P parallel >/dev/null; then
  usr/bin/plenvorith-batch $doc/samples/tessellated.step -o meshes >summary
  cmp knot.stl meshes/tessellated.step.stl
fi

bash -n usr/share/bash-completion/completions/plenvorith
