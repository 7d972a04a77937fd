#!/bin/sh
# Fails if an object of a build could share code with an object of another.
#
#   scripts/check_symbols.sh BUILD_DIR
#
# One inline function, compiled with AVX2 in one object and without in another and merged by the
# linker, makes the plain build crash on an old processor. So all that an object of a build defines
# for others to see, weak or not, lies in that build's namespace, and what it wants from outside is
# the frame's, a constant table's, or the C runtime's.
set -eu
build_dir=$1

# What the entry files may want of the C runtime and its mathematics.
runtime='memcpy memmove memset memcmp floor sin cos _GLOBAL_OFFSET_TABLE_'

complaints=$(mktemp)
trap 'rm -f "$complaints"' EXIT

objects=0
status=0
for directory in "$build_dir"/CMakeFiles/orb_*.dir; do
  build=${directory##*/orb_}
  build=${build%.dir}
  case $build in
    px | w7 | v8 | s8 | p8 | g9 | h9) ;;
    *) continue ;;
  esac
  for object in $(find "$directory" -name '*.o'); do
    objects=$((objects + 1))
    # Names as the linker sees them: _ZN3orb2px... is what lies in orb::px.
    nm -P "$object" | awk -v object="$object" -v build="$build" -v runtime="$runtime" '
      function complain(what) {
        print object ": " what ": " name
        bad = 1
      }
      BEGIN {
        split(runtime, list)
        for (i in list) allowed[list[i]] = 1
        frame = "^_Z+NK?3orb"
        home = frame "2" build
        # Long integers on 32 bits: the compiler has functions for them in its own library.
        arithmetic = "^__[a-z]+([dst]i[234]|[sdx]f[dst]i|[dst]i[sdx]f)$"
      }
      {
        name = $1
        type = $2
      }
      # Through these 32-bit code finds its own address. They are merged by name, and all the same.
      name ~ /^__x86\.get_pc_thunk\.[a-z]+$/ { next }
      type == "U" {
        if (name ~ frame "2(px|w7|v8|s8|p8|g9|h9)") {
          if (name !~ home) complain("wants another build")
        } else if (name !~ frame && name !~ arithmetic && !(name in allowed)) {
          complain("wants what is neither of the frame nor of the C runtime")
        }
        next
      }
      type ~ /[uwvC]/ { complain("a symbol that is unique, common or missing at will") }
      type ~ /[A-Z]/ && name !~ home { complain("defined outside of orb::" build) }
      END { exit bad }
    ' >"$complaints" || status=1
    c++filt <"$complaints"
  done
done
[ "$objects" -gt 0 ] || {
  echo "check_symbols.sh: no objects of a build in $build_dir" >&2
  exit 1
}
[ $status -ne 0 ] || echo "$objects objects keep to their builds"
exit $status
