# bash completion for plenvorith

_plenvorith() {
  local cur prev words cword
  _init_completion || return
  case $cword in
    1) _filedir '@(stp|step|p21)' ;;
    2) _filedir stl ;; # an output is overwritten: no STEP file that is there
    3) mapfile -t COMPREPLY < <(compgen -W '1.0 0.1 0.01' -- "$cur") ;;
    4) mapfile -t COMPREPLY < <(compgen -W 'split' -- "$cur") ;;
  esac
}

complete -F _plenvorith plenvorith
