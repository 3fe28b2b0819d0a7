#!/usr/bin/env bash
# usage: try-packages.sh [FOLDER [MIRROR]]
# Tries what package.sh has put into out/: the command draws, its manual pages and completions are there, and a project of its own is
# built with the library, by CMake and by pkg-config. The archives are unpacked for that, the one for Windows runs on Wine where that
# is installed. The Debian packages are installed into a temporary folder beside a copy of this system's package database, so that
# what they depend on must be installed here, and are removed again. Needs root.
# With FOLDER the Debian packages are tried in a fresh Debian 12 as well, which debootstrap makes there from MIRROR.
set -euo pipefail
cd "$(dirname "$0")/.."
source scripts/packages.sh
unset CMAKE_CXX_COMPILER_LAUNCHER # of this machine, not of a new one
[ "$(id -u)" -eq 0 ] || { echo "$0: not root, who alone installs Debian packages" >&2; exit 1; }
ls out/*vorna*.deb out/vorna-*-linux-*.tar.gz out/vorna-*-windows-*.zip >/dev/null || exit 1

work=$(mktemp -d)
at_end=("rm -rf '$work'")
# What was begun last ends first.
end_all() {
    for ((i = ${#at_end[@]} - 1; i >= 0; --i)); do
        eval "${at_end[i]}" || true
    done
}
trap end_all EXIT
trap 'exit 1' HUP INT TERM
mkdir "$work/project"
cp recordings/crystals.json "$work/project"
# usage: page_block LANGUAGE [PAGE]: the first such block of a page
page_block() {
    sed -n '/^```'"$1"'$/,/^```$/{/^```$/q; /^```/!p}' "${2-docs/embedding.md}"
}
page_block cpp >"$work/project/plot.cpp"
page_block cmake >"$work/project/CMakeLists.txt"
{ echo 'set -e'; page_block sh; } >"$work/project/build.sh"
mkdir "$work/project/c"
page_block c docs/c.md >"$work/project/c/triangle.c"
{ echo 'set -e'; page_block sh docs/c.md; } >"$work/project/c/build.sh"
cat >"$work/project/drawn.py" <<'END'
# usage: drawn.py PREFIX: that the package that lies below the prefix draws
import sys
import numpy
import vorna
assert vorna.__file__.startswith(sys.argv[1]), vorna.__file__
image = vorna.render((numpy.eye(3), [[0, 1, 2]]), size=(64, 48), ids=True)
assert (image.ids == 0).any()
canvas = vorna.Canvas((20, 20), threads=2)
with canvas.record() as recording, canvas.picture("white"):
    canvas.polyline([[2, 3], [18, 15]], color="red")
assert vorna.replay(recording).compare(canvas.to_image())
END
# What the build that was packed draws.
"build/package-gcc-release/bin/vorna" replay recordings/crystals.json --color "$work/crystals.png"

# usage: try_tree TREE PROJECT [COMMAND...]: that files laid out as in /usr work, each program run by COMMAND
try_tree() {
    local tree=$1 project=$2 libraries
    shift 2
    "$@" "$tree/bin/vorna" --version
    "$@" "$tree/bin/vorna" replay "$project/crystals.json" --color - | cmp - "$work/crystals.png"
    "$@" "$tree/bin/vorna" check --profile krb --seed 1 | tail -n 1
    "$@" sh -c 'gzip -t "$0/man/man1/vorna.1.gz" "$0"/man/man1/vorna-*.1.gz &&
        bash -n "$0/bash-completion/completions/vorna" &&
        test -s "$0/zsh/vendor-completions/_vorna" && test -s "$0/fish/vendor_completions.d/vorna.fish"' "$tree/share"

    "$@" cmake -S "$project" -B "$project/build" -D CMAKE_PREFIX_PATH="$tree" >/dev/null
    "$@" cmake --build "$project/build" >/dev/null
    "$@" "$project/build/plot" /dev/stdout | cmp - docs/images/plot.png
    libraries=$tree/lib/$(dpkg-architecture -q DEB_HOST_MULTIARCH)
    "$@" env -C "$project" PKG_CONFIG_PATH="$libraries/pkgconfig" sh build.sh
    "$@" env LD_LIBRARY_PATH="$libraries" "$project/plot" /dev/stdout | cmp - docs/images/plot.png
    "$@" rm -r "$project/build" "$project/plot"
}
# usage: try_bindings TREE PROJECT [COMMAND...]: the same for the C library, whose program has the prefix of the tree in it, and for the
# Python package.
try_bindings() {
    local tree=$1 project=$2 libraries
    shift 2
    libraries=$tree/lib/$(dpkg-architecture -q DEB_HOST_MULTIARCH)
    "$@" env -C "$project/c" PKG_CONFIG_PATH="$libraries/pkgconfig" sh build.sh
    "$@" env LD_LIBRARY_PATH="$libraries" "$project/c/triangle" /dev/stdout | cmp - docs/images/triangle.png
    "$@" rm "$project/c/triangle"
    "$@" env PYTHONDONTWRITEBYTECODE=1 PYTHONPATH="$tree/lib/python3/dist-packages" /usr/bin/python3 "$project/drawn.py" "$tree"
}

step "archive for Linux"
tar -xzf out/vorna-*-linux-*.tar.gz -C "$work"
try_tree "$(echo "$work"/vorna-*-linux-*)" "$work/project"

step "archive for Windows"
cmake -E chdir "$work" cmake -E tar xf "$PWD"/out/vorna-*-windows-*.zip
wine=$(PATH=$PATH:/usr/lib/wine command -v wine64 || true)
if [ "$wine" ]; then
    at_end+=("sh tests/windows/wine.sh stop '$work/wine' '$wine'")
    sh tests/windows/wine.sh start "$work/wine" "$wine"
    # Programs write into files: see wine.sh.
    run_there() {
        WINEPREFIX=$work/wine WINEDEBUG=-all "$wine" "$(echo "$work"/vorna-*-windows-*)/bin/vorna.exe" "$@" </dev/null >"$work/log" 2>&1 ||
            { cat "$work/log" >&2; exit 1; }
    }
    run_there --version
    cat "$work/log"
    run_there replay recordings/crystals.json --color "$work/windows.png"
    cmp "$work/windows.png" "$work/crystals.png"
    run_there check --profile krb --seed 1
    tail -n 1 "$work/log"
else
    echo "unpacked, but not run: wine64 is not installed"
fi

step "Debian packages in a folder"
root=$work/root
mkdir -p "$root/var/lib" "$work/bin"
cp -r /var/lib/dpkg "$root/var/lib"
printf '#!/bin/sh\n' >"$work/bin/ldconfig" # nobody asks for this system's libraries there
chmod +x "$work/bin/ldconfig"
run_dpkg() {
    PATH=$work/bin:$PATH dpkg --root="$root" --force-script-chrootless --no-triggers "$@" >/dev/null
}
list_files() {
    find "$root" -path "$root/var/lib/dpkg" -prune -o -print | sort
}
before=$(list_files)
run_dpkg --install out/*vorna*.deb
try_tree "$root/usr" "$work/project"
try_bindings "$root/usr" "$work/project"
run_dpkg --purge vorna-view vorna python3-vorna libvorna-c-dev libvorna-drawing-dev libvorna15-dev libvorna15
diff <(echo "$before") <(list_files)

if [ $# -eq 0 ]; then
    echo "the packages install, work and go; not tried in a fresh Debian: no FOLDER for it was given"
    exit
fi
root=$1 mirror=${2:-http://deb.debian.org/debian}
install_packages debootstrap
step "Debian packages in a fresh Debian in $root"
debootstrap --variant=minbase bookworm "$root" "$mirror" >"$work/log" 2>&1 ||
    { echo "$0: debootstrap made no Debian in $root: $(grep -a '^E:' "$work/log" | tail -n 1)" >&2; exit 1; }
# The command asks there where it lies.
mount -t proc proc "$root/proc"
at_end+=("umount '$root/proc'")
cp -r "$work/project" "$root/project"
mkdir "$root/packages"
cp out/*vorna*.deb "$root/packages"
install_there() {
    chroot "$root" env DEBIAN_FRONTEND=noninteractive apt-get -qq --yes --no-install-recommends install "$@" >/dev/null
}
chroot "$root" apt-get -qq update
packages=(out/*vorna*.deb)
install_there "${packages[@]/#out//packages}"
chroot "$root" vorna --version
install_there cmake g++ libpng-dev make pkgconf
try_tree /usr /project chroot "$root"
try_bindings /usr /project chroot "$root"
chroot "$root" apt-get -qq --yes purge vorna-view vorna python3-vorna libvorna-c-dev libvorna-drawing-dev libvorna15-dev libvorna15 >/dev/null
if chroot "$root" dpkg -S vorna 2>/dev/null; then
    exit 1
fi
echo "the packages install, work and go, in a fresh Debian too"
