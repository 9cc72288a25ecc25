# Completion of vek-show for bash.

_vek_show() {
  local word=${COMP_WORDS[COMP_CWORD]} before=${COMP_WORDS[COMP_CWORD - 1]}
  local IFS=$'\n'
  COMPREPLY=()
  case $before in
    -a | --algorithm)
      mapfile -t COMPREPLY < <(compgen -W $'W\nR\nS\nL' -- "$word")
      return ;;
    -t | --table)
      mapfile -t COMPREPLY < <(compgen -W $'class\nterms\nagainst\nconfusions\nterm\nclasses\npairs\ndocument\ntree' -- "$word")
      return ;;
    -n | --lines) return ;;
    -C | --directory | -d | --data)
      compopt -o filenames
      mapfile -t COMPREPLY < <(compgen -d -- "$word")
      return ;;
    -r | --resource)
      compopt -o filenames
      mapfile -t COMPREPLY < <(compgen -d -- "$word"; compgen -f -X '!*.rc' -- "$word")
      return ;;
    -p | --predictions)
      compopt -o filenames
      mapfile -t COMPREPLY < <(compgen -d -- "$word"; compgen -f -X '!*.tsv' -- "$word")
      return ;;
  esac
  if [[ $word == -* ]]; then
    mapfile -t COMPREPLY < <(compgen -W $'-a\n--algorithm\n-C\n--directory\n-d\n--data\n-h\n--help\n-j\n--json\n-n\n--lines\n-p\n--predictions\n-r\n--resource\n-t\n--table\n--tsv\n-V\n--version' -- "$word")
    return
  fi
  mapfile -t COMPREPLY < <(compgen -W $'class\nterm\ndocument\ntree' -- "$word")
}
complete -F _vek_show vek-show
