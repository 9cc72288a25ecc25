# Completion of vek-report for bash.

_vek_report() {
  local word=${COMP_WORDS[COMP_CWORD]} before=${COMP_WORDS[COMP_CWORD - 1]}
  local IFS=$'\n'
  COMPREPLY=()
  case $before in
    -t | --table)
      mapfile -t COMPREPLY < <(compgen -W $'summary\nclasses\npairs\ndocuments\ntest' -- "$word")
      return ;;
    -s | --sort)
      mapfile -t COMPREPLY < <(compgen -W $'class\nsupport\ncorrect\nmissed\nwrong\nprecision\nrecall\nf1\naccuracy' -- "$word")
      return ;;
    -d | --document | -n | --lines) return ;;
  esac
  if [[ $word == -* ]]; then
    mapfile -t COMPREPLY < <(compgen -W $'-c\n--compare\n--csv\n-d\n--document\n--files\n-h\n--help\n--html\n-j\n--json\n-n\n--lines\n-r\n--reverse\n-s\n--sort\n-t\n--table\n-V\n--version' -- "$word")
    return
  fi
  compopt -o filenames
  case $before in
    --files) mapfile -t COMPREPLY < <(compgen -d -- "$word") ;;
    --html) mapfile -t COMPREPLY < <(compgen -f -- "$word") ;;
    *) mapfile -t COMPREPLY < <(compgen -d -- "$word"; compgen -f -X '!*.tsv' -- "$word") ;;
  esac
}
complete -F _vek_report vek-report
