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
expect 7e48d4354b3b7a4f50894ba30805fb5774ff37820119902ccb2866237ca24cc1 bunny.obj
expect 441db118bfe5ab5832c9edd7833d3053847b1cbfc6132759d53694277f92b43d horse.3ds
echo "$failures digests differ"
[ $failures -eq 0 ]
