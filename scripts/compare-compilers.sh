#!/usr/bin/env bash
# usage: scripts/compare-compilers.sh [BUILD...]
# Builds renderer and host library with the compilers of Debian 12 at each level of optimisation, puts the command of
# gcc-release beside them, which loads both, and compares the digests of what it draws with docs/receipt.json. Builds are
# folders of build/compilers, COMPILER-LEVEL: the compilers g++-12, clang++-14 and clang++-19, the levels O0, O1, O2, O3 and
# lto, which is O3 with optimisation at link time. All of them have portable kernels only, but for those that VORNA_ALL_KERNELS
# names.
set -euo pipefail
cd "$(dirname "$0")/.."
source scripts/packages.sh

every=()
for compiler in g++-12 clang++-14 clang++-19; do
    for level in O0 O1 O2 O3 lto; do
        every+=("$compiler-$level")
    done
done
builds=("$@")
[ $# -gt 0 ] || builds=("${every[@]}")
for build in "${builds[@]}"; do
    if [[ " ${every[*]} " != *" $build "* ]]; then
        echo "scripts/compare-compilers.sh: found '$build', expected one of: ${every[*]}" >&2
        exit 2
    fi
done

install_packages "${build_packages[@]}" "${compiler_packages[@]}"
step gcc-release
cmake --preset gcc-release >/dev/null
cmake --build --preset gcc-release -j "$(nproc)" --target vorna
for build in "${builds[@]}"; do
    step "$build"
    level=${build##*-}
    options=(-D CMAKE_CXX_COMPILER="${build%-*}" -D VORNA_BUILD_COMMAND=OFF -D VORNA_PRECOMPILE_HEADERS=ON)
    [[ " ${VORNA_ALL_KERNELS-} " == *" $build "* ]] || options+=(-D VORNA_ONLY_PORTABLE_KERNELS=ON)
    case $level in
    O0) options+=(-D CMAKE_BUILD_TYPE=Debug -D CMAKE_CXX_FLAGS_DEBUG=-O0) ;; # with the kernels' assertions
    lto) options+=(-D CMAKE_BUILD_TYPE=Release -D CMAKE_INTERPROCEDURAL_OPTIMIZATION=ON) ;;
    *) options+=(-D CMAKE_BUILD_TYPE=Release -D "CMAKE_CXX_FLAGS_RELEASE=-$level -DNDEBUG") ;;
    esac
    folder=build/compilers/$build
    cmake -S . -B "$folder" -G Ninja "${options[@]}" >/dev/null
    cmake --build "$folder" -j "$(nproc)" --target krb vorna15
    cp build/gcc-release/bin/vorna "$folder/bin"
    scripts/receipt.py --check "compilers/$build"
done
