# Completion of vek-sort for bash.

_vek_sort() {
  local word=${COMP_WORDS[COMP_CWORD]} before=${COMP_WORDS[COMP_CWORD - 1]}
  local IFS=$'\n'
  COMPREPLY=()
  case $before in
    -[it] | --id | --settle | --text | --wait)
      return
      ;;
    --log)
      compopt -o filenames
      mapfile -t COMPREPLY < <(compgen -f -- "$word")
      return
      ;;
  esac
  if [[ $word == -* ]]; then
    mapfile -t COMPREPLY < <(compgen -W $'--copy\n-h\n--help\n-i\n--id\n--learn\n--link\n--log\n--move\n-q\n--quiet\n--settle\n--stream\n-t\n--text\n--to\n-V\n--version\n--wait\n--watch' -- "$word")
    return
  fi
  compopt -o filenames
  mapfile -t COMPREPLY < <(compgen -d -- "$word")
}
complete -F _vek_sort vek-sort
