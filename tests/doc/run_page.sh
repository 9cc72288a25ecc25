#!/bin/sh
# Runs the commands of a page as they are written, and checks what the page says
# comes of them.
#
#   run_page.sh [-k DIRECTORY] [-C DIRECTORY] PAGE [PROGRAM-DIRECTORY...]
#
# The commands are the page's fenced blocks "sh". They run in order in one
# shell, that begins in the directory of -C or else in an empty one, with an
# empty home, or that of -k, which is kept; the first that fails ends the test. With program directories, which come
# first on the PATH then, the blocks "sh setup" are left out: they make known
# programs that are not installed. These blocks are compared at their place:
#   text output     what the block of commands before it has printed
#   text file=NAME  all of that file, to the byte
#   text in=NAME    lines that stand in that file, in this order
#   hex file=NAME   the bytes of that file; .. is any byte, # begins a comment
# A line "..." in a text stands for any lines.
set -eu

work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
mkdir "$work/home" "$work/start"
start=$work/start
home=$work/home
if [ "$1" = -k ]; then
  home=$(realpath "$2")
  shift 2
fi
if [ "$1" = -C ]; then
  start=$(realpath "$2")
  shift 2
fi
page=$(realpath "$1")
shift
setup=yes
path=$PATH
for directory in "$@"; do
  setup=no
  path=$(realpath "$directory"):$path
done

cat >"$work/script" <<'EOF2'
set -eu
fail() {
  echo "page line $1: $2"
  trap - EXIT
  exit 1
}
compare_file() { # LINE FILE
  if grep -qx '\.\.\.' "$VEK_TEST/wanted"; then
    compare_text "$1" "$2" 1
  else
    diff -u "$VEK_TEST/wanted" "$2" || fail "$1" "$2 is not as told"
  fi
}
# Each expected line is looked for from the end of the last match on. Blanks at
# line ends and empty lines at the end do not count.
compare_text() { # LINE FILE WHOLE
  awk -v whole="$3" '
    function clean(text) { sub(/[ \t]+$/, "", text); return text }
    FNR == NR { wanted[++nr_wanted] = clean($0); next }
    { found[++nr_found] = clean($0) }
    END {
      while (nr_found && found[nr_found] == "") nr_found--
      place = 1; loose = !whole
      for (i = 1; i <= nr_wanted; i++) {
        if (wanted[i] == "...") { loose = 1; continue }
        while (loose && place <= nr_found && found[place] != wanted[i]) place++
        if (place > nr_found || found[place++] != wanted[i]) exit 1
        loose = !whole
      }
      exit whole && !loose && place <= nr_found
    }' "$VEK_TEST/wanted" "$2" && return
  diff -u "$VEK_TEST/wanted" "$2" || fail "$1" "$2 is not as told"
}
# ".." as a form is any byte, too.
compare_hex() { # LINE FILE
  wanted=$(sed 's/#.*//' "$VEK_TEST/wanted" | tr -s ' \t\n' ' ')
  found=$(od -An -v -tx1 "$2" | tr -s ' \n' ' ')
  echo "${found# }" | grep -qix "${wanted# }" ||
    fail "$1" "$2 is not as told but has $found"
}
trap 'status=$?; [ $status -eq 0 ] || { cat "$VEK_TEST/output"; echo "page line $line: status $status"; }' EXIT
EOF2

# The page as a script: commands as they are, expectations as here documents.
awk -v setup=$setup '
  /^```/ && !inside {
    inside = 1; language = substr($1, 4); mode = $2
    is_command = language == "sh" && !(mode == "setup" && setup == "no")
    is_check = (language == "text" || language == "hex") && mode != ""
    if (is_command) { print "line=" NR; print "{" }
    if (is_check) { line = NR; print "cat >\"$VEK_TEST/wanted\" <<\"END_OF_BLOCK\"" }
    next
  }
  /^```/ {
    if (is_command) print ":\n} >\"$VEK_TEST/output\" 2>&1"
    if (is_check) {
      print "END_OF_BLOCK"
      name = mode; sub(/^[a-z]*=*/, "", name)
      if (language == "hex") print "compare_hex " line " \"" name "\""
      else if (mode == "output") print "compare_text " line " \"$VEK_TEST/output\" 1"
      else if (mode ~ /^file=/) print "compare_file " line " \"" name "\""
      else print "compare_text " line " \"" name "\" 0"
      nr_checks++
    }
    inside = 0; next
  }
  inside && (is_command || is_check) { print }
  END { if (!nr_checks) print "fail 0 \"nothing is checked\"" }
' "$page" >>"$work/script"

cd "$start"
status=0
env -u LANGUAGE HOME="$home" PATH="$path" LC_ALL=C.UTF-8 VEK_TEST="$work" \
  sh "$work/script" </dev/null >"$work/result" 2>&1 || status=$?
[ $status -eq 0 ] || cat "$work/result" >&2
exit $status
