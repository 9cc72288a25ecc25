#!/bin/sh
# The Debian package builds, lintian finds no error in it, and it works when it
# is unpacked into an empty root. Skipped (77) where the tools are missing.
#
#   debian_test.sh SOURCE-DIRECTORY
set -eu
here=$(realpath "$(dirname "$0")")
source=$(realpath "$1")
for tool in dpkg-buildpackage dh lintian scdoc; do
  command -v "$tool" >/dev/null || {
    echo "no $tool here"
    exit 77
  }
done

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
step lintian --allow-root --fail-on error "$work"/vek_*.changes
step dpkg-deb -x "$work"/vek_*.deb "$work/root"
"$here/check_installed" "$work/root/usr" "$here/../doc/run_page.sh" \
  share/zsh/vendor-completions
