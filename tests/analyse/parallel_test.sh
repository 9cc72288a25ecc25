#!/bin/bash
# The example script: two workers, of which one is killed in the middle, and a
# second call that finishes what they began. Skipped without GNU parallel.
#   parallel_test.sh VEK-ANALYSE EXAMPLE-SCRIPT
script=$2
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

# On two more hosts, which begin elsewhere, and where ssh has set the shell.
cat >ssh <<'SSH'
#!/bin/sh
shift
[ "$1" != -- ] || shift
cd /
SHELL=/bin/sh exec sh -c "$*"
SSH
chmod +x ssh
rm -rf out
PARALLEL_SSH=$work/ssh VEK_ANALYSE=$program expect 0 "$script" -S :,north,south docs out
results_are_right

# What is missing is told once.
expect 2 "$script" none out
messages_are "$script: there is no directory $work/none"
mkdir bin
for tool in sh grep; do ln -s "$(command -v $tool)" bin; done
PATH=$work/bin expect 2 "$script" docs out
messages_are "$script: GNU parallel is missing; Debian's package is called parallel"

finish
