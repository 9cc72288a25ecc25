#!/bin/sh
# Analyses all the files *.txt below a directory on many cores or hosts.
#
#   analyse-parallel.sh [-a ATTEMPTS] [-j JOBS] [-S HOSTS] FROM TO [OPTION...]
#
# For each file below FROM its analysis is written to the same name below TO.
# What is there already is not done again, so a run that was broken off is
# finished by calling this once more.
#
#   -a   calls of GNU parallel before giving up; 3 if not given
#   -j   workers on each host; as many as it has cores if not given
#   -S   hosts, with commas between them, ":" for this one; they must see FROM
#        and TO under the same full names, have GNU parallel and the program on
#        the PATH that ssh gives, and let you in without a password
#   OPTION...   options of vek-analyse, such as -l de
#
# The environment's VEK_ANALYSE names the program, if it is not on the PATH.
set -eu

attempts=3
jobs=100%
hosts=:
while getopts a:j:S: option; do
  case $option in
    a) attempts=$OPTARG ;;
    j) jobs=$OPTARG ;;
    S) hosts=$OPTARG ;;
    *) exit 2 ;;
  esac
done
shift $((OPTIND - 1))
if [ $# -lt 2 ]; then
  echo "usage: $0 [-a attempts] [-j jobs] [-S hosts] from to [option]..." >&2
  exit 2
fi
# With full names, as other hosts begin in the home directory.
full_name() {
  case $1 in
    /*) echo "$1" ;;
    *) echo "$PWD/$1" ;;
  esac
}
from=$(full_name "$1")
to=$(full_name "$2")
shift 2
if [ ! -d "$from" ]; then
  echo "$0: there is no directory $from" >&2
  exit 2
fi
# There is another program of that name.
if ! parallel --version 2>&1 | grep -q '^GNU parallel'; then
  echo "$0: GNU parallel is missing; Debian's package is called parallel" >&2
  exit 2
fi

# The workers live as long as there are paths. With --round-robin each gets the
# next fifty paths when it has room for them, so that a slow one gets fewer.
analyse_rest() {
  find "$from" -type f -name '*.txt' |
    parallel --quote --pipe -N 50 --round-robin --line-buffer \
      -j "$jobs" -S "$hosts" \
      "${VEK_ANALYSE:-vek-analyse}" "$@" --from "$from" --to "$to"
}

attempt=1
until analyse_rest "$@"; do
  if [ "$attempt" -ge "$attempts" ]; then
    echo "$0: not all is done after $attempt of $attempts attempts" >&2
    exit 1
  fi
  attempt=$((attempt + 1))
done
