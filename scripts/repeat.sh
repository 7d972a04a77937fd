#!/bin/sh
# Runs a program many times, each time in a new process; ends with the first that fails.
#
#   scripts/repeat.sh TIMES PROGRAM...
set -eu
times=$1
shift
run=1
while [ "$run" -le "$times" ]; do
  "$@" || {
    echo "run $run of $times failed: $*"
    exit 1
  }
  run=$((run + 1))
done
