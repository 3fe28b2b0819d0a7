#!/usr/bin/env bash
# Installs the Debian packages of out/ in a fresh Debian 12 under FOLDER and uses them there: the command draws pictures, and a
# project of its own is built with the library. Needs root, and fetches Debian. usage: try-packages.sh FOLDER [MIRROR]
set -euo pipefail
cd "$(dirname "$0")/.."
source scripts/packages.sh
unset CMAKE_CXX_COMPILER_LAUNCHER # of this machine, not of the new one
[ $# -ge 1 ] || { sed -n 2,3p "$0" >&2; exit 2; }
root=$1 mirror=${2:-http://deb.debian.org/debian}

install_packages debootstrap
step "Debian in $root"
debootstrap --variant=minbase bookworm "$root" "$mirror" >/dev/null
# The command asks there where it lies.
mount -t proc proc "$root/proc"
trap 'umount "$root/proc"' EXIT
mkdir -p "$root/packages"
cp out/*.deb pictures/crystals.json "$root/packages"
# usage: page_block LANGUAGE: the first such block of docs/embedding.md
page_block() {
    sed -n '/^```'"$1"'$/,/^```$/{/^```$/q; /^```/!p}' docs/embedding.md
}
page_block cpp >"$root/packages/plot.cpp"
page_block cmake >"$root/packages/CMakeLists.txt"

step "installation"
chroot "$root" apt-get -qq update
chroot "$root" sh -c 'DEBIAN_FRONTEND=noninteractive apt-get -qq --yes --no-install-recommends install /packages/*vorna*.deb' >/dev/null
chroot "$root" vorna --version

step "use"
chroot "$root" vorna replay /packages/crystals.json --color /packages/crystals.png
cmp "$root/packages/crystals.png" <("${VORNA:-build/package-gcc-release/bin/vorna}" replay pictures/crystals.json --color /dev/stdout)
chroot "$root" sh -c 'DEBIAN_FRONTEND=noninteractive apt-get -qq --yes --no-install-recommends install cmake g++ libpng-dev make' >/dev/null
chroot "$root" cmake -S /packages -B /packages/build >/dev/null
chroot "$root" cmake --build /packages/build
chroot "$root" /packages/build/plot /packages/plot.png
cmp "$root/packages/plot.png" docs/images/plot.png

step "removal"
chroot "$root" apt-get -qq --yes purge vorna libvorna15-dev libvorna15 >/dev/null
if chroot "$root" dpkg -S vorna 2>/dev/null; then
    exit 1
fi
echo "the packages install, work and go"
