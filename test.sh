#!/bin/sh
# Builds and runs all tests: for x86-64, then for i386.
#
#   ./test.sh             everything
#   ./test.sh --no-i386   without the 32-bit stage
#
# Installs what is missing with apt-get. Ends with a line "N passed, N failed" and a status of 1 if a
# test failed.
set -eu
cd "$(dirname "$0")"

i386=yes
for argument in "$@"; do
  case $argument in
    --no-i386) i386=no ;;
    *)
      sed -n '2,8s/^# \{0,1\}//p' "$0"
      exit 2
      ;;
  esac
done

passed=0
failed=0

# Configures and builds a preset and runs its tests, adding to the counts.
stage() {
  preset=$1
  echo "== $2"
  cmake --preset "$preset" >/dev/null
  cmake --build "build-$preset" -- --quiet
  log=build-$preset/ctest.log
  ctest --test-dir "build-$preset" --output-on-failure -j "$(nproc)" >"$log" 2>&1 ||
    grep -v -e ' Passed ' -e '^ *Start ' "$log" || true
  # "NN% tests passed, F tests failed out of T"
  counts=$(sed -n 's/^.*tests passed, \([0-9]*\) tests failed out of \([0-9]*\)$/\1 \2/p' "$log")
  [ -n "$counts" ] || {
    echo "test.sh: no tests ran for $2" >&2
    exit 1
  }
  stage_failed=${counts% *}
  stage_passed=$((${counts#* } - stage_failed))
  echo "   $stage_passed passed, $stage_failed failed"
  passed=$((passed + stage_passed))
  failed=$((failed + stage_failed))
}

scripts/install_packages.sh build test bench
scripts/install_packages.sh --optional photograph
stage dev "x86-64"
if [ "$i386" = yes ]; then
  scripts/install_packages.sh i386
  stage linux32 "i386"
fi

echo "$passed passed, $failed failed"
[ "$failed" -eq 0 ]
