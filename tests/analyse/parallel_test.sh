#!/bin/bash
# The example script: two workers, of which one is killed in the middle, and a
# second call that finishes what they began. With a program vek also that its
# files are the same as from the conversation. Skipped without GNU parallel.
#   parallel_test.sh VEK-ANALYSE EXAMPLE-SCRIPT [VEK]
script=$2
vek=${3:-}
command -v parallel >/dev/null || exit 77
# shellcheck source=shell_test.sh
. "$(dirname "$0")/shell_test.sh"
export HOME=$work TMPDIR=$work program work

make_documents 400

# A worker of which the first to start is killed when it has been given thirty
# paths and a result is there, and so somewhere among them.
cat >worker <<'WORKER'
#!/bin/bash
mkdir "$work/killed" 2>/dev/null || exec "$program" "$@"
mkfifo "$work/requests"
"$program" "$@" <"$work/requests" &
worker=$!
exec 3>"$work/requests"
for _ in {1..30}; do
  read -r path
  echo "$path" >&3
done
while kill -0 $worker && ! find "$work/out" -name '*.txt' | grep -q .; do :; done
kill -KILL $worker
wait $worker
WORKER
chmod +x worker

nr_results() {
  find out -name '*.txt' 2>/dev/null | wc -l
}

results_are_right() {
  local path
  for path in docs/*.txt; do
    cat "out/${path#docs/}" || fail "no result for $path"
    printf '\001'
  done | cmp - conversation || fail "results differ from the conversation"
}

printf '%s\n' docs/*.txt | "$program" >conversation
VEK_ANALYSE=$work/worker expect 1 "$script" -a 1 -j 2 docs out
[ -d killed ] || fail "no worker was killed"
[ "$(nr_results)" -gt 0 ] || fail "nothing was done before the kill"
[ "$(nr_results)" -lt 400 ] || fail "the kill did no harm"
VEK_ANALYSE=$program expect 0 "$script" -j 2 docs out
results_are_right

# The same within one call, by its own attempts.
rm -rf out killed requests
VEK_ANALYSE=$work/worker expect 0 "$script" -j 2 docs out
results_are_right

# run_vek DIRECTORY ANALYSER FILE-DIRECTORY
run_vek() {
  mkdir -p "$1/run/files"
  for i in docs/*.txt; do
    name=$(basename "$i" .txt)
    echo "$name class$((10#$name % 3))" >>"$1/run/train"
    [ $((10#$name % 5)) -ne 0 ] || echo "$name class$((10#$name % 3))"
  done >"$1/run/test"
  printf '[General]\nAnalyser "%s"\nFileDirectory "%s"\n' "$2" "$3" \
    >"$1/run/vek.rc"
  (cd "$1/run" && "$vek" . >/dev/null 2>&1) || fail "vek in $1: status $?"
}

if [ -n "$vek" ]; then
  run_vek talking "$program -l en" "$work/docs"
  run_vek reading "" "$work/out"
  for file in data/atoms.dat data/terms.dat data/profile-store.000 rank0.dat; do
    [ -s "talking/run/$file" ] || fail "vek wrote no $file"
    cmp "talking/run/$file" "reading/run/$file" || fail "$file differs"
  done
fi

finish
