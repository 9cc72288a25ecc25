# What the scripts *_test.sh share; read by them with ".".
#
#   program   the vek-analyse under test, an absolute path: the first argument
#   work      a directory of their own, which they start in
#   fail      reports, and lets the script go on to its next check
#   finish    ends the script with the status that fits
# shellcheck shell=bash
set -u
export LC_ALL=C
program=$1
nr_failures=0
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
cd "$work" || exit 1

fail() {
  echo "failed: $*" >&2
  nr_failures=$((nr_failures + 1))
}

finish() {
  [ "$nr_failures" -eq 0 ]
  exit
}

# expect STATUS WORDS...: runs the words with its standard output in `output`
# and its messages in `messages`.
expect() {
  local expected=$1 status=0
  shift
  "$@" >output 2>messages || status=$?
  [ "$status" -eq "$expected" ] || fail "$*: status $status, not $expected"
}

# messages_are TEXT: what the last command of `expect` wrote to standard error.
messages_are() {
  [ "$(cat messages)" = "$1" ] || fail "messages are: $(cat messages)"
}

# Writes the documents docs/000.txt and so on.
make_documents() {
  mkdir -p docs
  for ((i = 0; i < $1; ++i)); do
    printf 'Crude oil prices w%d rose.\nThe house of steel, 1987: %s' \
      "$i" "long-term $((i % 7)) water big bank" >"$(printf docs/%03d.txt "$i")"
  done
}
