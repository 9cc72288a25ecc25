# Completion of vek-check for bash.

_vek_check() {
  local word=${COMP_WORDS[COMP_CWORD]} before=${COMP_WORDS[COMP_CWORD - 1]}
  local IFS=$'\n'
  COMPREPLY=()
  if [[ $before == @(-r|--resource) ]]; then
    compopt -o filenames
    mapfile -t COMPREPLY < <(compgen -d -- "$word"; compgen -f -X '!*.rc' -- "$word")
    return
  fi
  if [[ $word == -* ]]; then
    mapfile -t COMPREPLY < <(compgen -W $'-h\n--help\n-r\n--resource\n-V\n--version' -- "$word")
    return
  fi
  compopt -o filenames
  mapfile -t COMPREPLY < <(compgen -d -- "$word")
}
complete -F _vek_check vek-check
