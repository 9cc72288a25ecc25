#!/bin/sh
# vek-check says that a run would stop exactly when vek stops, and leaves no
# trace in a collection.
#
#   agreement_test.sh VEK VEK-CHECK
set -eu
vek=$(realpath "$1")
check=$(realpath "$2")

work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
cd "$work"
failed=0

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
  find . -type f -exec sha256sum {} + | sort >../before
  check_status=0
  "$check" . >../findings 2>&1 || check_status=$?
  find . -type f -exec sha256sum {} + | sort >../after
  if ! cmp -s ../before ../after; then
    echo "vek-check changed files over the list: $1"
    failed=1
  fi
  vek_status=0
  "$vek" . >../output 2>&1 || vek_status=$?
  stops=no
  [ "$vek_status" -eq 0 ] || stops=yes
  says=no
  [ "$check_status" -ne 2 ] || says=yes
  if [ $stops != $says ]; then
    echo "vek ended with $vek_status and vek-check with $check_status: $1"
    cat ../output ../findings
    failed=1
  fi
  cd ..
}

long=$(printf '%02048d' 0)
agree 'a x\nb y\n'
agree 'a x\n\nb y\n'
agree 'a x\n  \nb y\n'
agree 'a x\nb\n'
agree 'a x\nb \n'
agree ' a x\nb y\n'
agree 'a\tx\nb y\n'
agree 'a x\r\nb y\r\n'
agree 'a x\nb\000 y\n'
agree "a x\\n$long\\n\\n"
agree "a x\\n\\n$long\\n"
agree 'a x\nb y'
agree 'a x\nd y\n'
agree 'a x/y/\nb /z\n'
agree 'a x"y\nb y\n'
agree 'a x"y\nb y\n' 'save on'
agree 'a x\\\nb y\n' 'incremental on'
agree 'a x\\\\\nb y\n' 'save on'
agree 'a x\nb y\n' 'save of'
agree 'a x\nb y\n' 'filedirectory "texts"'
exit $failed
