#!/bin/sh
# digests.sh VORNA MODELS: the pixels of real models are the same for every kernel set, number of threads, tile size and compiler.
set -u
vorna=$1 models=$2
output=$(mktemp -d)
trap 'rm -rf "$output"' EXIT
failures=0
# usage: expect DIGEST MODEL
expect() {
    for kernels in portable baseline avx2 avx512; do
        for tiling in "--threads=1" "--threads=1 --tile-size=64" "--threads=3 --tile-size=200"; do
            # The options are words of their own.
            # shellcheck disable=SC2086
            found=$("$vorna" --kernels $kernels render "$models/$2" -o "$output/out.png" --size 3000x1500 --view front --background white --edges --antialias --hash $tiling 2>&1)
            case $found in
            "$1") ;;
            *"this processor cannot run"*) echo "$2, $kernels: not on this processor" ;;
            *)
                echo "$2, $kernels, $tiling: expected $1, found $found"
                failures=$((failures + 1))
                ;;
            esac
        done
    done
}
expect 0be8d006f034d60d5d26ccea66315b1a3565325788892589a528f333ee975235 bunny.obj
expect eedf7c8ee09d250875844b84ff94ab3e245bbeb5a5729b09ab85a52df1af145d horse.3ds
echo "$failures digests differ"
[ $failures -eq 0 ]
