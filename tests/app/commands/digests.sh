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
            found=$("$vorna" --kernels $kernels render "$models/$2" -o "$output/out.png" --size 3000x1500 --view front --edges --antialias --hash $tiling 2>&1)
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
expect 18cfb095fa9842f4c79a7c2d1a967cd18fd2186415c8227b27fb015a942637bb bunny.obj
expect f43a17e8b52f1d0d1b9d9cdf728b1453ac5e6b104fe5b05620617ab60f248809 horse.3ds
echo "$failures digests differ"
[ $failures -eq 0 ]
