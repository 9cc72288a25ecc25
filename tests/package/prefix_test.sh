#!/bin/sh
# A build installs into an empty prefix, and works there.
#
#   prefix_test.sh BUILD-DIRECTORY
set -eu
here=$(realpath "$(dirname "$0")")
prefix=$(mktemp -d)
trap 'rm -rf "$prefix"' EXIT
cmake --install "$1" --prefix "$prefix" >"$prefix/log" 2>&1 || {
  cat "$prefix/log"
  exit 1
}
"$here/check_installed" "$prefix" "$here/../doc/run_page.sh"
