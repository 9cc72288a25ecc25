# Completion of vek-explain for bash.

_vek_explain() {
  local word=${COMP_WORDS[COMP_CWORD]} before=${COMP_WORDS[COMP_CWORD - 1]}
  local IFS=$'\n'
  COMPREPLY=()
  case $before in
    -a | --algorithm)
      mapfile -t COMPREPLY < <(compgen -W $'W\nR\nS\nL' -- "$word")
      return ;;
    -t | --terms) return ;;
  esac
  if [[ $word == -* ]]; then
    mapfile -t COMPREPLY < <(compgen -W $'-a\n--algorithm\n-C\n--directory\n-d\n--data\n-h\n--help\n--html\n-j\n--json\n-r\n--resource\n-t\n--terms\n--tsv\n-V\n--version\n-x\n--exact' -- "$word")
    return
  fi
  compopt -o filenames
  case $before in
    -C | --directory | -d | --data) mapfile -t COMPREPLY < <(compgen -d -- "$word") ;;
    -r | --resource)
      mapfile -t COMPREPLY < <(compgen -d -- "$word"; compgen -f -X '!*.rc' -- "$word") ;;
    *) mapfile -t COMPREPLY < <(compgen -f -- "$word") ;;
  esac
}
complete -F _vek_explain vek-explain
