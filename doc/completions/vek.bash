# Completion of vek for bash.

_vek() {
  local word=${COMP_WORDS[COMP_CWORD]} before=${COMP_WORDS[COMP_CWORD - 1]}
  local IFS=$'\n'
  COMPREPLY=()
  case $before in
    -a | --algorithm)
      mapfile -t COMPREPLY < <(compgen -W $'W\nR\nS\nL' -- "$word")
      return
      ;;
    -r | --resource)
      compopt -o filenames
      mapfile -t COMPREPLY < <(compgen -d -- "$word"; compgen -f -X '!*.rc' -- "$word")
      return
      ;;
  esac
  if [[ $word == -* && $before != @(-d|--data|-i|--input) ]]; then
    mapfile -t COMPREPLY < <(compgen -W $'-h\n--help\n-d\n--data\n-i\n--input\n-p\n--poll\n-r\n--resource\n-v\n--verbose\n-V\n--Version\n-a\n--algorithm\n-xl\n--xlearning\n-xt\n--xtesting' -- "$word")
    return
  fi
  compopt -o filenames
  mapfile -t COMPREPLY < <(compgen -d -- "$word")
}
complete -F _vek vek
