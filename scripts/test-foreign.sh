#!/usr/bin/env bash
# usage: scripts/test-foreign.sh [PRESET...]
# Cross-builds for other processors and runs the tests of renderer, host library and drawing library there, under QEMU's user mode:
# AArch64 with each of its kernel sets, and with the portable one s390x, which is big-endian, RISC-V and ARM, which has 32 bits. The
# images must have the same bytes everywhere. Presets choose some of linux-aarch64, linux-s390x, linux-riscv64 and linux-arm.
set -euo pipefail
cd "$(dirname "$0")/.."
source scripts/packages.sh

presets=("$@")
[ $# -gt 0 ] || presets=(linux-aarch64 linux-s390x linux-riscv64 linux-arm)
# Emulated programs are some ten times slower.
export VORNA_TEST_SCALE=${VORNA_TEST_SCALE:-0.1}

install_packages "${build_packages[@]}" "${foreign_packages[@]}"
for preset in "${presets[@]}"; do
    target=$(sed -n "s/.*\"name\": \"$preset\".*\"VORNA_TARGET\": \"\([^\"]*\)\".*/\1/p" CMakePresets.json)
    if [ -z "$target" ]; then
        echo "usage: scripts/test-foreign.sh [PRESET...]; found '$preset', expected a preset of CMakePresets.json with VORNA_TARGET" >&2
        exit 2
    fi
    step "$preset"
    scripts/zlib-for.sh "$target"
    cmake --preset "$preset" >/dev/null
    cmake --build --preset "$preset" -j "$(nproc)" --target vorna vorna_tests drawing_tests
    ctest --preset "$preset" -j "$(nproc)"
done
