#!/bin/sh
# Fails if the frame, its tables or the plain build of a 32-bit library hold an instruction that an
# i686 does not have: anything with a vector register, and what came beside the vectors.
#
#   scripts/check_i686.sh BUILD_DIR
#
# CPUID and XGETBV are the frame's business: it looks for them before it runs them.
set -eu
build_dir=$1

objects=$(find "$build_dir/CMakeFiles/orb_px.dir" "$build_dir/CMakeFiles/orb_frame.dir" -name '*.o')
[ -n "$objects" ] || {
  echo "check_i686.sh: no objects of the frame and of px in $build_dir" >&2
  exit 1
}
status=0
for object in $objects; do
  objdump -d --no-show-raw-insn "$object" | awk -F '\t' -v object="$object" '
    BEGIN {
      count = split("movbe popcnt lzcnt tzcnt andn bextr blsi blsmsk blsr bzhi mulx pdep pext rorx " \
        "sarx shlx shrx adcx adox crc32 rdrand rdseed emms femms sfence lfence mfence movnti " \
        "clflush clflushopt pause fisttp fisttpl fisttpll fisttps ldmxcsr stmxcsr fxsave fxrstor " \
        "xsave xrstor cmpxchg16b prefetch prefetchw prefetchnta prefetcht0 prefetcht1 prefetcht2 " \
        "sysenter endbr32", list, " ")
      for (i = 1; i <= count; i++) later[list[i]] = 1
    }
    /^[0-9a-f]+ <.*>:$/ { place = $0 }
    NF < 2 { next }
    {
      instruction = $2
      mnemonic = instruction
      sub(/ .*/, "", mnemonic)
      if (instruction ~ /%[xyz]?mm[0-9]/ || mnemonic in later ||
          (mnemonic ~ /^v/ && mnemonic !~ /^ver[rw]$/)) {
        print object ": " place " " instruction
        bad = 1
      }
    }
    END { exit bad }
  ' || status=1
done
[ $status -ne 0 ] || echo "the frame and px run on an i686"
exit $status
