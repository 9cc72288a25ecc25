# Completion of vek-import for bash.

_vek_import() {
  local word=${COMP_WORDS[COMP_CWORD]} before=${COMP_WORDS[COMP_CWORD - 1]}
  local IFS=$'\n'
  COMPREPLY=()
  case $before in
    -f | --form)
      mapfile -t COMPREPLY < <(compgen -W $'text\nhtml\nmail\nmbox\ncsv\ntsv\njsonl\nfasttext' -- "$word")
      return
      ;;
    -e | --encoding)
      mapfile -t COMPREPLY < <(compgen -W "$(iconv -l | sed 's,/.*,,')" -- "$word")
      return
      ;;
    -[cFgipstT] | --class | --filter | --group | --id | --path | --separator | --text | --test)
      return
      ;;
  esac
  if [[ $word == -* ]]; then
    mapfile -t COMPREPLY < <(compgen -W $'-c\n--class\n-e\n--encoding\n-f\n--form\n-F\n--filter\n-g\n--group\n-h\n--help\n-i\n--id\n--no-header\n--no-quotes\n-p\n--path\n-q\n--quiet\n-s\n--separator\n-t\n--text\n-T\n--test\n-V\n--version' -- "$word")
    return
  fi
  compopt -o filenames
  mapfile -t COMPREPLY < <(compgen -f -- "$word")
}
complete -F _vek_import vek-import
