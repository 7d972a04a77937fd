#!/bin/sh
# Installs the Debian packages of the named sets that are missing, and says so.
#
#   scripts/install_packages.sh build test demo ...
#
# Nothing is installed, and no network is needed, where everything is there already. With --optional
# in front, what can't be had is reported and the script goes on.
set -eu

optional=no
if [ "${1-}" = --optional ]; then
  optional=yes
  shift
fi

packages=
for set in "$@"; do
  case $set in
    build)
      packages="$packages g++ cmake make ninja-build libcli11-dev"
      packages="$packages libpng-dev libsndfile1-dev libfreetype-dev fonts-dejavu-core"
      ;;
    test)
      packages="$packages googletest binutils pkg-config python3 mono-mcs mono-runtime"
      packages="$packages libjpeg62-turbo-dev libjpeg-turbo-progs ffmpeg dcmtk"
      packages="$packages libopenjp2-tools libjxr-tools"
      packages="$packages zlib1g-dev libdeflate-dev libzopfli-dev pigz zopfli libdeflate-tools"
      packages="$packages libdivsufsort-dev bzip2"
      packages="$packages libopencv-imgproc-dev libeigen3-dev libtiff-dev libtiff-tools sox"
      ;;
    bench)
      packages="$packages libbenchmark-dev"
      packages="$packages libjpeg62-turbo-dev libopenjp2-7-dev libjxr-dev"
      packages="$packages zlib1g-dev libdeflate-dev libisal-dev libdivsufsort-dev"
      packages="$packages libopencv-imgproc-dev libeigen3-dev libtiff-dev libyuv-dev libzimg-dev"
      packages="$packages pkg-config libavcodec-dev libavutil-dev libdv4-dev"
      ;;
    i386) packages="$packages g++-multilib qemu-user" ;;
    windows) packages="$packages g++-mingw-w64-i686 g++-mingw-w64-x86-64" ;;
    fuzz) packages="$packages clang libclang-rt-14-dev" ;;
    format) packages="$packages clang-format" ;;
    demo) packages="$packages libjpeg-turbo-progs" ;;
    photograph) packages="$packages xplanet-images netpbm" ;;
    *)
      echo "install_packages.sh: no set named $set" >&2
      exit 2
      ;;
  esac
done

missing=
for package in $packages; do
  state=$(dpkg-query -W -f '${Status}' "$package" 2>/dev/null || true)
  [ "$state" = "install ok installed" ] || missing="$missing $package"
done
[ -n "$missing" ] || exit 0

refuse() {
  echo "install_packages.sh: $1; missing:$missing" >&2
  [ "$optional" = yes ] && exit 0
  exit 1
}
[ "$(id -u)" -eq 0 ] || refuse "packages have to be installed by root"
echo "installing:$missing"
export DEBIAN_FRONTEND=noninteractive
log=$(mktemp)
trap 'rm -f "$log"' EXIT
{
  apt-get update -q && apt-get install -y -q --no-install-recommends $missing
} >"$log" 2>&1 || {
  tail -n 20 "$log" >&2
  refuse "apt-get failed"
}
