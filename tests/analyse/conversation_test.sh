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

# One answer for each line, whatever it says.
mkfifo fifo
mkdir directory
{
  printf '%s\n' docs/000.txt gone.txt fifo directory '' /dev/zero
  printf 'docs/000.txt\0x\n'
  printf '%100000s\n' x
  printf 'bad\033name\n'
  printf docs/000.txt
} >requests
expect 1 "$program" <requests
[ "$(nr_answers <output)" -eq 10 ] || fail "not an answer for each line"
[ "$(wc -l <messages)" -eq 8 ] || fail "not a message for each failure"
first=$(head -n 1 <(tr '\001' '\n' <turn))
tr '\001' '\n' <output | grep -vxF '' >rest
[ "$(grep -cxF "$first" rest)" -eq 2 ] || fail "the readable ones have no answer"
grep -qxF "vek-analyse: cannot read 'gone.txt': No such file or directory" \
  messages || fail "no message about gone.txt: $(cat messages)"
grep -qxF "vek-analyse: cannot read 'fifo': not a regular file" messages ||
  fail "no message about the pipe"
grep -q "'bad?name'" messages || fail "control characters reach the terminal"
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
