#!/bin/sh
# Fails if two programs orb give other bytes for the same work: one of another target or build against
# one whose files independent software has judged.
#
#   scripts/compare_hosts.sh REFERENCE_ORB ORB
set -eu
reference=$(realpath "$1")
orb=$(realpath "$2")
cd "$(dirname "$0")/.."
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
scripts/draw_scene.awk >"$work/scene.ppm"
status=0
same=0

# compare OUTPUT ARGUMENTS...: both run with the arguments, each in a directory of its own. What they
# write to the standard output is the file stdout.
mkdir "$work/reference" "$work/orb"
compare() {
  output=$1
  shift
  (cd "$work/reference" && "$reference" "$@" >stdout)
  (cd "$work/orb" && "$orb" "$@" >stdout)
  if cmp -s "$work/reference/$output" "$work/orb/$output"; then
    same=$((same + 1))
  else
    echo "other bytes: orb $*"
    status=1
  fi
}
same() {
  output=$1
  shift
  compare "$output" jpeg "$@"
}

# The same scene in 16 bits, and its bytes as those of four inks.
"$reference" jpeg encode --lossless 1 --precision 16 "$work/scene.ppm" "$work/deep.jpg"
"$reference" jpeg decode "$work/deep.jpg" "$work/deep.ppm"
printf 'P7\nWIDTH 1536\nHEIGHT 512\nDEPTH 4\nMAXVAL 255\nTUPLTYPE CMYK\nENDHDR\n' >"$work/inks.pam"
tail -c $((1536 * 512 * 4)) "$work/deep.ppm" >>"$work/inks.pam"

for sampling in 444 422 420 grey; do
  for quality in 1 50 100; do
    same $sampling-$quality.jpg encode --sampling $sampling --quality $quality --restart 1row \
      ../scene.ppm $sampling-$quality.jpg
    for scale in 1 1/2 1/4 1/8; do
      same out.pnm decode --scale $scale $sampling-$quality.jpg out.pnm
    done
    for pixels in bgr555 bgr565; do
      same out.bmp decode --pixels $pixels $sampling-$quality.jpg out.bmp
    done
    same progressive.jpg encode --sampling $sampling --quality $quality --progressive \
      --restart 2rows ../scene.ppm progressive.jpg
    same out.pnm decode progressive.jpg out.pnm
    same out.pnm decode --scans-to 4 progressive.jpg out.pnm
  done
  same optimized.jpg encode --sampling $sampling --optimize ../scene.ppm optimized.jpg
done
for predictor in 1 2 3 4 5 6 7; do
  for picture in scene deep; do
    same lossless.jpg encode --lossless $predictor --restart 1row ../$picture.ppm lossless.jpg
    same out.pnm decode lossless.jpg out.pnm
  done
done
for colour in cmyk ycck; do
  same inks.jpg encode --colour $colour ../inks.pam inks.jpg
  same out.pam decode inks.jpg out.pam
  same out.ppm decode inks.jpg out.ppm
done

for overlap in 0 1 2; do
  for subsampling in 444 422 420; do
    for quality in 30 100; do
      compare coded.jxr jxr encode --subsampling $subsampling --overlap $overlap \
        --quality $quality ../scene.ppm coded.jxr
      compare out.ppm jxr decode coded.jxr out.ppm
    done
  done
  compare deep.jxr jxr encode --overlap $overlap ../deep.ppm deep.jxr
  compare out.ppm jxr decode deep.jxr out.ppm
  compare tiles.jxr jxr encode --subsampling 420 --overlap $overlap --quantiser 40 \
    --order frequency --trim 2 --tile 160x64 ../scene.ppm tiles.jxr
  compare out.ppm jxr decode tiles.jxr out.ppm
done
compare inks.jxr jxr encode ../inks.pam inks.jxr
compare out.pam jxr decode inks.jxr out.pam
for picture in scene deep; do
  compare out.tif tiff pack ../$picture.ppm out.tif
  compare out.pnm tiff unpack out.tif out.pnm
done
for pixels in bgr555 bgr565; do
  compare out.yuv yuv encode --layout i422 --pixels $pixels ../scene.ppm out.yuv
  for layout in i420 yv12 yuyv; do
    compare out.yuv yuv encode --layout $layout --pixels $pixels ../scene.ppm out.yuv
    compare out.bmp yuv decode --layout $layout --pixels $pixels --size 1024x512 out.yuv out.bmp
  done
done

# Pictures of one, three and four channels by every image operation.
"$reference" jpeg encode --sampling grey "$work/scene.ppm" "$work/grey.jpg"
"$reference" jpeg decode "$work/grey.jpg" "$work/grey.pgm"
for picture in grey.pgm scene.ppm inks.pam; do
  out=out.${picture##*.}
  for mask in 3 5; do
    for kind in gauss hipass laplace lowpass; do
      compare $out image filter $kind --mask $mask ../$picture $out
    done
  done
  compare $out image dilate ../$picture $out
  compare $out image erode ../$picture $out
  for angle in 90 180 270; do
    compare $out image rotate $angle --fit ../$picture $out
  done
  for method in nearest linear lagrange catmullrom; do
    compare $out image rotate 33.3 --fit --smooth --method $method ../$picture $out
    compare $out image warp 20,10 500,-30.5 470,420 -40,300 --method $method ../$picture $out
  done
  compare $out image resize 341x217 --method area ../$picture $out
  compare $out image resize --scale 0.25 --method area ../$picture $out
  for method in nearest linear lagrange bspline catmullrom b05c03 lanczos; do
    compare $out image resize 1391x700 --method $method ../$picture $out
    compare $out image resize --scale 0.37 --edge fade --method $method ../$picture $out
    compare $out image resize 341x217 --antialias --method $method ../$picture $out
  done
done

tail -c $((1024 * 512 * 2)) "$work/inks.pam" >"$work/frame.yuv"
for method in nearest linear lagrange area; do
  compare out.yuv image resize-yuv 1024x512 318x200 --method $method ../frame.yuv out.yuv
done

cat hosts/*.cpp hosts/*/*.cpp >"$work/text"
for file in text scene.ppm; do
  for level in fast chain lazy; do
    for block in auto fixed dynamic stored; do
      compare stdout gzip --no-name --level $level --block $block -c ../$file
    done
  done
  for format in gzip zlib raw; do
    compare stdout gzip --format $format -c ../$file
    cp "$work/reference/stdout" "$work/coded"
    compare stdout gunzip --format $format -c ../coded
  done
  compare stdout gzip --format zlib --dictionary ../text -c ../$file
done

# A clip of each kind of DV, whole and with a part that is not.
for kind in '720x480 yuv411p 30000/1001' '720x576 yuv420p 25' '720x480 yuv422p 30000/1001' \
  '1280x1080 yuv422p 30000/1001' '960x720 yuv422p 60000/1001'; do
  set -- $kind
  ffmpeg -v error -nostdin -y -f lavfi -i "testsrc2=s=$1:r=$3,noise=alls=20:allf=t+u:all_seed=1" \
    -frames:v 2 -pix_fmt "$2" -r "$3" -flags +ildct+bitexact -threads 1 -c:v dvvideo -f rawvideo \
    "$work/clip.dv"
  compare stdout dv decode ../clip.dv -
  head -c 150000 "$work/clip.dv" >"$work/damaged.dv"
  cat "$work/text" >>"$work/damaged.dv"
  tail -c 300000 "$work/clip.dv" >>"$work/damaged.dv"
  compare stdout dv decode ../damaged.dv -
done

[ $status -ne 0 ] || echo "$same files of $2 are those of $1"
exit $status
