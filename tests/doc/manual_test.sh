#!/bin/sh
# What the programs say of their options, what the manual pages say, what the
# completions offer and what the programs take are the same.
#
#   manual_test.sh DOC-DIRECTORY VEK COMPANION...
set -eu
export LC_ALL=C
doc=$(realpath "$1")
shift
for program; do
  set -- "$@" "$(realpath "$program")"
  shift
done

work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
cd "$work"
fail() {
  echo "$*"
  touch failed
}

# The commands of a program that has such.
commands_of() { # PROGRAM
  "$1" -h 2>&1 | sed -n '/^Subcommands:/,/^$/s/^  \([a-z]*\) .*/\1/p'
}

# Each prints the options, one on a line.
options_of_help() { # PROGRAM
  { "$1" -h; for command in $(commands_of "$1"); do "$1" "$command" -h; done; } 2>&1 |
    sed -n 's/^ \{2,\}\(-[^ ]*\) *\(--[A-Za-z]*\)\{0,1\}.*/\1\n\2/p' |
    sed '/^$/d'
}
options_of_page() { # PAGE
  sed -n '/^# OPTIONS/,/^# [^O]/p' "$1" | grep '^\*-' |
    grep -o '\*-[^*]*\*' | tr -d '*'
}
options_of_completion() { # FILE
  case $1 in
    *.bash) tr "\\\\'" '\n' <"$1" | sed -n 's/^n\{0,1\}\(--*[A-Za-z-]*\)$/\1/p' ;;
    *.fish)
      grep '^complete ' "$1" | sed -n 's/.* -[so] \([A-Za-z]*\).*/-\1/p'
      grep '^complete ' "$1" | sed -n 's/.* -l \([A-Za-z-]*\).*/--\1/p' ;;
    *.zsh) grep -o "[{,')]--*[A-Za-z][A-Za-z-]*" "$1" | cut -c2- ;;
  esac
}
compare() { # NAME OF WHAT
  sort -u >found
  [ -s found ] || fail "$1: no options found"
  diff wanted found >difference || fail "$1: $(cat difference)"
}

for program; do
  name=$(basename "$program")
  options_of_help "$program" | sort -u >wanted
  [ "$(wc -l <wanted)" -ge 6 ] || fail "$name -h: no options found"
  options_of_page "$doc/man/$name.1.scd" | compare "$name.1"
  for shell in bash fish zsh; do
    options_of_completion "$doc/completions/$name.$shell" |
      compare "completion of $name for $shell"
  done
  while read -r option; do
    "$program" "$option" </dev/null >output 2>&1 || true
    # What the program itself does not know is an option of some command.
    for command in $(commands_of "$program"); do
      grep -q -i 'unknown option' output || break
      "$program" "$command" "$option" </dev/null >output 2>&1 || true
    done
    ! grep -q -i 'unknown option' output || fail "$name refuses $option"
  done <wanted
  "$program" -Q </dev/null >output 2>&1 && fail "$name takes -Q"
  grep -q -i 'unknown option' output || fail "$name is silent on -Q"
done

[ ! -e failed ]
