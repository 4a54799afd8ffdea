# bash completion for plenvorith-batch

_plenvorith_batch() {
  local cur prev words cword
  _init_completion || return
  case $prev in
    -o | --output) _filedir -d ;;
    --program) _filedir ;;
    --to) mapfile -t COMPREPLY < <(compgen -W 'stl stp' -- "$cur") ;;
    --sshlogin) _known_hosts_real -- "$cur" ;;
    --deflection | --jobs | --time-limit) ;;
    *)
      if [[ $cur == -* ]]; then
        mapfile -t COMPREPLY < <(compgen -W '--output --to --deflection --split --jobs
          --time-limit --resume --sshlogin --bar --program --help' -- "$cur")
      else
        _filedir '@(stp|step|p21)'
      fi
      ;;
  esac
}

complete -F _plenvorith_batch plenvorith-batch
