#!/bin/sh
# Runs a program that calls functions of every group on processors of every class, emulated by
# qemu-i386, and fails if a class gets another build than it earns, or other results than px, which
# the oldest runs without a vector instruction.
#
#   scripts/check_processors.sh PROGRAM
#
# Ends with 77, for "skipped", where there is no qemu-i386 (Debian: qemu-user).
set -eu
program=$1
command -v qemu-i386 >/dev/null || {
  echo "no processors of other classes: there is no qemu-i386 (Debian: qemu-user)" >&2
  exit 77
}
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

status=0
while read -r processor build; do
  qemu-i386 -cpu "$processor" "$program" >"$work/said" 2>"$work/errors" || {
    echo "$processor: the program fails" >&2
    cat "$work/said" "$work/errors" >&2
    status=1
    continue
  }
  for domain in orbJP orbDC; do
    grep -q "^$domain .*($build$" "$work/said" || {
      echo "$processor: should get ($build, but there is:" >&2
      head -n 2 "$work/said" >&2
      status=1
    }
  done
  tail -n +3 "$work/said" >"$work/results"
  [ -e "$work/reference" ] || cp "$work/results" "$work/reference"
  diff "$work/reference" "$work/results" >&2 || {
    echo "$processor: other results than those of px" >&2
    status=1
  }
  if grep 'status -' "$work/results" >&2; then
    echo "$processor: a function has refused its arguments" >&2
    status=1
  fi
  echo "$processor: $(head -n 1 "$work/said")"
done <<EOF
pentium3 px)
qemu32 w7)
core2duo v8)
n270 s8)
Penryn p8)
Nehalem p8)+
SandyBridge g9)
Haswell h9)
EOF
exit $status
