#!/bin/sh
# Runs the examples of docs/ for each language against a built library: C and C++ by the compilers that
# are given; Python and C# where they are there and load a library of this target.
#
#   scripts/check_languages.sh BUILD_DIR C_COMPILER CXX_COMPILER [FLAG...]
set -eu
build=$(cd "$1" && pwd)
c=$2
cxx=$3
shift 3
cd "$(dirname "$0")/.."
here=$PWD
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
export LD_LIBRARY_PATH="$build"

# Prints a page's example.
example() {
  sed -n "/^\`\`\`$2\$/,/^\`\`\`\$/p" "docs/$1.md" | sed '/^```/d' >"$work/example.$1"
  [ -s "$work/example.$1" ]
}

# Each halves the same plane: (1 + 2 + 5 + 6 + 3) / 4 and (3 + 4 + 7 + 8 + 3) / 4.
check() {
  said=$("$@")
  [ "$said" = "4 6" ] || {
    echo "says \"$said\": $*" >&2
    exit 1
  }
}

example c c
"$c" "$@" -std=c99 -Wall -Wextra -Werror -x c "$work/example.c" -I"$here/include" -L"$build" \
  -lorb90legacy -o "$work/from_c"
check "$work/from_c"

example cpp cpp
"$cxx" "$@" -std=c++17 -Wall -Wextra -Werror -x c++ "$work/example.cpp" -I"$here/include" -L"$build" \
  -lorb90legacy -o "$work/from_cpp"
check "$work/from_cpp"
checked="C, C++"

example python python
if python3 -c "import ctypes; ctypes.CDLL('liborb90legacy.so.9')" 2>/dev/null; then
  check python3 "$work/example.python"
  checked="$checked, Python"
fi

example csharp csharp
if [ "$#" -eq 0 ] && command -v mcs >/dev/null; then
  mcs -out:"$work/example.exe" "$work/example.csharp"
  check mono "$work/example.exe"
  checked="$checked, C#"
fi
echo "the same from $checked"
