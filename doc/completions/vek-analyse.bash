# Completion of vek-analyse for bash.

# The program lists its languages when it is asked for one that it has not.
_vek_analyse_languages() {
  "$1" -l '?' 2>&1 | sed -n 's/^\([a-z]*\)\( (.*\)\{0,1\}$/\1/p'
}

_vek_analyse() {
  local word=${COMP_WORDS[COMP_CWORD]} before=${COMP_WORDS[COMP_CWORD - 1]}
  local IFS=$'\n'
  COMPREPLY=()
  case $before in
    -l)
      mapfile -t COMPREPLY < <(compgen -W "$(_vek_analyse_languages "$1")" -- "$word")
      return
      ;;
    -t)
      mapfile -t COMPREPLY < <(compgen -W $'words\npairs\nboth' -- "$word")
      return
      ;;
    -n)
      mapfile -t COMPREPLY < <(compgen -W $'drop\nclass\nkeep' -- "$word")
      return
      ;;
    -s)
      compopt -o filenames
      mapfile -t COMPREPLY < <(compgen -f -- "$word")
      return
      ;;
    --to | --from)
      compopt -o filenames
      mapfile -t COMPREPLY < <(compgen -d -- "$word")
      return
      ;;
  esac
  mapfile -t COMPREPLY < <(compgen -W $'-l\n-t\n-s\n-n\n--to\n--from\n--progress\n-h\n--help\n-V\n--version' -- "$word")
}
complete -F _vek_analyse vek-analyse
