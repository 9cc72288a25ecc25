# Completion of vek-tune for bash.

_vek_tune() {
  local word=${COMP_WORDS[COMP_CWORD]} before=${COMP_WORDS[COMP_CWORD - 1]}
  local IFS=$'\n'
  COMPREPLY=()
  if [[ $before == @(-r|--resource|-o|--output) ]]; then
    compopt -o filenames
    mapfile -t COMPREPLY < <(compgen -d -- "$word"; compgen -f -X '!*.rc' -- "$word")
    return
  fi
  [[ $before != @(-b|--budget) ]] || return
  if [[ $word == -* ]]; then
    mapfile -t COMPREPLY < <(compgen -W $'-b\n--budget\n-f\n--force\n-h\n--help\n-o\n--output\n-r\n--resource\n-V\n--version' -- "$word")
    return
  fi
  compopt -o filenames
  mapfile -t COMPREPLY < <(compgen -d -- "$word")
}
complete -F _vek_tune vek-tune
