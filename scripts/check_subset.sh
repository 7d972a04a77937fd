#!/bin/sh
# Builds the library with a subset of the builds, and runs a program's tests on it.
#
#   scripts/check_subset.sh BUILDS DIRECTORY TESTS [CMAKE_ARGUMENT...]
#
# BUILDS is a list with spaces between, DIRECTORY the new build directory, TESTS a program of
# GoogleTest that is linked to the shared library, each of whose tests is given its own process.
set -eu
builds=$(echo "$1" | tr " " ";")
directory=$2
tests=$3
shift 3
source=$(cd "$(dirname "$0")/.." && pwd)

cmake -S "$source" -B "$directory" "-DORB_BUILDS=$builds" "$@" >/dev/null
cmake --build "$directory" >"$directory/build.log" || {
  cat "$directory/build.log"
  exit 1
}
library=$directory/liborb90legacy.so

# The bodies are those of the subset, and the version records those of every build.
for build in px w7 v8 s8 p8 g9 h9; do
  case ";$builds;" in
    *";$build;"*) wanted=yes ;;
    *) wanted=no ;;
  esac
  bodies=no
  if nm -C "$library" | grep -q " orb::$build::orbi"; then bodies=yes; fi
  [ $bodies = $wanted ] || {
    echo "bodies of $build: $bodies, but of $builds they should be: $wanted"
    exit 1
  }
  nm -C "$library" | grep -q " orb::$build::orbjGetLibVersion" || {
    echo "no version record of $build"
    exit 1
  }
done

export LD_LIBRARY_PATH="$directory"
ldd "$tests" | grep -q "=> $library\.[0-9]* " || {
  echo "$tests does not load $library"
  exit 1
}
for test in $("$tests" --gtest_list_tests | awk '/^[^ ]/ { suite = $1 } /^ / { print suite $1 }'); do
  "$tests" --gtest_brief=1 --gtest_filter="$test"
done
