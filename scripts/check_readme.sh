#!/bin/sh
# Compiles the README's example as C against a built library, and runs it; and runs the README's lines
# of the program orb where that is built.
#
#   scripts/check_readme.sh BUILD_DIR COMPILER...
set -eu
build=$(cd "$1" && pwd)
shift
cd "$(dirname "$0")/.."
here=$PWD
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

# A line of these commands comes with the files that those before it have made.
orb=$build/orb
[ -x "$orb" ] || exit 0
grep -E '^    orb (image|j2k|jpeg|jxr|tiff|wav|yuv) ' README.md >"$work/lines"
scripts/draw_scene.awk >"$work/scene.ppm"
cd "$work"
"$orb" jpeg encode --lossless 1 scene.ppm scene.jpg
"$orb" jpeg encode --lossless 1 --precision 16 scene.ppm deep.jpg
png=png
"$orb" jpeg decode scene.jpg photo.png 2>/dev/null || png=ppm # an orb that is built without PNG
"$orb" jpeg decode scene.jpg photo.$png
"$orb" jpeg decode deep.jpg deep.$png
printf 'P7 WIDTH 2 HEIGHT 1 DEPTH 4 MAXVAL 255 TUPLTYPE CMYK ENDHDR\nabcdefgh' >inks.pam
# Two frames of two channels of 16 bits; but an orb may be built without WAV.
{
  printf 'RIFF\054\0\0\0WAVEfmt \020\0\0\0\001\0\002\0\104\254\0\0\020\261\002\0\004\0\020\0'
  printf 'data\010\0\0\0\001\0\002\0\003\0\004\0'
} >song.wav
"$orb" wav split song.wav left.wav right.wav 2>/dev/null || sed -i '/^ *orb wav/d' lines
sed -e 's/^ *orb //' -e 's/ *#.*//' -e "s/\.png/.$png/g" lines >commands
while read -r arguments; do
  "$orb" $arguments || {
    echo "fails: orb $arguments" >&2
    exit 1
  }
done <commands
cmp deep.$png again.$png
echo "$(wc -l <commands) commands of orb"

# The lines of the compressors, and of video, are a shell's.
cd "$here"
sed -n -e 's/^    \(.*orb g[un]*zip .*\)$/\1/p' -e 's/^    \(orb [un]*pack .*\)$/\1/p' \
  -e 's/^    \(orb dv .*\)$/\1/p' README.md >"$work/commands.sh"
cp README.md "$work/report.txt"
cp README.md "$work/words.txt"
head -n 20 README.md >"$work/page.html"
cp -r frame "$work/src"
ffmpeg -v error -f lavfi -i testsrc2=s=720x576:r=25 -frames:v 2 -pix_fmt yuv420p -c:v dvvideo \
  -f rawvideo "$work/tape.dv"
cd "$work"
PATH="$build:$PATH" sh -eux commands.sh
cmp report.txt words.txt
gzip -dc report.txt.gz | cmp - words.txt
head -c 9 tape.y4m | grep -q YUV4MPEG2
