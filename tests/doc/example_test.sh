#!/bin/sh
# run-example does what README.md shows, and what one changes in its directory
# is there after a second call.
#
#   example_test.sh TOP-DIRECTORY BUILD-DIRECTORY
set -eu
export LC_ALL=C.UTF-8
top=$(realpath "$1")
build=$(realpath "$2")
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
cd "$work"
fail() {
  echo "$*"
  cat output
  exit 1
}

run() {
  "$top/run-example" "$build" example >output 2>&1 || fail "status $?"
}

# The first block without a language, its lines in this order.
awk '/^```/ { if (shown) exit; inside = !inside; shown = inside && $0 == "```"; next }
  shown { print }' "$top/README.md" >wanted
[ "$(wc -l <wanted)" -gt 10 ] || fail "README.md shows no output"
run
awk '{ sub(/ +$/, "") }
  FNR == NR { wanted[++nr] = $0; next }
  wanted[place + 1] == "..." { place++; loose = 1 }
  $0 == wanted[place + 1] { place++; loose = 0; next }
  !loose && place < nr { print "not as README.md says: " $0; bad = 1; exit }
  END { if (place < nr && wanted[nr] != "...") bad = 1; exit bad }' \
  wanted output || fail "README.md shows something else"

sed -i 's/^maxiters .*/maxiters 1/' example/news/vek.rc
gone=$(head -n 1 example/news/train)
sed -i '1d' example/news/train
cp "$top/examples/news/files/new-01.txt" example/incoming/late.txt
echo 'A new text about a tennis match.' >example/texts/sport/tennis/mine.txt
cp example/news/vek.rc kept.rc
run
cmp kept.rc example/news/vek.rc || fail "vek.rc was replaced"
! grep -qxF "$gone" example/news/train || fail "train was replaced"
cat example/news/train example/news/test | grep -q '^sport/tennis/mine ' ||
  fail "mine.txt is not imported"
[ -f example/sorted/sport/cycling/late.txt ] || fail "late.txt is not sorted"
[ "$(find example/sorted -name '*.txt' | wc -l)" -eq 9 ] || fail "not nine texts"
