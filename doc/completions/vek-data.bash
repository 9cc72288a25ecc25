# Completion of vek-data for bash.

_vek_data() {
  local word=${COMP_WORDS[COMP_CWORD]} command=${COMP_WORDS[1]}
  local IFS=$'\n'
  COMPREPLY=()
  if [[ $word == -* ]]; then
    local options=$'-h\n--help'
    ((COMP_CWORD > 1)) || options+=$'\n-V\n--version'
    [[ $command != @(info|list|export) ]] || options+=$'\n-j\n--json'
    [[ $command != list ]] || options+=$'\n-e\n--empty'
    [[ $command != pack ]] || options+=$'\n-r\n--resource\n-d\n--data\n-a\n--algorithm\n-c\n--analyser'
    mapfile -t COMPREPLY < <(compgen -W "$options" -- "$word")
    return
  fi
  if ((COMP_CWORD == 1)); then
    mapfile -t COMPREPLY < <(compgen -W $'info\nlist\nverify\nforget\ncompact\ncopy\nexport\npack' -- "$word")
    return
  fi
  if [[ ${COMP_WORDS[COMP_CWORD-1]} == @(-a|--algorithm) ]]; then
    mapfile -t COMPREPLY < <(compgen -W $'W\nR\nS\nL' -- "$word")
    return
  fi
  compopt -o filenames
  if [[ ${COMP_WORDS[COMP_CWORD-1]} == @(-r|--resource|-c|--analyser) ]]; then
    mapfile -t COMPREPLY < <(compgen -f -- "$word")
    return
  fi
  mapfile -t COMPREPLY < <(compgen -d -- "$word")
}
complete -F _vek_data vek-data
