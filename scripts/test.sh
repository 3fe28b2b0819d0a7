#!/usr/bin/env bash
# Everything that must hold before a change goes in: formatting, sanitizers, clang-tidy, the tests for Windows on Wine, and every test in
# a release build, with each kernel set. Works on a fresh Debian 12 as root, without a display. The last words are those of the test runner.
set -euo pipefail
cd "$(dirname "$0")/.."
source scripts/packages.sh

install_packages "${build_packages[@]}" binutils clang clang-format clang-tidy fonts-dejavu-core libclang-rt-14-dev libgmock-dev libgtest-dev llvm pkgconf "${windows_packages[@]}"
jobs=$(nproc)

# usage: check PRESET [CMAKE-OPTION...]
check() {
    local preset=$1
    shift
    step "$preset"
    cmake --preset "$preset" "$@" >/dev/null
    cmake --build --preset "$preset" -j "$jobs"
    ctest --preset "$preset" -j "$jobs"
}

step "clang-format"
scripts/check-format.sh clang-format

# Sanitizers make everything several times slower: fewer rounds of the seeded properties.
VORNA_TEST_SCALE=${VORNA_TEST_SCALE:-0.2} check clang-asan

step "clang-tidy"
run-clang-tidy -p build/clang-asan -j "$jobs" -quiet "^$PWD/(app|renderer|vorna)/" 2>/dev/null

# Seeded properties have no more to find there than what compilers and run-time libraries do differently.
VORNA_TEST_SCALE=${VORNA_TEST_SCALE:-0.2} check windows-mingw

check gcc-release
