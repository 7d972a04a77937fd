#!/bin/sh
# Fails if clang-format would change a file.
set -eu
cd "$(dirname "$0")/.."
find . -path './build*' -prune -o \( -name '*.h' -o -name '*.cpp' -o -name '*.c' \) -print0 |
  xargs -0 clang-format --dry-run --Werror
