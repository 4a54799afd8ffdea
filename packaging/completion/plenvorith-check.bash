# bash completion for plenvorith-check

_plenvorith_check() {
  local cur prev words cword
  _init_completion || return
  if [[ $cur == -* ]]; then
    mapfile -t COMPREPLY < <(compgen -W '--all --exact --text' -- "$cur")
    return
  fi
  local word operand=1
  for word in "${words[@]:1:cword-1}"; do
    [[ $word == -* ]] || ((operand += 1))
  done
  case $operand in
    1) _filedir '@(stp|step|p21|stl)' ;;
    2) _filedir stl ;;
    3) mapfile -t COMPREPLY < <(compgen -W '1.0 0.1 0.01' -- "$cur") ;;
  esac
}

complete -F _plenvorith_check plenvorith-check
