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
expect 411cd9f1e510bf2e3f7bad86ef5edce7fca27ad8d07d0bd1efd029c4d8f8a9d3 bunny.obj
expect a7313a022e13bbf517cef8a737d75088ed8c523042d02b8c010965dac4a66652 horse.3ds
echo "$failures digests differ"
[ $failures -eq 0 ]
