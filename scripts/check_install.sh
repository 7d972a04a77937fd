#!/bin/sh
# Installs a built library into an empty directory and builds the README's example against it, as a
# user would: with CMake, with pkg-config, and with the compiler alone.
#
#   scripts/check_install.sh BUILD_DIR COMPILER...
set -eu
build=$(cd "$1" && pwd)
shift
cd "$(dirname "$0")/.."
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
root=$work/root
cmake --install "$build" --prefix "$root" >"$work/log"
libraries=$(dirname "$(find "$root" -name 'liborb90legacy.so')")

sed -n '/^```c$/,/^```$/p' README.md | sed '/^```/d' >"$work/example.c"
[ -s "$work/example.c" ] || {
  echo "the README has no C example" >&2
  exit 1
}

# Runs an example that was built in the way that is said.
says() {
  LD_LIBRARY_PATH=$libraries "$2" | grep '^DC -1, by orbJP ' || {
    echo "the example says something else when built with $1" >&2
    exit 1
  }
}

"$@" "$work/example.c" -I"$root/include" -L"$libraries" -lorb90legacy -o "$work/alone"
says "the compiler alone" "$work/alone"

flags=$(PKG_CONFIG_PATH=$libraries/pkgconfig pkg-config --cflags --libs orb90legacy)
"$@" "$work/example.c" $flags -o "$work/by_pkg_config"
says pkg-config "$work/by_pkg_config"

mkdir "$work/project"
cat >"$work/project/CMakeLists.txt" <<'EOF'
cmake_minimum_required(VERSION 3.13)
project(example C)
find_package(orb90legacy 9 REQUIRED)
add_executable(example ../example.c)
target_link_libraries(example orb90legacy::orb90legacy)
EOF
CC="$*" cmake -S "$work/project" -B "$work/project/build" -DCMAKE_PREFIX_PATH="$root" >"$work/log"
cmake --build "$work/project/build" >"$work/log"
says CMake "$work/project/build/example"

if [ -x "$root/bin/orb" ]; then
  "$root/bin/orb" --version
fi
