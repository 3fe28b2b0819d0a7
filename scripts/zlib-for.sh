#!/usr/bin/env bash
# usage: scripts/zlib-for.sh TARGET...
# Builds zlib from Debian's source package for each target, a name such as aarch64-linux-gnu or wasm32-emscripten, into
# build/libraries/TARGET, where cmake/debian-cross.cmake and cmake/emscripten.cmake find it. Debian 12 has no packages for riscv64, and packages of other architectures would need apt to be
# set up for them; the source serves all alike. apt verifies it, with package lists of its own beside the system's.
set -euo pipefail
cd "$(dirname "$0")/.."
libraries=$PWD/build/libraries
release=bookworm

missing=()
for target in "$@"; do
    [ -e "$libraries/$target/lib/libz.a" ] || missing+=("$target")
done
[ ${#missing[@]} -gt 0 ] || exit 0

work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
cd "$work"
mkdir -p lists/partial cache
echo "deb-src [signed-by=/usr/share/keyrings/debian-archive-keyring.gpg] http://deb.debian.org/debian $release main" >sources
own_lists=(-qq -o "Dir::Etc::SourceList=$work/sources" -o Dir::Etc::SourceParts=/dev/null -o "Dir::State::Lists=$work/lists"
    -o "Dir::Cache=$work/cache" -o "APT::Sandbox::User=$(id -un)")
apt-get "${own_lists[@]}" update
apt-get "${own_lists[@]}" source --download-only zlib
for target in "${missing[@]}"; do
    mkdir "$target"
    tar -C "$target" --strip-components=1 -xf zlib_*.orig.tar.*
    # WebAssembly's compiler has a name of its own, and is slower with code that may lie anywhere.
    if [ "$target" = wasm32-emscripten ]; then
        export CC=emcc AR=emar RANLIB=emranlib CFLAGS=-Oz
    else
        export CC=$target-gcc CFLAGS="-O2 -fPIC"
    fi
    (cd "$target" && CHOST=$target ./configure --static --prefix="$libraries/$target" &&
        make -j "$(nproc)" libz.a && make install) >log 2>&1 || { cat log >&2; exit 1; }
done
