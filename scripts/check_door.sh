#!/bin/sh
# Looks at the door of a built shared library (ELF, x86-64 or i386).
#
#   scripts/check_door.sh LIBRARY
#
# It exports the names of frame/exports.inc and no others; it needs the C library and its mathematics
# at most; it runs no code of its own when it is loaded and changes no code; and every stub is one
# load of its group's index and one jump through its own row, with nothing saved and nothing tested.
set -eu
library=$1
cd "$(dirname "$0")/.."
exports=frame/exports.inc
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
status=0
complain() {
  echo "$library: $1"
  status=1
}

# Lines "group name", with 0 for what the frame answers without a stub.
sed -n -e 's/^ORB_FRAME_EXPORT([0-9]*, \([A-Za-z0-9_]*\))$/0 \1/p' \
  -e 's/^ORB_[A-Z_]*EXPORT(\([0-9]*\), [0-9]*, \([A-Za-z0-9_]*\))$/\1 \2/p' "$exports" >"$work/exports"

# ---- Exported names
sed 's/^[0-9]* /legacy90/' "$work/exports" | sort >"$work/wanted"
nm -D --defined-only "$library" | awk '{ print $3 }' | sort >"$work/found"
for name in $(comm -23 "$work/wanted" "$work/found"); do complain "does not export $name"; done
for name in $(comm -13 "$work/wanted" "$work/found"); do complain "exports $name, which $exports does not list"; done

# ---- Needed libraries
readelf -d -W "$library" >"$work/dynamic"
for needed in $(sed -n 's/^.*(NEEDED).*\[\(.*\)\]$/\1/p' "$work/dynamic"); do
  case $needed in
    libc.so.6 | libm.so.6) ;;
    *) complain "needs $needed" ;;
  esac
done
! grep -q TEXTREL "$work/dynamic" || complain "has code that the loader must change"

# ---- Code that runs at load: the C runtime's frame_dummy, and nothing else
case $(readelf -h "$library" | sed -n 's/^ *Class: *//p') in
  ELF64) word=8 ;;
  *) word=4 ;;
esac
size=$(sed -n 's/^.*(INIT_ARRAYSZ) *\([0-9]*\) (bytes)$/\1/p' "$work/dynamic")
[ "${size:-0}" -le $word ] || complain "has $((size / word)) entries in .init_array"
nm "$library" >"$work/symbols"
if [ "${size:-0}" -eq $word ]; then
  # The bytes of the entry, from the last to the first: the address that it names.
  entry=$(objdump -s -j .init_array "$library" | awk -v digits=$((2 * word)) '
    /^ [0-9a-f]+ / {
      bytes = substr($2 $3, 1, digits)
      for (i = digits - 1; i > 0; i -= 2) address = address substr(bytes, i, 2)
      print address
    }')
  grep -q "^$entry [tT] frame_dummy\$" "$work/symbols" ||
    complain "runs the code at $entry when it is loaded"
fi
! readelf -S -W "$library" | grep -q '\.ctors' || complain "has constructors"

# ---- Stubs
{
  cat "$work/exports" "$work/symbols"
  objdump -d --no-show-raw-insn -j .text "$library"
} | awk -v word=$word '
  function number(hex,    value, i, sign) {
    sign = sub(/^-/, "", hex) ? -1 : 1
    sub(/^0x/, "", hex)
    for (i = 1; i <= length(hex); i++) value = value * 16 + index("123456789abcdef", substr(hex, i, 1))
    return sign * value
  }
  function complain(what) {
    print "stub legacy90" name ": " what
    bad = 1
  }
  # The three instructions of a stub, and where they lead.
  function check(    at, index_at, row_at) {
    checked[name] = 1
    if (lines != 3) return complain(lines " instructions, not 3")
    if (word == 8) {
      if (line[1] !~ /^movslq 0x[0-9a-f]+\(%rip\),%rax/ || line[2] !~ /^lea 0x[0-9a-f]+\(%rip\),%r11/ ||
          line[3] !~ /^jmp \*\(%r11,%rax,8\)$/) {
        return complain("is " line[1] "; " line[2] "; " line[3])
      }
      index_at = number(target[1])
      row_at = number(target[2])
    } else {
      if (line[1] !~ /^call [0-9a-f]+ <ownAddress>$/ || line[2] !~ /^mov -?0x[0-9a-f]+\(%eax\),%ecx$/ ||
          line[3] !~ /^jmp \*-?0x[0-9a-f]+\(%eax,%ecx,4\)$/) {
        return complain("is " line[1] "; " line[2] "; " line[3])
      }
      at = place[2]
      split(line[2], part, /[ (]/)
      index_at = at + number(part[2])
      split(line[3], part, /[*(]/)
      row_at = at + number(part[2])
    }
    if (index_at != address["orbFrameState"] + 4 * (group[name] - 1)) complain("reads another index")
    if (row_at != address["orbRow_" name] + word) complain("jumps through another row")
  }
  # Exports, then symbols, then code.
  /^[0-8] / { group[$2] = $1; next }
  /^[0-9a-f]+ [A-Za-z] / { address[$3] = number($1); next }
  /^[0-9a-f]+ <.*>:$/ {
    if (name != "") check()
    name = $2
    name = sub(/^<legacy90/, "", name) && sub(/>:$/, "", name) ? name : ""
    if (!(name in group) || group[name] == 0) name = ""
    lines = 0
    next
  }
  name != "" && /^ *[0-9a-f]+:\t/ {
    text = $0
    sub(/^ *[0-9a-f]+:\t/, "", text)
    gsub(/[ \t]+/, " ", text)
    ++lines
    target[lines] = text ~ / # / ? text : ""
    sub(/^.* # /, "", target[lines])
    sub(/ .*/, "", target[lines])
    sub(/ *#.*/, "", text)
    sub(/ $/, "", text)
    line[lines] = text
    split($1, part, ":")
    place[lines] = number(part[1])
  }
  END {
    if (name != "") check()
    for (each in group) {
      if (group[each] != 0 && !(each in checked)) {
        name = each
        complain("not found")
      }
    }
    exit bad
  }' || status=1

[ $status -ne 0 ] || echo "$(wc -l <"$work/wanted") exports, and nothing else at the door"
exit $status
