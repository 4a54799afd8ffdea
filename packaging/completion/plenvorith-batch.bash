# bash completion for plenvorith-batch

_plenvorith_batch() {
  # shellcheck disable=SC2034 # what _init_completion sets
  local cur prev words cword split
  _init_completion -s || return # takes apart --to=stl, too
  case $prev in
    -o | --output | --base) _filedir -d ;;
    --program | --files-from | --transcript | --export) _filedir ;;
    --to) mapfile -t COMPREPLY < <(compgen -W 'stl stp' -- "$cur") ;;
    --sshlogin) _known_hosts_real -- "$cur" ;;
    --deflection | --shard | --jobs | --time-limit | --memory-limit | --memory-free | --include | --exclude) ;;
    *)
      if [[ $cur == -* ]]; then
        mapfile -t COMPREPLY < <(compgen -W '--output --base --files-from --include
          --exclude --follow --to --deflection --split --parts --as-is --resume --prune --dry-run
          --jobs --time-limit --memory-limit --memory-free --transcript --export --check --thumbnails --sshlogin
          --transfer --shard --merge --bar --program --version
          --help' -- "$cur")
      else
        _filedir '@(stp|step|p21)'
      fi
      ;;
  esac
}

complete -F _plenvorith_batch plenvorith-batch
