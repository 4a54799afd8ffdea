# bash completion for plenvorith-prepare

_plenvorith_prepare() {
  # shellcheck disable=SC2034 # what _init_completion sets and _filedir reads
  local cur prev words cword
  _init_completion || return
  case $cword in
    1) _filedir '@(stp|step|p21)' ;;
    2) _filedir -d ;; # an output is overwritten: no file that is there
  esac
}

complete -F _plenvorith_prepare plenvorith-prepare
