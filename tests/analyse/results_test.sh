#!/bin/bash
# The answers of vek-analyse as files, and a run that finishes another.
#   results_test.sh VEK-ANALYSE
# shellcheck source=shell_test.sh
. "$(dirname "$0")/shell_test.sh"

make_documents 30
mkdir docs/sub
cp docs/000.txt docs/sub/deep.txt
find docs -name '*.txt' | sort >list

expect 0 "$program" --to out/made --from docs <list
[ ! -s output ] || fail "something on standard output"
while read -r path; do
  echo "$path" | "$program" | tr -d '\001' | cmp - "out/made/${path#docs/}" ||
    fail "$path differs"
done <list

# What is there stays, what is missing comes.
echo mine >out/made/003.txt
rm out/made/01*.txt out/made/sub/deep.txt
find out -type f -exec touch -d 2001-01-01 {} +
expect 0 "$program" --progress --to out/made --from docs <list
[ "$(cat out/made/003.txt)" = mine ] || fail "a result was written again"
[ "$(find out -type f | wc -l)" -eq 31 ] || fail "results are still missing"
[ "$(find out -type f -newermt 2002-01-01 | wc -l)" -eq 11 ] ||
  fail "more was done than was missing"
grep -qx 'vek-analyse: 31 documents, 20 of them skipped, [0-9]* a second' \
  messages || fail "progress: $(cat messages)"

# What fails leaves no file, so that it is tried again, and stops no other.
printf '%s\n' docs/gone.txt other/000.txt docs/../list docs/000.txt >requests
rm out/made/000.txt
expect 1 "$program" --to out/made --from docs <requests
cat >expected <<'MESSAGES'
vek-analyse: cannot read 'docs/gone.txt': No such file or directory
vek-analyse: no result for 'other/000.txt': not in the directory of '--from'
vek-analyse: no result for 'docs/../list': leads out of the directory
MESSAGES
cmp expected messages || cat messages
[ -e out/made/000.txt ] || fail "stopped at a failure"
[ "$(find out -type f | wc -l)" -eq 31 ] || fail "files of failed documents"
[ -z "$(find . -name '.vek-analyse-*')" ] || fail "temporary files are left"
touch file
expect 1 "$program" --to file <<<docs/000.txt
messages_are "vek-analyse: cannot write 'file/000.txt': Not a directory"
rm file
mkdir -p file/000.txt
expect 1 "$program" --to file <<<docs/000.txt
messages_are "vek-analyse: cannot write 'file/000.txt': Is a directory"

finish
