#!/bin/sh
# The Debian package builds as a hardened release, lintian finds no error in it,
# and it works when it is unpacked into an empty root.
#
#   debian_test.sh SOURCE-DIRECTORY
set -eu
here=$(realpath "$(dirname "$0")")
source=$(realpath "$1")
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
mkdir "$work/vek" "$work/root"
tar -c -C "$source" --exclude=./build --exclude=./.git . | tar -x -C "$work/vek"
cd "$work/vek"
step() {
  "$@" >"$work/log" 2>&1 || {
    tail -n 50 "$work/log"
    echo "failed: $*"
    exit 1
  }
}
DEB_BUILD_OPTIONS="parallel=$(nproc) noautodbgsym" step dpkg-buildpackage -b -us -uc

# Each source is compiled with the flags of a release and of hardening.
grep -e ' -c .*\.cc$' "$work/log" >"$work/compiled" || {
  echo "the build tells no flags"
  exit 1
}
for flag in -O2 -D_FORTIFY_SOURCE=2 -fstack-protector-strong -ffp-contract=off; do
  ! grep -v -e " $flag " "$work/compiled" || {
    echo "compiled without $flag"
    exit 1
  }
done
grep -q -e ' -O3 .*invertedindex\.cc$' "$work/compiled" || {
  echo "invertedindex.cc has no -O3"
  exit 1
}
step lintian --allow-root --fail-on error "$work"/vek_*.changes
step dpkg-deb -x "$work"/vek_*.deb "$work/root"
"$here/check_installed" "$work/root/usr" "$here/../doc/run_page.sh" \
  share/zsh/vendor-completions
