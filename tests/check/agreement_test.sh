#!/bin/sh
# vek-check says that a run would stop exactly when vek stops, and leaves no
# trace in a collection.
#
#   agreement_test.sh VEK VEK-CHECK
set -eu
export LC_ALL=C
vek=$(realpath "$1")
check=$(realpath "$2")

work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
cd "$work"
failed=0

hashes() {
  find . -type f -exec sha256sum {} + | sort
}

# One case in a fresh directory: what stands in the list, and in the resource
# file behind what all of them have.
agree() { # LIST [RESOURCES]
  rm -rf case
  mkdir -p case/files
  cd case
  touch files/a.txt files/b.txt files/c.txt
  # shellcheck disable=SC2059  # the list is written with escapes
  printf "$1" >train
  # shellcheck disable=SC2238  # a file of that name
  printf 'c x\n' >test
  printf '[general] analyser ""\n%s' "${2:-}" >vek.rc
  hashes >../before
  says=no
  "$check" . >../findings 2>&1 || [ $? -ne 2 ] || says=yes
  hashes | cmp ../before - || failed=1
  stops=no
  "$vek" . >../output 2>&1 || stops=yes
  if [ $stops != $says ]; then
    echo "vek stops: $stops, vek-check says so: $says: $1"
    cat ../output ../findings
    failed=1
  fi
  cd ..
}

long=$(printf '%02048d' 0)
for list in 'a x\nb y\n' 'a x\n\nb y\n' 'a x\n  \nb y\n' 'a x\nb\n' \
    'a x\nb \n' ' a x\nb y\n' 'a\tx\nb y\n' 'a x\r\nb y\r\n' \
    'a x\nb\000 y\n' "a x\\n$long\\n\\n" "a x\\n\\n$long\\n" 'a x\nb y' \
    'a x\nd y\n' 'a x/y/\nb /z\n' 'a x"y\nb y\n'; do
  agree "$list"
done
agree 'a x"y\nb y\n' 'save on'
agree 'a x\\\nb y\n' 'incremental on'
agree 'a x\\\\\nb y\n' 'save on'
agree 'a x\nb y\n' 'save of'
agree 'a x\nb y\n' 'filedirectory "texts"'
agree 'a x\nb y\n' 'analyser "./none"'
agree 'a x\nb y\n' 'analyser "/bin/true"'
agree 'a x\nb y\n' 'datadirectory "no/data"'
agree 'a x\nb y\n' 'datadirectory "train"'
exit $failed
