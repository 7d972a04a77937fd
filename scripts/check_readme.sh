#!/bin/sh
# Compiles the README's example as C against a built library, and runs it.
#
#   scripts/check_readme.sh BUILD_DIR COMPILER...
set -eu
build=$(cd "$1" && pwd)
shift
cd "$(dirname "$0")/.."
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
sed -n '/^```c$/,/^```$/p' README.md | sed '/^```/d' >"$work/example.c"
[ -s "$work/example.c" ] || {
  echo "the README has no C example" >&2
  exit 1
}
"$@" -std=c99 -Wall -Wextra -pedantic -Werror -Iinclude "$work/example.c" -L"$build" -lorb90legacy \
  -Wl,-rpath,"$build" -o "$work/example"
"$work/example" | tee "$work/said"
# The mean of 0, 4, ... 252 is 126: 2 below the middle, times 8, divided by 16.
grep -q '^DC -1, by orbJP ' "$work/said"
