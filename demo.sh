#!/bin/sh
# A photograph through the library: into JPEG files and back, with djpeg as the judge.
#
#   ./demo.sh
#
# Takes the picture of the Earth in the Debian package xplanet-images, or draws a scene where the
# network can't be reached. Builds what it needs, prints a table and leaves the pictures in demo-out/.
set -eu
cd "$(dirname "$0")"

scripts/install_packages.sh build
scripts/install_packages.sh --optional demo photograph
cmake -B build -DORB_HOSTS=ON >/dev/null
cmake --build build -j "$(nproc)" >/dev/null
orb=build/orb

rm -rf demo-out
mkdir -p demo-out
photograph=/usr/share/xplanet/images/earth.jpg
if [ -f "$photograph" ] && command -v djpeg >/dev/null; then
  echo "The Earth, 2048 x 1024, from the Debian package xplanet-images"
  picture=earth
  djpeg -outfile demo-out/original.ppm "$photograph"
else
  echo "A scene of our own, as the photograph is not to be had"
  picture=scene
  scripts/draw_scene.awk >demo-out/original.ppm
fi

# The luma PSNR of two pictures in dB, where netpbm is there to tell.
psnr() {
  if command -v pnmpsnr >/dev/null; then
    pnmpsnr -machine "$1" "$2" 2>/dev/null | cut -d ' ' -f 1
  else
    echo -
  fi
}
# One value of a line that `orb --stats` printed.
value() {
  sed -n "s/.*$1=\([^ ]*\).*/\1/p" "$2"
}

row='%-22s %9s %6s %9s %9s %8s %8s  %s\n'
printf "\n$row" file bytes bits/ 'PSNR dB' 'PSNR dB' encode decode build
printf "$row" '' '' pixel 'original' 'by djpeg' Mpix/s Mpix/s ''
for sampling in 444 422 420; do
  for quality in 50 75 90 95; do
    name=demo-out/$picture-$sampling-q$quality
    $orb jpeg encode --quality $quality --sampling $sampling --optimize --stats \
      demo-out/original.ppm $name.jpg 2>demo-out/encode.txt
    $orb jpeg decode --stats $name.jpg $name.ppm 2>demo-out/decode.txt
    judged=-
    if command -v djpeg >/dev/null; then
      djpeg -dct int -outfile demo-out/judge.ppm $name.jpg
      judged=$(psnr $name.ppm demo-out/judge.ppm)
    fi
    printf "$row" "${name##*/}.jpg" "$(value bytes demo-out/encode.txt)" \
      "$(value bits_per_pixel demo-out/encode.txt)" "$(psnr demo-out/original.ppm $name.ppm)" \
      "$judged" "$(value mpixels_per_second demo-out/encode.txt)" \
      "$(value mpixels_per_second demo-out/decode.txt)" "$(value build demo-out/decode.txt)"
    rm -f $name.ppm
  done
done
$orb jpeg decode demo-out/$picture-420-q90.jpg demo-out/$picture-420-q90.png
$orb jpeg decode --scale 1/8 demo-out/$picture-420-q90.jpg demo-out/$picture-small.png
rm -f demo-out/encode.txt demo-out/decode.txt demo-out/judge.ppm
echo
echo "PSNR by djpeg: our decoded picture against djpeg's of the same file (rounding only)."
echo "Pictures: $(pwd)/demo-out"
