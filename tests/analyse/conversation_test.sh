#!/bin/bash
# The conversation of vek-analyse: a path in, an analysis and the byte 0x01 out.
#   conversation_test.sh VEK-ANALYSE
# shellcheck source=shell_test.sh
. "$(dirname "$0")/shell_test.sh"

make_documents 20
printf '%s\n' docs/*.txt >list

nr_answers() {
  tr -dc '\001' | wc -c
}

# In strict turn: nothing more is sent before the answer has ended.
in_turn() {
  coproc analyser { "$program" "$@" 2>>turn-messages; }
  local answer path
  while read -r path; do
    printf '%s\n' "$path" >&"${analyser[1]}"
    IFS= read -r -t 60 -d $'\001' answer <&"${analyser[0]}" ||
      fail "no answer for $path"
    printf '%s\001' "$answer"
  done
  eval "exec ${analyser[1]}>&-"
  wait "$analyser_PID" || fail "status $? after the last answer"
}

in_turn -l en <list >turn
expect 0 "$program" -l en <list
cmp turn output || fail "answers differ in strict turn"
[ "$(nr_answers <output)" -eq 20 ] || fail "not 20 answers"

# However the requests arrive, and whatever the locale.
expect 0 "$program" < <(dd bs=1 if=list status=none)
cmp turn output || fail "answers depend on the pieces of a request"
expect 0 env LC_ALL=tr_TR.UTF-8 "$program" <list
cmp turn output || fail "answers depend on the locale"

# No answer for what cannot be read, and none behind it: an empty one would look
# like that of an empty text.
mkfifo fifo
mkdir directory
while IFS='|' read -r request message; do
  # shellcheck disable=SC2059  # requests are written with escapes
  expect 1 "$program" < <(printf "docs/000.txt\n$request\ndocs/000.txt")
  [ "$(nr_answers <output)" -eq 1 ] || fail "$request: not one answer"
  case $(cat messages) in
    "vek-analyse: cannot read '"*"$message") ;;
    *) fail "$request: $(cat messages)" ;;
  esac
done <<'CASES'
gone.txt|gone.txt': No such file or directory
fifo|fifo': not a regular file
directory|directory': not a regular file
/dev/zero|/dev/zero': not a regular file
|': No such file or directory
docs/000.txt\0x|: no file has a NUL in its name
%100000d|: File name too long
bad\033name|bad?name': No such file or directory
CASES
expect 0 "$program" < <(printf 'docs/000.txt\ndocs/000.txt')
[ "$(nr_answers <output)" -eq 2 ] || fail "the last line needs a line end"
# Whoever asked may go.
for _ in {1..200}; do cat list; done >long-list
(trap '' PIPE; "$program" <long-list 2>messages; echo $? >status) |
  head -c 1 >/dev/null
[ ! -s messages ] || fail "complains about EPIPE: $(cat messages)"
[ "$(cat status)" -eq 0 ] || fail "status $(cat status) after EPIPE"
status=0
"$program" <list >/dev/full 2>messages || status=$?
[ "$status" -eq 3 ] || fail "status $status on a full disk"
messages_are "vek-analyse: cannot write the answer: No space left on device"
expect 3 "$program" <&-

# The command line.
expect 0 "$program" -V
grep -qx 'vek-analyse [0-9]\.[0-9]*' output || fail "version: $(cat output)"
expect 0 "$program" -h
grep -q -- --to output || fail "no help"
[ ! -s messages ] || fail "help is taken for an error"
expect 2 "$program" -l klingon
grep -qx 'swedish (sv swe)' messages || fail "languages are not listed"
expect 2 "$program" -s gone
messages_are "vek-analyse: cannot read 'gone': No such file or directory"
while IFS='|' read -r arguments message; do
  eval "expect 2 \"\$program\" $arguments"
  messages_are "vek-analyse: $message"
done <<'CASES'
-x|unknown option '-x'
file.txt|unexpected argument 'file.txt'
-l|-l: 1 required LANG missing
--to= out|'--to=' lacks its value
--to ''|--to: empty name
-t all|-t: all not in {both,pairs,words}
-n no|-n: no not in {class,drop,keep}
--from x|--from requires --to
CASES
printf 'oil # and\r\nSTEEL\n#prices\n' >stop
echo '7 crude steel prices' >text
expect 0 "$program" -l de -l en -twords -n drop -n class -s stop <<<text
[ "$(tr '\001' . <output)" = $'# crude price\n.' ] || fail "the options: $(cat output)"

finish
