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

# same OUTPUT ARGUMENTS...: both run with the arguments, each in a directory of its own.
mkdir "$work/reference" "$work/orb"
same() {
  output=$1
  shift
  (cd "$work/reference" && "$reference" jpeg "$@")
  (cd "$work/orb" && "$orb" jpeg "$@")
  if cmp -s "$work/reference/$output" "$work/orb/$output"; then
    same=$((same + 1))
  else
    echo "other bytes: orb jpeg $*"
    status=1
  fi
}

for sampling in 444 422 420 grey; do
  for quality in 1 50 100; do
    same $sampling-$quality.jpg encode --sampling $sampling --quality $quality --restart 1row \
      ../scene.ppm $sampling-$quality.jpg
    for scale in 1 1/2 1/4 1/8; do
      same out.pnm decode --scale $scale $sampling-$quality.jpg out.pnm
    done
  done
  same optimized.jpg encode --sampling $sampling --optimize ../scene.ppm optimized.jpg
done
[ $status -ne 0 ] || echo "$same files of $2 are those of $1"
exit $status
